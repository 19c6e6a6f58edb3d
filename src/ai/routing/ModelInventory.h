#pragma once

#include "ai/providers/OllamaProbing.h"
#include "async/Lifeline.h"

#include <QDateTime>

#include <map>

namespace morvane {

class Clock;

// The models that servers list, each answer kept for a minute. GUI thread.
class ModelInventory {
public:
    using Models = std::vector<OllamaModel>;
    using Answer = ProbeAnswer<Models>;

    static constexpr std::chrono::seconds keptFor{60};

    // Without probes no server lists any.
    ModelInventory(OllamaProbing *probes, Clock &clock);

    // Throws CancelledError.
    [[nodiscard]] QCoro::Task<Answer> of(QString baseURL, std::stop_token stop);

    void forget() { m_known.clear(); }

private:
    struct Known {
        QDateTime at;
        Answer answer;
    };

    OllamaProbing *const m_probes; // may be null
    Clock &m_clock;
    std::map<QString, Known> m_known; // by server root
    Lifeline m_lifeline;
};

} // namespace morvane
