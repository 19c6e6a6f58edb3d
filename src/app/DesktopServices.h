#pragma once

#include "platform/linux/DesktopAppearance.h"
#include "platform/linux/DesktopAudio.h"
#include "platform/linux/DesktopSession.h"
#include "platform/linux/LinuxHands.h"
#include "platform/linux/ScreenLock.h"
#include "platform/linux/StatusNotifierItem.h"
#include "services/GlobalShortcutBinding.h"
#include "services/LoginStarting.h"
#include "services/ScreenCapturing.h"
#include "view_models/chat/NotificationService.h"

#include <memory>

namespace morvane {

struct CommandLine;
struct DesktopPorts;
struct VoicePorts;

// What this desktop does for the program, for as long as the process lives: also while nothing of the
// person's is open. GUI thread.
struct DesktopServices {
    // `clock` and `work` outlive this.
    DesktopServices(const CommandLine &commandLine, Clock &clock, Work &work);

    [[nodiscard]] VoicePorts voicePorts();
    [[nodiscard]] DesktopPorts ports();

    DesktopAppearance appearance;
    const std::unique_ptr<NotificationPosting> notificationPosting;
    NotificationService notifications;
    ScreenLock screenLock;
    DesktopAudio audio;
    LinuxHands hands;
    const std::unique_ptr<ScreenCapturing> screen; // null where the desktop shows none
    DesktopSession session;
    StatusNotifierItem trayIcon;
    const std::unique_ptr<LoginStarting> login; // null for a trial profile, which no session starts
    const std::unique_ptr<GlobalShortcutBinding>
        globalShortcuts; // null where the desktop has no keys to give
};

} // namespace morvane
