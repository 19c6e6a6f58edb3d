#pragma once

#include "ai/contract/AIMessage.h"
#include "models/ToolDetail.h"

namespace morvane {

// What a reply keeps of a call, for the person to look at: shortened to a few pages, and without the marks
// that stand around content from outside for the model.
namespace ToolDetails {

[[nodiscard]] ToolDetail of(const AIToolCall &call);
[[nodiscard]] ToolDetail of(const AIToolCall &call, const AIToolResult &result);

} // namespace ToolDetails

} // namespace morvane
