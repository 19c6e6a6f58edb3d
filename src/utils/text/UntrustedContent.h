#pragma once

#include <QString>

namespace morvane {

// Text from outside the conversation, marked so that a model reads it as data and never as instructions.
namespace UntrustedContent {

// The line start that tells marked content apart, also inside a message.
inline constexpr QStringView beginMarker = u"--- BEGIN UNTRUSTED CONTENT (";

// The text with the marker's words spelled so that they mark nothing, whatever their letter case.
[[nodiscard]] QString defused(QString text);

// The text as one line of what can be seen: control and formatting characters and line ends are blanks.
[[nodiscard]] QString line(QString text);

// A name that came from outside, such as a file's, fit to stand in a line of our own: one line of what can be
// seen, not long, and without the marker's words and dashes.
[[nodiscard]] QString name(const QString &text);

// Wraps `body` between a begin and an end line that share a random id. Neither the body nor the name of its
// source can forge an end line: the marker's words in them are defused in any letter case.
[[nodiscard]] QString wrap(const QString &body, const QString &source);

// A text that may hold wrapped content, without what only a model needs: its lines and its advice.
struct Unwrapped {
    QString text;
    bool isMarked = false; // there was such content in it
};
[[nodiscard]] Unwrapped unwrap(const QString &text);

} // namespace UntrustedContent

} // namespace morvane
