#include "ChatCompletion.h"
#include "Dialect.h"
#include "OllamaObjects.h"
#include "Reply.h"
#include "Scenarios.h"

#include <QJsonDocument>

#include <random>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mebibyte = qsizetype{1024} * 1024;

// An event stream with its first words out.
Work beginTalking(Exchange &exchange)
{
    co_await beginReply(exchange);
    for (const QString &piece : wordPieces(u"The practice server begins, "_s))
        co_await exchange.chunk(Dialect::textLine(exchange.request(), piece));
}

Work stallBeforeHeaders(Exchange &exchange)
{
    co_await exchange.stall();
}

Work stallMidStream(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.stall();
}

// Two of the three bytes of "€" are the last that the client gets.
Work cutMidCharacter(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.chunk(Dialect::textStart(exchange.request()) + "10 \xe2\x82");
    exchange.cut();
}

Work cutMidJson(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.chunk(Dialect::textStart(exchange.request()) + "and");
    exchange.cut();
}

// The connection is lost on a line boundary: only the missing last chunk tells.
Work cutBetweenEvents(Exchange &exchange)
{
    co_await beginTalking(exchange);
    exchange.cut();
}

Work hugeLine(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.chunk(Dialect::textStart(exchange.request()));
    for (int i = 0; i < 100; ++i)
        co_await exchange.chunk(QByteArray(mebibyte, 'x'));
    co_await exchange.chunk(Dialect::textRest(exchange.request()));
    co_await exchange.endStream();
}

// 1 GB in all, made as it is sent.
Work hugeErrorBody(Exchange &exchange)
{
    co_await exchange.beginStream(500, "application/json");
    co_await exchange.chunk(Dialect::errorStart(exchange.request()));
    for (int i = 0; i < 1024; ++i)
        co_await exchange.chunk(QByteArray(mebibyte, 'x'));
    co_await exchange.chunk(R"("}})");
    co_await exchange.endStream();
}

// A good body but for its size.
Work hugeBody(Exchange &exchange)
{
    co_await exchange.beginStream(200, "application/json");
    co_await exchange.chunk(R"({"choices":[{"message":{"role":"assistant","content":")");
    for (int i = 0; i < 1024; ++i)
        co_await exchange.chunk(QByteArray(mebibyte, 'x'));
    co_await exchange.chunk(R"("}}]})");
    co_await exchange.endStream();
}

// The same 256 KiB of noise for everyone.
Work garbage(Exchange &exchange)
{
    std::mt19937 random(20260301);
    QByteArray noise;
    for (int i = 0; i < 256 * 1024; ++i)
        noise.append(static_cast<char>(random()));
    co_await beginReply(exchange);
    co_await exchange.chunk(noise);
    co_await exchange.endStream();
}

Work notHttp(Exchange &exchange)
{
    co_await exchange.send("220 this port speaks something else\r\n");
    exchange.cut();
}

Work redirect(Exchange &exchange, QByteArray location)
{
    Exchange::Headers headers;
    headers.emplace_back("Location", location);
    co_await exchange.respond(307, "text/plain", "Elsewhere.\n", std::move(headers));
}

Work redirectFile(Exchange &exchange)
{
    co_await redirect(exchange, "file:///etc/hostname");
}

Work redirectLoop(Exchange &exchange)
{
    co_await redirect(exchange, exchange.request().target);
}

// To another name of this machine, where every model replies.
Work redirectOther(Exchange &exchange)
{
    const QByteArray port = QByteArray::number(exchange.localEndpoint().port());
    co_await redirect(exchange, "http://localhost:" + port + "/elsewhere" + exchange.request().target);
}

Work status(Exchange &exchange)
{
    const int code = Scenarios::number(exchange.request().model());
    if (code < 200 || code > 599) {
        co_await refuse(exchange, 404, u"No such status."_s);
        co_return;
    }
    co_await refuse(exchange, code, u"The practice server was asked for HTTP %1."_s.arg(code));
}

Work empty(Exchange &exchange)
{
    co_await exchange.respond(200, Dialect::streamType(exchange.request()), {});
}

Work doneOnly(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray last = request.isOllama() ? Dialect::ending(request, u"stop"_s) : "data: [DONE]\n\n";
    co_await exchange.respond(200, Dialect::streamType(request), last);
}

// A streamed reply of one line twice, which holds no words, and its end.
Work wordless(Exchange &exchange, QJsonObject line)
{
    const Request &request = exchange.request();
    co_await beginReply(exchange);
    co_await exchange.chunk(Dialect::line(request, line));
    co_await exchange.chunk(Dialect::line(request, line));
    co_await exchange.chunk(Dialect::ending(request, u"stop"_s));
    co_await exchange.endStream();
}

Work emptyChoices(Exchange &exchange)
{
    const Request &request = exchange.request();
    QJsonObject line = ChatCompletion::chunk(request.model(), {});
    line.insert(u"choices"_s, QJsonArray());
    if (request.wantsStream())
        co_await wordless(exchange, line);
    else
        co_await Scenarios::find(u"practice-fast"_s)->play(exchange);
}

