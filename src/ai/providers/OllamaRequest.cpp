#include "ai/providers/OllamaRequest.h"

#include "ai/contract/BaseURL.h"
#include "ai/providers/ChatCompletionRequest.h"
#include "ai/providers/ModelRequest.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

HttpRequest get(const OllamaServer &server, QLatin1StringView path, std::chrono::milliseconds timeout)
{
    HttpRequest request = ModelRequest::to(BaseURL::withPath(server.baseURL, path), server.apiKey);
    request.timeout = timeout;
    return request;
}

// Its answer is complete within its time, or nobody waits for it any longer.
HttpRequest limited(HttpRequest request)
{
    request.limit = request.timeout;
    return request;
}

HttpRequest post(const OllamaServer &server, QLatin1StringView path, std::chrono::milliseconds timeout,
                 const QJsonObject &body)
{
    HttpRequest request = get(server, path, timeout);
    request.method = "POST";
    request.headers.push_back({"Content-Type", "application/json"});
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return request;
}

// Bare base64, without what a data URL puts before it.
QJsonArray imagesOf(const AIMessage &message)
{
    QJsonArray images;
    for (const QString &url : message.imageDataURLs) {
        const qsizetype comma = url.startsWith("data:"_L1) ? url.indexOf(u',') : -1;
        images.append(url.sliced(comma + 1));
    }
    return images;
}

QJsonArray toolCallsOf(const AIMessage &message)
{
    QJsonArray calls;
    for (const AIToolCall &call : message.toolCalls) {
        const auto arguments = Json::parseObject(call.argumentsJSON.toUtf8());
        calls.append(
            QJsonObject{{u"function"_s, QJsonObject{{u"name"_s, call.name},
                                                    {u"arguments"_s, arguments.value_or(QJsonObject())}}}});
    }
    return calls;
}

QJsonObject wireForm(const AIMessage &message)
{
    QJsonObject object{{u"role"_s, rawText(message.role)}, {u"content"_s, message.content}};
    if (!message.imageDataURLs.isEmpty())
        object.insert(u"images"_s, imagesOf(message));
    if (!message.toolCalls.empty())
        object.insert(u"tool_calls"_s, toolCallsOf(message));
    if (message.toolName)
        object.insert(u"tool_name"_s, *message.toolName);
    return object;
}

// One family of models knows levels of thinking only.
QJsonValue thinkValue(const QString &model)
{
    return model.toLower().startsWith("gpt-oss"_L1) ? QJsonValue(u"low"_s) : QJsonValue(true);
}

} // namespace

HttpRequest OllamaRequest::chat(const std::vector<AIMessage> &messages, const AIConfiguration &configuration,
                                const QString &model, const std::vector<AITool> &tools, Thinking thinking)
{
    QJsonArray list;
    for (const AIMessage &message : messages)
        list.append(wireForm(message));
    QJsonObject body{
        {u"model"_s, model},
        {u"messages"_s, list},
        {u"stream"_s, true},
        {u"options"_s, QJsonObject{{u"num_ctx"_s, contextTokens},
                                   {u"temperature"_s, configuration.temperature},
                                   {u"num_predict"_s, static_cast<qint64>(configuration.maxOutputTokens)}}}};
    if (!tools.empty())
        body.insert(u"tools"_s, ChatCompletionRequest::toolObjects(tools));
    if (thinking == Thinking::on)
        body.insert(u"think"_s, thinkValue(model));
    const std::chrono::milliseconds timeout(qRound64(configuration.requestTimeout * 1000));
    return post({configuration.baseURLString, configuration.apiKey}, "api/chat"_L1, timeout, body);
}

HttpRequest OllamaRequest::version(const OllamaServer &server)
{
    return limited(get(server, "api/version"_L1, 3s));
}

HttpRequest OllamaRequest::capabilities(const OllamaServer &server, const QString &model)
{
    return limited(post(server, "api/show"_L1, 5s, {{u"model"_s, model}}));
}

HttpRequest OllamaRequest::modelList(const OllamaServer &server)
{
    return limited(get(server, "api/tags"_L1, 5s));
}

HttpRequest OllamaRequest::connectionTest(const OllamaServer &server)
{
    return limited(get(server, "api/tags"_L1, 20s));
}

} // namespace morvane
