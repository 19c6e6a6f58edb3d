#include "audio/AudioError.h"

#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString AudioError::userMessage() const
{
    const DesktopWords &desktop = DesktopWords::here();
    switch (reason()) {
    case Case::microphonePermissionDenied:
        return u"Microphone access is not allowed."_s;
    case Case::speechRecognitionPermissionDenied:
        return u"Speech recognition is not allowed."_s;
    case Case::microphoneRestricted:
        return u"This %1 doesn't allow apps to use the microphone."_s.arg(desktop.device);
    case Case::speechRecognitionRestricted:
        return u"This %1 doesn't allow apps to use speech recognition."_s.arg(desktop.device);
    case Case::speechRecognizerUnavailable:
        return u"Speech recognition is not available right now."_s;
    case Case::onDeviceRecognitionUnavailable:
        return u"Speech recognition for your language needs %1 servers on this %2, and %3 never sends your "
               "voice there."_s.arg(desktop.speechServersOwner, desktop.device, Product::name);
    case Case::noMicrophone:
        return u"No microphone was found."_s;
    case Case::captureFailed:
        return u"Audio recording could not be started."_s;
    case Case::recognitionFailed:
        return u"Your speech could not be transcribed."_s;
    case Case::playbackFailed:
        return u"No sound could be played."_s;
    }
    return {};
}

std::optional<QString> AudioError::recoverySuggestion() const
{
    const DesktopWords &desktop = DesktopWords::here();
    switch (reason()) {
    case Case::microphonePermissionDenied:
        return u"Allow microphone access in %1."_s.arg(desktop.microphoneSettings);
    case Case::speechRecognitionPermissionDenied:
        return u"Allow speech recognition in %1."_s.arg(desktop.speechSettings);
    case Case::microphoneRestricted:
    case Case::speechRecognitionRestricted:
        return u"This %1's settings don't allow it, and only whoever manages this computer can change that. "
               "You can still type instead of talking."_s.arg(desktop.device);
    case Case::speechRecognizerUnavailable:
        return u"Try again in a moment, or check that dictation languages are installed."_s;
    case Case::onDeviceRecognitionUnavailable:
        return u"Type instead, or switch to a language this %1 can transcribe by itself under %2."_s.arg(
            desktop.device, desktop.dictationSettings);
    case Case::noMicrophone:
        return u"Connect a microphone, or switch it on in your sound settings, then try again."_s;
    case Case::captureFailed:
        return u"Check that no other app has exclusive control of the microphone."_s;
    case Case::recognitionFailed:
        return u"Try speaking again, a little more slowly."_s;
    case Case::playbackFailed:
        return u"Check that loudspeakers or headphones work on this computer, then try again."_s;
    }
    return std::nullopt;
}

bool AudioError::isRetryable() const
{
    switch (reason()) {
    case Case::microphoneRestricted:
    case Case::speechRecognitionRestricted:
    case Case::onDeviceRecognitionUnavailable:
    case Case::playbackFailed: // the same press is the way to try again
        return false;
    case Case::microphonePermissionDenied:
    case Case::speechRecognitionPermissionDenied:
    case Case::speechRecognizerUnavailable:
    case Case::noMicrophone:
    case Case::captureFailed:
    case Case::recognitionFailed:
        return true;
    }
    return true;
}

} // namespace morvane
