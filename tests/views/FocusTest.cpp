#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"

#include <QGuiApplication>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

// Every kind of text, and more of it than the window shows at once.
class FocusTest : public WindowFixture {
protected:
    void SetUp() override
    {
        const QString answer =
            u"A [link](https://a.example/) first.\n\n## Two\n\n- [three](https://b.example/)\n\n"
            "> [quoted](https://c.example/)\n\n```cpp\n%1\n```\n\n| a | b |\n|---|---|\n| 1 | 2 |\n\n"
            "```chart\nA | 1\nB | 2\n```\n\nThe [end](https://d.example/).\n\n%2"_s.arg(
                u"int line = 0; // and a comment that makes it wider than the window is at its least\n"_s
                    .repeated(20),
                u"Many words that go on. "_s.repeated(80));
        QStringList turns;
        for (int turn = 0; turn < 6; ++turn)
            turns += {u"Question %1"_s.arg(turn), answer};
        turns[7] =
            u"```facts\nBuilt | 2004\n```\n\n"_s + u"Nothing in here takes the focus.\n\n"_s.repeated(60);
        m_app->presentation().chat->open(addChat(u"Long"_s, turns));
        load();
    }
    [[nodiscard]] QRectF place(QQuickItem *item) const { return item->mapRectToScene(item->boundingRect()); }
    // What of the window an item can be seen in.
    [[nodiscard]] QRectF view(QQuickItem *item) const
    {
        QRectF seen = place(m_window->contentItem());
        for (QQuickItem *above = item->parentItem(); above; above = above->parentItem()) {
            if (above->clip())
                seen &= place(above);
        }
        return seen;
    }
    [[nodiscard]] QQuickItem *ringOf(QQuickItem *item) const
    {
        for (QQuickItem *each : allItems()) {
            if (each->isVisible() && each->objectName() == "focusRing"_L1 &&
                place(each).adjusted(-1, -1, 1, 1).contains(place(item) & view(item)))
                return each;
        }
        return nullptr;
    }
    // All of a stretch is in view, or of one that is taller than the view its beginning.
    [[nodiscard]] static bool isSeen(const QRectF &what, const QRectF &view)
    {
        const bool isWhole = view.top() <= what.top() && what.bottom() <= view.bottom();
        return isWhole || (what.height() > view.height() && std::abs(what.top() - view.top()) < 5);
    }
    void expectSeen(QQuickItem *item) const
    {
        const std::string what = accessibleName(item).left(40).toStdString();
        EXPECT_TRUE(isSeen(place(item), view(item))) << what;
        if (!item->inherits("QQuickTextEdit"))
            return;
        QQuickItem *ring = ringOf(item);
        ASSERT_NE(ring, nullptr) << what;
        EXPECT_TRUE(isSeen(place(ring), view(ring))) << what;
        EXPECT_TRUE(view(ring).left() <= place(ring).left() && place(ring).right() <= view(ring).right());
    }
    [[nodiscard]] bool isInChat(QQuickItem *item) const
    {
        return this->item(u"messages"_s)->isAncestorOf(item);
    }
    // The names of what Tab reaches in the chat, from where the focus is until it leaves the chat.
    QStringList walk(Qt::Key key)
    {
        QStringList reached;
        press(key);
        for (QQuickItem *at = m_window->activeFocusItem(); isInChat(at) && reached.size() < 400;
             at = m_window->activeFocusItem()) {
            reached += accessibleName(at);
            expectSeen(at);
            press(key);
        }
        return reached;
    }
};

TEST_F(FocusTest, TabGoesThroughALongChatAsItStandsAndShowsAllItReaches)
{
    for (const int width : {1100, 420}) {
        m_window->resize(width, 760);
        settle();
        press(Qt::Key_End, Qt::AltModifier);
        ASSERT_TRUE(eventually([this] { return !item(u"toEnd"_s)->isVisible(); }));
        item(u"composer"_s)->forceActiveFocus();
        QStringList up = walk(Qt::Key_Backtab);
        EXPECT_EQ(up.filter(u"You: Question"_s).size(), 6);
        std::ranges::reverse(up);
        EXPECT_EQ(walk(Qt::Key_Tab), up);
    }
}

