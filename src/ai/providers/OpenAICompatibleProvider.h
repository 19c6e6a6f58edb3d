#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/providers/ChatSpelling.h"
#include "ai/providers/ReplyLines.h"

#include <map>
#include <memory>
#include <utility>

namespace morvane {

// Speaks to every server of the chat-completions dialect: a service that the user added, a server on the
// local network, a model runtime on this machine. GUI thread.
//
// A reply under way owns all that it needs, so it outlives the provider. Bounds on what a server may send
// are part of the contract here: past them a reply ends with ProviderError::replyTooLarge.
class OpenAICompatibleProvider final : public AIConnectionTesting {
public:
    // Bytes of one line of an event stream, and of a reply that comes as one JSON body.
    static constexpr qsizetype longestLine = ReplyLines::longest;
    static constexpr qsizetype largestBody = ReplyLines::longest;

    // Requests use `injectedSession` when it is set, else a session of `network` for what they carry.
    explicit OpenAICompatibleProvider(HttpSessionProviding &network,
                                      std::shared_ptr<HttpSession> injectedSession = nullptr);

    [[nodiscard]] AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages,
                                                         AIConfiguration configuration,
                                                         std::vector<AITool> tools) override;
    [[nodiscard]] QCoro::Task<QString> testConnection(AIConfiguration configuration,
                                                      std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<ReplyTrial> tryReply(AIConfiguration configuration, std::vector<AITool> tools,
                                                   std::stop_token stop) override;

private:
    using Place = std::pair<QString, QString>; // base address and model
    using Spellings = std::map<Place, ChatSpelling>;

    [[nodiscard]] std::shared_ptr<HttpSession> sessionFor(const AIConfiguration &configuration) const;

    HttpSessionProviding &m_network;
    std::shared_ptr<HttpSession> m_injectedSession;
    std::shared_ptr<Spellings> m_spellings = std::make_shared<Spellings>(); // learned in this run
};

} // namespace morvane
