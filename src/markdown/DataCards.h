#pragma once

#include "markdown/Block.h"

namespace morvane {

// Fenced blocks that carry data: a reply writes them in lines such as "left | right".
namespace DataCards {

// Whether a fence of that language may be a card.
[[nodiscard]] bool isTyped(QStringView language);

// Nothing when the language names no card, or when the lines don't make one.
[[nodiscard]] std::optional<MarkdownRenderer::Block> card(QStringView language, QStringView text);

// A table written inside a fence. Nothing when a line of it would be left out.
[[nodiscard]] std::optional<MarkdownRenderer::Table> table(QStringView text);

} // namespace DataCards

} // namespace morvane
