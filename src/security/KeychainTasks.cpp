#include "security/KeychainTasks.h"

#include <QCoroFuture>
#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace {

template <typename T>
QFuture<T> onPool(std::function<T()> work)
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

} // namespace

QCoro::Task<> KeychainTasks::save(KeychainServicing *keychain, QString value, QString account)
{
    const auto saved = onPool<void>([=] { keychain->save(value, account); });
    co_await saved;
}

QCoro::Task<> KeychainTasks::remove(KeychainServicing *keychain, QString account)
{
    const auto removed = onPool<void>([=] { keychain->remove(account); });
    co_await removed;
}

QCoro::Task<std::optional<QString>> KeychainTasks::read(KeychainServicing *keychain, QString account,
                                                        QString reason, std::stop_token stop)
{
    const auto value = onPool<std::optional<QString>>([=] { return keychain->read(account, reason, stop); });
    co_return co_await value;
}
