#pragma once

#include "audio/AudioQueue.h"

#include <vector>

namespace morvane {

// The stretch of speech that is worked on. Bounded, since a model hears half a minute at a time, and wiped as
// it goes.
class WhisperSound {
public:
    static constexpr std::size_t most = AudioQueue::samplesIn(20);

    WhisperSound();
    ~WhisperSound();
    WhisperSound(const WhisperSound &) = delete;
    WhisperSound &operator=(const WhisperSound &) = delete;

    // As much of what waits there as there is room for.
    void take(AudioQueue &queue);
    [[nodiscard]] bool isFull() const { return m_samples.size() == most; }
    [[nodiscard]] std::span<const std::int16_t> samples() const { return m_samples; }

    // Whether anything in it is louder than a quiet room. Of silence a model makes words.
    [[nodiscard]] bool isAudible() const;
    // Where it is best cut in two: the quietest moment of its second half.
    [[nodiscard]] std::size_t quietestCut() const;
    // Forgets the first of it.
    void drop(std::size_t count);

private:
    std::vector<std::int16_t> m_samples; // never grows beyond what was reserved at the start
};

} // namespace morvane
