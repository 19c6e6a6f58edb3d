#pragma once

#include <QIcon>

namespace morvane {

// The program's drawing in the sizes that window managers and panels use. Painted here, because Qt's own
// reader of such files is a plugin that not every release brings along with the library.
[[nodiscard]] QIcon windowIcon();

} // namespace morvane
