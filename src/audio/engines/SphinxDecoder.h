#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct ps_decoder_s;

namespace morvane {

// The decoder with its model, and the words of one speech: those of the utterances that have ended, and those
// of the one that is spoken. One thread at a time.
//
// How a voice sounds in this microphone it learns at the end of an utterance only, and guesses until then,
// which costs every twentieth word. So the first two seconds of a speech end an utterance, and are
// heard again.
class SphinxDecoder {
public:
    // Reads the model, which takes a while. Throws AudioError when it can't be used.
    explicit SphinxDecoder(const QString &modelFolder);
    ~SphinxDecoder();
    SphinxDecoder(const SphinxDecoder &) = delete;
    SphinxDecoder &operator=(const SphinxDecoder &) = delete;

    void begin();
    // Takes more of the speech, 16,000 samples a second.
    void take(std::span<const std::int16_t> samples);
    // All of it is in.
    void end();

    // What is understood so far. What follows may change its last utterance.
    [[nodiscard]] QString words() const;

private:
    void forgetVoice();
    void hear(std::span<const std::int16_t> samples);
    void keepOpening(std::span<const std::int16_t> samples);
    void dropOpening(std::size_t count);
    void hearOpeningAgain();
    void beginUtterance();
    void closeUtterance();
    void endUtterance();
    [[nodiscard]] QString hypothesis() const;

    struct Free {
        void operator()(ps_decoder_s *decoder) const;
    };
    std::unique_ptr<ps_decoder_s, Free> m_decoder;
    QStringList m_ended;
    bool m_isOpen = false; // an utterance
    bool m_inSpeech = false;
    std::size_t m_spoken = 0; // samples of the utterance that is spoken, since the last silence
    std::size_t m_spokenInAll = 0;
    bool m_knowsVoice = false;           // of this speech: has learned it at the end of an utterance
    std::vector<std::int16_t> m_opening; // of the utterance, until then; bounded, and wiped as it goes
};

} // namespace morvane
