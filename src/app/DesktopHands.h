#pragma once

#include <QString>

#include <memory>

namespace morvane {

class CalendarStoring;
class Clock;
class DesktopActionService;
class EventReceipts;
class LaunchAtLoginService;
class LinkOpening;
class LoginStarting;
class ScreenCapturing;
class SettingsStore;
class ShortcutRunning;

// What the desktop lets the abilities do and see. Null where it has none; all outlives what uses it.
struct DesktopPorts {
    LinkOpening *links = nullptr;
    CalendarStoring *calendars = nullptr;
    ShortcutRunning *shortcuts = nullptr;
    QString shortcutsFolder = {};
    ScreenCapturing *screen = nullptr;
    LoginStarting *login = nullptr;
};

// What acts on the desktop. What the constructor takes outlives this.
struct DesktopHands {
    DesktopHands(const DesktopPorts &ports, SettingsStore &settings, Clock &clock);
    ~DesktopHands();

    const DesktopPorts ports;
    const std::unique_ptr<EventReceipts> receipts;             // null without calendars
    const std::unique_ptr<DesktopActionService> actions;       // null where a port is missing
    const std::unique_ptr<LaunchAtLoginService> launchAtLogin; // null without its port
};

} // namespace morvane
