#pragma once

#include "platform/linux/TimeoutFlag.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <stop_token>

namespace morvane {

// One program, run to its end on the calling thread, which may not be the GUI's.
namespace ShortcutProcess {

// Of what it prints so much is kept. The rest is read and dropped, so it never waits for its reader.
inline constexpr qsizetype mostKept = 64 << 10; // bytes

struct Program {
    QString path;
    QStringList arguments;
    QString folder; // that it begins in
};

struct End {
    bool timedOut = false;
    int exitCode = -1; // -1 for a program that couldn't be started or ended by a signal
    QByteArray output; // what it printed to standard output, cut
};

// It gets a session and a process group of its own, nothing to read, no terminal, none of our descriptors and
// few of our variables. However it ends, its group has ended with it when this returns. Throws CancelledError
// once `stop` is triggered.
[[nodiscard]] End run(const Program &program, TimeoutFlag &flag, const std::stop_token &stop);

} // namespace ShortcutProcess

} // namespace morvane
