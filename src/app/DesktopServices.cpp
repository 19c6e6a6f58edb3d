#include "app/DesktopServices.h"

#include "app/CommandLine.h"
#include "app/DesktopHands.h"
#include "app/Voice.h"
#include "platform/linux/DesktopGlobalShortcuts.h"
#include "platform/linux/DesktopScreen.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalAutostart.h"
#include "platform/linux/PortalNotifications.h"
#include "utils/text/Product.h"

#include <QCoreApplication>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<LoginStarting> loginOf(const CommandLine &commandLine)
{
    if (commandLine.profile)
        return nullptr;
    const SupportFolders folders = commandLine.folders();
    return loginOfTheDesktop(folders.config, folders.state + u'/' + Product::serviceName,
                             QCoreApplication::applicationFilePath());
}

} // namespace

DesktopServices::DesktopServices(const CommandLine &commandLine, Clock &clock, Work &work)
    : notificationPosting(notificationsOfTheDesktop(MachineBuses::session(), commandLine.folders().runtime))
    , notifications(*notificationPosting)
    , screenLock(MachineBuses::session(), MachineBuses::system())
    , hands(MachineBuses::session(),
            commandLine.folders().data + u'/' + Product::storeFolder + u"/Shortcuts"_s,
            commandLine.folders().runtime, clock, work)
    , screen(screenOfTheDesktop(clock, work))
    , trayIcon(MachineBuses::session())
    , login(loginOf(commandLine))
    , globalShortcuts(globalShortcutsOfTheDesktop())
{
    QObject::connect(&screenLock, &ScreenLock::changed, &notifications,
                     &NotificationService::setScreenLocked);
}

VoicePorts DesktopServices::voicePorts()
{
    return {.output = &audio.output,
            .microphones = &audio.microphones,
            .permission = &audio.permission,
            .systemVoices = &audio.systemVoices,
            .makeEngine = [this] { return audio.makeEngine(); }};
}

DesktopPorts DesktopServices::ports()
{
    return {.links = &hands.links,
            .calendars = &hands.calendars,
            .shortcuts = &hands.shortcuts,
            .shortcutsFolder = hands.shortcuts.folder(),
            .screen = screen.get(),
            .login = login.get()};
}

} // namespace morvane
