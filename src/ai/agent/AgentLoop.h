#pragma once

#include "ai/agent/AgentEvent.h"
#include "ai/contract/AIProvider.h"
#include "ai/tools/TurnContext.h"
#include "async/AsyncStream.h"

#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class ToolRegistry;

// Runs one reply that may call tools: asks the provider, shows the text as it comes, runs the calls that the
// model asks for, feeds the results back and asks again, for a bounded number of rounds. A reply that
// declines a search it could make, or claims an event that it never made, is taken back and corrected once
// each. GUI thread.
class AgentLoop {
public:
    struct Turn {
        std::vector<AIMessage> messages;
        AIConfiguration configuration;
        std::vector<AITool> tools;
        int maxRounds = 5;
        bool memoryAllowed = false;
        // What the person wrote in this turn; without it, all that stands in the messages as theirs.
        std::optional<QString> userWords;
        std::optional<QString> scopeKey; // the chat, for approvals that hold for all of it
        TurnContext::Attendance attendance = TurnContext::Attendance::attended;
        // Told before a request goes out that carries more than the turn began with; may be absent.
        std::function<void(SensitiveDataSet carrying)> onCarrying = {};
        // Told when another row of the proof ledger tells where the answer runs; may be absent.
        std::function<void(const QUuid &row)> onRecorded = {};
    };

    // The registry may go away while a reply runs; the reply ends as cancelled then.
    AgentLoop(std::shared_ptr<AIProvider> provider, ToolRegistry &registry)
        : m_provider(std::move(provider))
        , m_registry(registry)
    {}

    // Returns at once. The stream may fail with ProviderError or CancelledError; dropping it ends the reply.
    [[nodiscard]] AsyncStream<AgentEvent> run(Turn turn);

private:
    std::shared_ptr<AIProvider> m_provider;
    ToolRegistry &m_registry;
};

} // namespace morvane
