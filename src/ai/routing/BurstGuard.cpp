#include "ai/routing/BurstGuard.h"

#include "async/Clock.h"

namespace morvane {

bool BurstGuard::isFull()
{
    const auto now = m_clock.elapsed();
    while (!m_times.empty() && now - m_times.front() > window)
        m_times.pop_front();
    return m_times.size() >= limit;
}

void BurstGuard::note()
{
    m_times.push_back(m_clock.elapsed());
    if (m_times.size() > limit)
        m_times.pop_front();
}

} // namespace morvane
