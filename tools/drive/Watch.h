#pragma once

#include <QString>
#include <QStringList>

#include <atomic>
#include <thread>

namespace morvane {

// Keeps an eye on the program while it is driven: what it complains about on standard error, and how long its
// window ever left an event waiting. One at a time, on the GUI thread.
class Watch {
public:
    Watch();
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    // Warnings and worse since the start, but not the fixed lines of the program's own log.
    [[nodiscard]] const QStringList &complaints() const { return m_complaints; }
    [[nodiscard]] std::chrono::milliseconds longestWait() const;

private:
    static void note(QtMsgType type, const QMessageLogContext &context, const QString &message);
    void knock(const std::stop_token &stop);

    QStringList m_complaints;
    std::atomic<std::int64_t> m_longest = 0; // milliseconds
    std::jthread m_knocking;
};

} // namespace morvane
