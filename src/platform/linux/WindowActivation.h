#pragma once

#include <QString>

class QWindow;

namespace morvane {

// Bringing a window to the front. A desktop lets a program do so on the strength of what the person just did:
// they pressed its key, clicked its notification or its icon. GUI thread.
namespace WindowActivation {

// What the desktop gave this process for that when it started it; empty for none. Asked before there is an
// application, which takes it.
[[nodiscard]] QString offered();

// What the desktop gave for that, for the next bringUp(): the token of xdg-activation, or on X11 an id of
// startup notification, which ends with the moment ("_TIME" and milliseconds). Nothing for an empty one.
void offer(const QString &token);

// To the front and to the keyboard, of a window that is shown.
void bringUp(QWindow &window);

} // namespace WindowActivation

} // namespace morvane
