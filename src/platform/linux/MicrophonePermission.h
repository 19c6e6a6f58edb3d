#pragma once

#include "audio/AudioPermitting.h"

namespace morvane {

// A program that is installed as any other may listen, and recognition stays in it. Only a sandbox decides
// for itself, and says so by giving no microphone.
class MicrophonePermission final : public AudioPermitting {
public:
    [[nodiscard]] States states() const override
    {
        return {.microphone = PermissionState::granted, .speechRecognition = PermissionState::granted};
    }
    [[nodiscard]] QCoro::Task<PermissionState> requestMicrophone(std::stop_token) override
    {
        co_return PermissionState::granted;
    }
    [[nodiscard]] QCoro::Task<PermissionState> requestSpeechRecognition(std::stop_token) override
    {
        co_return PermissionState::granted;
    }
};

} // namespace morvane
