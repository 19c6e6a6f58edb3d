#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <span>

struct ps_decoder_s;

namespace morvane {

// The decoder with its model, and the words of one speech: those of the utterances that have ended, and those
// of the one that is spoken. One thread at a time.
class SphinxDecoder {
public:
    // Reads the model, which takes a while. Throws AudioError when it can't be used.
    explicit SphinxDecoder(const QString &modelFolder);

    void begin();
    // Takes more of the speech, 16,000 samples a second.
    void take(std::span<const std::int16_t> samples);
    // All of it is in.
    void end();

    // What is understood so far. What follows may change its last utterance.
    [[nodiscard]] QString words() const;

private:
    void beginUtterance();
    void endUtterance();
    [[nodiscard]] QString hypothesis() const;

    struct Free {
        void operator()(ps_decoder_s *decoder) const;
    };
    std::unique_ptr<ps_decoder_s, Free> m_decoder;
    QStringList m_ended;
    bool m_isOpen = false; // an utterance
    bool m_inSpeech = false;
    std::size_t m_spoken = 0; // samples of the utterance that is spoken
};

} // namespace morvane
