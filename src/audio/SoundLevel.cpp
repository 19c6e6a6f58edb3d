#include "audio/SoundLevel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace morvane {

namespace {

constexpr double quietest = -60; // decibels of full scale

} // namespace

float SoundLevel::of(std::span<const std::int16_t> samples)
{
    double energy = 0;
    for (const std::int16_t sample : samples)
        energy += static_cast<double>(sample) * sample;
    if (energy <= 0)
        return 0;
    const double loudest = std::numeric_limits<std::int16_t>::max();
    const double decibels =
        10 * std::log10(energy / static_cast<double>(samples.size()) / (loudest * loudest));
    return static_cast<float>(std::clamp(1 - decibels / quietest, 0.0, 1.0));
}

} // namespace morvane
