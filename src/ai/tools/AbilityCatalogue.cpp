#include "ai/tools/AbilityCatalogue.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = AITool::Parameter::Kind;

AITool::Parameter required(const QString &name, const QString &description, Kind kind = Kind::string)
{
    return {.name = name, .kind = kind, .description = description, .required = true, .allowedValues = {}};
}

AITool::Parameter optional(const QString &name, const QString &description, Kind kind = Kind::string)
{
    return {.name = name, .kind = kind, .description = description, .required = false, .allowedValues = {}};
}

const AITool::Risk safe{std::nullopt};

AITool::Risk needsApproval(const QString &verb)
{
    return {verb};
}

// The descriptions are tuned for small models; a changed word is a changed behaviour.
// clang-format off

AITool remember()
{
    return {
        .name = u"remember"_s,
        .description =
            u"Save a durable fact about the user so it survives into future conversations. Call this when they "
            "tell you something about themselves, their work, their preferences, or the people and projects in "
            "their life that would be useful weeks from now. Do not save passing details of the current task."_s,
        .parameters = {required(u"fact"_s, u"One self-contained sentence, written in the third person."_s)},
        .risk = safe,
        .displayName = u"Remember things about you"_s,
        .userDescription =
            u"Keeps short notes between conversations so you don't repeat yourself. A chat in Ghost mode keeps "
            "none. Each note shows in the chat with Undo, and it never saves one in a turn that read a web page, "
            "a document, an image or your screen."_s};
}

AITool forget()
{
    return {
        .name = u"forget"_s,
        .description =
            u"Delete remembered facts matching a description. Call this whenever the user asks you to forget "
            "something or corrects a fact you have stored."_s,
        .parameters = {required(u"about"_s, u"What to forget, in a few words."_s)},
        .risk = safe,
        .displayName = u"Forget on request"_s,
        .userDescription = u"Drops anything you ask it to forget."_s};
}

AITool searchWeb()
{
    return {
        .name = u"search_web"_s,
        .description =
            u"Search the web. Call this whenever the answer depends on current information: recent events, "
            "current prices or versions, anything that changed after your training data, or anything the user "
            "says is time-sensitive. Prefer searching over answering from memory when you are not certain."_s,
        .parameters = {required(u"query"_s, u"The search query."_s)},
        .risk = needsApproval(u"Search the web for this"_s),
        .displayName = u"Search the web"_s,
        .userDescription =
            u"Looks things up online so answers aren't stuck at the model's cutoff date. Shows you the exact "
            "search first, and you can allow searches for the rest of a chat."_s};
}

AITool readWebPage()
{
    return {
        .name = u"read_web_page"_s,
        .description =
            u"Fetch a web page and read its text. Call this after a search when a result looks like it holds the "
            "answer, or when the user gives you a link and asks about it."_s,
        .parameters = {required(u"url"_s, u"The full https address of the page."_s)},
        .risk = safe,
        .displayName = u"Read a web page"_s,
        .userDescription =
            u"Opens a link you or it found and reads the article text. Asks first for a link you didn't type "
            "when the chat holds your notes, a document or your screen."_s};
}

AITool lookAtScreen()
{
    return {
        .name = u"look_at_screen"_s,
        .description =
            u"Read the text currently visible on the user's screen. Call this when they refer to something they "
            "are looking at (\"this error\", \"that page\", \"what does this mean\") instead of asking them to "
            "paste it. You get text only, never an image, and never anything from your own window."_s,
        .parameters = {},
        .risk = needsApproval(u"Read your screen"_s),
        .displayName = u"Look at your screen"_s,
        .userDescription = u"Reads the text on screen when you ask about something you're looking at."_s};
}

AITool openLink()
{
    return {
        .name = u"open_link"_s,
        .description =
            u"Open a web or email link in the user's default app. Call this only when they ask you to open, "
            "visit, or go to something."_s,
        .parameters = {required(u"url"_s, u"An https or mailto address."_s)},
        .risk = needsApproval(u"Open this link"_s),
        .displayName = u"Open links"_s,
        .userDescription = u"Opens a page in your browser. Always asks first."_s};
}

AITool createCalendarEvent()
{
    return {
        .name = u"create_calendar_event"_s,
        .description =
            u"Add an event to the user's default calendar. Call this when they ask you to schedule, book, or "
            "block time for something."_s,
        .parameters = {
            required(u"title"_s, u"The event title."_s),
            required(u"minutes_from_now"_s, u"When it starts, in minutes from now."_s, Kind::number),
            optional(u"duration_minutes"_s, u"How long it lasts, in minutes."_s, Kind::number)},
        .risk = needsApproval(u"Add this event"_s),
        .displayName = u"Add calendar events"_s,
        .userDescription = u"Puts events on your calendar. Always asks first."_s};
}

AITool runShortcut()
{
    return {
        .name = u"run_shortcut"_s,
        .description =
            u"Run one of the user's own Shortcuts by name. Call this only when they ask for something a shortcut "
            "clearly does. If you are not sure a shortcut exists, ask rather than guessing at a name."_s,
        .parameters = {
            required(u"name"_s, u"The exact name of the shortcut."_s),
            optional(u"input"_s, u"Optional text to pass in."_s)},
        .risk = needsApproval(u"Run this shortcut"_s),
        .displayName = u"Run your Shortcuts"_s,
        .userDescription = u"Runs a Shortcut you already built. Always asks first."_s};
}

// clang-format on

} // namespace

const std::vector<AITool> &AbilityCatalogue::all()
{
    static const std::vector<AITool> tools{remember(),     forget(),   searchWeb(),           readWebPage(),
                                           lookAtScreen(), openLink(), createCalendarEvent(), runShortcut()};
    return tools;
}

const AITool &AbilityCatalogue::definition(Ability ability)
{
    return all().at(static_cast<std::size_t>(ability));
}

std::optional<Ability> AbilityCatalogue::named(QStringView name)
{
    const auto &tools = all();
    const auto found =
        std::find_if(tools.begin(), tools.end(), [name](const AITool &tool) { return tool.name == name; });
    if (found == tools.end())
        return std::nullopt;
    return static_cast<Ability>(found - tools.begin());
}

} // namespace morvane
