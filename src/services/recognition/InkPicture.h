#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morvane {

// Pixels of a screen, four bytes each: blue, green, red and one that doesn't count. Top row first, none of
// them padded: pixels.size() == 4 * width * height.
struct ScreenPixels {
    int width = 0;
    int height = 0;
    std::span<const std::uint8_t> pixels;
};

// A screen as if all of it were printed black on white.
//
// A screen holds light and dark windows side by side, and coloured ones. A recogniser that tells ink from
// paper by one brightness for the whole picture reads one kind of them and loses the others. So each pixel is
// replaced by how much it differs, in any of its colours, from the surface that it lies on: 255 for none.
namespace InkPicture {

// A byte for each pixel, top row first.
[[nodiscard]] std::vector<std::uint8_t> of(const ScreenPixels &screen);

} // namespace InkPicture

} // namespace morvane
