#pragma once

#include "ai/routing/HostPrivacy.h"
#include "ai/routing/ModelInventory.h"
#include "ai/routing/OllamaDetection.h"
#include "ai/routing/PrivacyClass.h"

#include <map>
#include <optional>
#include <utility>

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

    // The last judgement that rests on an answer, without asking anybody; nothing when there was none.
    [[nodiscard]] std::optional<PrivacyClass> known(const QString &baseURL, const QString &model) const;

private:
    // Nothing when nobody answered.
    [[nodiscard]] QCoro::Task<std::optional<PrivacyClass>> ask(QString baseURL, QString model,
                                                               std::stop_token stop);
    [[nodiscard]] PrivacyClass unanswered(const QString &baseURL, const QString &model) const;

    HostPrivacy &m_hosts;
    ModelInventory &m_inventory;
    OllamaDetection &m_detection;
    std::map<std::pair<QString, QString>, PrivacyClass> m_judged; // by address and model
    Lifeline m_lifeline;
};

} // namespace morvane
