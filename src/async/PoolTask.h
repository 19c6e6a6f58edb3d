#pragma once

#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace morvane {

// Runs `work` on the global thread pool; what it throws arrives with the answer. A consumer that has gone
// doesn't stop it, so `work` owns all that it touches.
template <typename T>
[[nodiscard]] QFuture<T> onPool(std::function<T()> work)
{
    const auto promise = std::make_shared<QPromise<T>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = std::move(work)] {
        try {
            if constexpr (std::is_void_v<T>)
                work();
            else
                promise->addResult(work());
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    return promise->future();
}

} // namespace morvane
