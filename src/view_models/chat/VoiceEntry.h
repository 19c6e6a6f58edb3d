#pragma once

#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>

#include <exception>
#include <vector>

namespace morvane {

class BannerDesk;
class CompanionViewModel;
class SpeechCapturing;

// What the person says instead of typing it, from the press of a key to its release. GUI thread.
class VoiceEntry : public QObject {
    Q_OBJECT
public:
    // What is given outlives this object.
    struct Services {
        BannerDesk &banner;
        CompanionViewModel &companion;
        SpeechCapturing *speech = nullptr; // absent: nothing happens
    };

    explicit VoiceEntry(Services services, QObject *parent = nullptr);

    [[nodiscard]] bool isRecording() const { return m_isRecording; }

    void begin();
    // What was said comes a moment later.
    void end();
    // What is being said is no longer wanted.
    void cancel();

Q_SIGNALS:
    void recordingChanged();
    void heard(const QString &words); // trimmed and not empty

private:
    static QCoro::Task<> start(QPointer<VoiceEntry> self, std::stop_token stop);
    static QCoro::Task<> finish(QPointer<VoiceEntry> self, std::stop_token stop);
    void take(const QString &transcript);
    void fail(const std::exception_ptr &error);
    void noteSilence();
    void setRecording(bool recording);

    Services m_services;
    bool m_isRecording = false;
    int m_consecutiveSilentCaptures = 0;
    TaskHandle m_starting;
    std::vector<TaskHandle> m_finishing; // the next may begin before the last one's words are there
};

} // namespace morvane
