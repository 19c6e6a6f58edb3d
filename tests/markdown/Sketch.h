#pragma once

#include "markdown/Block.h"

#include <string>

namespace morvane {

// Blocks in one short line, to compare and to read: p(Some <b>bold</b> words) ul(one, two) code[cpp](x). A
// line feed shows as "\n".
namespace Sketch {

[[nodiscard]] std::string of(const AttributedText &text);
[[nodiscard]] std::string of(const MarkdownRenderer::Block &block);
[[nodiscard]] std::string of(const MarkdownRenderer::Blocks &blocks);

} // namespace Sketch

} // namespace morvane
