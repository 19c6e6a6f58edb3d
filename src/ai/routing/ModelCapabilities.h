#pragma once

#include "ai/routing/ModelInventory.h"
#include "ai/routing/OllamaDetection.h"

namespace morvane {

// What the models of Ollama servers can do, and which of them stands in for one that can't. GUI thread.
//
// Only a model that runs on the server itself stands in: nothing is passed on to a service because of an
// ability. All members throw CancelledError.
class ModelCapabilities {
public:
    enum class Ability { vision, tools };

    // A search for a stand-in ends when this has passed, however many models are left to ask about.
    static constexpr std::chrono::seconds searchLimit{5};

    // The others outlive this object.
    ModelCapabilities(OllamaProbing *probes, OllamaDetection &detection, ModelInventory &inventory,
                      Clock &clock);

    // Nothing when the server doesn't tell.
    [[nodiscard]] QCoro::Task<std::optional<bool>> has(Ability ability, QString baseURL, QString model,
                                                       std::stop_token stop);

    // Vision: the first model that the server lists. Tools: the one with the most parameters.
    [[nodiscard]] QCoro::Task<std::optional<QString>> standIn(Ability ability, QString baseURL,
                                                              std::stop_token stop);

    // Other models may be there now.
    void forget();

private:
    [[nodiscard]] QCoro::Task<ProbeAnswer<bool>> ask(Ability ability, QString baseURL, QString model,
                                                     std::stop_token stop);

    OllamaProbing *m_probes;
    OllamaDetection &m_detection;
    ModelInventory &m_inventory;
    Clock &m_clock;
    std::map<QString, QStringList> m_abilities;                               // by "address|model"
    std::map<std::pair<Ability, QString>, std::optional<QString>> m_standIns; // by ability and server root
    Lifeline m_lifeline;
};

} // namespace morvane
