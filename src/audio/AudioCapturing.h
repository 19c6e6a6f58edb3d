#pragma once

#include <QCoroTask>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>

namespace morvane {

// An audio engine: one microphone, which it is bound to once and which is open between start() and stop(). A
// stopped engine starts again sooner than a new one. Dropping it closes the microphone. Each wait throws
// CancelledError once its `stop` is triggered, also where the device hangs. GUI thread.
class AudioCapturing {
public:
    struct Binding {
        bool isChosenDevice = true; // false: that one is gone, and it is bound to the default
        double sampleRate = 0;      // of the device, in Hz; 0 or less for one that gives no sound
    };
    struct Tap {
        // On a thread of its own, in order: sound as AudioQueue has it, whatever the device's own format.
        std::function<void(std::span<const std::int16_t>)> sound;
        // The microphone went away while it was open. GUI thread.
        std::function<void()> lost;
    };

    virtual ~AudioCapturing() = default;

    // To the device of that uid, or to the system's default. Throws AudioError where there is no microphone.
    [[nodiscard]] virtual QCoro::Task<Binding> bind(std::optional<QString> deviceUID,
                                                    std::stop_token stop = {}) = 0;
    // Ends when the microphone is open. Throws AudioError; nothing is open then.
    [[nodiscard]] virtual QCoro::Task<> start(Tap tap, std::stop_token stop = {}) = 0;
    // Ends when the microphone is closed; the tap is not called any more.
    [[nodiscard]] virtual QCoro::Task<> stop(std::stop_token stop = {}) = 0;
};

} // namespace morvane
