#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/contract/AIMessage.h"
#include "ai/contract/AIStreamEvent.h"
#include "ai/contract/AITool.h"
#include "async/AsyncStream.h"

#include <QCoroTask>

#include <functional>
#include <stop_token>
#include <vector>

namespace morvane {

// A way to a model. Implementations hold no conversation state. GUI thread.
class AIProvider {
public:
    virtual ~AIProvider() = default;

    // Returns at once; the reply arrives as events and may fail with ProviderError. Dropping the stream
    // cancels the work behind it.
    [[nodiscard]] virtual AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages,
                                                                 AIConfiguration configuration,
                                                                 std::vector<AITool> tools) = 0;

    // The reply's text pieces only, with no tools offered. `onThinking` is called for each thinking event.
    [[nodiscard]] AsyncStream<QString> streamText(std::vector<AIMessage> messages,
                                                  AIConfiguration configuration,
                                                  std::function<void()> onThinking = {});
};

// How a trial reply came.
struct ReplyTrial {
    bool cameInPieces = false; // false: whole, although a stream was asked for
    bool calledTool = false;

    bool operator==(const ReplyTrial &) const = default;
};

// A provider whose settings the user can try.
class AIConnectionTesting : public AIProvider {
public:
    // The message that a connection test sends.
    static QString testMessage();

    // A tool that does nothing, which nobody runs: only whether the model calls it is of interest.
    static AITool testTool();

    // The message that a trial sends, which asks for a call of the tool where there is one.
    static std::vector<AIMessage> trialMessages(const std::vector<AITool> &tools);

    // The tokens that a trial may spend: enough for a call.
    static constexpr std::int64_t trialTokens = 256;

    // The reply's text. Throws ProviderError.
    [[nodiscard]] virtual QCoro::Task<QString> testConnection(AIConfiguration configuration,
                                                              std::stop_token stop) = 0;

    // One short reply as a turn asks for it: streamed, with these tools on offer. Throws ProviderError.
    [[nodiscard]] virtual QCoro::Task<ReplyTrial>
    tryReply(AIConfiguration configuration, std::vector<AITool> tools, std::stop_token stop) = 0;
};

} // namespace morvane
