#pragma once

#include <QAudioSink>
#include <QIODevice>
#include <QObject>

#include <memory>
#include <optional>

namespace morvane {

class AudioQueue;

// One sound on its way to the loudspeaker. Lives on the audio thread.
class PlayedSound : public QObject {
    Q_OBJECT
public:
    explicit PlayedSound(std::shared_ptr<AudioQueue> sound);
    ~PlayedSound() override;

    void start();

Q_SIGNALS:
    // Heard to its end, or it can't be played.
    void ended(bool wasHeard);

private:
    class Reader;

    void stateChanged(QAudio::State state);
    void end(bool wasHeard);

    std::shared_ptr<AudioQueue> m_sound;
    std::unique_ptr<Reader> m_reader;
    std::optional<QAudioSink> m_sink;
    bool m_hasEnded = false;
};

} // namespace morvane
