#include "PrivateCloudService.h"

#include "DevelopmentAuthority.h"
#include "ScriptedTurns.h"

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

PrivateCloudService::PrivateCloudService(Settings settings, AnswerScript &script)
    : m_lists(settings.list)
    , m_builtIn(settings.builtIn)
    , m_requiredKey(std::move(settings.requiredKey))
    , m_script(script)
{
    if (!m_builtIn.isEmpty() && !CloudScenarios::find(m_builtIn))
        throw std::runtime_error("there is no scenario \"" + m_builtIn.toStdString() + '"');
}

std::optional<CloudScenario> PrivateCloudService::scenarioOf(const QString &model) const
{
    const bool isOther = model == DevelopmentAuthority::builtInModel && !m_builtIn.isEmpty();
    return CloudScenarios::find(isOther ? m_builtIn : model);
}

Work PrivateCloudService::answer(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray road = request.method + ' ' + request.path();
    const bool isAllowed =
        m_requiredKey.isEmpty() || request.header("Authorization") == "Bearer " + m_requiredKey;
    if (road == "GET /v1/attestation")
        co_await attest(exchange);
    else if (road == "POST /v1/chat/completions" && !isAllowed)
        co_await CloudScenarios::refuse(exchange, 401, u"Incorrect API key provided."_s);
    else if (road == "POST /v1/chat/completions")
        co_await chat(exchange);
    else if (road == "GET /v1/measurements")
        co_await m_lists.sendList(exchange);
    else if (road == "GET /v1/measurements.sig")
        co_await m_lists.sendSignature(exchange);
    else if (road == "POST /go-on")
        co_await goOn(exchange);
    else
        co_await CloudScenarios::refuse(exchange, 404, u"There is nothing at this address."_s);
}

Work PrivateCloudService::attest(Exchange &exchange)
{
    const Request &request = exchange.request();
    const auto objection = Attestation::objection(request);
    if (objection) {
        co_await CloudScenarios::refuse(exchange, 400, *objection);
        co_return;
    }
    const QString model = request.query(u"model"_s);
    const QByteArray nonce = QByteArray::fromHex(request.query(u"nonce"_s).toLatin1());
    Attestation attestation{exchange, m_state, model, nonce};
    const auto scenario = scenarioOf(model);
    const auto scripted = m_script.take({{u"model"_s, model}, {u"to"_s, u"attestation"_s}});
    if (scripted)
        co_await ScriptedTurns::prove(attestation, *scripted);
    else if (!scenario)
        co_await CloudScenarios::refuse(exchange, 404, u"There is no such model."_s);
    else if (scenario->prove)
        co_await scenario->prove(attestation);
    else
        co_await attestation.prove();
}

Work PrivateCloudService::chat(Exchange &exchange)
{
    const QString model = exchange.request().model();
    const auto scenario = scenarioOf(model);
    std::optional<SealedTurn> turn;
    QString refusal;
    try {
        turn.emplace(exchange, m_state);
    } catch (const SealedTurn::Refused &refused) {
        refusal = QString::fromUtf8(refused.what());
    }
    if (!turn) {
        co_await CloudScenarios::refuse(exchange, 400, refusal);
        co_return;
    }
    const auto scripted = m_script.take({{u"model"_s, model}, {u"to"_s, u"chat"_s}});
    if (scripted)
        co_await ScriptedTurns::reply(*turn, *scripted);
    else if (!scenario)
        co_await CloudScenarios::refuse(exchange, 404, u"There is no such model."_s);
    else if (scenario->reply)
        co_await scenario->reply(*turn);
    else
        co_await CloudScenarios::find(u"e2ee-practice"_s)->reply(*turn);
}

Work PrivateCloudService::goOn(Exchange &exchange)
{
    m_state.holdPoint().goOn();
    co_await exchange.respond(204, "text/plain", QByteArray());
}

} // namespace morvane
