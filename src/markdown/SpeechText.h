#pragma once

#include "markdown/MarkdownRenderer.h"

namespace morvane {

// How formatting is taken out of a text before it is spoken. Time grows with the length of the text.
namespace SpeechText {

[[nodiscard]] QString clean(QString text, MarkdownRenderer::CodeInSpeech code);

} // namespace SpeechText

} // namespace morvane
