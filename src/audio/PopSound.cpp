#include "audio/PopSound.h"

#include "audio/AudioQueue.h"

#include <cmath>
#include <numbers>

namespace morvane {

namespace {

constexpr double seconds = 0.1;
constexpr double highest = 900; // Hz, at its start
constexpr double lowest = 300;
constexpr double loudest = 0.35 * 32'767;
constexpr double decay = 45;     // per second
constexpr double attack = 0.004; // seconds, so that it begins without a click

} // namespace

std::vector<std::int16_t> PopSound::samples()
{
    std::vector<std::int16_t> pop(static_cast<std::size_t>(seconds * AudioQueue::sampleRate));
    double phase = 0;
    for (std::size_t i = 0; i < pop.size(); ++i) {
        const double time = static_cast<double>(i) / AudioQueue::sampleRate;
        const double pitch = lowest + (highest - lowest) * std::exp(-decay * time);
        phase += 2 * std::numbers::pi * pitch / AudioQueue::sampleRate;
        const double swell = std::min(1.0, time / attack);
        pop[i] = static_cast<std::int16_t>(loudest * swell * std::exp(-decay * time) * std::sin(phase));
    }
    return pop;
}

} // namespace morvane
