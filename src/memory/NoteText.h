#pragma once

#include <QString>

namespace morvane {

// How notes are compared. Two notes that differ only in case, spacing or punctuation are the same note.
namespace NoteText {

inline constexpr qsizetype maxCharacters = 240;

// What is stored of a text: trimmed, then its first characters. Empty when there is nothing to store.
[[nodiscard]] QString stored(const QString &text);

// Lower-case words of letters and digits, one space between. Canonically equal texts give the same form.
[[nodiscard]] QString normalized(const QString &text);

// Whether a note is meant by a description, both in normalized form: it contains the description as it
// stands, or each of its words that has more than two characters.
[[nodiscard]] bool matches(const QString &note, const QString &description);

} // namespace NoteText

} // namespace morvane
