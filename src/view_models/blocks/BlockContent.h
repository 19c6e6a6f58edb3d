#pragma once

#include "markdown/Block.h"

#include <QVariantMap>

namespace morvane {

// A block of a reply in the shape that a component can bind to.
namespace BlockContent {

// More entries of a card than this are counted ("more") and not drawn.
constexpr qsizetype mostEntries = 100;

[[nodiscard]] QVariantMap of(const MarkdownRenderer::Block &block);

// The block in words alone: what a screen reader says and what is copied.
[[nodiscard]] QString plainText(const MarkdownRenderer::Block &block);
[[nodiscard]] QString plainText(const MarkdownRenderer::Blocks &blocks); // a blank line between them

} // namespace BlockContent

} // namespace morvane
