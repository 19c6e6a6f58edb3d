#pragma once

#include "audio/SpeechOutputting.h"
#include "audio/SpeechSynthesizing.h"

#include <QObject>
#include <QPointer>

namespace morvane {

class AudioPlaying;
class AudioQueue;
class SystemVoices;
class Work;

// Reads replies aloud: formatting is taken out, a worker makes the sound sentence by sentence, and the first
// word is heard while the rest is made. One text at a time. GUI thread.
class TextToSpeechService : public QObject, public morvane::SpeechOutputting {
    Q_OBJECT
    Q_PROPERTY(bool isSpeaking READ isSpeaking NOTIFY isSpeakingChanged)

public:
    // All outlive this object; the voices outlive the end of `work`. Without `others` there are those of the
    // synthesizer alone.
    TextToSpeechService(SpeechSynthesizing &synthesizer, AudioPlaying &output, Work &work,
                        SystemVoices *others = nullptr, QObject *parent = nullptr);
    ~TextToSpeechService() override;

    [[nodiscard]] bool isSpeaking() const { return m_isSpeaking; }

    [[nodiscard]] QCoro::Task<> speak(QString text, std::optional<QString> voiceIdentifier, double rate,
                                      bool speakCodeBlocks, std::stop_token stop) override;
    void stop() override;

    // The voices of this machine; with those of the desktop's service, which it starts, if that is asked or
    // one of them is chosen.
    enum class Asking { Own, All };
    [[nodiscard]] QCoro::Task<std::vector<SpeechSynthesizing::Voice>>
    voices(std::optional<QString> chosen, Asking asking, std::stop_token stop);
    [[nodiscard]] bool hasOthers() const { return m_others != nullptr; }

Q_SIGNALS:
    void isSpeakingChanged();

private:
    static QCoro::Task<> run(QPointer<TextToSpeechService> self, SpeechSynthesizing::Utterance utterance,
                             double share, bool speakCodeBlocks, std::stop_source stop,
                             std::stop_token callersStop);
    static QCoro::Task<bool> saidElsewhere(QPointer<TextToSpeechService> self,
                                           SpeechSynthesizing::Utterance utterance, double rate,
                                           std::stop_token stop);
    static QCoro::Task<> sound(QPointer<TextToSpeechService> self, SpeechSynthesizing::Utterance utterance,
                               std::stop_token stop);
    void ended(const std::stop_source &utterance);
    void setSpeaking(bool speaking);

    SpeechSynthesizing &m_synthesizer;
    AudioPlaying &m_output;
    Work &m_work;
    SystemVoices *const m_others;
    std::stop_source m_stop{std::nostopstate}; // of what is spoken now
    bool m_isSpeaking = false;
};

} // namespace morvane
