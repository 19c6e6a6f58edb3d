#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace morvane {

// Rich text (RTF) as the words that a person reads in it.
namespace RichText {

// Deeper ones are no document that anybody wrote.
inline constexpr qsizetype maxDepth = 1000;

// The text alone: a line for each paragraph and for each row of a table, whose cells stand between tabs.
// Without what isn't shown (hidden and deleted words, pictures, styles, headers, instructions of fields).
//
// One pass over the bytes, in memory of the order of their number. A document that ends early gives what it
// has. Nothing when the bytes are no rich text, or its groups are deeper than `maxDepth`.
[[nodiscard]] std::optional<QString> text(QByteArrayView bytes);

} // namespace RichText

} // namespace morvane
