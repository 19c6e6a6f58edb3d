#include "view_models/chat/ApprovalWords.h"

#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/ToolArguments.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString text(const ToolArguments &arguments, QLatin1StringView name)
{
    return arguments.text(name).value_or(QString());
}

QString minutes(const ToolArguments &arguments, QLatin1StringView name, const QString &words)
{
    const auto number = arguments.number(name);
    return number ? u'\n' + words.arg(*number, 0, 'g', 15) : QString();
}

// Each value but the last has a line of its own, so that none can write the next.
QString event(const ToolArguments &arguments)
{
    return text(arguments, "title"_L1).simplified() +
           minutes(arguments, "minutes_from_now"_L1, u"Begins in %1 minutes"_s) +
           minutes(arguments, "duration_minutes"_L1, u"Takes %1 minutes"_s);
}

QString shortcut(const ToolArguments &arguments)
{
    const auto input = arguments.text("input"_L1);
    return text(arguments, "name"_L1).simplified() + (input ? u"\nwith this text:\n"_s + *input : QString());
}

QString listed(const QStringList &notes)
{
    QStringList lines;
    for (const QString &note : notes)
        lines.append(u"• "_s + note.simplified());
    return lines.join(u'\n');
}

} // namespace

QString ApprovalWords::detail(const AIToolCall &call, const NotesMatching &notes)
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
    case Ability::openLink:
        return text(arguments, "url"_L1);
    case Ability::lookAtScreen:
        return {};
    case Ability::createCalendarEvent:
        return event(arguments);
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
    return {};
}

} // namespace morvane
