#pragma once

#include "view_models/settings/ConnectionFindings.h"

#include <QCoroTask>
#include <QPointer>

#include <functional>
#include <stop_token>

namespace morvane {

class AIRequestRouter;

// Tries the server that the settings name with a few short requests: whether it answers, whether it streams,
// what it makes of one harmless tool, and whether its model sees pictures where that can be known.
namespace ConnectionTrial {

enum class Tools { tried, leftOut };
using Report = std::function<void(ConnectionFindings::Finding)>; // may be called until the task ends

// Throws what the first request throws; of the others only CancelledError, and when the router goes.
[[nodiscard]] QCoro::Task<> run(QPointer<AIRequestRouter> router, Tools tools, Report report,
                                std::stop_token stop);

} // namespace ConnectionTrial

} // namespace morvane
