#include "ai/agent/ReplyRunner.h"

#include "ai/agent/AgentLoop.h"
#include "ai/routing/AIRequestRouter.h"
#include "ai/tools/ToolRegistry.h"

#include <QPointer>

namespace morvane {

namespace {

using Producer = AsyncStream<AgentEvent>::Producer;

// Tool calls of a reply that offered no tools have nobody to run them.
struct Relay {
    Producer &producer;

    void operator()(AIStream::Text &text) const { producer.yield(Agent::Text{std::move(text.piece)}); }
    void operator()(AIStream::ToolCalls &) const {}
    void operator()(AIStream::TruncatedByTokenLimit &) const
    {
        producer.yield(Agent::TruncatedByTokenLimit{});
    }
    void operator()(AIStream::Thinking &) const { producer.yield(Agent::Thinking{}); }
    void operator()(AIStream::Respelled &) const {} // one request is the whole turn
    void operator()(AIStream::Recorded &) const {}  // the router has taken it
};

QCoro::Task<> relay(AsyncStream<AIStreamEvent> events, Producer producer)
{
    try {
        while (auto event = co_await events.next(producer.stopToken()))
            std::visit(Relay{producer}, *event);
        producer.finish();
    } catch (...) {
        producer.fail(std::current_exception());
    }
}

} // namespace

ReplyRunner::ReplyRunner(AIRequestRouter &router, ToolRegistry &tools)
    : m_router(router)
    , m_tools(tools)
{}

AsyncStream<AgentEvent> ReplyRunner::run(OpenedTurn turn, TurnScope scope)
{
    PreparedRequest &request = turn.request;
    const auto noteCarrying = [router = QPointer(&m_router), row = turn.proofRow](SensitiveDataSet carrying) {
        if (router)
            *row = router->noteCarrying(*row, carrying);
    };
    if (!request.tools.empty())
        return AgentLoop(std::move(turn.provider), m_tools)
            .run({.messages = std::move(request.messages),
                  .configuration = std::move(request.configuration),
                  .tools = std::move(request.tools),
                  .maxRounds = maxRounds,
                  .memoryAllowed = request.memoryAllowed,
                  .userWords = std::move(scope.userWords),
                  .scopeKey = std::move(scope.key),
                  .onCarrying = noteCarrying,
                  .onRecorded = [row = turn.proofRow](const QUuid &another) { *row = another; }});
    auto [stream, producer] = AsyncStream<AgentEvent>::make();
    relay(m_router.stream(std::move(turn)), producer);
    return std::move(stream);
}

} // namespace morvane
