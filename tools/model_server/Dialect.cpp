#include "Dialect.h"

#include "ChatCompletion.h"
#include "OllamaObjects.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr const char *sentinel = "data: [DONE]\n\n";

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Its only reasons are these two; calls are told by their presence.
QString doneReason(const QString &finishReason)
{
    return finishReason == "length"_L1 ? finishReason : u"stop"_s;
}

} // namespace

QByteArray Dialect::streamType(const Request &request)
{
    return request.isOllama() ? "application/x-ndjson" : "text/event-stream";
}

QByteArray Dialect::line(const Request &request, const QJsonObject &object)
{
    return request.isOllama() ? compact(object) + '\n' : "data: " + compact(object) + "\n\n";
}

QByteArray Dialect::opening(const Request &request)
{
    if (request.isOllama())
        return {};
    const QJsonObject delta{{u"role"_s, u"assistant"_s}, {u"content"_s, QString()}};
    return line(request, ChatCompletion::chunk(request.model(), delta));
}

QByteArray Dialect::textLine(const Request &request, const QString &text)
{
    return line(request, request.isOllama()
                             ? OllamaObjects::chunk(request.model(), OllamaObjects::message(text))
                             : ChatCompletion::textChunk(request.model(), text));
}

QByteArray Dialect::thoughtLine(const Request &request, const QString &thought)
{
    if (request.isOllama()) {
        QJsonObject message = OllamaObjects::message({});
        message.insert(u"thinking"_s, thought);
        return line(request, OllamaObjects::chunk(request.model(), message));
    }
    // Two names are in use for the same field.
    return line(request, ChatCompletion::chunk(request.model(), {{u"reasoning_content"_s, thought}})) +
           line(request, ChatCompletion::chunk(request.model(), {{u"reasoning"_s, thought}}));
}

QByteArray Dialect::toolCallLines(const Request &request, const QJsonArray &calls)
{
    if (calls.isEmpty())
        return {};
    if (!request.isOllama())
        return line(request, ChatCompletion::chunk(request.model(), {{u"tool_calls"_s, calls}}));
    QByteArray lines;
    for (const QJsonValue call : OllamaObjects::toolCalls(calls)) {
        QJsonObject message = OllamaObjects::message({});
        message.insert(u"tool_calls"_s, QJsonArray{call});
        lines += line(request, OllamaObjects::chunk(request.model(), message));
    }
    return lines;
}

QByteArray Dialect::ending(const Request &request, const QString &finishReason)
{
    if (request.isOllama())
        return line(request, OllamaObjects::closing(request.model(), doneReason(finishReason)));
    return line(request, ChatCompletion::chunk(request.model(), {}, finishReason)) + sentinel;
}

QByteArray Dialect::textStart(const Request &request)
{
    return request.isOllama() ? R"({"model":"practice","message":{"role":"assistant","content":")"
                              : R"(data: {"choices":[{"delta":{"content":")";
}

QByteArray Dialect::textRest(const Request &request)
{
    return request.isOllama() ? "\"},\"done\":true}\n" : QByteArray("\"}}]}\n\n") + sentinel;
}

QJsonObject Dialect::whole(const Request &request, const QString &text, const QJsonArray &calls,
                           const QString &finishReason)
{
    QJsonObject message = OllamaObjects::message(text);
    if (!calls.isEmpty())
        message.insert(u"tool_calls"_s, request.isOllama() ? OllamaObjects::toolCalls(calls) : calls);
    return request.isOllama() ? OllamaObjects::closing(request.model(), doneReason(finishReason), message)
                              : ChatCompletion::completion(request.model(), message, finishReason);
}

QJsonObject Dialect::error(const Request &request, const QString &message, int status)
{
    return request.isOllama() ? OllamaObjects::error(message) : ChatCompletion::error(message, status);
}

QByteArray Dialect::errorStart(const Request &request)
{
    return request.isOllama() ? R"({"error":")" : R"({"error":{"message":")";
}

} // namespace morvane
