#pragma once

#include "security/KeychainServicing.h"

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

// The keychain's calls for the GUI thread: they run on the thread pool and answer by co_await. Throw what the
// call throws. `keychain` outlives the pool's work.
namespace KeychainTasks {

QCoro::Task<> save(KeychainServicing *keychain, QString value, QString account);
QCoro::Task<> remove(KeychainServicing *keychain, QString account);

// May prompt, with `reason`.
QCoro::Task<std::optional<QString>> read(KeychainServicing *keychain, QString account, QString reason,
                                         std::stop_token stop);

} // namespace KeychainTasks

} // namespace morvane
