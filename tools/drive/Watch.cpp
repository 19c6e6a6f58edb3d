#include "Watch.h"

#include <QCoreApplication>
#include <QMutex>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace morvane {

namespace {

using Time = std::chrono::steady_clock;

Watch *watching = nullptr;
QtMessageHandler formerHandler = nullptr;
QMutex complaintsMutex; // a message may come from any thread

} // namespace

Watch::Watch()
{
    watching = this;
    formerHandler = qInstallMessageHandler(note);
    m_knocking = std::jthread([this](const std::stop_token &stop) { knock(stop); });
}

Watch::~Watch()
{
    m_knocking.request_stop();
    m_knocking.join();
    qInstallMessageHandler(formerHandler);
    watching = nullptr;
}

void Watch::note(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool isOwnLog = QByteArrayView(context.category).startsWith("ai.morvane");
    if (type != QtDebugMsg && type != QtInfoMsg && !isOwnLog) {
        const QMutexLocker lock(&complaintsMutex);
        watching->m_complaints += message;
    }
    formerHandler(type, context, message);
}

std::chrono::milliseconds Watch::longestWait() const
{
    return std::chrono::milliseconds(m_longest);
}

// Ten times a second something is asked of the GUI thread, and waited for.
void Watch::knock(const std::stop_token &stop)
{
    struct Answer {
        std::mutex mutex;
        std::condition_variable_any came;
        bool isThere = false;
    };
    while (!stop.stop_requested()) {
        const auto answer = std::make_shared<Answer>();
        const Time::time_point asked = Time::now();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [answer] {
                const std::lock_guard lock(answer->mutex);
                answer->isThere = true;
                answer->came.notify_one();
            },
            Qt::QueuedConnection);
        std::unique_lock lock(answer->mutex);
        if (!answer->came.wait(lock, stop, [&] { return answer->isThere; }))
            return;
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Time::now() - asked);
        m_longest = std::max<std::int64_t>(m_longest, waited.count());
        QThread::msleep(100);
    }
}

} // namespace morvane
