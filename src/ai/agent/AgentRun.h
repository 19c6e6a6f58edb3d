#pragma once

#include "ai/agent/AgentLoop.h"
#include "ai/tools/ToolRegistry.h"

#include <QCoroTask>
#include <QPointer>

#include <exception>
#include <set>

namespace morvane {

// The state of one run of the agent loop. Lives in the task that plays it.
class AgentRun {
public:
    using Producer = AsyncStream<AgentEvent>::Producer;

    AgentRun(AgentLoop::Turn turn, std::shared_ptr<AIProvider> provider, ToolRegistry &registry,
             Producer producer);

    // Yields every event of the reply. Throws what ended it early.
    QCoro::Task<> play();

private:
    struct Round {
        QString text;
        std::vector<AIToolCall> calls;
        bool truncated = false;
    };

    QCoro::Task<> readRound();
    QCoro::Task<> runCalls();
    QCoro::Task<> runCall(AIToolCall call);
    // Whether the reply has to be given once more.
    [[nodiscard]] bool correctsReply();
    void askForFinalAnswer();
    void retryWithoutTools(const std::exception_ptr &failure); // rethrows what no retry mends
    void carryWhatCameIn();
    void takeBack();
    void say(AIMessage::Role role, const QString &text);
    [[nodiscard]] QString answer() const;
    [[nodiscard]] bool offers(QLatin1StringView tool) const;

    std::vector<AIMessage> m_messages;
    AIConfiguration m_configuration;
    std::vector<AITool> m_tools; // offered in the next round
    int m_maxRounds;
    std::set<QString> m_allowed; // offered at the start
    std::shared_ptr<TurnContext> m_context;
    std::shared_ptr<AIProvider> m_provider;
    QPointer<ToolRegistry> m_registry;
    std::function<void(SensitiveDataSet)> m_onCarrying; // may be absent
    std::function<void(const QUuid &)> m_onRecorded;    // likewise
    Producer m_producer;
    std::stop_token m_stop;

    Round m_round;
    int m_roundCount = 0;
    bool m_isFinal = false; // the ceiling is reached; calls are no longer heard
    bool m_hasCalled = false;
    bool m_owesRejection = false; // the chat is still to be told that the server takes no tools
    bool m_searchCorrected = false;
    bool m_claimCorrected = false;
    std::set<QString> m_used; // names of the tools that have run
};

} // namespace morvane
