#include "async/Clock.h"

#include "async/AsyncStream.h"

#include <QTimer>

namespace morvane {

namespace {

class TimerAlarm final : public Alarm {
public:
    TimerAlarm(std::chrono::milliseconds delay, std::function<void()> fire)
    {
        m_timer.setSingleShot(true);
        // A copy: `fire` may destroy this alarm, and with it the connection.
        QObject::connect(&m_timer, &QTimer::timeout, [fire = std::move(fire)] {
            const auto running = fire;
            running();
        });
        m_timer.start(delay);
    }

private:
    QTimer m_timer;
};

} // namespace

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTimeUtc();
}

std::chrono::milliseconds SystemClock::elapsed() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

std::unique_ptr<Alarm> SystemClock::after(std::chrono::milliseconds delay, std::function<void()> fire)
{
    return std::make_unique<TimerAlarm>(delay, std::move(fire));
}

QCoro::Task<> pause(Clock &clock, std::chrono::milliseconds duration, std::stop_token stop)
{
    auto [stream, producer] = AsyncStream<bool>::make();
    const auto alarm = clock.after(duration, [producer = producer]() mutable { producer.finish(); });
    co_await stream.next(stop);
}

} // namespace morvane
