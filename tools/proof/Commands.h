#pragma once

#include "Options.h"
#include "Report.h"

namespace morvane {

// The five things the program can check. Each reads its file, runs the application's own checks one by one
// and reports them. Throws UsageError when a file can't be read.
namespace Commands {

[[nodiscard]] Report run(const Options &options);

} // namespace Commands

} // namespace morvane
