#pragma once

#include <cstdint>
#include <span>

namespace morvane {

// How loud a moment of sound is, as a meter shows it.
namespace SoundLevel {

// 0 for silence, 1 for full scale, and evenly in decibels between.
[[nodiscard]] float of(std::span<const std::int16_t> samples);

} // namespace SoundLevel

} // namespace morvane
