#pragma once

#include "markdown/AttributedText.h"

#include <QStringView>

namespace morvane {

// The spans inside a block: emphasis, code, links. Nothing that stands at the start of a line means anything
// here, and white space stays as it is.
namespace InlineMarkdown {

// Longer texts are plain behind this many UTF-16 units: on a hostile text the span parser's time grows with
// the square of its length, and no paragraph that anybody reads is that long.
constexpr qsizetype longestParsed = 8192;

// A text that isn't valid UTF-16 is plain. A link stays only when it leads to http or https; an image is its
// alternative text.
[[nodiscard]] AttributedText parse(QStringView text);

// Whether the characters mean nothing to the spans: putting them behind such a character changes nothing of
// what stands before, unless the last word is an address.
[[nodiscard]] bool isInert(QStringView text);

} // namespace InlineMarkdown

} // namespace morvane
