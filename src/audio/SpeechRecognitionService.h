#pragma once

#include "async/SharedResult.h"
#include "audio/AudioCapturing.h"
#include "audio/AudioError.h"
#include "audio/SpeechCapturing.h"
#include "audio/SpeechRecognizing.h"

#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace morvane {

class AudioPermissionService;
class Clock;
class VoiceDebugLog;

// Push to talk: from the press of a key to the words. What is said is recognised on this machine or not at
// all. The engine of the last session stays at hand, closed, since a new one takes long enough to swallow the
// first word; one that heard nothing may have gone deaf, and is thrown away. GUI thread.
class SpeechRecognitionService : public morvane::SpeechCapturing {
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(bool isEngineLive READ isEngineLive NOTIFY isRecordingChanged)
    Q_PROPERTY(QString partialTranscript READ partialTranscript NOTIFY partialTranscriptChanged)
    Q_PROPERTY(QString lastFailureMessage READ lastFailureMessage NOTIFY lastFailureMessageChanged)

public:
    // How long the last words may take once the person has let go.
    static constexpr std::chrono::milliseconds finalWait{1200};

    // All of it outlives this object.
    struct Services {
        AudioPermissionService &permissions;
        SpeechRecognizing &recognizer;
        Clock &clock;
        VoiceDebugLog &log;
        std::function<std::unique_ptr<AudioCapturing>()> makeEngine;
        std::function<std::optional<QString>()> preferredDeviceUID = {}; // absent: the system's default
        std::function<QLocale()> locale = [] { return QLocale(); };
        std::function<void()> playPop = {}; // says that the person may speak
    };

    explicit SpeechRecognitionService(Services services, QObject *parent = nullptr);
    ~SpeechRecognitionService() override;

    [[nodiscard]] bool isRecording() const override { return m_isRecording; }
    [[nodiscard]] bool isEngineLive() const { return m_isEngineLive; }
    [[nodiscard]] const QString &partialTranscript() const override { return m_partialTranscript; }
    [[nodiscard]] const QString &lastFailureMessage() const { return m_lastFailureMessage; } // empty for none
    [[nodiscard]] double level() const override;

    // Throws AudioError, whose message is lastFailureMessage() as well.
    [[nodiscard]] QCoro::Task<> startRecording() override;
    [[nodiscard]] QCoro::Task<QString> stopRecording() override;
    void cancelRecording() override;
    void note(const QString &line) override;

Q_SIGNALS:
    void lastFailureMessageChanged();

private:
    struct Session;
    using Engine = std::shared_ptr<AudioCapturing>;

    static QCoro::Task<> start(QPointer<SpeechRecognitionService> self);
    static QCoro::Task<> prepare(QPointer<SpeechRecognitionService> self, std::shared_ptr<Session> session);
    static QCoro::Task<> takeEngine(QPointer<SpeechRecognitionService> self,
                                    std::shared_ptr<Session> session);
    static QCoro::Task<> bindEngine(std::shared_ptr<Session> session, std::stop_token ending);
    static QCoro::Task<> openEngine(QPointer<SpeechRecognitionService> self,
                                    std::shared_ptr<Session> session);
    static QCoro::Task<QString> stop(QPointer<SpeechRecognitionService> self,
                                     std::shared_ptr<Session> session);
    static QCoro::Task<> close(Engine engine, SharedResult<bool> closed, std::stop_token ending);

    [[nodiscard]] std::shared_ptr<Session> beginSession();
    void checkRecognizer(const Session &session);
    void beginRecording(const std::shared_ptr<Session> &session);
    [[nodiscard]] bool isWanted(const Session &session) const;
    void discard(Session &session);
    void takeResult(Session &session, const QString &text, bool isFinal);
    void takeError(Session &session, const std::exception_ptr &error);
    void takeLoss(Session &session);
    void tearDown(Session &session);
    void forgetWords(Session &session);
    void setRecording(bool recording);
    void setPartialTranscript(const QString &text);
    void setFailure(const QString &message);
    void note(const Session &session, const QString &line);

    Services m_services;
    std::stop_source m_ending; // of this object, and of all that waits for a device then
    bool m_isRecording = false;
    bool m_isEngineLive = false;
    QString m_partialTranscript;
    QString m_lastFailureMessage;
    int m_startGeneration = 0; // bumped when a start begins and when it is no longer wanted
    int m_sessionID = 0;
    std::shared_ptr<Session> m_session; // the latest
    std::optional<SharedResult<bool>> m_pendingTeardown;
    Engine m_reusableEngine;
    std::optional<QString> m_reusableEngineDeviceUID; // none: the system's default
};

} // namespace morvane
