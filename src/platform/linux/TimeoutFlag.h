#pragma once

#include <mutex>

namespace morvane {

// Between a program's waiter and its watchdog: whoever is first decides how the run ended. Any thread.
class TimeoutFlag {
public:
    // The watchdog's time is up; nothing changes for a program that has ended.
    void expire()
    {
        const std::scoped_lock lock(m_mutex);
        m_isExpired = !m_hasEnded;
    }

    [[nodiscard]] bool isExpired() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_isExpired;
    }

    // The program has ended. Whether its time was up before.
    [[nodiscard]] bool end()
    {
        const std::scoped_lock lock(m_mutex);
        m_hasEnded = true;
        return m_isExpired;
    }

private:
    mutable std::mutex m_mutex;
    bool m_isExpired = false; // guarded by m_mutex
    bool m_hasEnded = false;  // guarded by m_mutex
};

} // namespace morvane
