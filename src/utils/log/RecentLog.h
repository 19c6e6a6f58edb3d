#pragma once

#include "utils/log/Log.h"

#include <QStringList>

namespace morvane {

// The newest lines of the log, in memory alone, for a report that a person may hand on: formats with their
// numbers. Every text stands as "<text>" there, the public ones as well, as a host or a folder may be among
// them. Any thread.
namespace RecentLog {

inline constexpr qsizetype most = 200; // lines

void note(QLatin1StringView category, QLatin1StringView format, const std::vector<Log::Argument> &arguments);

// Oldest first, each behind its seconds since the first line of the run.
[[nodiscard]] QStringList lines();

} // namespace RecentLog

} // namespace morvane
