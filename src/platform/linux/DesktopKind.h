#pragma once

namespace morvane {

// What decides how this desktop is asked for things.
namespace DesktopKind {

// Also where an X server shows the window of this program: on a Wayland desktop it knows of no others.
[[nodiscard]] bool isWayland();

// The program runs in a package that lets it reach the desktop by portals alone.
[[nodiscard]] bool isSandboxed();

} // namespace DesktopKind

} // namespace morvane
