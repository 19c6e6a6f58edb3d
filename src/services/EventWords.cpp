#include "services/EventWords.h"

#include <QRegularExpression>
#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Between the long and the short format of a locale: no weekday, and the month by its short name.
QString mediumFormat(const QLocale &locale)
{
    static const QRegularExpression weekday(u"[,،]?\\s*d{3,4}(?:'[^']*')?[,،]?\\s*"_s);
    QString format = locale.dateFormat(QLocale::LongFormat);
    return format.remove(weekday).replace("MMMM"_L1, "MMM"_L1).trimmed();
}

QString counted(std::int64_t number, const QString &unit)
{
    return u"%1 %2%3"_s.arg(number).arg(unit, number == 1 ? QString() : u"s"_s);
}

} // namespace

QString EventWords::moment(const QDateTime &moment, const QDateTime &now, const QLocale &locale)
{
    const QDateTime here = moment.toLocalTime();
    const QString time = locale.toString(here.time(), QLocale::ShortFormat);
    if (here.date() == now.toLocalTime().date())
        return time;
    return locale.toString(here.date(), mediumFormat(locale)) + u", "_s + time;
}

QString EventWords::length(std::int64_t minutes)
{
    constexpr std::int64_t perHour = 60;
    if (minutes <= 0)
        return u"no time at all"_s;
    QStringList parts;
    if (minutes >= perHour)
        parts.append(counted(minutes / perHour, u"hour"_s));
    if (minutes % perHour > 0)
        parts.append(counted(minutes % perHour, u"minute"_s));
    return parts.join(u' ');
}

} // namespace morvane
