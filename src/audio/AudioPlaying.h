#pragma once

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace morvane {

class AudioQueue;

// The loudspeaker of this machine. GUI thread.
class AudioPlaying {
public:
    virtual ~AudioPlaying() = default;

    // Ends when the last of the sound was heard, or once `stop` is triggered, and then nothing sounds any
    // more. Where the queue runs dry before its end there is silence. Throws AudioError when nothing can be
    // played.
    [[nodiscard]] virtual QCoro::Task<> play(std::shared_ptr<AudioQueue> sound, std::stop_token stop) = 0;
};

} // namespace morvane
