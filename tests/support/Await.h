#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <exception>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <variant>

namespace morvane {

// Running coroutines from a test. A wait that takes longer than `limit` fails the test instead of hanging it.
namespace TestWait {

inline constexpr std::chrono::seconds limit{30};

// Runs the event loop until `done` holds.
template <typename Predicate>
void until(Predicate done)
{
    QTimer deadline;
    deadline.setSingleShot(true);
    deadline.start(limit);
    while (!done()) {
        if (!deadline.isActive())
            throw std::runtime_error("the awaited condition never held");
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
    }
}

// Handles what is queued now, and what that queues.
inline void settle()
{
    for (int i = 0; i < 20; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
}

template <typename T>
struct Outcome {
    bool done = false;
    std::exception_ptr error;
    std::optional<std::conditional_t<std::is_void_v<T>, std::monostate, T>> value;
};

template <typename T>
QCoro::Task<> collect(QCoro::Task<T> task, std::shared_ptr<Outcome<T>> outcome)
{
    try {
        if constexpr (std::is_void_v<T>)
            co_await std::move(task);
        else
            outcome->value.emplace(co_await std::move(task));
    } catch (...) {
        outcome->error = std::current_exception();
    }
    outcome->done = true;
}

// The task is under way; what comes of it.
template <typename T>
std::shared_ptr<Outcome<T>> begin(QCoro::Task<T> task)
{
    const auto outcome = std::make_shared<Outcome<T>>();
    collect<T>(std::move(task), outcome);
    return outcome;
}

// The value of a task that is under way, or that begins here; rethrows its exception.
template <typename T>
T result(const std::shared_ptr<Outcome<T>> &outcome)
{
    until([&] { return outcome->done; });
    if (outcome->error)
        std::rethrow_exception(outcome->error);
    if constexpr (!std::is_void_v<T>)
        return std::move(*outcome->value);
}
template <typename T>
T await(QCoro::Task<T> task)
{
    return result<T>(begin<T>(std::move(task)));
}

} // namespace TestWait

} // namespace morvane
