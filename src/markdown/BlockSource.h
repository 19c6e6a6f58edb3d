#pragma once

#include <QString>

namespace morvane {

// The text that blocks were read from.
namespace BlockSource {

// The lines that the blocks from `first` to `last` (of those that parsing `text` gives) were written in, as
// they were written; with those of neighbours that share a line with them, and all of the text where that
// doesn't tell them apart. Blocks that there aren't are left out. Reads all of the text; any thread.
[[nodiscard]] QString of(const QString &text, qsizetype first, qsizetype last);

} // namespace BlockSource

} // namespace morvane
