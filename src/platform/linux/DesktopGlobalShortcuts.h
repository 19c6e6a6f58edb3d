#pragma once

#include "services/GlobalShortcutBinding.h"

#include <memory>

namespace morvane {

// How this desktop hands keys to a program: the X server itself where it is the desktop's, else a portal.
// Null where there is neither.
[[nodiscard]] std::unique_ptr<GlobalShortcutBinding> globalShortcutsOfTheDesktop();

} // namespace morvane
