#pragma once

#include "ai/local/LocalMachine.h"

namespace morvane {

namespace ListeningSockets {

// Those of the process and of all below it, by the files below `proc`; nothing when they can't be read, or
// the process isn't there.
[[nodiscard]] std::optional<std::vector<LocalMachine::Listener>> of(qint64 process, const QString &proc);

// Whether there is one at that port that isn't theirs.
[[nodiscard]] bool areShared(int port, qint64 process, const QString &proc);

} // namespace ListeningSockets

} // namespace morvane
