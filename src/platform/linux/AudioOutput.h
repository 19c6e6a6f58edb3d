#pragma once

#include "audio/AudioPlaying.h"

namespace morvane {

class AudioThread;

// The sound server's default output, by Qt Multimedia.
class AudioOutput final : public AudioPlaying {
public:
    // `thread` outlives this object.
    explicit AudioOutput(AudioThread &thread)
        : m_thread(thread)
    {}

    [[nodiscard]] QCoro::Task<> play(std::shared_ptr<AudioQueue> sound, std::stop_token stop) override;

private:
    AudioThread &m_thread;
};

} // namespace morvane
