#include "ai/providers/ChatSpelling.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;
using Role = AIMessage::Role;

namespace {

// Also 500: some servers render a chat by a template that throws.
bool isAboutTheRequest(const ProviderError &refusal)
{
    const auto *server = std::get_if<ProviderError::ServerError>(&refusal.reason());
    return server && (server->statusCode == 400 || server->statusCode == 422 || server->statusCode == 500);
}

bool isSystem(const AIMessage &message)
{
    return message.role == Role::system;
}

bool hasLaterSystem(const std::vector<AIMessage> &messages)
{
    return !messages.empty() && std::any_of(messages.begin() + 1, messages.end(), isSystem);
}

std::vector<AIMessage>::iterator firstSaid(std::vector<AIMessage> &messages)
{
    return std::find_if_not(messages.begin(), messages.end(), isSystem);
}

bool beginsOtherwise(std::vector<AIMessage> messages)
{
    const auto first = firstSaid(messages);
    return first != messages.end() && first->role != Role::user;
}

bool callsWordlessly(const std::vector<AIMessage> &messages)
{
    return std::any_of(messages.begin(), messages.end(), [](const AIMessage &message) {
        return !message.toolCalls.empty() && message.content.isEmpty();
    });
}

void mergeSystem(std::vector<AIMessage> &messages)
{
    QStringList texts;
    for (const AIMessage &message : messages) {
        if (isSystem(message))
            texts.append(message.content);
    }
    std::erase_if(messages, isSystem);
    if (!texts.isEmpty())
        messages.insert(messages.begin(), AIMessage{Role::system, texts.join("\n\n"_L1), {}, {}, {}, {}});
}

} // namespace

std::optional<ChatSpelling> ChatSpelling::after(const ProviderError &refusal,
                                                const std::vector<AIMessage> &messages) const
{
    if (!isAboutTheRequest(refusal))
        return std::nullopt;
    const QString words = refusal.quotedWords();
    const auto name = [&words](QLatin1StringView word) { return words.contains(word, Qt::CaseInsensitive); };
    const bool isAboutTurns = name("alternate"_L1) || name("first message"_L1);
    const bool isAboutSystem = name("system message"_L1) || name("system role"_L1);
    ChatSpelling next = *this;
    if (name("purpose"_L1))
        next.omitsPurpose = true;
    else if (name("max_completion_tokens"_L1))
        next.namesCompletionTokens = true;
    else if (name("temperature"_L1))
        next.omitsTemperature = true;
    else if (isAboutTurns && beginsOtherwise(messages) && !beginsWithUser)
        next.beginsWithUser = true;
    else if ((isAboutTurns || isAboutSystem) && hasLaterSystem(messages))
        next.mergesSystem = true;
    else if (name("content"_L1) && name("empty"_L1) && callsWordlessly(messages))
        next.nullBesideCalls = true;
    return next == *this ? std::nullopt : std::optional(next);
}

std::vector<AIMessage> ChatSpelling::applied(std::vector<AIMessage> messages) const
{
    if (mergesSystem)
        mergeSystem(messages);
    if (beginsWithUser) {
        const auto isUsers = [](const AIMessage &message) { return message.role == Role::user; };
        const auto first = firstSaid(messages);
        messages.erase(first, std::find_if(first, messages.end(), isUsers));
    }
    return messages;
}

void ChatSpelling::apply(QJsonObject &body) const
{
    if (omitsPurpose)
        body.remove("purpose"_L1);
    if (omitsTemperature)
        body.remove("temperature"_L1);
    if (namesCompletionTokens)
        body.insert(u"max_completion_tokens"_s, body.take("max_tokens"_L1));
    if (!nullBesideCalls)
        return;
    QJsonArray messages = body["messages"_L1].toArray();
    for (QJsonValueRef each : messages) {
        QJsonObject message = each.toObject();
        if (message.contains("tool_calls"_L1) && message["content"_L1].toString().isEmpty())
            message.insert(u"content"_s, QJsonValue::Null);
        each = message;
    }
    body.insert(u"messages"_s, messages);
}

} // namespace morvane
