#pragma once

#include <QColor>

namespace morvane {

// A colour of the desktop's choice that has to be read in this window.
namespace AccentInk {

// How far apart the luminances of two opaque colours are, 1 to 21, as the guidelines for accessible content
// on the web count it.
[[nodiscard]] double contrast(const QColor &one, const QColor &other);

// The colour nearest to `wanted`, towards black or white, that stands out from `ground` by `ratio` at least:
// away from the ground's own side. Where none does, black or white itself.
[[nodiscard]] QColor readable(const QColor &wanted, const QColor &ground, double ratio);

} // namespace AccentInk

} // namespace morvane
