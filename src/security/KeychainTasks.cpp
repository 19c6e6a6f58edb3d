#include "security/KeychainTasks.h"

#include "async/PoolTask.h"

#include <QCoroFuture>

namespace morvane {

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

} // namespace morvane
