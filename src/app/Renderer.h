#pragma once

namespace morvane {

// What draws the window.
namespace Renderer {

// OpenGL where a context of it can be made, else the processor: Qt Quick takes for granted that one can, and
// the process ends there when it can't. After the application object and before the first window.
void choose();

} // namespace Renderer

} // namespace morvane