TEST_F(FocusTest, PageKeysScrollTheChatFromWhereverTheFocusIs)
{
    const auto top = [this] { return item(u"messages"_s)->property("contentY").toDouble(); };
    item(u"composer"_s)->forceActiveFocus();
    QSet<QQuickItem *> tried;
    while (!tried.contains(m_window->activeFocusItem()) && tried.size() < 40) {
        tried += m_window->activeFocusItem();
        const double before = top();
        press(Qt::Key_PageUp);
        EXPECT_LT(top(), before) << accessibleName(m_window->activeFocusItem()).toStdString();
        press(Qt::Key_PageDown);
        press(Qt::Key_Backtab);
    }
    EXPECT_GT(tried.size(), 10);
}

TEST_F(FocusTest, WhatIsScrolledFarAwayGivesTheKeyboardToTheComposer)
{
    item(u"composer"_s)->forceActiveFocus();
    const QString last = u"You: Question 5"_s;
    while (!isAt(m_window, last))
        press(Qt::Key_Backtab);
    for (int page = 0; page < 12; ++page) {
        press(Qt::Key_PageUp);
        EXPECT_TRUE(isAt(m_window, last) || isAt(m_window, u"Message"_s))
            << "not on the row that took its place";
    }
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus());
}

TEST_F(FocusTest, WhatClosesOrHidesGivesTheKeyboardToTheComposer)
{
    const auto expectComposer = [this](const char *after) {
        EXPECT_TRUE(eventually([this] { return item(u"composer"_s)->hasActiveFocus(); })) << after;
    };
    m_app->presentation().chat->newConversation();
    EXPECT_FALSE(item(u"emptyStateSettings"_s)->isVisible());
    m_app->storage().settings->setModel({});
    settle();
    item(u"emptyStateSettings"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_TRUE(eventually([this] { return QGuiApplication::focusWindow() != m_window; }));
    QQuickWindow *settings = settingsWindow();
    ASSERT_NE(settings, nullptr);
    m_app->storage().settings->setModel(u"practice"_s);
    WindowDriver::press(settings, Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    expectComposer("the settings");
    type(u"hi there"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"hi there"_s);
    EXPECT_FALSE(settings->isVisible());

    press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_FALSE(item(u"composer"_s)->hasActiveFocus());
    press(Qt::Key_F9);
    expectComposer("the list of chats");
    m_app->presentation().chat->showError(std::make_exception_ptr(std::runtime_error("no")));
    settle();
    item(u"dismissBanner"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    expectComposer("the banner");
    press(Qt::Key_Question, Qt::ControlModifier);
    ASSERT_TRUE(eventually([this] { return isAt(m_window, u"Close"_s); }));
    ASSERT_NE(named(u"Return: Send the message"_s), nullptr);
    EXPECT_GT(named(u"Return: Send the message"_s)->width(), 100);
    press(Qt::Key_Escape);
    expectComposer("the list of keys");
}

TEST_F(FocusTest, EscapeClosesWhatAButtonOpenedAndTheButtonHasTheKeyboardAgain)
{
    for (const auto &[button, shown] : {std::pair{u"sourceButton"_s, u"sourceSettings"_s},
                                        {u"composerActions"_s, u"askAboutClipboard"_s}}) {
        QQuickItem *opener = item(button);
        ASSERT_NE(opener, nullptr) << button.toStdString();
        opener->forceActiveFocus(Qt::TabFocusReason);
        for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
            press(key);
            ASSERT_TRUE(eventually([&] { return item(shown) != nullptr; })) << shown.toStdString();
            EXPECT_FALSE(opener->hasActiveFocus());
            press(Qt::Key_Escape);
            EXPECT_TRUE(eventually([&] { return item(shown) == nullptr && opener->hasActiveFocus(); }))
                << button.toStdString();
            EXPECT_TRUE(eventually([&] { return opener->property("visualFocus").toBool(); })) << "its ring";
        }
    }
    QQuickItem *chats = item(u"conversations"_s);
    chats->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Down);
    press(Qt::Key_Delete);
    ASSERT_TRUE(eventually([&] { return isAt(m_window, u"Cancel"_s); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return chats->hasActiveFocus(); }))
        << "the question before a chat is deleted";
}

} // namespace morvane
