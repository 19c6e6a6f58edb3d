#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// What became of an ability that a line of a reply tells of.
enum class ToolLineState {
    running,
    finished,
    failed,
    declined, // it asked, and got no yes
    stopped,  // its turn ended before it did
    note,     // no ability: a remark about all of them
};

template <>
inline constexpr std::array rawTexts<ToolLineState>{
    QLatin1StringView("running"),  QLatin1StringView("finished"), QLatin1StringView("failed"),
    QLatin1StringView("declined"), QLatin1StringView("stopped"),  QLatin1StringView("note")};

} // namespace morvane
