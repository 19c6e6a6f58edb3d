#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace morvane {

// Moments as a person reads them in a calendar. Pure.
namespace EventWords {

// In the person's zone and format: the time alone for today, else the day before it.
[[nodiscard]] QString moment(const QDateTime &moment, const QDateTime &now,
                             const QLocale &locale = QLocale());

// "1 hour 30 minutes"; "no time at all" for none.
[[nodiscard]] QString length(std::int64_t minutes);

} // namespace EventWords

} // namespace morvane
