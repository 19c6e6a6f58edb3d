#pragma once

#include <QDateTime>

namespace morvane {

// Moments in UTC. Qt's constructors that take a time specification by enum are deprecated, and what replaces
// them is younger than the oldest Qt that this is built with.
namespace UniversalTime {

// Milliseconds since the beginning of 1970; an invalid moment beyond what QDateTime holds.
[[nodiscard]] inline QDateTime ofMilliseconds(qint64 milliseconds)
{
    static const QDateTime epoch = QDateTime::fromMSecsSinceEpoch(0).toUTC();
    return epoch.addMSecs(milliseconds);
}

// Invalid where the day is; midnight without a valid time.
[[nodiscard]] inline QDateTime at(QDate day, QTime time = QTime(0, 0))
{
    QDateTime moment = ofMilliseconds(0);
    moment.setDate(day);
    moment.setTime(time);
    return moment;
}

} // namespace UniversalTime

} // namespace morvane
