#include "ai/routing/ModelInventory.h"

#include "ai/routing/Freshness.h"
#include "ai/routing/OllamaDetection.h"
#include "async/Clock.h"

namespace morvane {

ModelInventory::ModelInventory(OllamaProbing *probes, Clock &clock)
    : m_probes(probes)
    , m_clock(clock)
{}

QCoro::Task<ModelInventory::Answer> ModelInventory::of(QString baseURL, std::stop_token stop)
{
    const auto root = OllamaDetection::serverRoot(baseURL);
    if (!root || !m_probes)
        co_return Answer();
    const auto known = m_known.find(*root);
    if (known != m_known.end() && isFresh(known->second.at, m_clock.now(), keptFor))
        co_return Answer(known->second.answer);
    const auto check = m_lifeline.check(stop);
    const Answer answer = co_await m_probes->modelList(baseURL, stop);
    check();
    if (answer.wasHeard)
        m_known.insert_or_assign(*root, Known{m_clock.now(), answer});
    co_return Answer(answer);
}

} // namespace morvane
