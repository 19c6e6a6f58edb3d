#pragma once

#include "markdown/Block.h"

namespace morvane {

// Turns the text of a reply into blocks. Not all of Markdown: block structure is decided line by line, and
// only the spans inside a block go to a Markdown parser.
//
// Any text parses, and so does any part of one that is still being written. Time and memory grow with the
// length of the text, whatever it holds. For the main thread.
namespace MarkdownRenderer {

[[nodiscard]] Blocks parse(QStringView text);

// The same, kept for the 400 texts that were asked for last, so that a finished message draws for nothing.
[[nodiscard]] Blocks blocks(const QString &text);

// The kept blocks are readable chat text: drop them where that must go.
void forgetBlocks();

enum class CodeInSpeech { announced, read };

// What a voice says for the text: no marks, and for fenced code either its words or a phrase in its place.
[[nodiscard]] QString speakable(const QString &text, CodeInSpeech code);

} // namespace MarkdownRenderer

} // namespace morvane
