#include "app/DesktopHands.h"

#include "persistence/SettingsStore.h"
#include "services/DesktopActionService.h"
#include "services/LaunchAtLoginService.h"

namespace morvane {

namespace {

std::unique_ptr<DesktopActionService> makeActions(const DesktopHands &hands, SettingsStore &settings,
                                                  Clock &clock)
{
    const DesktopPorts &ports = hands.ports;
    if (!ports.links || !ports.calendars || !ports.shortcuts)
        return nullptr;
    return std::make_unique<DesktopActionService>(
        DesktopActionService::Services{.links = *ports.links,
                                       .calendars = *ports.calendars,
                                       .shortcuts = *ports.shortcuts,
                                       .receipts = *hands.receipts,
                                       .clock = clock,
                                       .chosenCalendar = [&settings] { return settings.eventCalendarID(); }});
}

} // namespace

DesktopHands::DesktopHands(const DesktopPorts &given, SettingsStore &settings, Clock &clock)
    : ports(given)
    , receipts(ports.calendars ? std::make_unique<EventReceipts>(*ports.calendars) : nullptr)
    , actions(makeActions(*this, settings, clock))
    , launchAtLogin(ports.login ? std::make_unique<LaunchAtLoginService>(*ports.login) : nullptr)
{}

DesktopHands::~DesktopHands() = default;

} // namespace morvane
