#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/providers/OllamaProbing.h"
#include "network/HttpSession.h"

#include <functional>
#include <map>
#include <memory>

namespace morvane {

struct OllamaProbe;
struct OllamaQuestion;
struct OllamaServer;

// Speaks to an Ollama server in its own interface, where the size of the context can be set and thinking
// asked for. GUI thread.
//
// A reply under way owns all that it needs, so it outlives the provider. Lines and bodies have the bounds of
// OpenAICompatibleProvider.
class OllamaNativeProvider final : public AIConnectionTesting, public OllamaProbing {
public:
    // The key that may be told to the server of a base address; nothing for none. May throw a
    // UserPresentableError.
    using KeyFor = std::function<std::optional<QString>(const QString &baseURL)>;

    // Requests use `injectedSession` when it is set, else a session of `network` for what they carry. Probes
    // carry nothing but the key of their server, which a configuration brings along itself.
    explicit OllamaNativeProvider(HttpSessionProviding &network, KeyFor keyFor = {},
                                  std::shared_ptr<HttpSession> injectedSession = nullptr);

    // Asks the server first, once for each model, whether the model thinks. While that is unknown, a
    // configuration that `thinksLonger` asks for thinking.
    [[nodiscard]] AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages,
                                                         AIConfiguration configuration,
                                                         std::vector<AITool> tools) override;

    // Whether the server lists the model, and a reply comes from it. The text is empty.
    [[nodiscard]] QCoro::Task<QString> testConnection(AIConfiguration configuration,
                                                      std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<ReplyTrial> tryReply(AIConfiguration configuration, std::vector<AITool> tools,
                                                   std::stop_token stop) override;

    [[nodiscard]] QCoro::Task<ProbeAnswer<QString>> version(QString baseURL, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<ProbeAnswer<QStringList>> capabilities(QString baseURL, QString model,
                                                                     std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<ProbeAnswer<std::vector<OllamaModel>>> modelList(QString baseURL,
                                                                               std::stop_token stop) override;

private:
    [[nodiscard]] std::shared_ptr<const OllamaQuestion>
    question(std::vector<AIMessage> messages, AIConfiguration configuration, std::vector<AITool> tools) const;
    [[nodiscard]] OllamaServer serverAt(const QString &baseURL) const;
    [[nodiscard]] std::optional<OllamaProbe> makeProbe(const std::function<HttpRequest()> &request) const;
    [[nodiscard]] std::shared_ptr<HttpSession> sessionFor(SensitiveDataSet carrying) const;

    HttpSessionProviding &m_network;
    KeyFor m_keyFor; // may be empty
    std::shared_ptr<HttpSession> m_injectedSession;
    std::shared_ptr<std::map<QString, bool>> m_thinkingCache; // by model name; shared with replies under way
};

} // namespace morvane
