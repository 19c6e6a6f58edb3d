#pragma once

#include "loopback/Exchange.h"

#include <QJsonArray>
#include <QStringList>

#include <chrono>

namespace morvane {

// A well-formed reply, played as a stream or as one JSON body, as the request asks, in the request's
// interface.
struct Reply {
    QStringList thoughts; // before the text; Ollama sends them when asked to think
    QStringList pieces;
    QJsonArray toolCalls; // as ChatCompletion::toolCall() makes them
    QString finishReason = QStringLiteral("stop");
    std::chrono::milliseconds pause{0}; // before each piece
    std::chrono::milliseconds firstPause{0};
};

Work play(Exchange &exchange, Reply reply);

// The head of a streamed reply.
Work beginReply(Exchange &exchange);

// An error in the request's interface.
Work refuse(Exchange &exchange, int status, QString message);

// The text cut behind each blank, so that joining the pieces gives it back.
[[nodiscard]] QStringList wordPieces(const QString &text);

} // namespace morvane
