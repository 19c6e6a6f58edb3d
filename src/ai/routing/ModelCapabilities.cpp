#include "ai/routing/ModelCapabilities.h"

#include "ai/routing/ModelName.h"
#include "async/Clock.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QLatin1StringView nameOf(ModelCapabilities::Ability ability)
{
    switch (ability) {
    case ModelCapabilities::Ability::vision:
        return "vision"_L1;
    case ModelCapabilities::Ability::tools:
        return "tools"_L1;
    }
    return {};
}

// The models of a server that may stand in, best first: so the first that is able is the answer.
QStringList candidates(ModelCapabilities::Ability ability, const ModelInventory::Models &models)
{
    QStringList names;
    for (const OllamaModel &model : models) {
        if (!model.runsElsewhere && !ModelName::isOllamaCloud(model.name))
            names.append(model.name);
    }
    if (ability == ModelCapabilities::Ability::tools)
        std::stable_sort(names.begin(), names.end(), [](const QString &left, const QString &right) {
            return ModelName::parameterCount(left) > ModelName::parameterCount(right);
        });
    return names;
}

} // namespace

ModelCapabilities::ModelCapabilities(OllamaProbing *probes, OllamaDetection &detection,
                                     ModelInventory &inventory, Clock &clock)
    : m_probes(probes)
    , m_detection(detection)
    , m_inventory(inventory)
    , m_clock(clock)
{}

QCoro::Task<std::optional<bool>> ModelCapabilities::has(Ability ability, QString baseURL, QString model,
                                                        std::stop_token stop)
{
    const ProbeAnswer<bool> answer = co_await ask(ability, baseURL, model, stop);
    co_return std::optional<bool>(answer.told);
}

QCoro::Task<ProbeAnswer<bool>> ModelCapabilities::ask(Ability ability, QString baseURL, QString model,
                                                      std::stop_token stop)
{
    using Answer = ProbeAnswer<bool>;
    const auto check = m_lifeline.check(stop);
    if (model.isEmpty())
        co_return Answer();
    const QString key = baseURL + u'|' + model;
    if (!m_abilities.contains(key)) {
        const OllamaDetection::Answer isOllama = co_await m_detection.isOllama(baseURL, stop);
        check();
        if (isOllama != OllamaDetection::Answer::yes)
            co_return Answer{std::nullopt, isOllama != OllamaDetection::Answer::nobodyAnswered};
        const ProbeAnswer<QStringList> abilities = co_await m_probes->capabilities(baseURL, model, stop);
        check();
        if (!abilities.told)
            co_return Answer{std::nullopt, abilities.wasHeard};
        m_abilities.insert_or_assign(key, *abilities.told);
    }
    co_return Answer{m_abilities.at(key).contains(nameOf(ability))};
}

QCoro::Task<std::optional<QString>> ModelCapabilities::standIn(Ability ability, QString baseURL,
                                                               std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const auto root = OllamaDetection::serverRoot(baseURL);
    if (!root)
        co_return std::nullopt;
    const std::pair key{ability, *root};
    if (const auto known = m_standIns.find(key); known != m_standIns.end())
        co_return std::optional<QString>(known->second);

    const ModelInventory::Answer list = co_await m_inventory.of(baseURL, stop);
    check();
    if (!list.told)
        co_return std::nullopt;
    const auto deadline = m_clock.elapsed() + searchLimit;
    std::optional<QString> found;
    bool wereAllHeard = true;
    const QStringList names = candidates(ability, *list.told);
    for (const QString &model : names) {
        if (m_clock.elapsed() >= deadline) // not all were asked, so nothing is learnt
            co_return std::nullopt;
        const ProbeAnswer<bool> isAble = co_await ask(ability, baseURL, model, stop);
        check();
        wereAllHeard = wereAllHeard && isAble.wasHeard;
        if (isAble.told.value_or(false)) {
            found = model;
            break;
        }
    }
    if (found || wereAllHeard)
        m_standIns.insert_or_assign(key, found);
    co_return found;
}

void ModelCapabilities::forget()
{
    m_inventory.forget();
    m_abilities.clear();
    m_standIns.clear();
}

} // namespace morvane
