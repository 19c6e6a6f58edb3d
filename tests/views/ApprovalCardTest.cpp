#include "WindowFixture.h"

#include "view_models/chat/ChatViewModel.h"

#include <QElapsedTimer>
#include <QSet>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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
    EXPECT_EQ(accessibleName(item(u"decline"_s)), u"Don't Allow"_s);
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

TEST_F(ApprovalCardTest, EscapeDeclinesWhereverTheFocusIsAndStopsNothing)
{
    send();
    for (const auto &name : {u"decline"_s, u"composer"_s, u"conversations"_s, u"sendOrStop"_s}) {
        ask();
        item(name)->forceActiveFocus();
        EXPECT_FALSE(item(u"allowForChat"_s)->isVisible());
        press(Qt::Key_Escape);
        EXPECT_EQ(m_answers.takeLast(), u"no"_s) << name.toStdString();
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(m_window, &held);
        EXPECT_TRUE(m_app->presentation().chat->isResponding()) << name.toStdString();
        EXPECT_FALSE(item(u"approval"_s)->isVisible());
    }
    m_clock.advance(1s);
    ask();
    EXPECT_TRUE(item(u"decline"_s)->hasActiveFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return item(u"composer"_s)->hasActiveFocus(); }))
        << "the keyboard returns to it";
    press(Qt::Key_Escape);
    EXPECT_FALSE(m_app->presentation().chat->isResponding()) << "without a card it stops";
}

TEST_F(ApprovalCardTest, TakesNothingThatIsBeingTyped)
{
    const struct {
        QString words;
        std::chrono::milliseconds ago;
        bool takes;
    } cases[] = {{{}, 2000ms, true}, {u"a"_s, 5000ms, false}, {{}, 999ms, false}, {{}, 1000ms, true}};
    for (const auto &[words, ago, takes] : cases) {
        item(u"composer"_s)->forceActiveFocus();
        type(words);
        if (words.isEmpty())
            press(Qt::Key_Shift); // any key will do
        m_clock.advance(ago);
        ask();
        EXPECT_EQ(item(u"decline"_s)->hasActiveFocus(), takes) << ago.count();
        ASSERT_TRUE(eventually([this] { return isArmed(); }));
        press(Qt::Key_Space);
        EXPECT_EQ(m_app->presentation().chat->draft(), takes ? QString() : words + u' ');
        EXPECT_EQ(m_app->presentation().chat->hasApproval(), !takes);
        m_app->presentation().chat->decline();
        m_app->presentation().chat->setDraft({});
        settle();
    }
    press(Qt::Key_K, Qt::ControlModifier);
    m_clock.advance(5s);
    ask();
    EXPECT_TRUE(isAt(m_window, u"Search chats"_s));
}

TEST_F(ApprovalCardTest, TabFollowsTheEyeAndTheTimeLeftIsNotSaidEachSecond)
{
    ask(true);
    for (const int width : {1100, 420}) {
        m_window->resize(width, 760);
        settle();
        item(u"decline"_s)->forceActiveFocus();
        for (const auto &next : {u"Allow in This Chat"_s, u"Allow Once"_s}) {
            const QRectF from = m_window->activeFocusItem()->mapRectToScene({0, 0, 1, 1});
            press(Qt::Key_Tab);
            EXPECT_TRUE(isAt(m_window, next));
            const QRectF to = m_window->activeFocusItem()->mapRectToScene({0, 0, 1, 1});
            EXPECT_TRUE(to.y() > from.y() || (to.y() == from.y() && to.x() > from.x())) << width;
        }
    }
    QQuickItem *bar = WindowDriver::item(m_window, u"countdown"_s);
    QSet<QString> said;
    for (int left = 120; left > 0; --left) {
        bar->setProperty("secondsLeft", left);
        said += accessibleName(bar);
    }
    EXPECT_LE(said.size(), 5);
}

} // namespace morvane
