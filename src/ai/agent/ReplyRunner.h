#pragma once

#include "ai/agent/AgentEvent.h"
#include "ai/routing/OpenedTurn.h"
#include "async/AsyncStream.h"

#include <memory>

namespace morvane {

class AIRequestRouter;
class ToolRegistry;

// What a reply's tool calls have to know of the turn that asked.
struct TurnScope {
    QString key;       // the chat, for approvals that hold for all of it
    QString userWords; // what the person wrote, without what came along with it
};

// Turns an opened turn into the events of one reply.
class ReplyRunning {
public:
    virtual ~ReplyRunning() = default;

    // Returns at once. The stream may fail with ProviderError; dropping it ends the reply.
    [[nodiscard]] virtual AsyncStream<AgentEvent> run(OpenedTurn turn, TurnScope scope) = 0;
};

// Lets a request that offers tools run through the agent loop, and relays the plain stream of any other.
class ReplyRunner final : public ReplyRunning {
public:
    static constexpr int maxRounds = 5;

    // Both outlive it.
    ReplyRunner(AIRequestRouter &router, ToolRegistry &tools);

    [[nodiscard]] AsyncStream<AgentEvent> run(OpenedTurn turn, TurnScope scope) override;

private:
    AIRequestRouter &m_router;
    ToolRegistry &m_tools;
};

} // namespace morvane
