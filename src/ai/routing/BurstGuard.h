#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace morvane {

class Clock;

// Counts the requests of the past hour to a service that is paid for by the request. GUI thread.
class BurstGuard {
public:
    static constexpr std::chrono::seconds window{3600};
    static constexpr std::size_t limit = 60; // requests

    explicit BurstGuard(const Clock &clock)
        : m_clock(clock)
    {}

    [[nodiscard]] bool isFull();
    void note();

private:
    const Clock &m_clock;
    std::deque<std::chrono::milliseconds> m_times; // oldest first
};

} // namespace morvane
