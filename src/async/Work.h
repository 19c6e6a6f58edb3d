#pragma once

#include "async/AsyncStream.h"
#include "async/Clock.h"

#include <QCoroTask>
#include <QObject>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace morvane {

// The one way off the GUI thread.
//
// What the program does itself runs on a few threads that end() waits for, so it may refer to anything that
// outlives end(). What the outside decides the length of (the system's resolver, a file that may lie behind a
// network) runs on threads that nobody waits for: its questions own all that they touch, have a time limit,
// and only a few are out at once.
//
// Made, called and destroyed on the GUI thread; results arrive there. Stopping a caller, or dropping it,
// triggers the stop token that its work was given, and nothing of the work reaches it any more.
class Work {
public:
    static constexpr int mostThreads = 4;
    // To each outside; those that were left behind as it hangs included.
    static constexpr int mostQuestions = 8;
    enum class Outside { Resolver, Files };

    template <typename T>
    using Report = std::function<void(T)>; // from the work's thread
    template <typename T>
    class Results;

    // `clock` times the questions and outlives this object.
    explicit Work(Clock &clock);
    ~Work() { end(); }
    Work(const Work &) = delete;
    Work &operator=(const Work &) = delete;

    // What `work` returns or throws. Throws CancelledError as soon as `stop` is triggered, and after end();
    // std::system_error when the system has no thread to give.
    // `work` takes nothing or a stop token.
    template <typename Function>
    [[nodiscard]] auto run(Function work, std::stop_token stop = {});

    // Work that reports as it goes on. The results end, or fail with what it threw, when it returns.
    template <typename T>
    [[nodiscard]] Results<T> start(std::function<void(const Report<T> &, const std::stop_token &)> work);

    // What `question` returns; nothing when that takes longer than `limit` or too many questions are out.
    // Throws what it throws, and CancelledError as above.
    template <typename T>
    [[nodiscard]] QCoro::Task<std::optional<T>> ask(std::function<T()> question,
                                                    std::chrono::milliseconds limit, std::stop_token stop,
                                                    Outside outside = Outside::Resolver);

    // Stops what runs, waits for it, and refuses what comes later. Questions are left to themselves.
    void end();
    // Takes work again after end().
    void resume();

private:
    class Mailbox;

    template <typename T>
    QCoro::Task<T> first(std::function<T(std::stop_token)> work, std::stop_token stop);
    using Job = std::function<void(const std::stop_token &)>;
    void enqueue(Job job);
    void addThread();
    void takeTurns(const std::stop_token &ending);
    [[nodiscard]] bool detach(std::function<void()> job, Outside outside);

    Clock &m_clock;
    std::stop_source m_ending;
    std::mutex m_mutex;
    std::condition_variable m_jobWaits;
    std::deque<Job> m_jobs; // guarded by m_mutex
    int m_idle = 0;         // threads without a job; guarded by m_mutex
    std::vector<std::thread> m_threads;
    using Questions = std::array<std::atomic<int>, 2>; // that are out, by outside
    std::shared_ptr<Questions> m_questions = std::make_shared<Questions>();
};

// Where a thread leaves its results. Closed on the GUI thread, after which nothing comes out of it.
class Work::Mailbox {
public:
    void post(std::function<void()> delivery);
    void close();

private:
    void deliver();

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_deliveries;                    // guarded by m_mutex
    std::unique_ptr<QObject> m_receiver = std::make_unique<QObject>(); // guarded by m_mutex
};

// The results of one piece of work, in order. Dropping them stops it.
template <typename T>
class Work::Results {
public:
    Results()
        : m_ends(std::make_unique<Ends>())
    {}
    Results(Results &&) noexcept = default;
    Results &operator=(Results &&) noexcept = default;
    ~Results()
    {
        if (!m_mailbox)
            return;
        m_mailbox->close(); // before the ends, which a delivery that is queued would reach
        m_stop.request_stop();
    }

    // As AsyncStream::next().
    [[nodiscard]] auto next(std::stop_token stop = {}) { return m_ends->stream.next(std::move(stop)); }

private:
    friend class Work;

    struct Ends {
        Ends()
            : Ends(AsyncStream<T>::make())
        {}
        explicit Ends(std::pair<AsyncStream<T>, typename AsyncStream<T>::Producer> ends)
            : stream(std::move(ends.first))
            , producer(std::move(ends.second))
        {}
        AsyncStream<T> stream;
        typename AsyncStream<T>::Producer producer;
    };

    // A job that runs `work` and posts what comes of it. The pointer is good for as long as the box is open.
    [[nodiscard]] std::function<void(const std::stop_token &)>
    job(std::function<void(const Report<T> &, const std::stop_token &)> work) const
    {
        return [producer = &m_ends->producer, box = m_mailbox, stop = m_stop,
                work = std::move(work)](const std::stop_token &ending) {
            const std::stop_callback onEnd(ending, [stop]() mutable { stop.request_stop(); });
            try {
                throwIfStopped(stop.get_token()); // it waited for a thread until nobody wanted it
                work(
                    [&](T result) {
                        box->post([producer, result = std::move(result)] { producer->yield(result); });
                    },
                    stop.get_token());
                box->post([producer] { producer->finish(); });
            } catch (...) {
                box->post([producer, error = std::current_exception()] { producer->fail(error); });
            }
        };
    }

    std::shared_ptr<Mailbox> m_mailbox = std::make_shared<Mailbox>();
    std::stop_source m_stop;
    std::unique_ptr<Ends> m_ends;
};

template <typename T>
Work::Results<T> Work::start(std::function<void(const Report<T> &, const std::stop_token &)> work)
{
    Results<T> results;
    if (m_ending.stop_requested())
        results.m_ends->producer.fail(std::make_exception_ptr(CancelledError()));
    else
        enqueue(results.job(std::move(work)));
    return results;
}

template <typename Function>
auto Work::run(Function work, std::stop_token stop)
{
    if constexpr (std::is_invocable_v<Function, std::stop_token>) {
        using T = std::invoke_result_t<Function, std::stop_token>;
        return first<T>(std::move(work), std::move(stop));
    } else {
        using T = std::invoke_result_t<Function>;
        return first<T>([work = std::move(work)](std::stop_token) { return work(); }, std::move(stop));
    }
}

template <typename T>
QCoro::Task<T> Work::first(std::function<T(std::stop_token)> work, std::stop_token stop)
{
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
    Results<Value> results =
        start<Value>([work = std::move(work)](const Report<Value> &report, const std::stop_token &stopped) {
            if constexpr (std::is_void_v<T>) {
                work(stopped);
                report({});
            } else {
                report(work(stopped));
            }
        });
    std::optional<Value> result = co_await results.next(stop);
    if constexpr (!std::is_void_v<T>)
        co_return std::move(*result);
}

template <typename T>
QCoro::Task<std::optional<T>> Work::ask(std::function<T()> question, std::chrono::milliseconds limit,
                                        std::stop_token stop, Outside outside)
{
    throwIfStopped(m_ending.get_token());
    Results<T> results;
    const auto job =
        results.job([question = std::move(question)](const Report<T> &report, const std::stop_token &) {
            report(question());
        });
    if (!detach([job] { job({}); }, outside))
        co_return std::nullopt;
    auto producer = results.m_ends->producer;
    const auto alarm = m_clock.after(limit, [producer]() mutable { producer.finish(); });
    std::optional<T> answer = co_await results.next(stop);
    co_return answer;
}

} // namespace morvane
