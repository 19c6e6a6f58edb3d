#pragma once

#include "audio/AudioCapturing.h"

#include <QAudioDevice>
#include <QAudioSource>
#include <QIODevice>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

namespace morvane {

// The microphone's end of an engine. Lives on the audio thread.
class CapturedSound : public QObject {
    Q_OBJECT
public:
    explicit CapturedSound(QObject *parent = nullptr);
    ~CapturedSound() override;

    // Nothing where there is no microphone.
    [[nodiscard]] std::optional<AudioCapturing::Binding> bind(const std::optional<QString> &uid);
    // False when the microphone can't be opened.
    [[nodiscard]] bool start(const std::function<void(std::span<const std::int16_t>)> &sound);
    void stop();

Q_SIGNALS:
    void lost();

private:
    class Writer;

    void watch();
    void lose();
    void stateChanged(QAudio::State state);

    std::optional<QString> m_uid;
    QAudioDevice m_device;
    std::unique_ptr<Writer> m_writer;
    std::unique_ptr<QAudioSource> m_source;
    QTimer m_watch;
    int m_quietTicks = 0; // of the watch, since the last sound
    bool m_isChosen = true;
    bool m_isOpen = false;
};

} // namespace morvane
