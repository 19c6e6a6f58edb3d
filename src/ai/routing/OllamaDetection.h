#pragma once

#include "ai/providers/OllamaProbing.h"
#include "async/Lifeline.h"

#include <map>

namespace morvane {

// Which servers speak Ollama's interface, asked once of each. GUI thread.
class OllamaDetection {
public:
    // Without probes every server speaks the chat-completions dialect only.
    explicit OllamaDetection(OllamaProbing *probes)
        : m_probes(probes)
    {}

    // "http://host:port" of a base address; nothing when it can't be used.
    [[nodiscard]] static std::optional<QString> serverRoot(const QString &baseURL);

    // Throws CancelledError.
    [[nodiscard]] QCoro::Task<bool> isOllama(QString baseURL, std::stop_token stop);

    // What is known without asking.
    [[nodiscard]] std::optional<bool> known(const QString &baseURL) const;

    // A server that has shown otherwise since is asked again.
    void forgetDenial(const QString &baseURL);

private:
    OllamaProbing *m_probes;
    std::map<QString, bool> m_answers; // by server root
    Lifeline m_lifeline;
};

} // namespace morvane
