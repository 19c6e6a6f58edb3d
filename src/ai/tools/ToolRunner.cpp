#include "ai/tools/ToolRunner.h"

#include "ai/tools/EventArguments.h"
#include "ai/tools/SearchListing.h"
#include "ai/tools/WebAddress.h"
#include "memory/MemoryStore.h"
#include "services/DesktopActing.h"
#include "services/ScreenGlancing.h"
#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"

#include <QDateTime>
#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Turn = std::shared_ptr<TurnContext>;

constexpr qsizetype longestPage = 6000; // characters

QString unreadableNotes()
{
    return u"The notes can't be read at the moment, so nothing was saved or forgotten. Tell the user; "
           "Settings → Memory says why."_s;
}

ToolOutcome remember(const ToolArguments &arguments, MemoryStore &memory, const TurnContext &turn)
{
    const auto fact = arguments.text("fact"_L1);
    if (!fact)
        return ToolFailure::because(u"A fact is required."_s);
    if (memory.isUnreadable())
        return ToolFailure::because(unreadableNotes());
    const auto receipt = memory.remember(*fact, turn.chatID.value_or(QString()));
    if (!receipt)
        return ToolFailure::because(u"That was empty; nothing was saved."_s);
    return {u"Saved: "_s + receipt->text};
}

ToolOutcome forget(const ToolArguments &arguments, MemoryStore &memory, const TurnContext &turn)
{
    const auto about = arguments.text("about"_L1);
    if (!about)
        return ToolFailure::because(u"Say what to forget."_s);
    if (memory.isUnreadable())
        return ToolFailure::because(unreadableNotes());
    QStringList notes;
    for (const MemoryStore::Fact &fact : memory.matching(*about))
        notes.append(fact.text);
    if (notes.isEmpty())
        return {u"Nothing stored matched that, so there was nothing to forget."_s};
    const qsizetype removed = memory.forget(*about, turn.chatID.value_or(QString()));
    return {u"Forgot %1 note(s): "_s.arg(removed) + notes.join(u"; "_s)};
}

QCoro::Task<ToolOutcome> remembered(ToolOutcome outcome)
{
    co_return outcome;
}

QCoro::Task<ToolOutcome> searchWeb(ToolArguments arguments, Turn turn, WebAccessing *web,
                                   std::stop_token stop)
{
    const auto query = arguments.text("query"_L1);
    if (!query)
        co_return ToolFailure::because(u"A query is required."_s);
    const std::vector<WebAccessing::SearchResult> results = co_await web->search(*query, stop);
    if (results.empty())
        co_return ToolOutcome{u"No results for “"_s + *query + u"”."_s};
    for (const WebAccessing::SearchResult &result : results) {
        if (const auto url = WebAddress::parse(result.url))
            turn->note(*url);
    }
    turn->webContentConsumed = turn->outsideContentInContext = true;
    co_return ToolOutcome{UntrustedContent::wrap(u"Search results for “"_s + *query + u"”:\n"_s +
                                                     SearchListing::of(results, SearchListing::Images::shown),
                                                 u"web search"_s)};
}

QCoro::Task<ToolOutcome> readWebPage(ToolArguments arguments, Turn turn, WebAccessing *web,
                                     std::stop_token stop)
{
    const auto address = arguments.text("url"_L1);
    if (!address)
        co_return ToolFailure::because(u"A url is required."_s);
    const QString spelling = turn->spellingOf(*address);
    const WebAccessing::Page page = co_await web->readPage(spelling, longestPage, stop);
    turn->webContentConsumed = turn->outsideContentInContext = true;
    const auto url = WebAddress::parse(*address);
    co_return ToolOutcome{
        UntrustedContent::wrap(u"Page “"_s + page.title + u"”:\n"_s + page.text,
                               u"web page "_s + (url ? WebAddress::host(*url) : QString()))};
}

QCoro::Task<ToolOutcome> lookAtScreen(Turn turn, std::shared_ptr<ScreenGlancing> screen, qsizetype limit,
                                      std::stop_token stop)
{
    if (!screen)
        co_return ToolFailure::because(u"Screen reading is unavailable."_s);
    const QString text = co_await screen->captureText(stop);
    turn->outsideContentInContext = turn->sensitiveDataInContext = true;
    turn->takenIn |= SensitiveData::screenText;
    co_return ToolOutcome{
        UntrustedContent::wrap(u"Text currently on screen:\n"_s + Text::prefix(text, limit), u"screen"_s)};
}

QCoro::Task<ToolOutcome> openLink(ToolArguments arguments, DesktopActing *desktop, std::stop_token stop)
{
    const auto url = arguments.text("url"_L1);
    if (!url)
        co_return ToolFailure::because(u"A url is required."_s);
    const QString done = co_await desktop->openLink(*url, stop);
    co_return ToolOutcome{done};
}

QCoro::Task<ToolOutcome> createCalendarEvent(ToolArguments arguments, Turn turn, DesktopActing *desktop,
                                             QDateTime asked, std::stop_token stop)
{
    auto wish = EventArguments::wish(arguments, asked);
    if (!wish)
        co_return ToolFailure::because(u"Both title and minutes_from_now are required."_s);
    wish->chat = turn->chatID.value_or(QString());
    const DesktopActing::EventWish wanted = *wish;
    const QString done = co_await desktop->createEvent(wanted, stop);
    co_return ToolOutcome{done};
}

// What it printed may come from anywhere.
QCoro::Task<ToolOutcome> runShortcut(ToolArguments arguments, Turn turn, DesktopActing *desktop,
                                     std::stop_token stop)
{
    const auto name = arguments.text("name"_L1);
    if (!name)
        co_return ToolFailure::because(u"A shortcut name is required."_s);
    const auto input = arguments.text("input"_L1);
    const DesktopActing::ShortcutAnswer answer = co_await desktop->runShortcut(*name, input, stop);
    if (answer.quotesOutput) {
        turn->outsideContentInContext = true;
        turn->sensitiveDataInContext = true;
    }
    co_return ToolOutcome{answer.sentence};
}

} // namespace

QCoro::Task<ToolOutcome> ToolRunner::run(Ability ability, ToolArguments arguments,
                                         std::shared_ptr<TurnContext> turn, Services services,
                                         std::stop_token stop)
{
    switch (ability) {
    case Ability::remember:
        return remembered(remember(arguments, *services.memory, *turn));
    case Ability::forget:
        return remembered(forget(arguments, *services.memory, *turn));
    case Ability::searchWeb:
        return searchWeb(std::move(arguments), std::move(turn), services.web, std::move(stop));
    case Ability::readWebPage:
        return readWebPage(std::move(arguments), std::move(turn), services.web, std::move(stop));
    case Ability::lookAtScreen:
        return lookAtScreen(std::move(turn), services.screenGlance.lock(), services.screenTextLimit,
                            std::move(stop));
    case Ability::openLink:
        return openLink(std::move(arguments), services.desktop, std::move(stop));
    case Ability::createCalendarEvent:
        return createCalendarEvent(std::move(arguments), std::move(turn), services.desktop, services.asked,
                                   std::move(stop));
    case Ability::runShortcut:
        return runShortcut(std::move(arguments), std::move(turn), services.desktop, std::move(stop));
    }
    return remembered(ToolFailure::because(u"That didn't work."_s));
}

} // namespace morvane
