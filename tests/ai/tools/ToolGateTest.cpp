#include "ai/tools/ToolFixture.h"
#include "ai/tools/WebAddress.h"
#include "support/TestData.h"

#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Plays the lines of a table: calls, and words that set the stage for the calls behind them.
class ToolGateTest : public ToolFixture {
protected:
    using Attendance = TurnContext::Attendance;

    // What the person was asked, what happened, what the model was told, and what the turn now knows of
    // itself.
    QString outcomeOf(const QByteArray &line)
    {
        const QString text = QString::fromUtf8(line);
        if (const auto scene = m_scenes.find(text); scene != m_scenes.end()) {
            scene->second();
            return u"-"_s;
        }
        const auto current = m_turn ? m_turn : turnOf();
        asked.clear();
        happened.clear();
        completed.clear();
        const AIToolResult result = dispatch(call(text.section(u' ', 0, 0), text.section(u' ', 1)), current);
        EXPECT_EQ(result.isError, result.content.startsWith(u"Error: "_s));
        EXPECT_EQ(result.isDeclined, result.content.contains(u"The user declined"_s));
        EXPECT_TRUE(completed.empty() || completed.back() == result);
        static const QRegularExpression id(u"id [0-9a-f]{8}"_s);
        const QString told = QString(result.content).replace(id, u"id …"_s);
        return (asked + happened + QStringList(told)).join(u" | ") + marksOf(*current);
    }

private:
    QString marksOf(const TurnContext &turn) const
    {
        QStringList marks;
        for (const auto &[isSet, mark] : {std::pair(completed.empty(), u"not tried"_s),
                                          {turn.webContentConsumed, u"web"_s},
                                          {turn.outsideContentInContext, u"outside"_s},
                                          {turn.sensitiveDataInContext, u"private"_s},
                                          {!turn.approvedOnce.empty(), u"approved"_s}}) {
            if (isSet)
                marks.append(mark);
        }
        return marks.isEmpty() ? QString() : u" ["_s + marks.join(u", ") + u']';
    }
    // A turn that goes on through the calls behind; without one, each call is in a turn of its own.
    void begin(Attendance attendance, std::optional<QString> chat,
               TurnContext::Notes notes = TurnContext::Notes::kept, const QString &attached = {})
    {
        m_turn = TurnContext::begin(attendance, std::move(chat), notes, u"https://typed.example/Page"_s,
                                    {{.role = AIMessage::Role::user, .content = attached}});
    }

    std::shared_ptr<TurnContext> m_turn;
    const QString m_document =
        u"--- BEGIN UNTRUSTED CONTENT (document, id 1) ---\nhttps://evil.example/ ..."_s;
    const std::map<QString, std::function<void()>> m_scenes{
        {u"each call in a turn of its own"_s, [this] { m_turn = nullptr; }},
        {u"a turn of chat A"_s, [this] { begin(Attendance::attended, u"chat:A"_s); }},
        {u"a turn of chat B"_s, [this] { begin(Attendance::attended, u"chat:B"_s); }},
        {u"a turn of no chat"_s, [this] { begin(Attendance::attended, {}); }},
        {u"a turn with nobody there"_s, [this] { begin(Attendance::unattended, u"chat:A"_s); }},
        {u"a turn that keeps no notes"_s,
         [this] { begin(Attendance::attended, u"chat:C"_s, TurnContext::Notes::notKept); }},
        {u"a turn with a document"_s,
         [this] { begin(Attendance::attended, u"chat:C"_s, TurnContext::Notes::kept, m_document); }},
        {u"the person says no"_s, [this] { answer = ApprovalAnswer::declined; }},
        {u"the person says yes"_s, [this] { answer = ApprovalAnswer::allowedOnce; }},
        {u"the person says yes for the chat"_s, [this] { answer = ApprovalAnswer::allowedForChat; }},
        {u"there is no window"_s, [this] { registry.setHooks({}); }},
        {u"screen awareness is off"_s, [this] { settings.setScreenAwarenessEnabled(false); }},
        {u"abilities are off"_s, [this] { settings.setAbilitiesEnabled(false); }},
        {u"the screen is read up to five characters"_s, [this] { settings.setMaxExtractedCharacters(5); }},
        {u"three notes are kept"_s,
         [this] {
             for (const auto &note : {u"Drinks coffee"_s, u"Hates coffee breaks"_s, u"Has a cat"_s})
                 memory.record(note);
         }},
        {u"pages can't be read"_s,
         [this] { world->readError = failure(WebAccessError(WebAccessError::FetchFailed{404})); }},
        {u"searches fail"_s,
         [this] { world->searchError = failure(WebAccessError(WebAccessError::Plain::offline)); }},
        {u"searches find nothing"_s,
         [this] {
             world->searchError = nullptr;
             world->results.clear();
         }},
    };
};

TEST_F(ToolGateTest, EachCallAsksHappensAndIsAnsweredAsItsTurnAllows)
{
    world->results.push_back({u"Two"_s, u"not a url"_s, u"second"_s, u"https://img.example/2.png"_s});
    TestData::expect("ai/tool_calls.txt", [this](const QByteArray &line) { return outcomeOf(line); });
}

TEST_F(ToolGateTest, LimitsAreCountedInCharacters)
{
    const auto isRefused = [this](const QString &name, const QString &arguments) {
        return dispatch(call(name, arguments), turnOf()).isError;
    };
    const QString family = u"👨‍👩‍👧"_s; // one character of eight units
    const QString query = uR"({"query":"%1"})"_s;
    EXPECT_FALSE(isRefused(u"search_web"_s, query.arg(family.repeated(400))));
    EXPECT_TRUE(isRefused(u"search_web"_s, query.arg(family.repeated(401))));
    const QString address = uR"({"url":"https://a.example/%1"})"_s; // eighteen characters and the rest
    EXPECT_FALSE(isRefused(u"read_web_page"_s, address.arg(QString(982, u'x'))));
    EXPECT_TRUE(isRefused(u"read_web_page"_s, address.arg(QString(983, u'x'))));
}

// Two addresses are the same where their normalised texts are; a search is made of the words of the path.
TEST(WebAddressTest, IsReadNormalisedAndTurnedIntoASearch)
{
    const auto outcome = [](const QByteArray &line) {
        const auto url = WebAddress::parse(line);
        return url ? WebAddress::normalised(*url) + u" on “"_s + WebAddress::host(*url) + u"”; "_s +
                         WebAddress::searchQuery(*url).value_or(u"no search"_s)
                   : u"no address"_s;
    };
    TestData::expect("ai/web_addresses.txt", outcome);
}

} // namespace

} // namespace morvane