// Arguments for a tool that is never named.
Work toolCallNameless(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QJsonObject function{{u"arguments"_s, request.isOllama() ? QJsonValue(QJsonObject()) : u"{}"_s}};
    const QJsonObject call{{u"index"_s, 0}, {u"id"_s, u"call_practice"_s}, {u"function"_s, function}};
    const QJsonObject calls{{u"tool_calls"_s, QJsonArray{call}}};
    const QJsonObject line = request.isOllama() ? OllamaObjects::chunk(request.model(), calls)
                                                : ChatCompletion::chunk(request.model(), calls);
    co_await wordless(exchange, line);
}

QJsonObject midwayError(const Request &request)
{
    return Dialect::error(request, u"The practice server failed midway."_s, 500);
}

Work errorObjectIn200(Exchange &exchange)
{
    const Request &request = exchange.request();
    if (!request.wantsStream()) {
        co_await exchange.respondJson(200, midwayError(request));
        co_return;
    }
    co_await beginReply(exchange);
    co_await exchange.chunk(Dialect::line(request, midwayError(request)));
    co_await exchange.endStream();
}

Work errorMidStream(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.chunk(Dialect::line(exchange.request(), midwayError(exchange.request())));
    co_await exchange.endStream();
}

// Words, and the reason that a server gives for sending no more of them.
Work endFor(Exchange &exchange, QString reason)
{
    co_await beginTalking(exchange);
    co_await exchange.chunk(Dialect::ending(exchange.request(), reason));
    co_await exchange.endStream();
}

Work endForError(Exchange &exchange)
{
    co_await endFor(exchange, u"error"_s);
}

Work endForFilter(Exchange &exchange)
{
    co_await endFor(exchange, u"content_filter"_s);
}

// The stream ends well, the reply doesn't: neither a reason nor a closing line.
Work noEnding(Exchange &exchange)
{
    co_await beginTalking(exchange);
    co_await exchange.endStream();
}

// An error without the name of its field, as some servers write it into a stream.
Work bareErrorLine(Exchange &exchange)
{
    co_await beginTalking(exchange);
    const QJsonObject error{
        {u"code"_s, 500}, {u"message"_s, u"context shift is disabled"_s}, {u"type"_s, u"server_error"_s}};
    co_await exchange.chunk("error: " + QJsonDocument(error).toJson(QJsonDocument::Compact) + "\n\n");
    co_await exchange.endStream();
}

// The first request of the server's life to this model fails, later ones don't.
Work failOnce(Exchange &exchange)
{
    static bool hasFailed = false;
    if (!std::exchange(hasFailed, true)) {
        co_await refuse(exchange, 503, u"The practice server is warming up."_s);
        co_return;
    }
    Reply reply;
    reply.pieces = wordPieces(Scenarios::practiceText(exchange.request()));
    co_await play(exchange, std::move(reply));
}

} // namespace

std::span<const Scenario> Scenarios::broken()
{
    static constexpr Scenario all[]{
        {"status-N"_L1, "answers with HTTP status N and an error object"_L1, status},
        {"fail-once"_L1, "HTTP 503 to the first request, then replies"_L1, failOnce},
        {"stall-before-headers"_L1, "takes the request and never answers"_L1, stallBeforeHeaders},
        {"stall-mid-stream"_L1, "falls silent after a few words"_L1, stallMidStream},
        {"cut-mid-character"_L1, "breaks off inside a character"_L1, cutMidCharacter},
        {"cut-mid-json"_L1, "breaks off inside an event"_L1, cutMidJson},
        {"cut-between-events"_L1, "breaks off after a whole event"_L1, cutBetweenEvents},
        {"huge-line"_L1, "a line of 100 MB"_L1, hugeLine},
        {"huge-body"_L1, "a JSON body of 1 GB"_L1, hugeBody},
        {"huge-error-body"_L1, "HTTP 500 with a body of 1 GB"_L1, hugeErrorBody},
        {"garbage"_L1, "random bytes as a stream"_L1, garbage},
        {"not-http"_L1, "bytes of another protocol"_L1, notHttp},
        {"redirect-file"_L1, "redirects to a local file"_L1, redirectFile},
        {"redirect-loop"_L1, "redirects to itself"_L1, redirectLoop},
        {"redirect-other"_L1, "redirects to another host name, where a reply waits"_L1, redirectOther},
        {"empty"_L1, "a body of no bytes"_L1, empty},
        {"done-only"_L1, "the closing line and nothing else"_L1, doneOnly},
        {"empty-choices"_L1, "a stream of chunks with no choices; replies when asked without streaming"_L1,
         emptyChoices},
        {"tool-call-nameless"_L1, "a tool call that never gets a name"_L1, toolCallNameless},
        {"error-object-in-200"_L1, "HTTP 200 that carries an error object"_L1, errorObjectIn200},
        {"error-mid-stream"_L1, "an error object after a few words"_L1, errorMidStream},
        {"error-line-mid-stream"_L1, "a bare error line after a few words"_L1, bareErrorLine},
        {"end-for-error"_L1, "a few words, and an error for the reason of the end"_L1, endForError},
        {"end-for-filter"_L1, "a few words, and a filter for the reason of the end"_L1, endForFilter},
        {"no-ending"_L1, "a few words, and an end without reason or closing line"_L1, noEnding},
    };
    return all;
}

} // namespace morvane
