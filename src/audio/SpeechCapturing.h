#pragma once

#include <QCoroTask>
#include <QObject>
#include <QString>

namespace morvane {

// Takes down what the person says, from the press of a key to its release. GUI thread.
class SpeechCapturing : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // The microphone is open: the person may speak.
    [[nodiscard]] virtual bool isRecording() const = 0;
    // The words so far; none once they were handed over.
    [[nodiscard]] virtual const QString &partialTranscript() const = 0;
    // How loud the last moment was, 0 to 1.
    [[nodiscard]] virtual double level() const = 0;

    // Ends when the person may speak, or nothing more comes of it since they let go. Throws
    // UserPresentableError.
    [[nodiscard]] virtual QCoro::Task<> startRecording() = 0;
    // What was said, once the last words are there; it may be nothing.
    [[nodiscard]] virtual QCoro::Task<QString> stopRecording() = 0;
    // At once, also while the last words are waited for: what was said is dropped.
    virtual void cancelRecording() = 0;
    // A line of the log of states and counts, which holds no words of the person's.
    virtual void note(const QString &line) = 0;

Q_SIGNALS:
    void isRecordingChanged();
    void partialTranscriptChanged();
    // The microphone or the recogniser is gone while the person speaks: what was heard is theirs.
    void interrupted();
};

} // namespace morvane
