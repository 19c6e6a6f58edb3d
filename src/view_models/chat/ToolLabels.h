#pragma once

#include "ai/contract/AIMessage.h"

#include <QString>
#include <QStringList>

namespace morvane {

// What the chat shows of the tools that ran during a reply.
namespace ToolLabels {

[[nodiscard]] QString running(const AIToolCall &call);
[[nodiscard]] QString finished(const AIToolCall &call);
[[nodiscard]] QString failed(const AIToolCall &call);

// The line of a reply whose server takes no tools, and how that is mended.
[[nodiscard]] QString rejected();

[[nodiscard]] bool isScreenReading(const AIToolCall &call);

// The line that a finished reading of the screen leaves. In chats from before they carried a mark of their
// own it is all that tells of the reading.
[[nodiscard]] QString finishedScreenReading();

// Hosts of the web pages that a call and its result name, in order, each once. Empty for tools that read no
// web content.
[[nodiscard]] QStringList sourceDomains(const AIToolCall &call, const AIToolResult &result);

// The host of the page that a call reads; empty for any other call.
[[nodiscard]] QString pageHost(const AIToolCall &call);

} // namespace ToolLabels

} // namespace morvane
