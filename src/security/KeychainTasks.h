#pragma once

#include "security/KeychainServicing.h"

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

class Work;

// The keychain's calls for the GUI thread: they run beside it and answer by co_await. Throw what the call
// throws. `keychain` outlives the end of `work`.
namespace KeychainTasks {

QCoro::Task<> save(Work &work, KeychainServicing &keychain, QString value, QString account);
QCoro::Task<> remove(Work &work, KeychainServicing &keychain, QString account);

// May prompt, with `reason`.
QCoro::Task<std::optional<QString>> read(Work &work, KeychainServicing &keychain, QString account,
                                         QString reason, std::stop_token stop);

} // namespace KeychainTasks

} // namespace morvane
