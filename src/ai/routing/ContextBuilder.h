#pragma once

#include "ai/contract/AIMessage.h"
#include "models/MessageRole.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morvane {

// Turns a chat's history into the messages of a request: the most recent ones, with a short note by rule in
// place of what was cut. No model is asked.
namespace ContextBuilder {

struct HistoryItem {
    MessageRole role = MessageRole::user;
    QString content;
    QStringList images; // data URLs

    bool operator==(const HistoryItem &) const = default;
};

// The system prompt, a note about dropped items if there are any, and the last max(`maxMessages`, 4) items.
[[nodiscard]] std::vector<AIMessage> build(const std::vector<HistoryItem> &items, std::int64_t maxMessages,
                                           const QString &systemPrompt,
                                           const std::optional<QString> &rollingSummary);

// The note about dropped items, given in order.
[[nodiscard]] QString digest(const std::vector<HistoryItem> &dropped);

} // namespace ContextBuilder

} // namespace morvane
