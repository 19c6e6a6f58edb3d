#include "ChatCompletion.h"
#include "Dialect.h"
#include "Reply.h"
#include "Scenarios.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

Reply practiceReply(const Exchange &exchange)
{
    Reply reply;
    reply.pieces = wordPieces(Scenarios::practiceText(exchange.request()));
    return reply;
}

Work practice(Exchange &exchange)
{
    Reply reply = practiceReply(exchange);
    reply.firstPause = 250ms;
    reply.pause = 30ms;
    co_await play(exchange, std::move(reply));
}

Work practiceFast(Exchange &exchange)
{
    co_await play(exchange, practiceReply(exchange));
}

Work slow(Exchange &exchange)
{
    Reply reply = practiceReply(exchange);
    reply.firstPause = 5s;
    reply.pause = 500ms;
    co_await play(exchange, std::move(reply));
}

Reply manyPieces(Exchange &exchange)
{
    Reply reply;
    for (int i = 1; i <= Scenarios::number(exchange.request().model()); ++i)
        reply.pieces.append(i % 12 == 0 ? u"piece %1.\n"_s.arg(i) : u"piece %1, "_s.arg(i));
    return reply;
}

Work pieces(Exchange &exchange)
{
    co_await play(exchange, manyPieces(exchange));
}

Work pacedPieces(Exchange &exchange)
{
    Reply reply = manyPieces(exchange);
    reply.pause = 20ms;
    co_await play(exchange, std::move(reply));
}

// A paragraph that is long already when its last 400 pieces come.
Work longParagraph(Exchange &exchange)
{
    const QStringList words = wordPieces(u"It wasn't the first time that a lamp, set high on the old tower, "
                                         u"kept its keeper (a quiet, well-read "
                                         "woman) awake until morning; she wrote it all down. "_s);
    Reply reply;
    QString start;
    const qsizetype characters = Scenarios::number(exchange.request().model());
    for (qsizetype i = 0; reply.pieces.size() < std::min<qsizetype>(400, characters / 40); ++i) {
        const QString &word = words[i % words.size()];
        if (start.size() < characters)
            start += word;
        else
            reply.pieces.append(word);
    }
    reply.pieces.prepend(start);
    reply.pause = 20ms;
    co_await play(exchange, std::move(reply));
}

Work mixedAnswer(Exchange &exchange)
{
    const QString part = u"## Heading\n\nSome **strong** words, a [link](https://example.org) and `code` in "
                         u"a line that wraps.\n\n"
                         "- one\n- two\n- three\n\n```cpp\nint main() { return 0; }\n```\n\n| a | b "
                         "|\n|---|---|\n| 1 | 2 |\n\n"
                         "```stat\n$12M | Price | +12%\n```\n\n"_s;
    Reply reply;
    const QStringList pieces = wordPieces(part);
    for (qsizetype i = 0; i < Scenarios::number(exchange.request().model()); ++i)
        reply.pieces.append(pieces[i % pieces.size()]);
    reply.pause = 20ms;
    co_await play(exchange, std::move(reply));
}

Work codeAnswer(Exchange &exchange)
{
    const QStringList words = wordPieces(
        u"for (const auto &row : rows) { // each of them\n    index.insert(row.key, \"value\", 42);\n}\n"_s);
    Reply reply;
    reply.pieces.append(u"```cpp\n"_s);
    for (qsizetype i = 0; i < Scenarios::number(exchange.request().model()); ++i)
        reply.pieces.append(words[i % words.size()]);
    reply.pause = 20ms;
    co_await play(exchange, std::move(reply));
}

// The first half of the practice text, or the second when the client asks to go on.
Work length(Exchange &exchange)
{
    const bool goesOn = exchange.request().lastUserText().startsWith(Scenarios::continueInstruction);
    Reply reply;
    reply.pieces = wordPieces(goesOn ? u"and this is the rest of it, from the practice server."_s
                                     : u"The practice server stops here in the middle of a sentence, "_s);
    reply.finishReason = goesOn ? u"stop"_s : u"length"_s;
    co_await play(exchange, std::move(reply));
}

QString offeredTool(const Request &request)
{
    const QJsonValue tool = request.json["tools"_L1].toArray().at(0);
    return tool["function"_L1]["name"_L1].toString(u"practice_tool"_s);
}

