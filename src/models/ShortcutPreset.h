#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// A key combination, the one its name says.
enum class ShortcutPreset {
    optionSpace,
    controlSpace,
    commandShiftSpace,
    optionC,
    optionV,
    functionF13,
    disabled
};

template <>
inline constexpr std::array rawTexts<ShortcutPreset>{
    QLatin1StringView("optionSpace"),       QLatin1StringView("controlSpace"),
    QLatin1StringView("commandShiftSpace"), QLatin1StringView("optionC"),
    QLatin1StringView("optionV"),           QLatin1StringView("functionF13"),
    QLatin1StringView("disabled")};

} // namespace morvane
