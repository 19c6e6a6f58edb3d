#pragma once

#include "audio/AudioQueue.h"

#include <QLocale>
#include <QString>

#include <exception>
#include <functional>
#include <memory>

namespace morvane {

// The sound of one session on its way to the recogniser.
struct SpeechRecognitionRequest {
    static constexpr std::size_t mostSeconds = std::size_t{6} * 60;

    // A recogniser that can't work on this machine alone must refuse.
    bool requiresOnDeviceRecognition = true;
    bool shouldReportPartialResults = true;
    QLocale locale = QLocale::c();                        // of the person's speech
    AudioQueue audio{AudioQueue::samplesIn(mostSeconds)}; // finished: no more sound comes
};

// Turns speech into words. GUI thread.
class SpeechRecognizing {
public:
    // The work on one request. Destroying it cancels: nothing is reported any more.
    class Task {
    public:
        virtual ~Task() = default;
    };
    // Called on the GUI thread, never from within recognitionTask().
    struct Handler {
        std::function<void(const QString &text, bool isFinal)> result; // all words so far
        std::function<void(const std::exception_ptr &error)> error;    // the last call
    };

    virtual ~SpeechRecognizing() = default;

    [[nodiscard]] virtual bool isAvailable() const = 0;
    [[nodiscard]] virtual bool supportsOnDeviceRecognition(const QLocale &locale) const = 0;
    [[nodiscard]] virtual std::unique_ptr<Task>
    recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request, Handler handler) = 0;
};

} // namespace morvane
