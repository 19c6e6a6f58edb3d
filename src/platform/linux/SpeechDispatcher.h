#pragma once

#include "audio/SystemVoices.h"

namespace morvane {

// The voices of speech-dispatcher, by its own library. A connection lasts for one list or one text; the
// service ends by itself when nobody needs it.
class SpeechDispatcher final : public SystemVoices {
public:
    [[nodiscard]] bool owns(const QString &identifier) const override;
    [[nodiscard]] std::vector<SpeechSynthesizing::Voice> voices() override;
    [[nodiscard]] bool speak(const SpeechSynthesizing::Utterance &utterance,
                             const std::stop_token &stop) override;
};

} // namespace morvane
