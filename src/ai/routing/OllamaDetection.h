#pragma once

#include "ai/routing/ModelInventory.h"
#include "async/Lifeline.h"

#include <map>

namespace morvane {

// Which servers speak Ollama's interface, asked until each has answered once. GUI thread.
class OllamaDetection {
public:
    // Other programs tell a version at the same address, and some keep the path of the list alone. One that
    // tells a version and shows no list is spoken to as any other server is.
    enum class Answer { yes, no, withoutList, nobodyAnswered };

    // Without probes every server speaks the chat-completions dialect only. Both outlive this object.
    OllamaDetection(OllamaProbing *probes, ModelInventory &inventory)
        : m_probes(probes)
        , m_inventory(inventory)
    {}

    // "http://host:port" of a base address; nothing when it can't be used.
    [[nodiscard]] static std::optional<QString> serverRoot(const QString &baseURL);

    // Throws CancelledError.
    [[nodiscard]] QCoro::Task<Answer> isOllama(QString baseURL, std::stop_token stop);

    // Whoever asks with another key may hear otherwise.
    void forget() { m_answers.clear(); }

    // A server that has shown otherwise since is asked again.
    void forgetDenial(const QString &baseURL);

private:
    OllamaProbing *m_probes;
    ModelInventory &m_inventory;
    std::map<QString, Answer> m_answers; // by server root; none of a server that nobody heard
    Lifeline m_lifeline;
};

} // namespace morvane
