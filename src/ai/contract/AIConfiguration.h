#pragma once

#include "network/EgressTypes.h"

#include <QString>
#include <QUuid>

#include <cstdint>
#include <optional>

namespace morvane {

// All that a request to a model needs besides its messages.
struct AIConfiguration {
    QString baseURLString;
    std::optional<QString> apiKey;
    QString model;
    double temperature = 0;
    std::int64_t maxOutputTokens = 0;
    QString systemPrompt;          // already the first message of the list; kept for reference
    double requestTimeout = 120.0; // seconds
    bool preferStreaming = true;
    std::optional<QString> purpose; // short tag for the server and the ledger
    SensitiveDataSet carrying;      // decides where the request may go
    bool thinksLonger = false;      // a long silence is no stall
    bool mayRespell = true;         // a refused request may go once more in another spelling
    QUuid proofRow; // whoever records where the answer runs gives the first row of a turn this id

    bool operator==(const AIConfiguration &) const = default;
};

} // namespace morvane
