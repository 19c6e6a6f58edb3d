#pragma once

#include "markdown/Block.h"

namespace morvane {

// Blocks in one short line, to compare and to read: p(Some <b>bold</b> words) ul(one, two) code[cpp](x).
namespace Sketch {

[[nodiscard]] QString of(const AttributedText &text);
[[nodiscard]] QString of(const MarkdownRenderer::Blocks &blocks);

} // namespace Sketch

} // namespace morvane
