#pragma once

#include "ai/local/LocalRuntimeValues.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace morvane {

class Clock;
class HttpSessionProviding;
class SetupLog;
class Work;

// Fetches the runtime's archive and proves that it is the one meant.
namespace RuntimeDownload {

// What is referred to outlives the task.
struct Parts {
    HttpSessionProviding *network = nullptr;
    Work *work = nullptr;
    Clock *clock = nullptr;
    std::shared_ptr<SetupLog> log;
    LocalRuntimeValues values; // with an archive
};

// Bytes that are there, and all of them where that is known.
using OnProgress = std::function<void(qint64 done, std::optional<qint64> total)>;

// Where the archive lies, whole or not: it goes on after a break, also one of the program.
[[nodiscard]] QString path(const LocalRuntimeValues &values);

// Bytes of an archive of unknown size that are taken.
inline constexpr qint64 largestArchive = qint64{4} << 30;

// The archive's path once its digest is the pinned one; an archive with another digest is deleted. A
// connection that breaks is made anew a few times. Redirects are followed over https alone (and those of a
// release origin on this machine, on this machine). What was fetched stays after a stop and any failure but
// that of the digest. Throws LocalSetupError, TransportError, FileError, CancelledError.
[[nodiscard]] QCoro::Task<QString> run(Parts parts, OnProgress onProgress, std::stop_token stop);

} // namespace RuntimeDownload

} // namespace morvane
