#include "services/ScreenGlanceError.h"

#include "utils/text/DesktopWords.h"

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
    case Case::noneHere:
        return u"This desktop lets no program look at its screen."_s;
    }
    return {};
}

std::optional<QString> ScreenGlanceError::recoverySuggestion() const
{
    const DesktopWords &desktop = DesktopWords::here();
    switch (reason()) {
    case Case::permissionNeeded:
        return u"Choose Allow when %1 asks, or turn on MorvaneGPT in %2.%3 I only look when you ask."_s.arg(
            desktop.asker, desktop.screenSettings, desktop.screenNewStart);
    case Case::needsRelaunch:
        return desktop.screenPermissionRule.toString() + desktop.screenRecheck.toString() +
               u". Quit MorvaneGPT and open it again, then ask me once more."_s;
    case Case::captureFailed:
        return u"Try again."_s;
    case Case::noTextFound:
        return u"Bring the article or document to the front and try again."_s;
    case Case::hiddenByFullScreen:
        return u"Leave full screen, bring up what you want me to read, and try again."_s;
    case Case::noneHere:
        return u"On Wayland its portal would take the picture: install the xdg-desktop-portal of your "
               u"desktop, and "
               "try again."_s;
    }
    return std::nullopt;
}

bool ScreenGlanceError::isRetryable() const
{
    return true;
}

} // namespace morvane
