#pragma once

#include "ai/tools/ToolArguments.h"
#include "services/DesktopActing.h"

#include <optional>

namespace morvane {

// What a call of create_calendar_event asks for. Pure.
namespace EventArguments {

// `asked` is when the call was made, which its minutes count from. Nothing without a title and a start that a
// calendar could hold.
[[nodiscard]] std::optional<DesktopActing::EventWish> wish(const ToolArguments &arguments,
                                                           const QDateTime &asked);

} // namespace EventArguments

} // namespace morvane
