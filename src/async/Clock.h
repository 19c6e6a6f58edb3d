#pragma once

#include <QCoroTask>
#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

namespace morvane {

// A call that was asked for later. Destroying it before it fires calls it off.
class Alarm {
public:
    virtual ~Alarm() = default;
};

// Dates, elapsed time and pauses come from here wherever a rule depends on them, so that a test can turn the
// time. Belongs to the thread that made it.
class Clock {
public:
    virtual ~Clock() = default;

    // Wall time in UTC; may jump.
    [[nodiscard]] virtual QDateTime now() const = 0;

    // Time since some fixed moment; never goes back.
    [[nodiscard]] virtual std::chrono::milliseconds elapsed() const = 0;

    // Calls `fire` once from the event loop after `delay`. `fire` may destroy the alarm.
    [[nodiscard]] virtual std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                                       std::function<void()> fire) = 0;
};

// The machine's own time.
class SystemClock final : public Clock {
public:
    [[nodiscard]] QDateTime now() const override;
    [[nodiscard]] std::chrono::milliseconds elapsed() const override;
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> fire) override;
};

// Suspends for `duration`. Throws CancelledError as soon as `stop` is triggered.
QCoro::Task<> pause(Clock &clock, std::chrono::milliseconds duration, std::stop_token stop);

} // namespace morvane
