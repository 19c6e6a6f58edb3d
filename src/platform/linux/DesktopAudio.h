#pragma once

#include "platform/linux/AudioOutput.h"
#include "platform/linux/AudioThread.h"

namespace morvane {

// The ears and the mouth of this desktop, on one thread. GUI thread.
struct DesktopAudio {
    AudioThread thread;
    AudioOutput output{thread};
};

} // namespace morvane
