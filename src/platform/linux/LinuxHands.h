#pragma once

#include "platform/linux/DesktopLinks.h"
#include "platform/linux/EvolutionCalendars.h"
#include "platform/linux/Shortcuts.h"

#include <QTimeZone>

namespace morvane {

// What this desktop lets the abilities do. GUI thread.
struct LinuxHands {
    DesktopLinks links;
    EvolutionCalendars calendars;
    Shortcuts shortcuts;

    // `bus` is the session's; `scratch` is a folder for what lives as long as a call, best in memory. `clock`
    // and `work` outlive this.
    LinuxHands(std::optional<QDBusConnection> bus, const QString &shortcutsFolder, const QString &scratch,
               Clock &clock, Work &work)
        : links(std::move(bus), clock)
        , calendars(scratch, clock, work, &QTimeZone::systemTimeZoneId)
        , shortcuts(shortcutsFolder, scratch, clock, work)
    {}
};

} // namespace morvane
