#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <vector>

namespace morvane {

// Turns text into sound on this machine. The calls take time and are made on a worker, one at a time.
class SpeechSynthesizing {
public:
    struct Voice {
        QString identifier;
        QString name; // as people read it
        bool operator==(const Voice &) const = default;
    };
    struct Utterance {
        QString text;    // plain
        QString voice;   // an identifier; empty, or one that isn't there any more: the default voice
        double rate = 0; // between minimumRate() and maximumRate()
    };
    // Takes the sound piece by piece as it is made, as AudioQueue has it. False for no more.
    using Sink = std::function<bool(std::span<const std::int16_t>)>;

    virtual ~SpeechSynthesizing() = default;

    [[nodiscard]] virtual std::vector<Voice> voices() = 0;
    // The engine's own scale; the middle between the two is the voice's natural speed. Any thread.
    [[nodiscard]] virtual double minimumRate() const = 0;
    [[nodiscard]] virtual double maximumRate() const = 0;
    // Makes no sound of text that has no words for the voice. Throws AudioError when there is no voice at
    // all.
    virtual void synthesize(const Utterance &utterance, const Sink &sink) = 0;
};

} // namespace morvane
