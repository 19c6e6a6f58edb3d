#pragma once

#include "audio/SpeechRecognizing.h"

#include <memory>

namespace morvane {

class Alarm;
class Clock;
class Work;

// PocketSphinx with the packaged model of American English: words in lower case, without punctuation, which
// stays the person's. Speech is cut at pauses, since accuracy falls with the length of an utterance. The
// model takes a third of a second and 100 MB to load, so it stays for a while after the last word. GUI
// thread.
class PocketSphinxRecognizer final : public SpeechRecognizing {
public:
    // Both outlive this object.
    PocketSphinxRecognizer(Clock &clock, Work &work, QString modelFolder = packagedModel());
    ~PocketSphinxRecognizer() override;

    [[nodiscard]] static QString packagedModel();

    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool supportsOnDeviceRecognition(const QLocale &locale) const override;
    [[nodiscard]] std::unique_ptr<Task> recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request,
                                                        Handler handler) override;

private:
    struct Shelf; // where the loaded model waits for the next session

    void tidyLater();

    Clock &m_clock;
    Work &m_work;
    const QString m_modelFolder;
    const std::shared_ptr<Shelf> m_shelf;
    std::unique_ptr<Alarm> m_tidying;
};

} // namespace morvane
