#include "view_models/settings/CalendarsViewModel.h"

#include "async/CancelledError.h"
#include "persistence/SettingsStore.h"
#include "utils/text/UserPresentableError.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

CalendarsViewModel::CalendarsViewModel(SettingsStore &settings, CalendarStoring *calendars, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_calendars(calendars)
{
    connect(&settings, &SettingsStore::eventCalendarIDChanged, this, &CalendarsViewModel::changed);
}

QStringList CalendarsViewModel::names() const
{
    if (m_found.empty())
        return {};
    const auto usual = std::ranges::find(m_found, true, &CalendarStoring::Calendar::isDefault);
    QStringList names{usual == m_found.end() ? u"The default calendar"_s
                                             : u"The default calendar (%1)"_s.arg(usual->name)};
    for (const auto &calendar : m_found)
        names.append(calendar.name);
    return names;
}

int CalendarsViewModel::chosen() const
{
    const auto id = m_settings.eventCalendarID();
    if (!id)
        return 0;
    const auto found = std::ranges::find(m_found, *id, &CalendarStoring::Calendar::id);
    return found == m_found.end() ? -1 : 1 + static_cast<int>(found - m_found.begin());
}

void CalendarsViewModel::choose(int index)
{
    if (index == 0)
        m_settings.setEventCalendarID(std::nullopt);
    else if (index > 0 && index <= std::ssize(m_found))
        m_settings.setEventCalendarID(m_found[static_cast<std::size_t>(index) - 1].id);
}

void CalendarsViewModel::test()
{
    if (!m_calendars)
        return;
    m_isTesting = true;
    Q_EMIT changed();
    m_test =
        TaskHandle::start([this](std::stop_token stop) { return look(QPointer(this), std::move(stop)); });
}

void CalendarsViewModel::cancelTest()
{
    m_test = {};
    finish(false, {});
}

QCoro::Task<> CalendarsViewModel::look(QPointer<CalendarsViewModel> self, std::stop_token stop)
{
    Calendars calendars;
    QString failure;
    try {
        calendars = co_await self->m_calendars->calendars(stop);
    } catch (const CancelledError &) {
        co_return;
    } catch (...) {
        const ErrorPresentation words = presentationOf(std::current_exception());
        failure = words.suggestion ? words.message + u' ' + *words.suggestion : words.message;
    }
    if (!self || stop.stop_requested())
        co_return;
    if (failure.isEmpty())
        self->take(calendars);
    else
        self->finish(false, failure);
}

void CalendarsViewModel::take(const Calendars &calendars)
{
    m_found = calendars.value_or(std::vector<CalendarStoring::Calendar>());
    if (!calendars)
        return finish(false,
                      u"No calendar service answers here. An event is handed to your calendar program as a "
                      "file instead."_s);
    if (m_found.empty())
        return finish(false, u"The calendar service answers, and has no calendar that takes events."_s);
    finish(chosen() >= 0, chosen() >= 0 ? u"The calendar service answers."_s
                                        : u"The calendar that you chose is gone. Choose another one."_s);
}

void CalendarsViewModel::finish(bool worked, const QString &message)
{
    m_isTesting = false;
    m_worked = worked;
    m_message = message;
    Q_EMIT changed();
}

} // namespace morvane
