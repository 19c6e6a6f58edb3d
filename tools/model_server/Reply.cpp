#include "Reply.h"

#include "ChatCompletion.h"

using namespace Qt::StringLiterals;

namespace {

Work playWhole(Exchange &exchange, Reply reply)
{
    QJsonObject message{{u"role"_s, u"assistant"_s}, {u"content"_s, reply.pieces.join(QString())}};
    if (!reply.toolCalls.isEmpty())
        message.insert(u"tool_calls"_s, reply.toolCalls);
    co_await exchange.respondJson(
        200, ChatCompletion::completion(exchange.request().model(), message, reply.finishReason));
}

Work playStream(Exchange &exchange, Reply reply)
{
    const QString model = exchange.request().model();
    co_await exchange.beginStream();
    const QJsonObject opening{{u"role"_s, u"assistant"_s}, {u"content"_s, QString()}};
    co_await exchange.event(ChatCompletion::chunk(model, opening));
    for (const QString &piece : reply.pieces) {
        if (reply.pause.count() > 0)
            co_await exchange.pause(reply.pause);
        co_await exchange.event(ChatCompletion::textChunk(model, piece));
    }
    if (!reply.toolCalls.isEmpty()) {
        const QJsonObject calls{{u"tool_calls"_s, reply.toolCalls}};
        co_await exchange.event(ChatCompletion::chunk(model, calls));
    }
    co_await exchange.event(ChatCompletion::chunk(model, {}, reply.finishReason));
    co_await exchange.chunk("data: [DONE]\n\n");
    co_await exchange.endStream();
}

} // namespace

Work play(Exchange &exchange, Reply reply)
{
    if (reply.firstPause.count() > 0)
        co_await exchange.pause(reply.firstPause);
    if (exchange.request().wantsStream())
        co_await playStream(exchange, std::move(reply));
    else
        co_await playWhole(exchange, std::move(reply));
}

QStringList wordPieces(const QString &text)
{
    QStringList pieces;
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype blank = text.indexOf(u' ', start);
        const qsizetype end = blank < 0 ? text.size() : blank + 1;
        pieces.append(text.sliced(start, end - start));
        start = end;
    }
    return pieces;
}
