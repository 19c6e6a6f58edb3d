#include "ScriptedReplies.h"

#include "ChatCompletion.h"
#include "Reply.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

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

bool ScriptedReplies::load(const QString &path, QString &problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = u"Cannot read %1."_s.arg(path);
        return false;
    }
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    const QJsonValue answers = document.object().value("responses"_L1);
    if (error.error != QJsonParseError::NoError || !answers.isArray()) {
        problem = u"%1 is not a scenario file: it needs an object with a list \"responses\"."_s.arg(path);
        return false;
    }
    for (const QJsonValue answer : answers.toArray())
        m_entries.push_back({answer.toObject(), answer["times"_L1].toInt(-1)});
    return true;
}

std::optional<QJsonObject> ScriptedReplies::take(const QString &model)
{
    for (Entry &entry : m_entries) {
        const QJsonValue wanted = entry.answer["model"_L1];
        if (entry.timesLeft == 0 || (wanted.isString() && wanted.toString() != model))
            continue;
        if (entry.timesLeft > 0)
            --entry.timesLeft;
        return entry.answer;
    }
    return std::nullopt;
}

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
