#include "ai/contract/AIMessage.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonArray contentParts(const AIMessage &message)
{
    QJsonArray parts;
    if (!message.content.isEmpty())
        parts.append(QJsonObject{{u"type"_s, u"text"_s}, {u"text"_s, message.content}});
    for (const QString &url : message.imageDataURLs)
        parts.append(
            QJsonObject{{u"type"_s, u"image_url"_s}, {u"image_url"_s, QJsonObject{{u"url"_s, url}}}});
    return parts;
}

QJsonArray toolCallList(const std::vector<AIToolCall> &calls)
{
    QJsonArray list;
    for (const AIToolCall &call : calls) {
        const QJsonObject function{{u"name"_s, call.name}, {u"arguments"_s, call.argumentsJSON}};
        list.append(QJsonObject{{u"id"_s, call.id}, {u"type"_s, u"function"_s}, {u"function"_s, function}});
    }
    return list;
}

} // namespace

QString rawText(AIMessage::Role role)
{
    switch (role) {
    case AIMessage::Role::system:
        return u"system"_s;
    case AIMessage::Role::user:
        return u"user"_s;
    case AIMessage::Role::assistant:
        return u"assistant"_s;
    case AIMessage::Role::tool:
        return u"tool"_s;
    }
    return {};
}

QJsonObject AIMessage::wireForm() const
{
    QJsonObject object{{u"role"_s, rawText(role)}};
    if (imageDataURLs.isEmpty())
        object.insert(u"content"_s, content);
    else
        object.insert(u"content"_s, contentParts(*this));
    if (!toolCalls.empty())
        object.insert(u"tool_calls"_s, toolCallList(toolCalls));
    if (toolCallID)
        object.insert(u"tool_call_id"_s, *toolCallID);
    if (toolName)
        object.insert(u"name"_s, *toolName);
    return object;
}

} // namespace morvane
