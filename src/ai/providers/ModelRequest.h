#pragma once

#include "network/HttpSession.h"

#include <optional>

namespace morvane {

// What every request to a model's server has: who asks, the key where there is one, and a rule that follows
// redirects only to addresses that the person could have entered. A GET until it is made another.
namespace ModelRequest {

[[nodiscard]] HttpRequest to(QUrl url, const std::optional<QString> &apiKey);

} // namespace ModelRequest

} // namespace morvane
