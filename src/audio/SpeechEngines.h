#pragma once

#include "audio/SpeechRecognizing.h"

#include <vector>

namespace morvane {

// The recognisers of this machine: each speech goes to the first of them that is there and knows its
// language. GUI thread.
class SpeechEngines final : public SpeechRecognizing {
public:
    // At least one, the best first. They outlive this object.
    explicit SpeechEngines(std::vector<SpeechRecognizing *> engines)
        : m_engines(std::move(engines))
    {}

    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool supportsOnDeviceRecognition(const QLocale &locale) const override;
    // Of a language that one of them knows.
    [[nodiscard]] std::unique_ptr<Task> recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request,
                                                        Handler handler) override;

    // Null when none of them knows the language.
    [[nodiscard]] SpeechRecognizing *engineFor(const QLocale &locale) const;

private:
    const std::vector<SpeechRecognizing *> m_engines;
};

} // namespace morvane
