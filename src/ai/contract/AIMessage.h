#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morvane {

// One call that the model asked for.
struct AIToolCall {
    QString id;
    QString name;
    QString argumentsJSON; // one JSON text, not yet parsed

    bool operator==(const AIToolCall &) const = default;
};

// What a tool gave back to the model.
struct AIToolResult {
    QString callID;
    QString name;
    QString content;
    bool isError = false;
    bool isDeclined = false; // an error because the call asked for a yes and got none

    bool operator==(const AIToolResult &) const = default;
};

// One message of a request. A plain value, never stored.
struct AIMessage {
    enum class Role { system, user, assistant, tool };

    Role role = Role::user;
    QString content;
    std::vector<AIToolCall> toolCalls; // that an assistant message made
    std::optional<QString> toolCallID; // on a tool message, the call that it answers
    std::optional<QString> toolName;   // on a tool message
    QStringList imageDataURLs;

    bool operator==(const AIMessage &) const = default;

    // The message object of a chat-completions request body.
    [[nodiscard]] QJsonObject wireForm() const;
};

[[nodiscard]] QString rawText(AIMessage::Role role);

} // namespace morvane
