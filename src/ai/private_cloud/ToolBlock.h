#pragma once

#include "ai/contract/AIMessage.h"

#include <QStringView>

#include <vector>

namespace morvane {

// Tool calls as a model writes them into the text of its reply.
namespace ToolBlock {

inline constexpr QStringView opening = u"<<<MORVANE_TOOL_CALLS>>>";
inline constexpr QStringView closing = u"<<<END_MORVANE_TOOL_CALLS>>>";

// The calls of what stands between the markers, a code fence around them included. Their ids are the prefix,
// "-" and the entry's number. Empty when nothing can be read.
[[nodiscard]] std::vector<AIToolCall> parseToolCalls(const QString &text, const QString &idPrefix);

} // namespace ToolBlock

} // namespace morvane
