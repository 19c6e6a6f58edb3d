#pragma once

#include "ai/providers/OllamaProbing.h"
#include "async/Lifeline.h"

#include <map>

namespace morvane {

// Which servers speak Ollama's interface, asked until each has answered once. GUI thread.
class OllamaDetection {
public:
    enum class Answer { yes, no, nobodyAnswered };

    // Without probes every server speaks the chat-completions dialect only.
    explicit OllamaDetection(OllamaProbing *probes)
        : m_probes(probes)
    {}

    // "http://host:port" of a base address; nothing when it can't be used.
    [[nodiscard]] static std::optional<QString> serverRoot(const QString &baseURL);

    // Throws CancelledError.
    [[nodiscard]] QCoro::Task<Answer> isOllama(QString baseURL, std::stop_token stop);

    // A server that has shown otherwise since is asked again.
    void forgetDenial(const QString &baseURL);

private:
    OllamaProbing *m_probes;
    std::map<QString, Answer> m_answers; // by server root; none of a server that nobody heard
    Lifeline m_lifeline;
};

} // namespace morvane
