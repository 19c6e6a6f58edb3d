#include "security/KeychainTasks.h"

#include "async/Work.h"

namespace morvane {

QCoro::Task<> KeychainTasks::save(Work &work, KeychainServicing &keychain, QString value, QString account)
{
    const auto saving = [&keychain, value, account] { keychain.save(value, account); };
    co_await work.run(saving);
}

QCoro::Task<> KeychainTasks::remove(Work &work, KeychainServicing &keychain, QString account)
{
    const auto removing = [&keychain, account] { keychain.remove(account); };
    co_await work.run(removing);
}

QCoro::Task<std::optional<QString>> KeychainTasks::read(Work &work, KeychainServicing &keychain,
                                                        QString account, QString reason, std::stop_token stop)
{
    const auto reading = [&keychain, account, reason](const std::stop_token &stopped) {
        return keychain.read(account, reason, stopped);
    };
    std::optional<QString> value = co_await work.run(reading, stop);
    co_return value;
}

} // namespace morvane
