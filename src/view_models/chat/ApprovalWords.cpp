#include "view_models/chat/ApprovalWords.h"

#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/EventArguments.h"
#include "ai/tools/ToolArguments.h"
#include "services/DesktopActionError.h"
#include "services/DesktopLink.h"
#include "services/EventWords.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"
#include "utils/text/UntrustedContent.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString text(const ToolArguments &arguments, QLatin1StringView name)
{
    return arguments.text(name).value_or(QString());
}

QString moment(const QDateTime &start, const QDateTime &asked)
{
    const bool isToday = start.toLocalTime().date() == asked.toLocalTime().date();
    return (isToday ? u"today, "_s : QString()) + EventWords::moment(start, asked);
}

QString distance(qint64 seconds)
{
    constexpr qint64 perMinute = 60;
    const qint64 minutes = seconds / perMinute;
    return minutes == 0  ? u"now"_s
           : minutes < 0 ? EventWords::length(-minutes) + u" ago"_s
                         : u"in "_s + EventWords::length(minutes);
}

// Each value but the last has a line of its own, so that none can write the next.
QString event(const ToolArguments &arguments, const std::optional<QDateTime> &asked)
{
    const QString title = UntrustedContent::line(text(arguments, "title"_L1));
    const QDateTime from = asked.value_or(QDateTime::fromSecsSinceEpoch(0));
    const auto wish = EventArguments::wish(arguments, from);
    if (!wish)
        return title;
    return title + u"\nBegins "_s +
           (asked ? moment(wish->start, *asked) : distance(from.secsTo(wish->start))) + u"\nTakes "_s +
           EventWords::length(wish->durationMinutes);
}

// As it would be opened; what can't be opened as it was given.
QString link(const QString &address)
{
    try {
        return DesktopLink::shown(DesktopLink::parsed(address));
    } catch (const DesktopActionError &) {
        return UntrustedContent::line(address);
    }
}

// An address may be made to look like another one's, so the host stands alone as well.
QString whereTo(const QString &address)
{
    try {
        const QUrl url = DesktopLink::parsed(address);
        const QString destination = DesktopLink::destination(url);
        if (!DesktopLink::isMail(url))
            return u"Opens %1 in your browser."_s.arg(destination);
        return destination.isEmpty() ? u"Starts a mail in your mail program."_s
                                     : u"Starts a mail to %1 in your mail program."_s.arg(destination);
    } catch (const DesktopActionError &) {
        return {};
    }
}

QString shortcut(const ToolArguments &arguments)
{
    const auto input = arguments.text("input"_L1);
    return UntrustedContent::line(text(arguments, "name"_L1)) +
           (input ? u"\nwith this text:\n"_s + *input : QString());
}

QString listed(const QStringList &notes)
{
    QStringList lines;
    for (const QString &note : notes)
        lines.append(u"• "_s + note.simplified());
    return lines.join(u'\n');
}

} // namespace

QString ApprovalWords::detail(const AIToolCall &call, const std::optional<QDateTime> &asked,
                              const NotesMatching &notes)
{
    const auto ability = AbilityCatalogue::named(call.name);
    if (!ability)
        return {};
    const ToolArguments arguments(call.argumentsJSON);
    switch (*ability) {
    case Ability::remember:
        return text(arguments, "fact"_L1);
    case Ability::forget: {
        const QString about = text(arguments, "about"_L1);
        return notes ? listed(notes(about)) : about;
    }
    case Ability::searchWeb:
        return text(arguments, "query"_L1);
    case Ability::readWebPage:
        return text(arguments, "url"_L1);
    case Ability::openLink:
        return link(text(arguments, "url"_L1));
    case Ability::lookAtScreen:
        return {};
    case Ability::createCalendarEvent:
        return event(arguments, asked);
    case Ability::runShortcut:
        return shortcut(arguments);
    }
    return {};
}

QString ApprovalWords::footnote(const AIToolCall &call, bool searchesWithOwnKey)
{
    if (call.name == "search_web"_L1)
        return searchesWithOwnKey
                   ? u"These words go to Brave Search with your own key."_s
                   : u"These words go to Brave Search through "_s + Product::name + u"'s search service."_s;
    if (call.name == "read_web_page"_L1)
        return u"%1 downloads this page from your %2, and its text joins this chat."_s.arg(
            Product::name, DesktopWords::here().device);
    if (call.name == "open_link"_L1)
        return whereTo(text(ToolArguments(call.argumentsJSON), "url"_L1));
    if (call.name == "create_calendar_event"_L1)
        return u"Goes to the calendar that Settings → Abilities names."_s;
    if (call.name == "run_shortcut"_L1)
        return u"Runs this program of your Shortcuts folder. It may do what you may do."_s;
    return {};
}

} // namespace morvane
