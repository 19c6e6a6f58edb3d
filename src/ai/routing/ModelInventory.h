#pragma once

#include "ai/providers/OllamaProbing.h"
#include "async/Lifeline.h"

#include <QDateTime>

#include <functional>
#include <map>

namespace morvane {

class Clock;

// The models that servers list, each list kept for a minute. GUI thread.
class ModelInventory {
public:
    using Models = std::vector<OllamaModel>;
    using Lookup = std::function<QCoro::Task<std::optional<Models>>(QString baseURL, std::stop_token stop)>;

    static constexpr std::chrono::seconds keptFor{60};

    // Without probes no server lists any.
    ModelInventory(OllamaProbing *probes, Clock &clock);

    // Takes the place of asking the server.
    void setLookup(Lookup lookup) { m_lookup = std::move(lookup); }

    // Nothing when the server gives no list. Throws CancelledError.
    [[nodiscard]] QCoro::Task<std::optional<Models>> of(QString baseURL, std::stop_token stop);

    void forget() { m_lists.clear(); }

private:
    struct List {
        QDateTime at;
        Models models;
    };

    Clock &m_clock;
    Lookup m_lookup;                 // may be empty
    std::map<QString, List> m_lists; // by server root
    Lifeline m_lifeline;
};

} // namespace morvane
