#include "Reply.h"

#include "Dialect.h"

namespace morvane {

namespace {

Work playWhole(Exchange &exchange, Reply reply)
{
    co_await exchange.respondJson(200, Dialect::whole(exchange.request(), reply.pieces.join(QString()),
                                                      reply.toolCalls, reply.finishReason));
}

Work playStream(Exchange &exchange, Reply reply)
{
    const Request &request = exchange.request();
    co_await beginReply(exchange);
    co_await exchange.chunk(Dialect::opening(request));
    if (!request.isOllama() || request.asksForThinking()) {
        for (const QString &thought : reply.thoughts)
            co_await exchange.chunk(Dialect::thoughtLine(request, thought));
    }
    for (const QString &piece : reply.pieces) {
        if (reply.pause.count() > 0)
            co_await exchange.pause(reply.pause);
        co_await exchange.chunk(Dialect::textLine(request, piece));
    }
    co_await exchange.chunk(Dialect::toolCallLines(request, reply.toolCalls));
    co_await exchange.chunk(Dialect::ending(request, reply.finishReason));
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

Work beginReply(Exchange &exchange)
{
    co_await exchange.beginStream(200, Dialect::streamType(exchange.request()));
}

Work refuse(Exchange &exchange, int status, QString message)
{
    co_await exchange.respondJson(status, Dialect::error(exchange.request(), message, status));
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

} // namespace morvane
