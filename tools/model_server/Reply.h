#pragma once

#include "Exchange.h"

#include <QJsonArray>
#include <QStringList>

#include <chrono>

// A well-formed reply, played as an event stream or as one JSON body, as the request asks.
struct Reply {
    QStringList pieces;
    QJsonArray toolCalls; // as ChatCompletion::toolCall() makes them
    QString finishReason = QStringLiteral("stop");
    std::chrono::milliseconds pause{0}; // before each piece
    std::chrono::milliseconds firstPause{0};
};

Work play(Exchange &exchange, Reply reply);

// The text cut behind each blank, so that joining the pieces gives it back.
[[nodiscard]] QStringList wordPieces(const QString &text);
