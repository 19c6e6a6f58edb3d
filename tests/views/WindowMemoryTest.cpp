#include "app/WindowMemory.h"

#include "WindowFixture.h"

#include "utils/files/PrivateFile.h"
#include "view_models/chat/ChatViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class WindowMemoryTest : public WindowFixture {
protected:
    void SetUp() override
    {
        QStringList turns;
        for (int turn = 0; turn < 20; ++turn)
            turns += {u"Question %1"_s.arg(turn), u"An answer with some words. "_s.repeated(20)};
        m_long = addChat(u"Long"_s, turns);
        addChat(u"Newest"_s, {u"q"_s, u"a"_s});
        m_app->presentation().chat->open(m_long);
        load();
    }
    void restart()
    {
        start();
        load();
    }
    [[nodiscard]] QString open() const { return m_app->presentation().chat->conversationId(); }
    // How far the chat is scrolled from its beginning.
    [[nodiscard]] double top() const
    {
        const QQuickItem *list = item(u"messages"_s);
        return list->property("contentY").toDouble() - list->property("originY").toDouble();
    }
    void place(const QRect &frame)
    {
        m_window->setGeometry(frame);
        ASSERT_TRUE(eventually([&] { return m_window->geometry() == frame; }));
        m_clock.advance(3s);
        settle();
    }
    [[nodiscard]] QString file() const
    {
        return WindowMemory::path(SupportFolders::inProfile(m_profile.path()));
    }
    [[nodiscard]] QByteArray written() const { return PrivateFile::read(file(), 10000).value_or(""); }

    QString m_long;
};

TEST_F(WindowMemoryTest, ARestartBringsBackTheWindowTheChatItsDraftAndItsPlace)
{
    place({300, 200, 900, 600});
    m_app->presentation().chat->setDraft(u"half a thought"_s);
    for (int page = 0; page < 3; ++page)
        press(Qt::Key_PageUp);
    const double before = top();
    ASSERT_FALSE(item(u"messages"_s)->property("following").toBool());
    restart();
    EXPECT_EQ(open(), m_long) << "the newest chat is another";
    EXPECT_EQ(m_window->geometry(), QRect(300, 200, 900, 600));
    EXPECT_EQ(m_app->presentation().chat->draft(), u"half a thought"_s);
    EXPECT_TRUE(eventually([&] { return std::abs(top() - before) < 8; })) << top() << " and not " << before;
    EXPECT_TRUE(isAt(m_window, u"Message"_s));

    place({300, 200, 700, 600}); // rows of other heights
    EXPECT_FALSE(item(u"messages"_s)->property("following").toBool());

    m_window->showMaximized();
    m_clock.advance(3s);
    settle();
    restart();
    EXPECT_TRUE(m_window->windowStates() & Qt::WindowMaximized);
    EXPECT_TRUE(written().contains(R"("width":700)")) << written().toStdString() << "where it goes back to";
}

TEST_F(WindowMemoryTest, AKilledProgramComesBackToItsChatAndAGhostChatLeavesNoTrace)
{
    m_clock.advance(3s);
    settle();
    EXPECT_TRUE(written().contains(m_long.toUtf8()));
    m_app->presentation().chat->newConversation();
    m_app->presentation().chat->ghosts()->newGhostChat();
    const QByteArray ghost = open().toUtf8();
    m_clock.advance(3s);
    place({310, 200, 900, 600});
    EXPECT_FALSE(written().contains(ghost));
    m_app->presentation().chat->ghosts()->dropGhost();
    m_app->presentation().chat->open(m_long);
    m_app->presentation().chat->remove(m_long);
    restart();
    EXPECT_NE(open(), m_long) << "it has gone";
}

TEST_F(WindowMemoryTest, ForgottenOrMadeUpPlacesLeaveTheWindowWhereItCanBeSeen)
{
    for (const QByteArray &json :
         {QByteArray(R"({"frame":{"x":9000,"y":40,"width":900,"height":600}})"),
          QByteArray(R"({"frame":{"x":40,"y":-60,"width":900,"height":600}})"),
          QByteArray(
              R"({"frame":{"x":1e300,"y":0,"width":900,"height":600},"chat":7,"row":-5,"offset":"x"})"),
          QByteArray(
              R"({"frame":{"x":0,"y":0,"width":-1,"height":60000},"chat":"no id","row":9e9,"offset":1e308})"),
          QByteArray("[]"), QByteArray(1 << 20, '{')}) {
        SCOPED_TRACE(json.left(100).toStdString());
        m_app->presentation().chat->newConversation();
        restart(); // writes
        PrivateFile::write(file(), json);
        start();
        PrivateFile::write(file(), json);
        load();
        const QRect shown = m_window->screen()->availableGeometry() & m_window->frameGeometry();
        EXPECT_EQ(shown.size(), m_window->frameGeometry().size());
        EXPECT_GE(m_window->width(), 420);
    }
    using Rooms = QList<QRect>;
    const QRect left(0, 0, 1000, 800);
    const QRect right(1000, 0, 600, 480);
    EXPECT_EQ(WindowMemory::fitting({900, 10, 900, 700}, Rooms{left, right}), QRect(900, 10, 600, 480));
    EXPECT_EQ(WindowMemory::fitting({-700, 10, 900, 700}, Rooms{left}), QRect(-700, 10, 900, 700));
    EXPECT_EQ(WindowMemory::fitting({-800, 10, 900, 700}, Rooms{left}), QRect());
    EXPECT_EQ(WindowMemory::fitting({10, 790, 900, 700}, Rooms{left}), QRect());
}

} // namespace morvane
