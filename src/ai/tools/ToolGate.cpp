#include "ai/tools/ToolGate.h"

#include "ai/tools/WebAddress.h"
#include "memory/MemoryStore.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ToolGate::Ask;
using ToolGate::Decision;
using ToolGate::Facts;
using ToolGate::Refuse;
using ToolGate::Run;

constexpr qsizetype longestQuery = 400;    // characters
constexpr qsizetype longestAddress = 1000; // characters
constexpr int notesPerTurn = 2;

Decision keepsNoNotes()
{
    return Refuse{
        u"This chat keeps no notes, so nothing can be saved or forgotten here. Do not try again this "
        "turn."_s};
}

Decision byRisk(Ability ability)
{
    const auto &verb = AbilityCatalogue::definition(ability).risk.approvalVerb;
    return verb ? Decision(Ask{*verb}) : Decision(Run{});
}

Decision searchGate(const ToolArguments &arguments, const TurnContext &turn, const Facts &facts)
{
    const auto query = arguments.text("query"_L1);
    if (query && Text::characterCount(*query) > longestQuery)
        return Refuse{u"Search queries must be under 400 characters. Search for the topic in a few words."_s};
    if (turn.chatID && facts.searchAllowedChats.contains(*turn.chatID))
        return Run{};
    Decision decision = byRisk(Ability::searchWeb);
    std::get<Ask>(decision).offersChatWideYes = turn.chatID.has_value();
    return decision;
}

Decision readGate(const ToolArguments &arguments, const TurnContext &turn, const Facts &facts)
{
    const auto text = arguments.text("url"_L1);
    const auto url =
        text && Text::characterCount(*text) <= longestAddress ? WebAddress::parse(*text) : std::nullopt;
    if (!url)
        return Refuse{u"That address is not one that can be read."_s};
    const QString address = WebAddress::normalised(*url);
    if (!turn.knownURLs.contains(address))
        return Ask{u"Read this page"_s};
    if (turn.typedURLs.contains(address))
        return Run{};
    // A page that the model chose could carry private context out in its address, so the person sees it
    // first.
    if (turn.sensitiveDataInContext || (turn.memoryAllowed && !facts.memory.facts().empty()))
        return Ask{u"Read this page from the search results"_s};
    return Run{};
}

Decision forgetGate(const ToolArguments &arguments, const TurnContext &turn, const Facts &facts)
{
    if (!turn.memoryAllowed)
        return keepsNoNotes();
    const auto about = arguments.text("about"_L1);
    if (about && facts.memory.matching(*about).size() > 1)
        return Ask{u"Forget these notes"_s};
    return Run{};
}

Decision rememberGate(TurnContext &turn)
{
    if (!turn.memoryAllowed)
        return keepsNoNotes();
    if (turn.outsideContentInContext || turn.webContentConsumed)
        return Refuse{
            u"Nothing was saved. This turn includes content from outside the conversation (a web page, "
            "search results, an email, a document, an image or the screen), so saving notes is off for "
            "it. Do not try again this turn. If the user asked you to remember something, tell them to "
            "say it again in a new message."_s};
    if (++turn.rememberCalls > notesPerTurn)
        return Refuse{u"Enough has been saved this turn. Do not call remember again now."_s};
    return Run{};
}

} // namespace

ToolGate::Decision ToolGate::decide(Ability ability, const ToolArguments &arguments, TurnContext &turn,
                                    const Facts &facts)
{
    switch (ability) {
    case Ability::searchWeb:
        return searchGate(arguments, turn, facts);
    case Ability::readWebPage:
        return readGate(arguments, turn, facts);
    case Ability::forget:
        return forgetGate(arguments, turn, facts);
    case Ability::remember:
        return rememberGate(turn);
    case Ability::lookAtScreen:
    case Ability::openLink:
    case Ability::createCalendarEvent:
    case Ability::runShortcut:
        return byRisk(ability);
    }
    return Refuse{u"That didn't work."_s};
}

} // namespace morvane
