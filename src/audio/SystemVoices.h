#pragma once

#include "audio/SpeechSynthesizing.h"

namespace morvane {

// Voices of a service of the desktop, of many languages, which makes its own sound. It is started by the
// first call and not before. The calls take time and are made on a worker.
class SystemVoices {
public:
    virtual ~SystemVoices() = default;

    // Whether an identifier is one of such a voice, there or not. Any thread.
    [[nodiscard]] virtual bool owns(const QString &identifier) const = 0;
    // Those of the person's language and of English first; empty without the service.
    [[nodiscard]] virtual std::vector<SpeechSynthesizing::Voice> voices() = 0;
    // Ends when the text was heard, or once `stop` is triggered, and then nothing sounds any more. False when
    // there is no such voice any more. `rate` runs from -1, slowest, to 1. Throws AudioError when it breaks
    // off.
    [[nodiscard]] virtual bool speak(const SpeechSynthesizing::Utterance &utterance,
                                     const std::stop_token &stop) = 0;
};

} // namespace morvane
