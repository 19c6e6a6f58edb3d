#include "CloudScenarios.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::vector<CloudScenario> CloudScenarios::all()
{
    std::vector<CloudScenario> all;
    for (const auto scenarios : {replies(), proofs()})
        all.insert(all.end(), scenarios.begin(), scenarios.end());
    return all;
}

std::optional<CloudScenario> CloudScenarios::find(const QString &model)
{
    for (const CloudScenario &scenario : all()) {
        if (scenario.model == model)
            return scenario;
    }
    return std::nullopt;
}

QString CloudScenarios::practiceText(const SealedTurn &turn)
{
    return u"The practice cloud opened what you wrote: “%1”. No model is thinking behind it."_s.arg(
        turn.lastPersonText());
}

Work CloudScenarios::refuse(Exchange &exchange, int status, QString message)
{
    const QJsonObject error{{u"message"_s, message}, {u"code"_s, status}};
    const QJsonObject body{{u"error"_s, error}};
    co_await exchange.respondJson(status, body);
}

} // namespace morvane
