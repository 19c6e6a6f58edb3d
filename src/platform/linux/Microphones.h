#pragma once

#include "audio/MicrophoneDevices.h"

#include <QAudioDevice>

namespace morvane {

class AudioThread;

// The microphones that the sound server has. Qt leaves out what only listens to a loudspeaker, doesn't tell
// of changes, and doesn't know the default.
class Microphones final : public MicrophoneDevices {
public:
    struct Found {
        QAudioDevice device; // null for none
        bool isChosen = false;
    };

    // `thread` outlives this object.
    explicit Microphones(AudioThread &thread)
        : m_thread(thread)
    {}

    [[nodiscard]] QCoro::Task<std::vector<Device>> all(std::stop_token stop) override;

    // The device of that uid, or else the server's default. For the audio thread.
    [[nodiscard]] static Found find(const std::optional<QString> &uid);

private:
    AudioThread &m_thread;
};

} // namespace morvane
