#include "audio/SpeechEngines.h"

#include <algorithm>

namespace morvane {

bool SpeechEngines::isAvailable() const
{
    return std::ranges::any_of(m_engines, &SpeechRecognizing::isAvailable);
}

bool SpeechEngines::supportsOnDeviceRecognition(const QLocale &locale) const
{
    return engineFor(locale) != nullptr;
}

std::unique_ptr<SpeechRecognizing::Task>
SpeechEngines::recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request, Handler handler)
{
    SpeechRecognizing *engine = engineFor(request->locale);
    if (!engine) // it went since it was asked for, and fails in its own way
        engine = m_engines.front();
    return engine->recognitionTask(std::move(request), std::move(handler));
}

SpeechRecognizing *SpeechEngines::engineFor(const QLocale &locale) const
{
    const auto fit = std::ranges::find_if(m_engines, [&locale](const SpeechRecognizing *engine) {
        return engine->isAvailable() && engine->supportsOnDeviceRecognition(locale);
    });
    return fit == m_engines.end() ? nullptr : *fit;
}

} // namespace morvane
