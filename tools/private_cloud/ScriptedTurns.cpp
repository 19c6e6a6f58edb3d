#include "ScriptedTurns.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A string is sealed; an object says what else to send.
Work sendPiece(SealedTurn &turn, QJsonValue piece)
{
    QJsonObject thought{{u"reasoning_content"_s, turn.seal(piece["reasoning"_L1].toString())}};
    if (piece.isString())
        co_await turn.text(piece.toString());
    else if (piece["plain"_L1].isString())
        co_await turn.content(piece["plain"_L1].toString());
    else if (piece["reasoning"_L1].isString())
        co_await turn.delta(std::move(thought));
    else if (piece["line"_L1].isString())
        co_await turn.line(piece["line"_L1].toString().toUtf8());
    else if (piece["hold"_L1].toBool())
        co_await turn.exchange().hold(turn.state().holdPoint());
}

} // namespace

Work ScriptedTurns::prove(Attestation &attestation, QJsonObject answer)
{
    if (answer["hold"_L1].toBool())
        co_await attestation.exchange.hold(attestation.state.holdPoint());
    if (answer["status"_L1].isDouble())
        co_await attestation.exchange.respondJson(answer["status"_L1].toInt(), answer["json"_L1].toObject());
    else
        co_await attestation.prove();
}

Work ScriptedTurns::reply(SealedTurn &turn, QJsonObject answer)
{
    if (answer["status"_L1].isDouble()) {
        co_await turn.exchange().respondJson(answer["status"_L1].toInt(), answer["json"_L1].toObject());
        co_return;
    }
    co_await turn.begin();
    for (const QJsonValue piece : answer["pieces"_L1].toArray())
        co_await sendPiece(turn, piece);
    co_await turn.end(answer["finishReason"_L1].toString(u"stop"_s));
}

} // namespace morvane
