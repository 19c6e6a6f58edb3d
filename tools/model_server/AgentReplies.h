#pragma once

#include "Reply.h"

namespace morvane {

// What replies with tools are made of.
namespace AgentReplies {

// What the tools gave back since the user last spoke, first come first.
[[nodiscard]] QStringList toolResults(const Request &request);

[[nodiscard]] Reply saying(const QString &text);

// A call with a word ahead of it, as models like to write.
[[nodiscard]] Reply calling(const Request &request, const QString &tool, const QJsonObject &arguments);

} // namespace AgentReplies

} // namespace morvane
