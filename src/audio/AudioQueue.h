#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>

namespace morvane {

// Sound on its way from one thread to another: 16-bit samples, one channel, 16,000 a second, which is what
// the recogniser and the voices work with. It holds a bounded number of samples and wipes what was read. Any
// thread.
class AudioQueue {
public:
    static constexpr int sampleRate = 16'000;

    // What `seconds` of sound are.
    [[nodiscard]] static constexpr std::size_t samplesIn(std::size_t seconds) { return seconds * sampleRate; }

    explicit AudioQueue(std::size_t mostSamples);
    ~AudioQueue();
    AudioQueue(const AudioQueue &) = delete;
    AudioQueue &operator=(const AudioQueue &) = delete;

    // Adds all of it, waiting for room. False once `stop` was triggered.
    bool write(std::span<const std::int16_t> samples, const std::stop_token &stop);

    // Adds what there is room for, without waiting, and returns how many samples that were.
    std::size_t offer(std::span<const std::int16_t> samples);

    // Nothing comes any more.
    void finish();

    // Finished, and all of it read.
    [[nodiscard]] bool isAtEnd() const;

    // As much as is there, up to the size of `samples`; how many that were.
    std::size_t read(std::span<std::int16_t> samples);

    // The same, but waits for the first sample: 0 means that the queue is at its end, or that `stop` was
    // triggered.
    std::size_t readOrWait(std::span<std::int16_t> samples, const std::stop_token &stop);

private:
    std::size_t take(std::span<std::int16_t> samples);
    std::size_t put(std::span<const std::int16_t> samples);

    mutable std::mutex m_mutex;
    std::condition_variable_any m_changed;
    const std::size_t m_size;
    const std::unique_ptr<std::int16_t[]> m_ring; // of fixed size, so that growing leaves no sound behind
    std::size_t m_first = 0;
    std::size_t m_count = 0;
    bool m_finished = false; // guarded by m_mutex, like the three above
};

} // namespace morvane