QString toolArguments(const Request &request)
{
    const QJsonValue tool = request.json["tools"_L1].toArray().at(0);
    const QString parameter = tool["function"_L1]["parameters"_L1]["required"_L1][0].toString(u"text"_s);
    const QJsonObject arguments{{parameter, u"practice é"_s}};
    return QString::fromUtf8(QJsonDocument(arguments).toJson(QJsonDocument::Compact));
}

// A client that sends the result of a call gets words instead of another call.
bool answersToolResult(const Exchange &exchange)
{
    return exchange.request().lastMessage()["role"_L1].toString() == "tool"_L1;
}

Reply afterTool(const Exchange &exchange)
{
    const QString result = exchange.request().lastMessage()["content"_L1].toString();
    Reply reply;
    reply.pieces = wordPieces(u"The practice server got this from the tool: “%1”."_s.arg(result));
    return reply;
}

Reply toolReply(const Exchange &exchange)
{
    Reply reply;
    reply.toolCalls.append(ChatCompletion::toolCall(u"call_practice"_s, offeredTool(exchange.request()),
                                                    toolArguments(exchange.request())));
    reply.finishReason = u"tool_calls"_s;
    return reply;
}

Work toolCallWhole(Exchange &exchange)
{
    Reply reply = answersToolResult(exchange) ? afterTool(exchange) : toolReply(exchange);
    co_await play(exchange, std::move(reply));
}

QJsonObject fragment(const QJsonObject &function, const QString &id = {})
{
    QJsonObject entry{{u"index"_s, 0}, {u"function"_s, function}};
    if (!id.isEmpty())
        entry.insert(u"id"_s, id);
    return {{u"tool_calls"_s, QJsonArray{entry}}};
}

// Id and name first, then the arguments three characters at a time. Ollama sends each call whole.
Work toolCallSplit(Exchange &exchange)
{
    const Request &request = exchange.request();
    if (answersToolResult(exchange) || !request.wantsStream() || request.isOllama()) {
        co_await toolCallWhole(exchange);
        co_return;
    }
    const QString arguments = toolArguments(request);
    const QJsonObject opening = fragment(QJsonObject{{u"name"_s, offeredTool(request)}}, u"call_practice"_s);
    co_await beginReply(exchange);
    co_await exchange.chunk(Dialect::line(request, ChatCompletion::chunk(request.model(), opening)));
    for (qsizetype at = 0; at < arguments.size(); at += 3) {
        const QJsonObject part = fragment(QJsonObject{{u"arguments"_s, arguments.mid(at, 3)}});
        co_await exchange.chunk(Dialect::line(request, ChatCompletion::chunk(request.model(), part)));
    }
    co_await exchange.chunk(Dialect::ending(request, u"tool_calls"_s));
    co_await exchange.endStream();
}

// The same call twice, without ids.
Work toolCallsTwo(Exchange &exchange)
{
    const Request &request = exchange.request();
    if (answersToolResult(exchange)) {
        co_await play(exchange, afterTool(exchange));
        co_return;
    }
    Reply reply;
    for (int i = 0; i < 2; ++i)
        reply.toolCalls.append(ChatCompletion::toolCall({}, offeredTool(request), toolArguments(request)));
    reply.finishReason = u"tool_calls"_s;
    co_await play(exchange, std::move(reply));
}

// Calls that all say index 0 and differ by their ids, each in a chunk of its own.
Work toolCallsSameIndex(Exchange &exchange)
{
    const Request &request = exchange.request();
    if (answersToolResult(exchange) || !request.wantsStream() || request.isOllama()) {
        co_await toolCallWhole(exchange);
        co_return;
    }
    co_await beginReply(exchange);
    for (const QString &id : {u"call_a"_s, u"call_b"_s}) {
        const QJsonObject function{{u"name"_s, offeredTool(request)},
                                   {u"arguments"_s, toolArguments(request)}};
        const QJsonObject delta = fragment(function, id);
        co_await exchange.chunk(Dialect::line(request, ChatCompletion::chunk(request.model(), delta)));
    }
    co_await exchange.chunk(Dialect::ending(request, u"tool_calls"_s));
    co_await exchange.endStream();
}

