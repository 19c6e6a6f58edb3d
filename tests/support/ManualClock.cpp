#include "support/ManualClock.h"

#include "support/Await.h"

#include <algorithm>

namespace morvane {

namespace {

struct ManualAlarm final : Alarm {
    explicit ManualAlarm(std::function<void()> call)
        : fire(std::make_shared<std::function<void()>>(std::move(call)))
    {}

    std::shared_ptr<std::function<void()>> fire;
};

} // namespace

ManualClock::ManualClock(const QDateTime &start)
    : m_start(start)
{}

std::unique_ptr<Alarm> ManualClock::after(std::chrono::milliseconds delay, std::function<void()> fire)
{
    auto alarm = std::make_unique<ManualAlarm>(std::move(fire));
    m_alarms.emplace(m_elapsed + delay, alarm->fire);
    return alarm;
}

std::size_t ManualClock::pendingAlarms() const
{
    return std::ranges::count_if(m_alarms, [](const auto &alarm) { return !alarm.second.expired(); });
}

void ManualClock::advance(std::chrono::milliseconds duration)
{
    const auto target = m_elapsed + duration;
    TestWait::settle();
    while (!m_alarms.empty() && m_alarms.begin()->first <= target) {
        const auto next = m_alarms.extract(m_alarms.begin());
        if (const auto fire = next.mapped().lock()) { // not called off
            m_elapsed = std::max(m_elapsed, next.key());
            (*fire)();
            TestWait::settle();
        }
    }
    m_elapsed = target;
}

} // namespace morvane
