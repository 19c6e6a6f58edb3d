#pragma once

#include "documents/DocumentImporting.h"

#include <QByteArray>

namespace morvane {

// A picture as a model gets it. For a confined process.
namespace Picture {

inline constexpr int longestSide = 1536;            // pixels
inline constexpr qsizetype wantedBytes = 5'242'880; // what is larger is encoded once more, coarser

// JPEG of the picture: upright, in sRGB, on white where it is transparent, no side longer than `longestSide`,
// and with nothing in it but the pixels. Of several frames the first. Empty when the bytes are no picture,
// one that is drawn by instructions, or one whose pixels would take too much memory: that is judged by its
// head.
[[nodiscard]] PreparedPicture prepared(QByteArray bytes);

} // namespace Picture

} // namespace morvane
