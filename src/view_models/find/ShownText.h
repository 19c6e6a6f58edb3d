#pragma once

#include "markdown/Block.h"

#include <QStringList>

namespace morvane {

// The words of a message as they are drawn, from the top down, each paragraph, line of code, cell and label
// by itself. What the window leaves out isn't among them.
namespace ShownText {

[[nodiscard]] QStringList of(const MarkdownRenderer::Block &block);
// Of what the person said.
[[nodiscard]] QStringList of(const QString &message);

} // namespace ShownText

} // namespace morvane
