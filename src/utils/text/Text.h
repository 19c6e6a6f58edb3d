#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace morvane {

// Text measured in characters as people see them: extended grapheme clusters (Unicode UAX #29). A cluster may
// have any number of marks, so one that is longer than `longestCharacter` counts as several, and a limit in
// characters is one in bytes as well.
//
// "Whitespace and newlines" is the Unicode categories Z*, U+0009 to U+000D and U+0085. "Blanks" are spaces
// and tabs only.
namespace Text {

inline constexpr qsizetype longestCharacter = 20; // UTF-16 units; the longest emoji have 19

[[nodiscard]] qsizetype characterCount(QStringView text);

// Whether the text has `count` characters or more. Looks no further than it must.
[[nodiscard]] bool hasAtLeast(QStringView text, qsizetype count);

// The first `count` characters; the whole text when it has no more than that.
[[nodiscard]] QString prefix(QStringView text, qsizetype count);

// The text without its last `count` characters; empty when it has no more than that.
[[nodiscard]] QString droppingLast(QStringView text, qsizetype count);

// Without whitespace and newlines at both ends.
[[nodiscard]] QString trimmed(QStringView text);

// Without whitespace and newlines at its beginning.
[[nodiscard]] QStringView leadingTrimmed(QStringView text);

// Without spaces and tabs at both ends; line ends stay.
[[nodiscard]] QStringView trimmedBlanks(QStringView text);
[[nodiscard]] QByteArrayView trimmedBlanks(QByteArrayView text);

// Nothing when the bytes are not valid UTF-8 as a whole. A leading U+FEFF stays part of the text.
[[nodiscard]] std::optional<QString> fromUtf8(QByteArrayView bytes);

} // namespace Text

} // namespace morvane
