#include "services/SearchCounters.h"

#include "persistence/SettingsRepository.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void raiseCount(SettingsRepository &repository, const QString &periodKey, const QString &period,
                const QString &countKey)
{
    const bool continues = repository.string(periodKey) == period;
    const std::int64_t count = continues ? repository.integer(countKey).value_or(0) : 0;
    repository.setString(periodKey, period);
    repository.setInteger(countKey, count + 1);
}

} // namespace

void SearchCounters::raise(SettingsRepository &repository, const QDate &today)
{
    raiseCount(repository, u"builtInSearchDay"_s,
               QString::asprintf("%04d-%02d-%02d", today.year(), today.month(), today.day()),
               u"builtInSearchCount"_s);
    raiseCount(repository, u"builtInSearchMonth"_s,
               QString::asprintf("%04d-%02d", today.year(), today.month()), u"builtInSearchMonthCount"_s);
}

} // namespace morvane
