#pragma once

#include <QCoroTask>
#include <QDateTime>
#include <QString>

#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// The calendars that the person's desktop keeps. GUI thread.
class CalendarStoring {
public:
    struct Calendar {
        QString id;
        QString name;
        bool isDefault = false;

        bool operator==(const Calendar &) const = default;
    };
    struct Event {
        QString title;
        QDateTime start;
        QDateTime end;
    };
    // Where an event went, so that it can be taken out again.
    struct Place {
        QString calendarID;
        QString calendarName;
        QString eventID;

        bool operator==(const Place &) const = default;
    };

    virtual ~CalendarStoring() = default;

    // Those that can be written to. Nothing when no calendar service answers. Throws DesktopActionError
    // (calendarAccessDenied) and CancelledError.
    [[nodiscard]] virtual QCoro::Task<std::optional<std::vector<Calendar>>>
    calendars(std::stop_token stop) = 0;

    // Into the calendar of that id, or the default one. Nothing when no service answers. Throws
    // DesktopActionError (calendarAccessDenied, calendarUnavailable, calendarSaveFailed); CancelledError only
    // while nothing was written.
    [[nodiscard]] virtual QCoro::Task<std::optional<Place>>
    add(Event event, std::optional<QString> calendarID, std::stop_token stop) = 0;

    // An event that isn't there any more counts as removed. Throws DesktopActionError and CancelledError.
    [[nodiscard]] virtual QCoro::Task<> remove(Place place, std::stop_token stop) = 0;

    // A file that holds the event, for the person's own program to take over; its path. It stays readable
    // until this object goes. Throws DesktopActionError (calendarSaveFailed).
    [[nodiscard]] virtual QString writeFile(const Event &event) = 0;
};

} // namespace morvane
