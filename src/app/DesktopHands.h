#pragma once

#include <QString>

#include <memory>

namespace morvane {

class CalendarStoring;
class Clock;
class DesktopActionService;
class EventReceipts;
class LinkOpening;
class SettingsStore;
class ShortcutRunning;

// What the desktop lets the abilities do. Null where it has none; all outlives what uses it.
struct DesktopPorts {
    LinkOpening *links = nullptr;
    CalendarStoring *calendars = nullptr;
    ShortcutRunning *shortcuts = nullptr;
    QString shortcutsFolder = {};
};

// What acts on the desktop. What the constructor takes outlives this.
struct DesktopHands {
    DesktopHands(const DesktopPorts &ports, SettingsStore &settings, Clock &clock);
    ~DesktopHands();

    const DesktopPorts ports;
    const std::unique_ptr<EventReceipts> receipts;       // null without calendars
    const std::unique_ptr<DesktopActionService> actions; // null where a port is missing
};

} // namespace morvane
