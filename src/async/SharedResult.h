#pragma once

#include "async/AsyncStream.h"
#include "async/Clock.h"

#include <QCoroTask>

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

// One result that any number of tasks wait for. Copies share it; when the last one goes without a result, the
// waits end with CancelledError. One thread, which runs an event loop.
template <typename T>
class SharedResult {
public:
    [[nodiscard]] bool isThere() const { return m_state->result.has_value(); }

    // The first result counts.
    void resolve(T result)
    {
        if (m_state->result)
            return;
        m_state->result = std::move(result);
        for (auto &waiter : std::exchange(m_state->waiters, {}))
            waiter.yield(*m_state->result);
    }

    // Throws CancelledError once `stop` is triggered.
    [[nodiscard]] QCoro::Task<T> wait(std::stop_token stop) const
    {
        const std::chrono::milliseconds none{0};
        std::optional<T> result = co_await waitFor(m_state, nullptr, none, std::move(stop));
        co_return *std::move(result);
    }

    // Nothing when the result isn't there within `limit`.
    [[nodiscard]] QCoro::Task<std::optional<T>> wait(Clock &clock, std::chrono::milliseconds limit,
                                                     std::stop_token stop) const
    {
        return waitFor(m_state, &clock, limit, std::move(stop));
    }

private:
    struct State {
        std::optional<T> result;
        std::vector<typename AsyncStream<T>::Producer> waiters;
    };

    static QCoro::Task<std::optional<T>> waitFor(std::weak_ptr<State> waitedFor, Clock *clock,
                                                 std::chrono::milliseconds limit, std::stop_token stop)
    {
        throwIfStopped(stop);
        auto ends = AsyncStream<T>::make();
        std::unique_ptr<Alarm> alarm;
        if (const auto state = waitedFor.lock()) {
            if (state->result)
                co_return state->result;
            state->waiters.push_back(ends.second);
        }
        if (clock)
            alarm = clock->after(limit, [producer = ends.second]() mutable { producer.finish(); });
        // What stays behind belongs to the result's owner and to the alarm.
        ends.second = AsyncStream<T>::make().second;
        std::optional<T> result = co_await ends.first.next(stop);
        co_return result;
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace morvane
