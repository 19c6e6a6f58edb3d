#pragma once

#include "audio/AudioError.h"
#include "audio/AudioPermitting.h"

#include <optional>

namespace morvane {

// The two permissions that speaking to the program needs. GUI thread.
class AudioPermissionService {
public:
    // `desktop` outlives this object.
    explicit AudioPermissionService(AudioPermitting &desktop);

    [[nodiscard]] PermissionState microphone() const { return m_states.microphone; }
    [[nodiscard]] PermissionState speechRecognition() const { return m_states.speechRecognition; }
    [[nodiscard]] bool microphoneRestricted() const { return m_states.microphoneRestricted; }
    [[nodiscard]] bool speechRecognitionRestricted() const { return m_states.speechRecognitionRestricted; }

    // Reads anew what the desktop allows.
    void refresh();
    [[nodiscard]] QCoro::Task<> requestMicrophone(std::stop_token stop);
    [[nodiscard]] QCoro::Task<> requestSpeechRecognition(std::stop_token stop);

    // Reads anew and asks for what isn't decided yet.
    [[nodiscard]] QCoro::Task<> settle(std::stop_token stop);

    // Why nothing may be heard; nothing when both are granted.
    [[nodiscard]] std::optional<AudioError> refusal() const;

private:
    AudioPermitting &m_desktop;
    AudioPermitting::States m_states;
};

} // namespace morvane
