#pragma once

#include "async/AsyncStream.h"

#include <QCoroTask>
#include <QObject>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace morvane {

// Work that the GUI thread must not wait for.
namespace Background {

// Where a thread leaves its result. It is closed on the GUI thread, after which nothing reaches it.
class Mailbox {
public:
    template <typename Delivery>
    void post(Delivery delivery)
    {
        const std::scoped_lock lock(m_mutex);
        if (m_receiver)
            QMetaObject::invokeMethod(m_receiver.get(), std::move(delivery), Qt::QueuedConnection);
    }

    void close()
    {
        const std::scoped_lock lock(m_mutex);
        m_receiver.reset();
    }

private:
    std::mutex m_mutex;
    std::unique_ptr<QObject> m_receiver = std::make_unique<QObject>(); // guarded by m_mutex
};

// What `work` returns or throws, or CancelledError as soon as `stop` is triggered. It runs on a thread of its
// own that nobody joins, so work that hangs in the system delays neither the caller nor the end of the
// program; what it refers to must live that long. GUI thread.
template <typename T>
[[nodiscard]] QCoro::Task<T> run(std::function<T()> work, std::stop_token stop)
{
    auto ends = AsyncStream<T>::make();
    const auto mailbox = std::make_shared<Mailbox>();
    // Before `ends`, which a delivery that is still queued would reach.
    const auto closing = [](Mailbox *box) { box->close(); };
    const std::unique_ptr<Mailbox, decltype(closing)> closed(mailbox.get(), closing);

    const auto producer = &ends.second;
    std::thread([mailbox, producer, work = std::move(work)] {
        try {
            mailbox->post([producer, result = work()] { producer->yield(result); });
        } catch (...) {
            mailbox->post([producer, error = std::current_exception()] { producer->fail(error); });
        }
    }).detach();
    std::optional<T> result = co_await ends.first.next(stop);
    co_return std::move(*result);
}

} // namespace Background

} // namespace morvane