// More calls than any client should carry out.
Work manyCalls(Exchange &exchange)
{
    const Request &request = exchange.request();
    Reply reply;
    for (int i = 0; i < Scenarios::number(request.model()); ++i) {
        const QString id = u"call_%1"_s.arg(i);
        reply.toolCalls.append(ChatCompletion::toolCall(id, offeredTool(request), toolArguments(request)));
    }
    reply.finishReason = u"tool_calls"_s;
    co_await play(exchange, std::move(reply));
}

Work rejectTools(Exchange &exchange)
{
    if (exchange.request().offersTools())
        co_await refuse(exchange, 400, u"This model does not support tools."_s);
    else
        co_await practiceFast(exchange);
}

Work imagesRefused(Exchange &exchange)
{
    if (exchange.request().hasImages())
        co_await refuse(exchange, 400, u"This model is missing data required for image input."_s);
    else
        co_await practiceFast(exchange);
}

Work thinkingFields(Exchange &exchange)
{
    Reply reply = practiceReply(exchange);
    reply.thoughts = wordPieces(u"The practice server pretends to think. "_s);
    co_await play(exchange, std::move(reply));
}

// As a server sends it that doesn't take the reasoning out of the text.
Work thinkingTags(Exchange &exchange)
{
    Reply reply = practiceReply(exchange);
    reply.pieces =
        wordPieces(u"<think>\nThe practice server pretends to think.\n</think>\n\n"_s) + reply.pieces;
    co_await play(exchange, std::move(reply));
}

// The whole output limit is spent before the first word.
Work thinkingOnly(Exchange &exchange)
{
    Reply reply;
    reply.thoughts = wordPieces(u"The practice server thinks until its limit is reached. "_s);
    reply.finishReason = u"length"_s;
    co_await play(exchange, std::move(reply));
}

// Ollama counts in its last line.
Work usageChunks(Exchange &exchange)
{
    const Request &request = exchange.request();
    if (!request.wantsStream() || request.isOllama()) {
        co_await practiceFast(exchange);
        co_return;
    }
    const QJsonObject usage{{u"prompt_tokens"_s, 12}, {u"completion_tokens"_s, 34}, {u"total_tokens"_s, 46}};
    QJsonObject last = ChatCompletion::chunk(request.model(), {});
    last.insert(u"choices"_s, QJsonArray());
    last.insert(u"usage"_s, usage);
    co_await beginReply(exchange);
    for (const QString &piece : wordPieces(Scenarios::practiceText(request)))
        co_await exchange.chunk(Dialect::textLine(request, piece));
    co_await exchange.chunk(
        Dialect::line(request, ChatCompletion::chunk(request.model(), QJsonObject(), u"stop"_s)));
    co_await exchange.chunk(Dialect::line(request, last));
    co_await exchange.chunk("data: [DONE]\n\n");
    co_await exchange.endStream();
}

// A good stream, with `between` before each of its pieces and `lineEnd` for each LF of its own.
QByteArray goodStream(const Request &request, const QString &text, const QByteArray &between,
                      const QByteArray &lineEnd)
{
    QByteArray stream;
    for (const QString &piece : wordPieces(text))
        stream += between + Dialect::textLine(request, piece).replace('\n', lineEnd);
    return stream + Dialect::ending(request, u"stop"_s).replace('\n', lineEnd);
}

Work framed(Exchange &exchange, QByteArray between, QByteArray lineEnd)
{
    const Request &request = exchange.request();
    if (!request.wantsStream()) {
        co_await practiceFast(exchange);
        co_return;
    }
    co_await beginReply(exchange);
    co_await exchange.chunk(goodStream(request, Scenarios::practiceText(request), between, lineEnd));
    co_await exchange.endStream();
}

// What a server sends so that nothing on the way takes the connection for dead.
Work keepAlive(Exchange &exchange)
{
    const bool isOllama = exchange.request().isOllama();
    const QByteArray between = isOllama ? "\n \t\n" : ": keep-alive\n\nevent: message\nid: 7\n";
    co_await framed(exchange, between, "\n");
}

Work crlf(Exchange &exchange)
{
    co_await framed(exchange, {}, "\r\n");
}

Work garbageLines(Exchange &exchange)
{
    const QByteArray prefix = exchange.request().isOllama() ? "" : "data: ";
    co_await framed(exchange, prefix + "{\"half\": \n" + prefix + "[1]\n\xff\xfe\n", "\n");
}

