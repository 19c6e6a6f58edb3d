#include "WindowFixture.h"

#include "view_models/chat/ChatViewModel.h"

#include <QWheelEvent>

namespace morvane {

using namespace Qt::StringLiterals;

// A long chat at whose end a reply is being written.
class ScrollTest : public WindowFixture {
protected:
    void SetUp() override
    {
        QStringList turns;
        for (int turn = 0; turn < 20; ++turn)
            turns += {u"Question %1"_s.arg(turn), u"An answer with some words. "_s.repeated(20)};
        m_app->presentation().chat->open(addChat(u"Long"_s, turns));
        load();
        m_list = item(u"messages"_s);
        settle();
    }
    [[nodiscard]] double gap() const { return m_list->property("gapToEnd").toDouble(); }
    [[nodiscard]] double top() const { return m_list->property("contentY").toDouble(); }
    [[nodiscard]] bool follows() const { return m_list->property("following").toBool(); }
    void wheel(int steps)
    {
        const QPointF middle = m_list->mapToScene({m_list->width() / 2, m_list->height() / 2});
        QWheelEvent event(middle, m_window->mapToGlobal(middle), {}, {0, 120 * steps}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        event.setTimestamp(m_wheelTime += 500); // so far apart that each is a movement of its own
        QCoreApplication::sendEvent(m_window, &event);
        settle();
        EXPECT_TRUE(eventually([this] { return !m_list->property("moving").toBool(); }));
    }
    void growLastReply(int words) { stream(u"more words "_s.repeated(words)); }
    void beginLongReply()
    {
        send();
        growLastReply(400);
        EXPECT_NEAR(gap(), 0, 1);
    }

    QQuickItem *m_list = nullptr;
    quint64 m_wheelTime = 1000;
};

TEST_F(ScrollTest, AChatOpensAtItsEndAndFollowsAGrowingReply)
{
    EXPECT_NEAR(gap(), 0, 1);
    beginLongReply();
    for (int piece = 0; piece < 10; ++piece) {
        growLastReply(40);
        EXPECT_NEAR(gap(), 0, 1) << piece;
    }
}

TEST_F(ScrollTest, OneStepUpLetsGoAndTheEndButtonLeadsBack)
{
    beginLongReply();
    wheel(1);
    EXPECT_FALSE(follows());
    const double before = top();
    growLastReply(100);
    EXPECT_NEAR(top(), before, 1) << "what is being read doesn't move";
    EXPECT_GT(gap(), 64);
    ASSERT_TRUE(eventually([this] { return item(u"toEnd"_s)->isVisible(); }));
    click(item(u"toEnd"_s));
    EXPECT_TRUE(follows());
    EXPECT_NEAR(gap(), 0, 1);
    wheel(3);
    EXPECT_FALSE(follows());
    for (int step = 0; step < 20 && gap() > 1; ++step)
        wheel(-3);
    EXPECT_TRUE(follows()) << "scrolling back takes hold again";
    growLastReply(50);
    EXPECT_NEAR(gap(), 0, 1);
}

TEST_F(ScrollTest, PageKeysScrollFromTheComposer)
{
    beginLongReply();
    item(u"composer"_s)->forceActiveFocus();
    const double end = top();
    press(Qt::Key_PageUp);
    EXPECT_LT(top(), end - 100);
    EXPECT_FALSE(follows());
    growLastReply(10);
    EXPECT_LT(top(), end - 100);
    press(Qt::Key_PageDown);
    press(Qt::Key_PageDown);
    EXPECT_TRUE(follows());
    press(Qt::Key_PageUp);
    press(Qt::Key_End, Qt::AltModifier);
    EXPECT_TRUE(follows());
    EXPECT_NEAR(gap(), 0, 1);
}

TEST_F(ScrollTest, ASentMessageGoesToTheUpperThirdAndStaysThereWhileItsAnswerFits)
{
    send(u"The new question"_s);
    settle();
    const auto placeOfQuestion = [this] {
        QQuickItem *row = nullptr;
        QMetaObject::invokeMethod(m_list, "itemAtIndex", Q_RETURN_ARG(QQuickItem *, row),
                                  Q_ARG(int, m_app->presentation().chat->messages()->rowCount() - 2));
        return row ? row->mapToItem(m_list, QPointF()).y() : -1000;
    };
    EXPECT_NEAR(placeOfQuestion(), m_list->height() / 3, 30);
    growLastReply(20);
    EXPECT_NEAR(placeOfQuestion(), m_list->height() / 3, 30) << "it stays while the answer fits below";
    growLastReply(600);
    EXPECT_NEAR(gap(), 0, 1) << "a long answer is followed";
    EXPECT_LT(placeOfQuestion(), m_list->height() / 3);
}

TEST_F(ScrollTest, ALongChatBuildsOnlyTheRowsThatAreSeen)
{
    m_app->presentation().chat->open(addChat(u"Longer"_s, QStringList(200, u"words"_s)));
    settle();
    const auto rows = [this] {
        const auto children = m_list->property("contentItem").value<QQuickItem *>()->childItems();
        return std::count_if(children.begin(), children.end(),
                             [](QQuickItem *child) { return child->property("messageId").isValid(); });
    };
    EXPECT_LT(rows(), 80);
    for (int page = 0; page < 10; ++page)
        press(Qt::Key_PageUp);
    EXPECT_LT(rows(), 80);
}

} // namespace morvane
