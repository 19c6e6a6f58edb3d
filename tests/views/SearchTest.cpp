#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "support/ManualClock.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/sidebar/HistorySearchModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

class SearchTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_garden = addChat(u"Garden"_s, {u"Where's a Férn?"_s, u"the fern by the wall"_s});
        m_ferns = addChat(u"Ferns"_s);
        load();
        press(Qt::Key_K, Qt::ControlModifier);
    }
    void find(const QString &words)
    {
        type(words);
        m_clock.advance(std::chrono::seconds(1));
        ASSERT_TRUE(eventually([this] { return !m_app->presentation().search->isSearching(); }));
        settle();
    }

    QString m_garden;
    QString m_ferns;
};

TEST_F(SearchTest, KeysAloneLeadFromTheFieldToAFoundChatAndBack)
{
    find(u"fern"_s);
    EXPECT_FALSE(item(u"conversations"_s)->isVisible()) << "the results stand in its place";
    EXPECT_TRUE(shows(u"the fern by the wall"_s));
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(m_app->presentation().chat->conversationId(), m_garden);
    EXPECT_EQ(m_app->presentation().search->query(), u"fern"_s) << "the next result is one step away";
    m_clock.advance(std::chrono::seconds(1));
    const FindViewModel &bar = *m_app->presentation().find;
    EXPECT_TRUE(eventually([&bar] { return bar.position() == 2; })) << "at the latest message that has it";
    EXPECT_TRUE(isAt(m_window, u"Find in this chat"_s));
    EXPECT_EQ(bar.count(), 2);
    EXPECT_EQ(bar.query(), u"fern"_s);

    press(Qt::Key_K, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_EQ(m_app->presentation().search->query(), QString());
    EXPECT_TRUE(item(u"conversations"_s)->isVisible());
    press(Qt::Key_Escape);
    type(u"Hello"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"Hello"_s) << "an empty field gives the focus back";
}

TEST_F(SearchTest, AnEmptyResultSaysSoOnceTheSearchIsOver)
{
    type(u"zzz"_s);
    EXPECT_EQ(item(u"searchState"_s)->property("text").toString(), u"Searching…"_s);
    find(u"z"_s);
    EXPECT_EQ(item(u"searchState"_s)->property("text").toString(), u"No chat has these words."_s);
}

TEST_F(SearchTest, TheKeyOpensAHiddenSidebar)
{
    press(Qt::Key_F9);
    press(Qt::Key_K, Qt::ControlModifier);
    type(u"a"_s);
    EXPECT_EQ(m_app->presentation().search->query(), u"a"_s);
    EXPECT_TRUE(m_app->storage().settings->chatHistoryOpen());
}

} // namespace morvane
