#pragma once

#include <QCoroTask>

#include <stop_token>

namespace morvane {

enum class PermissionState { notDetermined, granted, denied };

// What the desktop allows this program to hear. GUI thread.
class AudioPermitting {
public:
    struct States {
        PermissionState microphone = PermissionState::notDetermined;
        PermissionState speechRecognition = PermissionState::notDetermined;
        // A rule of the machine forbids it, so that asking is of no use.
        bool microphoneRestricted = false;
        bool speechRecognitionRestricted = false;
    };

    virtual ~AudioPermitting() = default;

    // Without waiting for anybody.
    [[nodiscard]] virtual States states() const = 0;
    // Ask the person, where nothing is decided yet.
    [[nodiscard]] virtual QCoro::Task<PermissionState> requestMicrophone(std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<PermissionState> requestSpeechRecognition(std::stop_token stop) = 0;
};

} // namespace morvane
