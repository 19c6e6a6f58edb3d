#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

enum class AppAppearance { system, light, dark, gallery };

template <>
inline constexpr std::array rawTexts<AppAppearance>{QLatin1StringView("system"), QLatin1StringView("light"),
                                                    QLatin1StringView("dark"), QLatin1StringView("gallery")};

} // namespace morvane
