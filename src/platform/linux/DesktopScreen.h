#pragma once

#include "services/ScreenCapturing.h"

#include <memory>

namespace morvane {

class Clock;
class Work;

// How this desktop lets its screen be seen; null when it doesn't. Both outlive what is given.
[[nodiscard]] std::unique_ptr<ScreenCapturing> screenOfTheDesktop(Clock &clock, Work &work);

} // namespace morvane
