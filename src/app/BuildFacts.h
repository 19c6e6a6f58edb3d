#pragma once

#include "services/BugReportService.h"

namespace morvane {

// Which program this is: name and version, commit, deployment, what it was built with and runs on.
[[nodiscard]] BugReportService::Facts buildFacts();

} // namespace morvane
