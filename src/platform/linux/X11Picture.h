#pragma once

#include "services/ScreenPicture.h"

#include <stop_token>

namespace morvane {

// What an X server shows on its main display, put together from its windows without those of one process.
//
// Each window's own contents are asked for (the Composite extension), so what lies behind a window that is
// left out is whole.
namespace X11Picture {

// Waits on the server and for programs to draw what was covered; for a thread of Work. `display` is the
// server's name, or null for the session's. Throws ScreenCaptureFailure, and CancelledError when `stop` is
// triggered.
[[nodiscard]] ScreenPicture take(const char *display, qint64 withoutProcess, double pixelsPerPoint,
                                 const std::stop_token &stop);

} // namespace X11Picture

} // namespace morvane
