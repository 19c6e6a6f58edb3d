#pragma once

#include "ai/agent/AgentEvent.h"
#include "ai/contract/AIProvider.h"
#include "ai/routing/AIRequestRouter.h"
#include "utils/AsyncStream.h"

#include <memory>

// Turns a prepared request into the events of one reply.
class ReplyRunning {
public:
    virtual ~ReplyRunning() = default;

    // Returns at once. The stream may fail with ProviderError; dropping it ends the reply.
    [[nodiscard]] virtual AsyncStream<AgentEvent> run(PreparedRequest request,
                                                      std::shared_ptr<AIProvider> provider) = 0;
};

// Relays a provider's plain stream.
class ReplyRunner final : public ReplyRunning {
public:
    explicit ReplyRunner(AIRequestRouter &router)
        : m_router(router)
    {}

    [[nodiscard]] AsyncStream<AgentEvent> run(PreparedRequest request,
                                              std::shared_ptr<AIProvider> provider) override;

private:
    AIRequestRouter &m_router;
};
