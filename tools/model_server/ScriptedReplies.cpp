#include "ScriptedReplies.h"

#include "ChatCompletion.h"
#include "Reply.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::chrono::milliseconds milliseconds(const QJsonValue &value)
{
    return std::chrono::milliseconds(value.toInt());
}

Reply replyOf(const QJsonObject &answer)
{
    Reply reply;
    for (const QJsonValue piece : answer["text"_L1].toArray())
        reply.pieces.append(piece.toString());
    for (const QJsonValue call : answer["toolCalls"_L1].toArray())
        reply.toolCalls.append(ChatCompletion::toolCall(call["id"_L1].toString(), call["name"_L1].toString(),
                                                        call["arguments"_L1].toString()));
    const QString usual = reply.toolCalls.isEmpty() ? u"stop"_s : u"tool_calls"_s;
    reply.finishReason = answer["finishReason"_L1].toString(usual);
    reply.pause = milliseconds(answer["pauseMs"_L1]);
    reply.firstPause = milliseconds(answer["firstPauseMs"_L1]);
    return reply;
}

// Bytes exactly as the file gives them, status line and all; the connection ends behind them.
Work playRaw(Exchange &exchange, QJsonArray steps)
{
    exchange.cut();
    for (const QJsonValue step : steps) {
        if (step.isString())
            co_await exchange.send(step.toString().toUtf8());
        else if (step["base64"_L1].isString())
            co_await exchange.send(QByteArray::fromBase64(step["base64"_L1].toString().toLatin1()));
        else if (step["stall"_L1].toBool())
            co_await exchange.stall();
        else
            co_await exchange.pause(milliseconds(step["pauseMs"_L1]));
    }
}

} // namespace

Work ScriptedReplies::play(Exchange &exchange, QJsonObject answer)
{
    if (answer["raw"_L1].isArray())
        co_await playRaw(exchange, answer["raw"_L1].toArray());
    else if (answer["status"_L1].isDouble())
        co_await exchange.respondJson(answer["status"_L1].toInt(), answer["json"_L1].toObject());
    else
        co_await morvane::play(exchange, replyOf(answer));
}

} // namespace morvane
