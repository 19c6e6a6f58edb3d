#pragma once

#include <QString>

namespace morvane {

// Text from outside the conversation, marked so that a model reads it as data and never as instructions.
namespace UntrustedContent {

// The line start that tells marked content apart, also inside a message.
inline constexpr QStringView beginMarker = u"--- BEGIN UNTRUSTED CONTENT (";

// Wraps `body` between a begin and an end line that share a random id. The body cannot forge an end line:
// the marker's words in it are defused in any letter case.
[[nodiscard]] QString wrap(const QString &body, const QString &source);

} // namespace UntrustedContent

} // namespace morvane
