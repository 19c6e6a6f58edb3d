#pragma once

#include "platform/linux/AudioInput.h"
#include "platform/linux/AudioOutput.h"
#include "platform/linux/AudioThread.h"
#include "platform/linux/MicrophonePermission.h"
#include "platform/linux/Microphones.h"
#include "platform/linux/SpeechDispatcher.h"

namespace morvane {

// The ears and the mouth of this desktop, on one thread. GUI thread.
struct DesktopAudio {
    AudioThread thread;
    AudioOutput output{thread};
    Microphones microphones{thread};
    MicrophonePermission permission;
    SpeechDispatcher systemVoices;

    [[nodiscard]] std::unique_ptr<AudioCapturing> makeEngine()
    {
        return std::make_unique<AudioInput>(thread);
    }
};

} // namespace morvane
