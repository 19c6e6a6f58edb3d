#pragma once

#include "ai/routing/HostPrivacy.h"
#include "ai/routing/ModelInventory.h"
#include "ai/routing/OllamaDetection.h"
#include "ai/routing/PrivacyClass.h"

namespace morvane {

// Finds out where the words of a turn would end up. GUI thread.
class PrivacyJudge {
public:
    // All outlive this object.
    PrivacyJudge(HostPrivacy &hosts, ModelInventory &inventory, OllamaDetection &detection)
        : m_hosts(hosts)
        , m_inventory(inventory)
        , m_detection(detection)
    {}

    // May ask the resolver and, on the local network, the server. Throws CancelledError.
    [[nodiscard]] QCoro::Task<PrivacyClass> judge(QString baseURL, QString model, std::stop_token stop);

private:
    HostPrivacy &m_hosts;
    ModelInventory &m_inventory;
    OllamaDetection &m_detection;
    Lifeline m_lifeline;
};

} // namespace morvane
