#pragma once

#include "ai/speech/WhisperServer.h"
#include "audio/SpeechRecognizing.h"

namespace morvane {

class WhisperSetup;

// The person's own speech model, by a server on this machine: words with punctuation, in the languages that
// the model knows. While the person speaks, what was said so far is asked anew every few seconds; a long
// speech is cut at quiet moments. GUI thread.
class WhisperRecognizer final : public SpeechRecognizing {
public:
    // All outlive this object.
    WhisperRecognizer(const WhisperSetup &setup, WhisperServer &server, Clock &clock);

    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool supportsOnDeviceRecognition(const QLocale &locale) const override;
    [[nodiscard]] std::unique_ptr<Task> recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request,
                                                        Handler handler) override;

private:
    const WhisperSetup &m_setup;
    WhisperServer &m_server;
    Clock &m_clock;
};

} // namespace morvane
