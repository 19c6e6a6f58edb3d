#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace morvane {

// The longest time that a call posted from another thread waited for the GUI thread to get round to it. The
// next call is posted a millisecond after the one before was answered.
class LongestBlock {
public:
    LongestBlock()
        : m_thread([this](const std::stop_token &stop) { beat(stop); })
    {}

    // Ends the calls. The thread may be waiting for one more answer.
    void end()
    {
        m_thread.request_stop();
        while (!m_ended)
            QCoreApplication::processEvents();
    }
    [[nodiscard]] double milliseconds() const { return static_cast<double>(m_longest.load()) / 1e6; }

private:
    void beat(const std::stop_token &stop)
    {
        while (!stop.stop_requested()) {
            QElapsedTimer posted;
            posted.start();
            std::atomic_bool answered = false;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [&answered] {
                    answered = true;
                    answered.notify_one();
                },
                Qt::QueuedConnection);
            answered.wait(false);
            m_longest = std::max(m_longest.load(), posted.nsecsElapsed());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_ended = true;
    }

    std::atomic<qint64> m_longest = 0; // nanoseconds
    std::atomic_bool m_ended = false;
    std::jthread m_thread;
};

} // namespace morvane
