#include "view_models/ChatFixture.h"

#include "view_models/chat/ApprovalWords.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const AIToolCall search{u"1"_s, u"search_web"_s, uR"({"query":"weather in Oslo"})"_s};

class ApprovalTest : public ChatFixture {
protected:
    std::shared_ptr<TestWait::Outcome<ApprovalAnswer>> ask(bool offersChatWideYes)
    {
        auto answer = std::make_shared<TestWait::Outcome<ApprovalAnswer>>();
        TestWait::collect(chat.requestApproval(u"Search the web for this"_s, search, offersChatWideYes),
                          answer);
        TestWait::settle();
        return answer;
    }
};

TEST_F(ApprovalTest, IsDeclinedAfter120SecondsAndTheNextGetsItsOwnTime)
{
    const auto answer = ask(true);
    clock.advance(119s);
    EXPECT_EQ(answer->value, std::nullopt);
    clock.advance(1s);
    EXPECT_EQ(answer->value, ApprovalAnswer::declined);

    const auto next = ask(true);
    clock.advance(60s);
    chat.approve();
    TestWait::settle();
    EXPECT_EQ(next->value, ApprovalAnswer::allowedOnce);
    const auto narrow = ask(false);
    clock.advance(61s);
    EXPECT_EQ(narrow->value, std::nullopt) << "a former alarm is not its own";
    chat.approveForChat();
    TestWait::settle();
    EXPECT_EQ(narrow->value, ApprovalAnswer::allowedOnce) << "a chat-wide yes was not offered";
}

TEST_F(ApprovalTest, IsToldOfByANotificationWhereTheWindowIsNotInFront)
{
    for (const bool inFront : {true, false}) {
        chat.setWindowInFront(inFront);
        (void)ask(true);
        EXPECT_EQ(heard.count(u"waits Search the web for this"_s), inFront ? 0 : 1);
        heard.clear();
        clock.advance(120s);
        EXPECT_EQ(heard, QStringList(u"withdrawn"_s));
    }
}

TEST_F(ApprovalTest, ASecondRequestTheStopAndTheTurnsEndDecline)
{
    const auto first = ask(true);
    const auto second = ask(true);
    EXPECT_EQ(second->value, ApprovalAnswer::declined);
    EXPECT_EQ(first->value, std::nullopt);
    EXPECT_TRUE(chat.hasApproval());
    chat.stopResponding();
    TestWait::settle();
    EXPECT_EQ(first->value, ApprovalAnswer::declined);

    send(u"q"_s);
    const auto ended = ask(true);
    replies.text(u"a"_s);
    replies.finish();
    EXPECT_EQ(ended->value, ApprovalAnswer::declined);
    EXPECT_FALSE(chat.hasApproval());
}

TEST(ApprovalWordsTest, TellWhatWouldLeaveAndWhere)
{
    EXPECT_EQ(ApprovalWords::footnote(search, true), u"These words go to Brave Search with your own key."_s);
    EXPECT_EQ(ApprovalWords::footnote({u""_s, u"read_web_page"_s, u"{}"_s}, true),
              u"MorvaneGPT downloads this page from your computer, and its text joins this chat."_s);
    const auto whereTo = [](const QString &url) {
        return ApprovalWords::footnote({u""_s, u"open_link"_s, uR"({"url":"%1"})"_s.arg(url)}, true);
    };
    EXPECT_EQ(whereTo(u"https://bank.example@evil.example/"_s), u"Opens evil.example in your browser."_s);
    EXPECT_EQ(whereTo(u"mailto:a@b.example?subject=x"_s),
              u"Starts a mail to a@b.example in your mail program."_s);
    EXPECT_EQ(whereTo(u"file:///etc"_s), QString());
    const ApprovalWords::NotesMatching notes = [](const QString &about) {
        return QStringList{about + u" with milk"_s, u"hates\ncold "_s + about};
    };
    const std::array<QString, 3> rows[] = {
        {u"run_shortcut"_s, uR"({"name":"A\nB","input":"a\n{b}"})"_s, u"A B\nwith this text:\na\n{b}"_s},
        {u"create_calendar_event"_s, uR"({"minutes_from_now":"60","title":"Tea\nTakes 1 minutes"})"_s,
         u"Tea Takes 1 minutes\nBegins today, 1:00 PM\nTakes 30 minutes"_s},
        {u"create_calendar_event"_s, uR"({"minutes_from_now":-660,"duration_minutes":90,"title":"Tea"})"_s,
         u"Tea\nBegins today, 1:00 AM\nTakes 1 hour 30 minutes"_s},
        {u"create_calendar_event"_s, uR"({"title":"Tea"})"_s, u"Tea"_s},
        {u"open_link"_s, uR"({"url":"https://a.example/","unused":{"deep":1}})"_s, u"https://a.example/"_s},
        {u"open_link"_s, u"not json"_s, {}},
        {u"forget"_s, uR"({"about":"tea"})"_s, u"• tea with milk\n• hates cold tea"_s},
    };
    const QLocale former;
    QLocale::setDefault(QLocale(u"en_US"_s));
    const QDateTime noon(QDate(2026, 2, 28), QTime(12, 0)); // here
    for (const auto &[tool, arguments, detail] : rows) {
        QString shown = ApprovalWords::detail({u""_s, tool, arguments}, noon, notes);
        shown.replace(u'\u202f', u' '); // newer locales put a narrow one before "PM"
        EXPECT_EQ(shown.toStdString(), detail.toStdString());
    }
    QLocale::setDefault(former);
    EXPECT_EQ(ApprovalWords::detail({u""_s, rows[1][0], rows[1][1]}),
              u"Tea Takes 1 minutes\nBegins in 1 hour\nTakes 30 minutes"_s)
        << "as it was sent";
}

} // namespace

} // namespace morvane
