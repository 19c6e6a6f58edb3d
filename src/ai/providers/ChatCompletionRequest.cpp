#include "ai/providers/ChatCompletionRequest.h"

#include "ai/contract/BaseURL.h"
#include "ai/providers/ModelRequest.h"

#include <QJsonDocument>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonObject parametersOf(const AITool &tool)
{
    QJsonObject properties;
    QJsonArray required;
    for (const AITool::Parameter &parameter : tool.parameters) {
        QJsonObject property{{u"type"_s, schemaName(parameter.kind)},
                             {u"description"_s, parameter.description}};
        if (!parameter.allowedValues.isEmpty())
            property.insert(u"enum"_s, QJsonArray::fromStringList(parameter.allowedValues));
        properties.insert(parameter.name, property);
        if (parameter.required)
            required.append(parameter.name);
    }
    return {{u"type"_s, u"object"_s}, {u"properties"_s, properties}, {u"required"_s, required}};
}

QByteArray body(const std::vector<AIMessage> &messages, const AIConfiguration &configuration,
                const std::vector<AITool> &tools, ChatCompletionRequest::Form form,
                const ChatSpelling &spelling)
{
    QJsonArray list;
    for (const AIMessage &message : spelling.applied(messages))
        list.append(message.wireForm());
    QJsonObject object{{u"model"_s, configuration.model},
                       {u"messages"_s, list},
                       {u"temperature"_s, configuration.temperature},
                       {u"max_tokens"_s, static_cast<qint64>(configuration.maxOutputTokens)}};
    if (!tools.empty()) {
        object.insert(u"tools"_s, ChatCompletionRequest::toolObjects(tools));
        object.insert(u"tool_choice"_s, u"auto"_s);
    }
    if (form == ChatCompletionRequest::Form::streamed)
        object.insert(u"stream"_s, true);
    if (configuration.purpose && !configuration.purpose->isEmpty())
        object.insert(u"purpose"_s, *configuration.purpose);
    spelling.apply(object);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

HttpRequest ChatCompletionRequest::make(const std::vector<AIMessage> &messages,
                                        const AIConfiguration &configuration,
                                        const std::vector<AITool> &tools, Form form,
                                        const ChatSpelling &spelling)
{
    HttpRequest request =
        ModelRequest::to(BaseURL::chatCompletions(configuration.baseURLString), configuration.apiKey);
    request.method = "POST";
    request.timeout = std::chrono::milliseconds(qRound64(configuration.requestTimeout * 1000));
    request.headers.push_back({"Content-Type", "application/json"});
    request.body = body(messages, configuration, tools, form, spelling);
    return request;
}

QJsonArray ChatCompletionRequest::toolObjects(const std::vector<AITool> &tools)
{
    QJsonArray list;
    for (const AITool &tool : tools) {
        const QJsonObject function{{u"name"_s, tool.name},
                                   {u"description"_s, tool.description},
                                   {u"parameters"_s, parametersOf(tool)}};
        list.append(QJsonObject{{u"type"_s, u"function"_s}, {u"function"_s, function}});
    }
    return list;
}

} // namespace morvane
