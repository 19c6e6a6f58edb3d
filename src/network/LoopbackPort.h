#pragma once

#include <optional>

namespace morvane {

// A place on 127.0.0.1 for a server of this program's own.
namespace LoopbackPort {

// One that nobody listens at now; nothing when the system has none. Somebody else may be quicker to take it.
// Any thread.
[[nodiscard]] std::optional<int> unused();

} // namespace LoopbackPort

} // namespace morvane
