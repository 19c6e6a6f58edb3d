#pragma once

#include "async/CancelledError.h"

#include <memory>
#include <stop_token>

namespace morvane {

// Lets an object's suspended work learn that the object is gone. A task takes a check at its start and calls
// it after every co_await, before it touches the object again.
class Lifeline {
public:
    class Check {
    public:
        Check(std::weak_ptr<const bool> alive, std::stop_token stop)
            : m_alive(std::move(alive))
            , m_stop(std::move(stop))
        {}

        // Throws CancelledError when the object is gone or the task was stopped.
        void operator()() const
        {
            throwIfStopped(m_stop);
            if (m_alive.expired())
                throw CancelledError();
        }

    private:
        std::weak_ptr<const bool> m_alive;
        std::stop_token m_stop;
    };

    Lifeline() = default;
    Lifeline(const Lifeline &) = delete;
    Lifeline &operator=(const Lifeline &) = delete;

    [[nodiscard]] Check check(std::stop_token stop) const { return {m_alive, std::move(stop)}; }

private:
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

} // namespace morvane
