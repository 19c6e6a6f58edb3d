#pragma once

#include <array>
#include <optional>

namespace morvane {

// How the desktop wants windows to look, as far as it says. Plain values; equal ones are the same look.
struct DesktopLook {
    bool isDark = false;
    bool hasHighContrast = false;
    bool hasReducedMotion = false;
    std::optional<std::array<double, 3>> accent; // red, green and blue of sRGB, each 0 to 1; absent for none

    bool operator==(const DesktopLook &) const = default;
};

} // namespace morvane
