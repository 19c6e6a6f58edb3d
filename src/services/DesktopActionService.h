#pragma once

#include "async/Lifeline.h"
#include "services/CalendarStoring.h"
#include "services/DesktopActing.h"
#include "services/EventReceipts.h"
#include "services/LinkOpening.h"
#include "services/ShortcutRunning.h"

#include <functional>

namespace morvane {

class Clock;

// Opens links, adds events and runs shortcuts. Whoever calls has the person's yes. GUI thread.
class DesktopActionService final : public DesktopActing {
public:
    // All outlive the service.
    struct Services {
        LinkOpening &links;
        CalendarStoring &calendars;
        ShortcutRunning &shortcuts;
        EventReceipts &receipts;
        Clock &clock;
        std::function<std::optional<QString>()> chosenCalendar; // its id; nothing for the default one
    };

    explicit DesktopActionService(Services services);

    // Each throws DesktopActionError, and CancelledError while nothing has happened yet.
    QCoro::Task<QString> openLink(QString url, std::stop_token stop) override;
    QCoro::Task<QString> createEvent(EventWish wish, std::stop_token stop) override;
    QCoro::Task<ShortcutAnswer> runShortcut(QString name, std::optional<QString> input,
                                            std::stop_token stop) override;

private:
    // For the person's own program, where no service keeps calendars.
    QCoro::Task<QString> handOver(CalendarStoring::Event event, QString when, std::stop_token stop);

    Services m_services;
    Lifeline m_lifeline;
};

} // namespace morvane
