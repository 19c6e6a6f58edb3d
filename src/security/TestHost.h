#pragma once

namespace morvane {

// A run that a test harness hosts. It must not touch the person's own data: no moves, no sweep, no change to
// the data key.
namespace TestHost {

[[nodiscard]] bool isActive();

} // namespace TestHost

} // namespace morvane
