#include "services/ScreenGlanceError.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString ScreenGlanceError::userMessage() const
{
    switch (reason()) {
    case Case::permissionNeeded:
        return u"I need permission to glance at your screen."_s;
    case Case::needsRelaunch:
        return u"I can't see your screen from this copy of MorvaneGPT."_s;
    case Case::captureFailed:
        return u"I couldn't take a look at your screen just now."_s;
    case Case::noTextFound:
        return u"I looked, but couldn't find readable text on your screen."_s;
    case Case::hiddenByFullScreen:
        return u"MorvaneGPT is full screen, so there's nothing else on this screen for me to read."_s;
    }
    return {};
}

std::optional<QString> ScreenGlanceError::recoverySuggestion() const
{
    switch (reason()) {
    case Case::permissionNeeded:
        return u"Choose Allow when macOS asks, or turn on MorvaneGPT in System Settings → Privacy & Security "
               u"→ "
               u"Screen & System Audio Recording. Either way, quit and reopen MorvaneGPT afterwards so it "
               u"takes "
               u"effect. I only look when you ask."_s;
    case Case::needsRelaunch:
        return u"macOS only applies Screen Recording permission when an app launches, and it rechecks after "
               u"every update. Quit MorvaneGPT and open it again, then ask me once more."_s;
    case Case::captureFailed:
        return u"Try again."_s;
    case Case::noTextFound:
        return u"Bring the article or document to the front and try again."_s;
    case Case::hiddenByFullScreen:
        return u"Leave full screen, bring up what you want me to read, and try again."_s;
    }
    return std::nullopt;
}

bool ScreenGlanceError::isRetryable() const
{
    return true;
}

} // namespace morvane
