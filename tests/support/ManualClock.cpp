#include "support/ManualClock.h"

#include "support/Await.h"

#include <algorithm>

namespace morvane {

class ManualClock::ManualAlarm final : public Alarm {
public:
    ManualAlarm(std::shared_ptr<std::list<Pending>> alarms, std::list<Pending>::iterator position,
                std::shared_ptr<bool> fired)
        : m_alarms(std::move(alarms))
        , m_position(position)
        , m_fired(std::move(fired))
    {}
    ~ManualAlarm() override
    {
        if (!*m_fired)
            m_alarms->erase(m_position);
    }

private:
    std::shared_ptr<std::list<Pending>> m_alarms;
    std::list<Pending>::iterator m_position;
    std::shared_ptr<bool> m_fired;
};

ManualClock::ManualClock(const QDateTime &start)
    : m_start(start)
{}

std::unique_ptr<Alarm> ManualClock::after(std::chrono::milliseconds delay, std::function<void()> fire)
{
    auto fired = std::make_shared<bool>(false);
    const auto position =
        m_alarms->insert(m_alarms->end(), {m_elapsed + delay, [fired, fire = std::move(fire)] {
                                               *fired = true;
                                               fire();
                                           }});
    return std::make_unique<ManualAlarm>(m_alarms, position, fired);
}

void ManualClock::advance(std::chrono::milliseconds duration)
{
    const auto target = m_elapsed + duration;
    TestWait::settle();
    while (true) {
        const auto next = std::min_element(m_alarms->begin(), m_alarms->end(),
                                           [](const Pending &a, const Pending &b) { return a.due < b.due; });
        if (next == m_alarms->end() || next->due > target)
            break;
        m_elapsed = std::max(m_elapsed, next->due);
        const auto fire = std::move(next->fire);
        m_alarms->erase(next);
        fire();
        TestWait::settle();
    }
    m_elapsed = target;
}

} // namespace morvane
