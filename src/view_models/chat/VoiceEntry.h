#pragma once

#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class Alarm;
class BannerDesk;
class Clock;
class CompanionViewModel;
class SpeechCapturing;

// What the person says instead of typing it, from the press of a key to its release. The ghost listens for as
// long, unless a turn makes it think. GUI thread.
class VoiceEntry : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOffered READ isOffered CONSTANT)
    Q_PROPERTY(Phase phase READ phase NOTIFY phaseChanged)
    Q_PROPERTY(QString words READ words NOTIFY wordsChanged) // that were understood so far
    // Until what is said is taken as it is; 0 while there is no hurry.
    Q_PROPERTY(int secondsLeft READ secondsLeft NOTIFY secondsLeftChanged)

public:
    static constexpr std::chrono::seconds longestPress{300};
    static constexpr std::chrono::seconds warned{30}; // before its end
    // A button that was held no longer than this was clicked: it goes on until the next click.
    static constexpr std::chrono::milliseconds click{400};

    // Starting: the microphone isn't open yet. Finishing: the last words aren't there yet.
    enum class Phase { Idle, Starting, Listening, Finishing };
    Q_ENUM(Phase)

    // What is given outlives this object.
    struct Services {
        BannerDesk &banner;
        CompanionViewModel &companion;
        Clock &clock;
        SpeechCapturing *speech = nullptr; // absent: nothing happens
    };

    explicit VoiceEntry(Services services, QObject *parent = nullptr);
    ~VoiceEntry() override;

    [[nodiscard]] bool isOffered() const { return m_services.speech; }
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    [[nodiscard]] Phase phase() const;
    [[nodiscard]] QString words() const;
    [[nodiscard]] int secondsLeft() const { return m_secondsLeft; }
    // How loud the last moment was, 0 to 1.
    Q_INVOKABLE double level() const;

    // A key that is held.
    Q_INVOKABLE void begin();
    // What was said comes a moment later. Of a key that was let go before the microphone was open nothing
    // comes.
    Q_INVOKABLE void end();
    // A button that is held, or clicked to start and clicked again to stop.
    Q_INVOKABLE void press();
    Q_INVOKABLE void release();
    // A button that only tells that it was chosen, as keys and assistive technology do it.
    Q_INVOKABLE void toggle();
    // What is being said is no longer wanted, nor what was said and isn't there yet. At once.
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void recordingChanged();
    void phaseChanged();
    void wordsChanged();
    void secondsLeftChanged();
    void heard(const QString &words); // trimmed and not empty

private:
    static QCoro::Task<> start(QPointer<VoiceEntry> self, std::stop_token stop);
    static QCoro::Task<> finish(QPointer<VoiceEntry> self, bool wasListening, std::stop_token stop);
    void take(const QString &transcript, bool wasListening);
    void fail(const std::exception_ptr &error);
    void noteSilence();
    void listen();
    void countDown(int secondsLeft);
    void setSecondsLeft(int seconds);
    void setRecording(bool recording);

    Services m_services;
    bool m_isRecording = false;
    std::optional<std::chrono::milliseconds>
        m_pressed;     // since when the button is; of the clock's elapsed time
    int m_awaited = 0; // presses whose last words aren't there yet
    int m_secondsLeft = 0;
    std::unique_ptr<Alarm> m_limit;
    int m_consecutiveSilentCaptures = 0;
    TaskHandle m_starting;
    std::vector<TaskHandle> m_finishing; // the next may begin before the last one's words are there
};

} // namespace morvane
