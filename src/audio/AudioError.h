#pragma once

#include "utils/text/ErrorFamily.h"

namespace morvane {

// Why nothing could be recorded, understood or played.
struct AudioErrorCases {
    enum class Case {
        microphonePermissionDenied,
        speechRecognitionPermissionDenied,
        microphoneRestricted,
        speechRecognitionRestricted,
        speechRecognizerUnavailable,
        onDeviceRecognitionUnavailable,
        noMicrophone,
        captureFailed,
        recognitionFailed,
        playbackFailed,
    };
};

class AudioError final : public ErrorFamily<AudioErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;
};

} // namespace morvane
