#include "WindowFixture.h"

#include "view_models/chat/ChatViewModel.h"

#include <QElapsedTimer>

namespace morvane {

using namespace Qt::StringLiterals;

class ApprovalCardTest : public WindowFixture {
protected:
    void ask(bool offersChatWideYes = false) { askToSearch(u"ferns in the dark"_s, offersChatWideYes); }
    [[nodiscard]] bool isArmed() const { return item(u"approval"_s)->property("armed").toBool(); }
};

TEST_F(ApprovalCardTest, TheHarmlessAnswerHasTheFocusAndNothingCountsInTheFirstHalfSecond)
{
    QElapsedTimer sinceShown;
    sinceShown.start();
    ask(true);
    EXPECT_TRUE(shows(u"Search the web"_s));
    EXPECT_TRUE(shows(u"ferns in the dark"_s));
    EXPECT_TRUE(shows(u"These words go to Brave Search"_s));
    EXPECT_TRUE(item(u"decline"_s)->hasActiveFocus());
    click(item(u"allow"_s));
    click(item(u"allowForChat"_s));
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    if (sinceShown.elapsed() < 500) { // a machine that stalls longer than that proves nothing here
        EXPECT_TRUE(m_app->presentation().chat->hasApproval());
        ASSERT_TRUE(eventually([this] { return isArmed(); }));
        EXPECT_GE(sinceShown.elapsed(), 480);
    }
    m_app->presentation().chat->decline();
    settle();
    m_answers.clear();
    for (const auto &button : {u"allow"_s, u"allowForChat"_s, u"decline"_s}) {
        ask(true);
        EXPECT_FALSE(isArmed()) << "each request is guarded anew";
        ASSERT_TRUE(eventually([this] { return isArmed(); }));
        click(item(button));
    }
    EXPECT_EQ(m_answers, QStringList({u"yes"_s, u"yes for the chat"_s, u"no"_s}));
}

TEST_F(ApprovalCardTest, EscapeDeclinesAtAnyMomentAndStopsNothing)
{
    send();
    ask();
    EXPECT_FALSE(item(u"allowForChat"_s)->isVisible());
    press(Qt::Key_Escape);
    EXPECT_EQ(m_answers, QStringList(u"no"_s));
    EXPECT_TRUE(m_app->presentation().chat->isResponding());
    EXPECT_FALSE(item(u"approval"_s)->isVisible());
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus()) << "the keyboard returns to it";
}

} // namespace morvane
