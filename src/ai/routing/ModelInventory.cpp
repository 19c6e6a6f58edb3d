#include "ai/routing/ModelInventory.h"

#include "ai/routing/Freshness.h"
#include "ai/routing/OllamaDetection.h"
#include "async/Clock.h"

namespace morvane {

ModelInventory::ModelInventory(OllamaProbing *probes, Clock &clock)
    : m_clock(clock)
{
    if (probes)
        m_lookup = [probes](QString baseURL, std::stop_token stop) {
            return probes->modelList(std::move(baseURL), std::move(stop));
        };
}

QCoro::Task<std::optional<ModelInventory::Models>> ModelInventory::of(QString baseURL, std::stop_token stop)
{
    const auto root = OllamaDetection::serverRoot(baseURL);
    if (!root || !m_lookup)
        co_return std::nullopt;
    const auto known = m_lists.find(*root);
    if (known != m_lists.end() && isFresh(known->second.at, m_clock.now(), keptFor))
        co_return Models(known->second.models);
    const auto check = m_lifeline.check(stop);
    std::optional<Models> models = co_await m_lookup(baseURL, stop);
    check();
    if (models)
        m_lists.insert_or_assign(*root, List{m_clock.now(), *models});
    co_return models;
}

} // namespace morvane
