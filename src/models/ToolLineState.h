#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// What became of an ability that a line of a reply tells of.
enum class ToolLineState { running, finished, failed };

template <>
inline constexpr std::array rawTexts<ToolLineState>{
    QLatin1StringView("running"), QLatin1StringView("finished"), QLatin1StringView("failed")};

} // namespace morvane
