#pragma once

#include "models/ShortcutPreset.h"

#include <QKeyCombination>
#include <QString>

#include <optional>

namespace morvane {

// Combinations of keys, as the settings keep them and people read them.
namespace ShortcutKeys {

// None for `disabled`.
[[nodiscard]] std::optional<QKeyCombination> of(ShortcutPreset preset);
// The one that stands for these keys, if one does.
[[nodiscard]] std::optional<ShortcutPreset> preset(QKeyCombination keys);

// In English whatever the desktop speaks, for instance "Ctrl+Shift+Space".
[[nodiscard]] QString text(QKeyCombination keys);
// None for a text that names no single key that could be grabbed.
[[nodiscard]] std::optional<QKeyCombination> fromText(const QString &text);

// Not a key that writes, moves or confirms something wherever it is pressed: those need Ctrl, Alt or Meta.
[[nodiscard]] bool mayBeGlobal(QKeyCombination keys);

} // namespace ShortcutKeys

} // namespace morvane
