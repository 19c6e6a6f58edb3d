#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>
#include <vector>

namespace morvane {

// A real sound server of the test's own, with a loudspeaker that can be recorded and a microphone that can be
// spoken into; the program under test finds it in its environment. One to a process. Throws
// std::runtime_error when it can't be started.
class SoundServer {
public:
    // Its microphone as Qt and the settings know it.
    static constexpr const char *microphone = "test_mic";

    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    // Whether the program is installed.
    [[nodiscard]] static bool isThere();

    // Sound for the microphone, as AudioQueue has it. Returns at once; isSpeaking() until it was taken.
    void speakInto(const std::vector<std::int16_t> &samples);
    // The sink that is spoken into, from now on.
    void setFeed(const QString &sink) { m_feed = sink; }
    [[nodiscard]] bool isSpeaking() const { return m_speaker && m_speaker->state() != QProcess::NotRunning; }

    // What comes out of the loudspeaker from now on.
    void beginRecording();
    [[nodiscard]] std::vector<std::int16_t> recorded();

    // As if it had crashed.
    void stop();

    // A command of pactl, and what it prints.
    QString control(const QStringList &command);

private:
    [[nodiscard]] std::unique_ptr<QProcess> stream(const QString &program, const QStringList &options);

    QTemporaryDir m_home;
    QString m_feed = QStringLiteral("mic_feed");
    QProcess m_server;
    std::unique_ptr<QProcess> m_speaker;
    std::unique_ptr<QProcess> m_recorder;
};

} // namespace morvane
