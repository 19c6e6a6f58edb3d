#pragma once

#include "audio/SpeechSynthesizing.h"

#include <QHash>

#include <mutex>

struct cst_voice_struct;

namespace morvane {

// The English voices of Flite. Sound comes while a sentence is still being worked on. A voice's library holds
// megabytes of tables and is loaded when it is first asked for, so a start of the program pays nothing.
class FliteSynthesizer final : public SpeechSynthesizing {
public:
    [[nodiscard]] std::vector<Voice> voices() override;
    // Octaves of speed.
    [[nodiscard]] double minimumRate() const override { return -1; }
    [[nodiscard]] double maximumRate() const override { return 1; }
    void synthesize(const Utterance &utterance, const Sink &sink) override;

private:
    [[nodiscard]] cst_voice_struct *voiceNamed(const QString &identifier);
    [[nodiscard]] cst_voice_struct *load(const QString &identifier);

    std::mutex m_mutex; // a piece that was stopped may still be at its end when the next begins
    QHash<QString, cst_voice_struct *> m_voices; // null where there is none; guarded by m_mutex
};

} // namespace morvane
