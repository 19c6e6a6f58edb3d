#include "ai/agent/AgentLoop.h"

#include "ai/agent/AgentRun.h"

namespace morvane {

namespace {

QCoro::Task<> play(std::shared_ptr<AgentRun> run, AgentRun::Producer producer)
{
    try {
        co_await run->play();
        producer.finish();
    } catch (...) {
        producer.fail(std::current_exception());
    }
}

} // namespace

AsyncStream<AgentEvent> AgentLoop::run(Turn turn)
{
    auto [stream, producer] = AsyncStream<AgentEvent>::make();
    play(std::make_shared<AgentRun>(std::move(turn), m_provider, m_registry, producer), producer);
    return std::move(stream);
}

} // namespace morvane
