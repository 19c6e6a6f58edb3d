#include "WindowFixture.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

class SidebarTest : public WindowFixture {
protected:
    void SetUp() override
    {
        for (const auto &[id, title, section] :
             {std::tuple{u"A"_s, u"Ferns"_s, u"Today"_s}, {u"B"_s, u"Bread"_s, u"Yesterday"_s}})
            m_conversations.append({{u"conversationId"_s, id}, {u"title"_s, title}, {u"section"_s, section}});
        load();
    }
    [[nodiscard]] QQuickItem *row(const QString &title) const
    {
        const auto all = allItems();
        const auto found = std::find_if(all.begin(), all.end(), [&](QQuickItem *child) {
            return child->property("conversationId").isValid() && child->property("title") == title;
        });
        return found == all.end() ? nullptr : *found;
    }
    [[nodiscard]] bool isShown() const { return item(u"sidebar"_s)->isVisible(); }
    void resize(int width)
    {
        m_window->resize(width, 700);
        ASSERT_TRUE(eventually([&] { return m_window->width() == width; }));
        settle();
    }
};

TEST_F(SidebarTest, F9HidesItAndTheSettingRemembers)
{
    EXPECT_TRUE(isShown());
    press(Qt::Key_F9);
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(m_shell.sidebarOpen);
    click(item(u"showSidebar"_s));
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(m_shell.sidebarOpen);
}

TEST_F(SidebarTest, InANarrowWindowItLiesOverTheChatAndGoesAfterAChoice)
{
    resize(600);
    EXPECT_FALSE(isShown());
    press(Qt::Key_F9);
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(m_shell.sidebarOpen) << "the wide window's setting is its own";
    click(row(u"Bread"_s));
    EXPECT_FALSE(isShown());
    press(Qt::Key_F9);
    press(Qt::Key_Escape);
    EXPECT_FALSE(isShown());
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"open B"_s)) << "Escape closed the list and stopped nothing";
    resize(1000);
    EXPECT_TRUE(isShown());
}

TEST_F(SidebarTest, TheListWorksByKeyboardAlone)
{
    item(u"conversations"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"open B"_s));

    item(u"conversations"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_F2);
    type(u"Rye"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"rename B Rye"_s));
    press(Qt::Key_F2);
    type(u"Oat"_s);
    press(Qt::Key_Escape);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty()) << "Escape leaves the name as it was";
}

TEST_F(SidebarTest, KeysLeadToTheChatAboveAndBelow)
{
    press(Qt::Key_PageDown, Qt::ControlModifier);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(m_chat.takeCalls(), QStringList({u"open A1"_s, u"open A-1"_s}));
}

TEST_F(SidebarTest, DeletingAsksFirstAndStartsOnTheHarmlessAnswer)
{
    const auto ask = [this] {
        item(u"conversations"_s)->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Delete);
        EXPECT_TRUE(eventually([this] {
            return m_window->activeFocusItem() && accessibleName(m_window->activeFocusItem()) == "Cancel"_L1;
        }));
    };
    ask();
    press(Qt::Key_Return);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty());
    ASSERT_TRUE(eventually([this] { return accessibleName(m_window->activeFocusItem()) != "Cancel"_L1; }));
    ask();
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"remove A"_s));
}

TEST_F(SidebarTest, NewChatComesFromTheButtonAndFromTheKey)
{
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"new"_s));
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus());
}

} // namespace morvane
