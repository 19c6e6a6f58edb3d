#include "ai/tools/EventArguments.h"

#include <algorithm>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr double usualDuration = 30; // minutes
// About three thousand years on either side. A moment further away is none that a calendar could hold.
constexpr double furthestMoment = 1e11; // seconds
constexpr double secondsPerMinute = 60;
constexpr double millisecondsPerSecond = 1000;

} // namespace

std::optional<DesktopActing::EventWish> EventArguments::wish(const ToolArguments &arguments,
                                                             const QDateTime &asked)
{
    const auto title = arguments.text("title"_L1);
    const auto minutes = arguments.number("minutes_from_now"_L1);
    const double seconds = minutes.value_or(0) * secondsPerMinute;
    if (!title || !minutes || std::abs(seconds) > furthestMoment)
        return std::nullopt;
    const double duration = arguments.number("duration_minutes"_L1).value_or(usualDuration);
    return DesktopActing::EventWish{
        *title, asked.addMSecs(std::llround(seconds * millisecondsPerSecond)),
        static_cast<std::int64_t>(std::clamp(duration, -furthestMoment, furthestMoment))};
}

} // namespace morvane
