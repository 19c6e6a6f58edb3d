#pragma once

#include "audio/AudioCapturing.h"

#include <QObject>

#include <memory>

namespace morvane {

class AudioThread;
class CapturedSound;

// A microphone of the sound server, by Qt Multimedia.
class AudioInput final : public QObject, public AudioCapturing {
public:
    // `thread` outlives this object.
    explicit AudioInput(AudioThread &thread);
    ~AudioInput() override;

    [[nodiscard]] QCoro::Task<Binding> bind(std::optional<QString> deviceUID, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<> start(Tap tap, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<> stop(std::stop_token stop) override;

private:
    // Deletes it on its own thread, behind what was asked of it.
    struct Release {
        void operator()(CapturedSound *sound) const;
    };

    AudioThread &m_thread;
    const std::unique_ptr<CapturedSound, Release> m_sound;
    std::function<void()> m_lost;
};

} // namespace morvane
