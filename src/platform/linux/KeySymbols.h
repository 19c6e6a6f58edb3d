#pragma once

#include <QKeyCombination>
#include <QString>

#include <cstdint>

namespace morvane {

// The keys of Qt as keyboards of the desktop name them (the keysyms of X11, which Wayland shares).
namespace KeySymbols {

// 0 for a key that has none.
[[nodiscard]] std::uint32_t of(Qt::Key key);

// As the portal's shortcuts take it, for instance "CTRL+SHIFT+space"; empty for a key without a keysym.
[[nodiscard]] QString trigger(QKeyCombination keys);

} // namespace KeySymbols

} // namespace morvane
