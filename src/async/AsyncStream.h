#pragma once

#include "async/CancelledError.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <coroutine>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

namespace morvane {

// Events from one producer to one consumer, in order, through an unbounded buffer. A stream ends normally or
// with an error; the error comes after every event that was yielded before it. Dropping the stream stops the
// producer through its stop token.
//
// Both ends live on one thread that runs an event loop. A waiting consumer is resumed from the event loop,
// never inside yield(), so a producer may yield from any callback.
template <typename T>
class AsyncStream {
    struct State;

public:
    class Producer;
    class Next;

    AsyncStream(AsyncStream &&) noexcept = default;
    AsyncStream &operator=(AsyncStream &&other) noexcept
    {
        AsyncStream former(std::exchange(m_state, std::move(other.m_state)));
        return *this;
    }
    ~AsyncStream()
    {
        if (m_state)
            m_state->abandon();
    }

    // A stream and its producer's end.
    static std::pair<AsyncStream, Producer> make()
    {
        auto state = std::make_shared<State>();
        return {AsyncStream(state), Producer(std::move(state))};
    }

    // co_await yields the next event, or nothing at the normal end, or throws the stream's error. Throws
    // CancelledError once `stop` is triggered, whatever is buffered. A stop that comes during the wait
    // reaches the producer at once, before the consumer is resumed: what else is queued must find it stopped.
    [[nodiscard]] Next next(std::stop_token stop = {}) { return Next(m_state, std::move(stop)); }

    // The next event if it is already here; never waits and never throws.
    [[nodiscard]] std::optional<T> takeBuffered() { return m_state->take(); }

private:
    explicit AsyncStream(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {}

    std::shared_ptr<State> m_state;
};

template <typename T>
struct AsyncStream<T>::State : std::enable_shared_from_this<State> {
    std::deque<T> buffer;
    bool ended = false;
    std::exception_ptr error;
    std::coroutine_handle<> waiter;
    bool wakesSoon = false; // a resumption is queued, meant for this waiter
    std::function<void()> onDrain;
    std::stop_source producerStop;
    bool wasStopped = false; // the consumer's own stop came

    std::optional<T> take()
    {
        if (buffer.empty())
            return std::nullopt;
        std::optional<T> event(std::move(buffer.front()));
        buffer.pop_front();
        if (onDrain)
            onDrain();
        return event;
    }

    void end(std::exception_ptr reason)
    {
        if (std::exchange(ended, true))
            return;
        error = std::move(reason);
        wake();
    }

    void abandon()
    {
        ended = true;
        buffer.clear();
        producerStop.request_stop();
    }

    void wake()
    {
        // One resumption for one wait: a second one would wake the next wait with nothing to tell it.
        if (!waiter || std::exchange(wakesSoon, true))
            return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self = this->shared_from_this()] {
                self->wakesSoon = false;
                std::exchange(self->waiter, {}).resume();
            },
            Qt::QueuedConnection);
    }
};

// The producer's end; copies share it. When the last copy goes without finish() or fail(), the stream ends
// with CancelledError.
template <typename T>
class AsyncStream<T>::Producer {
public:
    explicit Producer(std::shared_ptr<State> state)
        : m_end(std::make_shared<End>(std::move(state)))
    {}

    void yield(T event)
    {
        State &state = *m_end->state;
        if (state.ended)
            return;
        state.buffer.push_back(std::move(event));
        state.wake();
    }
    void finish() { m_end->state->end(nullptr); }
    void fail(std::exception_ptr error) { m_end->state->end(std::move(error)); }

    // Triggered when the consumer drops the stream, or is stopped.
    [[nodiscard]] std::stop_token stopToken() const { return m_end->state->producerStop.get_token(); }

    // Whether it was stopped, and didn't just have enough.
    [[nodiscard]] bool wasStopped() const { return m_end->state->wasStopped; }

    // Events that the consumer has not taken yet, for producers that hold back.
    [[nodiscard]] std::size_t buffered() const { return m_end->state->buffer.size(); }

    // Called each time the consumer takes an event.
    void onDrain(std::function<void()> drained) { m_end->state->onDrain = std::move(drained); }

private:
    struct End {
        explicit End(std::shared_ptr<State> s)
            : state(std::move(s))
        {}
        ~End() { state->end(std::make_exception_ptr(CancelledError())); }
        End(const End &) = delete;
        End &operator=(const End &) = delete;
        std::shared_ptr<State> state;
    };
    std::shared_ptr<End> m_end;
};

// A small handle on purpose: g++ 12 copies awaiters.
template <typename T>
class [[nodiscard]] AsyncStream<T>::Next {
public:
    Next(std::shared_ptr<State> state, std::stop_token stop)
        : m_state(std::move(state))
        , m_stop(std::move(stop))
    {}

    [[nodiscard]] bool await_ready() const
    {
        return !m_state->buffer.empty() || m_state->ended || m_stop.stop_requested();
    }

    void await_suspend(std::coroutine_handle<> handle)
    {
        m_state->waiter = handle;
        m_onStop = std::make_shared<StopCallback>(m_stop, End{m_state});
    }

    std::optional<T> await_resume()
    {
        m_onStop.reset();
        m_state->wasStopped = m_state->wasStopped || m_stop.stop_requested();
        throwIfStopped(m_stop);
        if (auto event = m_state->take())
            return event;
        if (m_state->error)
            std::rethrow_exception(m_state->error);
        return std::nullopt;
    }

private:
    struct End {
        std::shared_ptr<State> state;
        void operator()() const
        {
            state->wake();
            state->wasStopped = true;
            state->producerStop.request_stop();
        }
    };
    using StopCallback = std::stop_callback<End>;

    std::shared_ptr<State> m_state;
    std::stop_token m_stop;
    std::shared_ptr<StopCallback> m_onStop;
};

} // namespace morvane
