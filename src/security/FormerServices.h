#pragma once

#include <QLatin1StringView>

#include <array>

namespace morvane {

// Names under which older builds kept their secrets, in the order in which they are looked for.
inline constexpr std::array<QLatin1StringView, 3> formerKeychainServices{
    QLatin1StringView("ai.quelmarfolk.macos"), QLatin1StringView("ai.quelmarfolk.mac"),
    QLatin1StringView("com.morvane.Quelmar")};

} // namespace morvane
