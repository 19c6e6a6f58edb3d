#include "services/DesktopActionService.h"

#include "async/Clock.h"
#include "services/DesktopLink.h"
#include "services/EventWords.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DesktopActionError::Plain;
using Shortcuts = std::vector<ShortcutRunning::Shortcut>;

namespace {

constexpr qint64 longestAgo = 86'400;    // seconds; "now" and small rounding never fail
constexpr qsizetype longestOutput = 500; // characters
constexpr int lastYear = 9999;           // that a calendar file can name
constexpr std::int64_t secondsPerMinute = 60;

void requireOpened(LinkOpening::Outcome outcome)
{
    switch (outcome) {
    case LinkOpening::Outcome::opened:
        return;
    case LinkOpening::Outcome::failed:
        throw DesktopActionError(Plain::openFailed);
    case LinkOpening::Outcome::dismissed:
        throw DesktopActionError(Plain::openDismissed);
    }
}

// Throws for what is no event.
CalendarStoring::Event eventOf(const DesktopActing::EventWish &wish, const QDateTime &now)
{
    CalendarStoring::Event event{wish.title.simplified(), wish.start, {}};
    if (event.title.isEmpty())
        throw DesktopActionError(Plain::calendarEventInvalid);
    if (event.start.secsTo(now) > longestAgo)
        throw DesktopActionError(Plain::calendarEventInPast);
    constexpr std::int64_t mostMinutes = std::int64_t{lastYear} * 366 * 24 * 60;
    if (wish.durationMinutes < 0 || wish.durationMinutes > mostMinutes)
        throw DesktopActionError(Plain::calendarSaveFailed);
    event.end = event.start.addSecs(wish.durationMinutes * secondsPerMinute);
    if (!event.end.isValid() || event.end.date().year() > lastYear)
        throw DesktopActionError(Plain::calendarSaveFailed);
    return event;
}

// The shortcut of that whole name. Where a letter with its mark is spelled in two ways, both are the same.
const ShortcutRunning::Shortcut *find(const Shortcuts &shortcuts, const QString &name)
{
    const auto normalised = [](const QString &text) { return text.normalized(QString::NormalizationForm_C); };
    auto found = std::ranges::find(shortcuts, name, &ShortcutRunning::Shortcut::name);
    if (found == shortcuts.end())
        found = std::ranges::find_if(
            shortcuts, [&](const auto &each) { return normalised(each.name) == normalised(name); });
    return found == shortcuts.end() ? nullptr : &*found;
}

// The name that it has in the folder. Without a list the given one is tried.
QString listedName(const std::optional<Shortcuts> &known, const QString &name)
{
    if (!known)
        return name;
    if (const auto *shortcut = find(*known, name))
        return shortcut->name;
    QStringList available;
    for (const auto &shortcut : *known)
        if (!shortcut.refusal)
            available.append(shortcut.name);
    throw DesktopActionError(DesktopActionError::ShortcutNotFound{name, available});
}

} // namespace

DesktopActionService::DesktopActionService(Services services)
    : m_services(std::move(services))
{}

QCoro::Task<QString> DesktopActionService::openLink(QString text, std::stop_token stop)
{
    const QUrl url = DesktopLink::parsed(text);
    const LinkOpening::Outcome outcome = co_await m_services.links.open(url, stop);
    requireOpened(outcome);
    Log::info(Log::Category::App, "Opened a link on the user's behalf"_L1);
    co_return u"Opened "_s + DesktopLink::shown(url) + u" in the default browser."_s;
}

QCoro::Task<QString> DesktopActionService::createEvent(EventWish wish, std::stop_token stop)
{
    const auto check = m_lifeline.check({}); // what was added is told, however the turn ends
    const QDateTime now = m_services.clock.now();
    const CalendarStoring::Event event = eventOf(wish, now);
    const QString when = EventWords::moment(event.start, now);
    const auto calendar = m_services.chosenCalendar();
    const std::optional<CalendarStoring::Place> place =
        co_await m_services.calendars.add(event, calendar, stop);
    check();
    if (!place) {
        const QString handedOver = co_await handOver(event, when, stop);
        co_return QString(handedOver);
    }
    Log::info(Log::Category::App, "Created a calendar event on the user's behalf"_L1);
    m_services.receipts.keep({QUuid::createUuid(), event.title, when, wish.chat, *place});
    co_return u"Added “"_s + event.title + u"” to "_s + place->calendarName + u" at "_s + when + u'.';
}

QCoro::Task<QString> DesktopActionService::handOver(CalendarStoring::Event event, QString when,
                                                    std::stop_token stop)
{
    const QString path = m_services.calendars.writeFile(event);
    const QUrl file = QUrl::fromLocalFile(path);
    const LinkOpening::Outcome outcome = co_await m_services.links.open(file, stop);
    if (outcome != LinkOpening::Outcome::opened)
        throw DesktopActionError(Plain::calendarUnavailable);
    Log::info(Log::Category::App, "Handed a calendar event over on the user's behalf"_L1);
    co_return u"No calendar service answers here, so “"_s + event.title + u"” at "_s + when +
        u" was opened as a file in the calendar program. It is in the calendar only once the user has saved "
        u"it there."_s;
}

QCoro::Task<DesktopActing::ShortcutAnswer>
DesktopActionService::runShortcut(QString name, std::optional<QString> input, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const std::optional<Shortcuts> known = co_await m_services.shortcuts.list(stop);
    check();
    const QString listed = listedName(known, name);
    const QString printed = co_await m_services.shortcuts.run(listed, input, stop);
    Log::info(Log::Category::App, "Ran a Shortcut on the user's behalf"_L1);
    const QString output = UntrustedContent::defused(Text::prefix(Text::trimmed(printed), longestOutput));
    const QString sentence = u"Ran the “"_s + name + u"” shortcut."_s;
    ShortcutAnswer answer{output.isEmpty() ? sentence : sentence + u" It returned: "_s + output,
                          !output.isEmpty()};
    co_return answer;
}

} // namespace morvane
