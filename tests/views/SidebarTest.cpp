#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

class SidebarTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_bread = addChat(u"Bread"_s);
        m_ferns = addChat(u"Ferns"_s, {u"q"_s, u"a"_s});
        m_app->presentation().chat->open(m_ferns);
        load();
    }
    [[nodiscard]] QQuickItem *row(const QString &title) const
    {
        for (QQuickItem *child : allItems()) {
            if (child->property("conversationId").isValid() && child->property("title") == title)
                return child;
        }
        return nullptr;
    }
    [[nodiscard]] bool isShown() const { return item(u"sidebar"_s)->isVisible(); }
    [[nodiscard]] bool isAsked() const { return isAt(m_window, u"Cancel"_s); }
    void resize(int width)
    {
        m_window->resize(width, 700);
        ASSERT_TRUE(eventually([&] { return m_window->width() == width; }));
        settle();
    }
    void focusList() { item(u"conversations"_s)->forceActiveFocus(Qt::TabFocusReason); }

    QString m_bread;
    QString m_ferns;
};

TEST_F(SidebarTest, F9HidesItAndTheSettingRemembers)
{
    EXPECT_TRUE(isShown());
    press(Qt::Key_F9);
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(m_app->storage().settings->chatHistoryOpen());
    click(item(u"showSidebar"_s));
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(m_app->storage().settings->chatHistoryOpen());
}

TEST_F(SidebarTest, InANarrowWindowItLiesOverTheChatAndGoesAfterAChoice)
{
    resize(600);
    EXPECT_FALSE(isShown());
    press(Qt::Key_F9);
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(m_app->storage().settings->chatHistoryOpen()) << "the wide window's setting is its own";
    click(row(u"Bread"_s));
    EXPECT_FALSE(isShown());
    EXPECT_EQ(m_app->presentation().chat->conversationId(), m_bread);
    send();
    press(Qt::Key_F9);
    press(Qt::Key_Escape);
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(m_app->presentation().chat->isResponding()) << "Escape closed the list and stopped nothing";
    resize(1000);
    EXPECT_TRUE(isShown());
}

TEST_F(SidebarTest, ItsEdgeIsMovedByPointerAndKeysWithinItsBoundsAndStaysThere)
{
    resize(1100);
    const auto width = [this] { return item(u"sidebar"_s)->width(); };
    const auto drag = [&](int distance) {
        const QPoint from(static_cast<int>(width()) - 3, 300);
        QTest::mousePress(m_window, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 5; ++step)
            QTest::mouseMove(m_window, from + QPoint(distance * step / 5, 0));
        QTest::mouseRelease(m_window, Qt::LeftButton, {}, from + QPoint(distance, 0));
        settle();
    };
    EXPECT_EQ(width(), 280);
    drag(50);
    EXPECT_NEAR(width(), 330, 1);
    EXPECT_EQ(m_app->storage().settings->chatHistoryWidth(), width());
    drag(300);
    EXPECT_EQ(width(), 360);
    drag(-300);
    EXPECT_EQ(width(), 220);
    QTest::mouseDClick(m_window, Qt::LeftButton, {}, {217, 300});
    settle();
    EXPECT_EQ(width(), 280);
    item(u"sidebarEdge"_s)->forceActiveFocus(Qt::TabFocusReason);
    for (const auto &[key, wanted] : {std::pair{Qt::Key_Right, 290},
                                      {Qt::Key_End, 360},
                                      {Qt::Key_Right, 360},
                                      {Qt::Key_Left, 350},
                                      {Qt::Key_Home, 220},
                                      {Qt::Key_Return, 280}}) {
        press(key);
        EXPECT_EQ(width(), wanted) << key;
    }
    m_app->storage().settings->setChatHistoryWidth(-5);
    start();
    load();
    EXPECT_EQ(width(), 220) << "whatever the file says";
}

TEST_F(SidebarTest, TheListWorksByKeyboardAlone)
{
    focusList();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(m_app->presentation().chat->conversationId(), m_bread);
    for (const auto &[name, key, title] :
         {std::tuple{u"Rye"_s, Qt::Key_Return, u"Rye"_s}, {u"Oat"_s, Qt::Key_Escape, u"Rye"_s}}) {
        focusList();
        press(Qt::Key_F2);
        type(name);
        press(key);
        EXPECT_EQ(m_app->presentation().chat->title(), title);
        EXPECT_NE(row(title), nullptr);
        EXPECT_TRUE(isAt(m_window, u"Chats"_s)) << "the keyboard stays on the list";
    }
}

TEST_F(SidebarTest, KeysLeadToTheChatAboveAndBelow)
{
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(m_app->presentation().chat->conversationId(), m_bread);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(m_app->presentation().chat->conversationId(), m_ferns) << "above the first there is none";
}

TEST_F(SidebarTest, DeletingAsksFirstAndStartsOnTheHarmlessAnswer)
{
    const auto ask = [this] {
        focusList();
        press(Qt::Key_Delete);
        EXPECT_TRUE(eventually([this] { return isAsked(); }));
    };
    ask();
    press(Qt::Key_Return);
    EXPECT_NE(row(u"Ferns"_s), nullptr);
    ASSERT_TRUE(eventually([this] { return !isAsked(); }));
    ask();
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_EQ(row(u"Ferns"_s), nullptr);
    EXPECT_NE(row(u"Bread"_s), nullptr);
}

} // namespace morvane
