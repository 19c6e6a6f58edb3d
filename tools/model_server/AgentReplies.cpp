#include "AgentReplies.h"

#include "ChatCompletion.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

QStringList AgentReplies::toolResults(const Request &request)
{
    QStringList results;
    for (const QJsonValue message : request.json["messages"_L1].toArray()) {
        const QString role = message["role"_L1].toString();
        if (role == "user"_L1)
            results.clear();
        else if (role == "tool"_L1)
            results.append(message["content"_L1].toString());
    }
    return results;
}

Reply AgentReplies::saying(const QString &text)
{
    Reply reply;
    reply.pieces = wordPieces(text);
    return reply;
}

Reply AgentReplies::calling(const Request &request, const QString &tool, const QJsonObject &arguments)
{
    Reply reply = saying(u"One moment. "_s);
    const QString json = QString::fromUtf8(QJsonDocument(arguments).toJson(QJsonDocument::Compact));
    const QString id = u"call_%1"_s.arg(toolResults(request).size() + 1);
    reply.toolCalls.append(ChatCompletion::toolCall(id, tool, json));
    reply.finishReason = u"tool_calls"_s;
    return reply;
}

} // namespace morvane
