#include "platform/linux/EventComponent.h"

#include "utils/text/Identifier.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

GLib::Reference<ICalTime> timeOf(const QDateTime &moment, ICalTimezone *zone)
{
    const auto universal = GLib::taken(i_cal_time_new_from_timet_with_zone(
        moment.toSecsSinceEpoch(), FALSE, i_cal_timezone_get_utc_timezone()));
    return GLib::taken(i_cal_time_convert_to_zone(universal.get(), zone));
}

void put(ICalComponent *component, ICalProperty *property, ICalTimezone *zone)
{
    if (zone != i_cal_timezone_get_utc_timezone())
        i_cal_property_take_parameter(property, i_cal_parameter_new_tzid(i_cal_timezone_get_tzid(zone)));
    i_cal_component_take_property(component, property);
}

} // namespace

ICalTimezone *EventComponent::zone(const QByteArray &name)
{
    ICalTimezone *zone = i_cal_timezone_get_builtin_timezone(name.constData());
    return zone && i_cal_timezone_get_tzid(zone) ? zone : i_cal_timezone_get_utc_timezone();
}

GLib::Reference<ICalComponent> EventComponent::event(const CalendarStoring::Event &event, ICalTimezone *zone)
{
    auto component = GLib::taken(i_cal_component_new_vevent());
    const QByteArray uid = Identifier::text(QUuid::createUuid()).toUtf8();
    i_cal_component_set_uid(component.get(), uid.constData());
    i_cal_component_set_summary(component.get(), event.title.toUtf8().constData());
    const auto stamp = GLib::taken(i_cal_time_new_current_with_zone(i_cal_timezone_get_utc_timezone()));
    i_cal_component_set_dtstamp(component.get(), stamp.get());
    put(component.get(), i_cal_property_new_dtstart(timeOf(event.start, zone).get()), zone);
    put(component.get(), i_cal_property_new_dtend(timeOf(event.end, zone).get()), zone);
    return component;
}

QByteArray EventComponent::file(const CalendarStoring::Event &event, ICalTimezone *zone)
{
    const auto calendar = GLib::taken(i_cal_component_new_vcalendar());
    i_cal_component_take_property(calendar.get(), i_cal_property_new_version("2.0"));
    const QByteArray maker = "-//" + QByteArray(Product::name.data(), Product::name.size()) + "//EN";
    i_cal_component_take_property(calendar.get(), i_cal_property_new_prodid(maker.constData()));
    if (const auto rules = GLib::taken(i_cal_timezone_get_component(zone)))
        i_cal_component_take_component(calendar.get(), i_cal_component_clone(rules.get()));
    i_cal_component_take_component(calendar.get(), EventComponent::event(event, zone).release());
    const GLib::Text text(i_cal_component_as_ical_string(calendar.get()));
    return QByteArray(text.get());
}

} // namespace morvane
