#pragma once

#include "services/CalendarStoring.h"

#include <stop_token>

namespace morvane {

// Calls of Evolution Data Server, the calendar service of many desktops. They wait for it: any thread but the
// GUI's. Without an answer, or without a session bus, there is nothing.
namespace EvolutionService {

struct Patience {
    std::stop_token stop;     // nobody wants it any more
    std::stop_token deadline; // it has taken too long, or the program ends
};

// Throw DesktopActionError as CalendarStoring says, and CancelledError once `stop` is triggered, which an
// event that is being written no longer heeds.
[[nodiscard]] std::optional<std::vector<CalendarStoring::Calendar>> calendars(const Patience &patience);
[[nodiscard]] std::optional<CalendarStoring::Place> add(const CalendarStoring::Event &event,
                                                        const QByteArray &zone,
                                                        const std::optional<QString> &calendarID,
                                                        const Patience &patience);
void remove(const CalendarStoring::Place &place, const Patience &patience);

} // namespace EvolutionService

} // namespace morvane
