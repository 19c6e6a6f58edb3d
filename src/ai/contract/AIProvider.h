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

// A provider whose settings the user can try.
class AIConnectionTesting : public AIProvider {
public:
    // The message that a connection test sends.
    static QString testMessage();

    // The reply's text. Throws ProviderError.
    [[nodiscard]] virtual QCoro::Task<QString> testConnection(AIConfiguration configuration,
                                                              std::stop_token stop) = 0;
};

} // namespace morvane