// The body of a good stream, one byte to a chunk.
Work drip(Exchange &exchange)
{
    const QString text = u"Drop by drop, é and 👻 too, from the practice server."_s;
    const QByteArray body = goodStream(exchange.request(), text, {}, "\r\n");
    co_await beginReply(exchange);
    for (const char byte : body)
        co_await exchange.chunk(QByteArray(1, byte));
    co_await exchange.endStream();
}

Work noDone(Exchange &exchange)
{
    co_await beginReply(exchange);
    const Request &request = exchange.request();
    for (const QString &piece : wordPieces(Scenarios::practiceText(request)))
        co_await exchange.chunk(Dialect::textLine(request, piece));
    const QJsonObject last = ChatCompletion::chunk(request.model(), {}, u"stop"_s);
    if (!request.isOllama()) // its closing line is where the reason stands
        co_await exchange.chunk(Dialect::line(request, last));
    co_await exchange.endStream();
}

Work noLastLineEnd(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray stream = goodStream(request, Scenarios::practiceText(request), {}, "\n");
    co_await beginReply(exchange);
    co_await exchange.chunk(stream.trimmed());
    co_await exchange.endStream();
}

// One object, with a stream asked for. Chat-completions servers that do so like to indent it.
Work jsonDespiteStream(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QJsonObject body = Dialect::whole(request, Scenarios::practiceText(request), {}, u"stop"_s);
    const auto form = request.isOllama() ? QJsonDocument::Compact : QJsonDocument::Indented;
    co_await exchange.respond(200, "application/json", QJsonDocument(body).toJson(form));
}

} // namespace

std::span<const Scenario> Scenarios::replies()
{
    static constexpr Scenario all[]{
        {"practice"_L1, "a friendly reply, word by word, with natural pauses"_L1, practice},
        {"practice-fast"_L1, "the same without pauses"_L1, practiceFast},
        {"slow"_L1, "the same, after five seconds and half a second between words"_L1, slow},
        {"pieces-N"_L1, "N pieces without pauses"_L1, pieces},
        {"paced-N"_L1, "the same, fifty a second"_L1, pacedPieces},
        {"one-paragraph-N"_L1,
         "N characters at once and then fifty pieces a second, 400 at most, all one paragraph"_L1,
         longParagraph},
        {"mixed-answer-N"_L1, "N pieces of an answer with every kind of block, fifty a second"_L1,
         mixedAnswer},
        {"code-N"_L1, "N pieces of code in one fence, fifty a second"_L1, codeAnswer},
        {"length"_L1, "stops at the output limit; asked to continue, it sends the rest"_L1, length},
        {"tool-call-whole"_L1, "calls the first tool offered, in one piece"_L1, toolCallWhole},
        {"tool-call-split"_L1, "the same call, its arguments in small fragments"_L1, toolCallSplit},
        {"tool-calls-two"_L1, "the same call twice, without ids"_L1, toolCallsTwo},
        {"tool-calls-same-index"_L1, "two calls with one index and two ids"_L1, toolCallsSameIndex},
        {"tool-calls-N"_L1, "N calls in one reply"_L1, manyCalls},
        {"reject-tools"_L1, "HTTP 400 when tools are offered, else a reply"_L1, rejectTools},
        {"images-refused"_L1, "HTTP 400 when a message has images, else a reply"_L1, imagesRefused},
        {"thinking-fields"_L1, "reasoning before the text"_L1, thinkingFields},
        {"thinking-tags"_L1, "reasoning between tags at the start of the text"_L1, thinkingTags},
        {"thinking-only"_L1, "reasoning up to the output limit and no text"_L1, thinkingOnly},
        {"usage-chunks"_L1, "a last chunk with no choices and a usage object"_L1, usageChunks},
        {"keep-alive-comments"_L1, "comments, event names and ids, or blank lines, between the pieces"_L1,
         keepAlive},
        {"garbage-lines"_L1, "lines of no meaning between the pieces"_L1, garbageLines},
        {"crlf"_L1, "lines that end in CR LF"_L1, crlf},
        {"drip"_L1, "one byte at a time"_L1, drip},
        {"no-done"_L1, "says why it ends, without the closing line"_L1, noDone},
        {"no-last-line-end"_L1, "ends right behind its closing line"_L1, noLastLineEnd},
        {"json-despite-stream"_L1, "one JSON object although a stream was asked for"_L1, jsonDespiteStream},
    };
    return all;
}

} // namespace morvane
