#include "ModelService.h"

#include "OllamaInterface.h"
#include "Reply.h"
#include "Scenarios.h"
#include "ScriptedReplies.h"
#include "SearchAnswers.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

ModelService::ModelService(Settings settings, AnswerScript &script)
    : m_settings(std::move(settings))
    , m_script(script)
{}

bool ModelService::isAllowed(const Request &request) const
{
    return m_settings.requiredKey.isEmpty() ||
           request.header("Authorization") == "Bearer " + m_settings.requiredKey;
}

Work ModelService::answer(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray path = request.path();
    const bool isKnown = !request.isOllama() || m_settings.speaksOllama;
    if (!isAllowed(request))
        co_await refuse(exchange, 401, u"Incorrect API key provided."_s);
    else if (request.method == "GET" && path == "/v1/models")
        co_await exchange.respondJson(200, modelList());
    else if (SearchAnswers::answers(request))
        co_await exchange.respondJson(200, SearchAnswers::answer(request));
    else if (request.method == "POST" && (path == "/v1/chat/completions" || (isKnown && path == "/api/chat")))
        co_await chat(exchange);
    else if (isKnown && OllamaInterface::answers(request))
        co_await OllamaInterface::answer(exchange, m_settings.models);
    else if (request.method == "POST" && path.startsWith("/elsewhere/"))
        co_await Scenarios::find(u"practice-fast"_s)->play(exchange);
    else
        co_await refuse(exchange, 404, u"There is nothing at this address."_s);
}

Work ModelService::chat(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QString name = request.model();
    const auto objection = request.isOllama() ? OllamaInterface::objection(request, m_settings.models)
                                              : std::optional<QString>();
    const auto refusal = Scenarios::refusal(m_settings.manner, request);
    if (const auto answer = m_script.take({{u"model"_s, name}}))
        co_await ScriptedReplies::play(exchange, *answer);
    else if (refusal)
        co_await exchange.respondJson(refusal->status, refusal->body);
    else if (objection)
        co_await refuse(exchange, 400, *objection);
    else if (const Scenario *scenario = Scenarios::find(m_settings.models.scenarioFor(name)))
        co_await scenario->play(exchange);
    else
        co_await refuse(exchange, 404, u"model '%1' not found"_s.arg(name));
}

QJsonObject ModelService::modelList() const
{
    QJsonArray models;
    for (const ListedModel &model : m_settings.models.models()) {
        models.append(QJsonObject{{u"id"_s, model.name},
                                  {u"object"_s, u"model"_s},
                                  {u"created"_s, 0},
                                  {u"owned_by"_s, u"practice"_s}});
    }
    return {{u"object"_s, u"list"_s}, {u"data"_s, models}};
}

} // namespace morvane
