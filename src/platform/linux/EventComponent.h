#pragma once

#include "platform/linux/GLibHandles.h"
#include "services/CalendarStoring.h"

#include <libecal/libecal.h>

namespace morvane {

// Events as calendars spell them (RFC 5545), in a time zone named as in the Olson database. A zone that isn't
// known becomes UTC. Pure.
namespace EventComponent {

// The zone of that name; never null. Belongs to the library.
[[nodiscard]] ICalTimezone *zone(const QByteArray &name);

[[nodiscard]] GLib::Reference<ICalComponent> event(const CalendarStoring::Event &event, ICalTimezone *zone);

// A whole calendar file with the event and the rules of its zone, in UTF-8.
[[nodiscard]] QByteArray file(const CalendarStoring::Event &event, ICalTimezone *zone);

} // namespace EventComponent

} // namespace morvane
