#include "WindowFixture.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

class SearchTest : public WindowFixture {
protected:
    void SetUp() override
    {
        load();
        press(Qt::Key_K, Qt::ControlModifier);
    }
    void find(const QString &title, const QString &excerpt)
    {
        m_search.append({{u"conversationId"_s, title.left(1)},
                         {u"title"_s, title},
                         {u"excerpt"_s, excerpt},
                         {u"section"_s, excerpt.isEmpty() ? u"Titles"_s : u"Messages"_s}});
        settle();
    }
    void setSearching(bool searching)
    {
        m_search.isSearching = searching;
        Q_EMIT m_search.isSearchingChanged();
        settle();
    }
};

TEST_F(SearchTest, KeysAloneLeadFromTheFieldToAFoundChatAndBack)
{
    type(u"fern"_s);
    EXPECT_EQ(m_search.query(), u"fern"_s);
    EXPECT_FALSE(item(u"conversations"_s)->isVisible()) << "the results stand in its place";
    find(u"Ferns"_s, {});
    find(u"Garden"_s, u"…the fern by the wall…"_s);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"open G"_s));
    EXPECT_EQ(m_search.query(), u"fern"_s) << "the next result is one step away";

    press(Qt::Key_K, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_EQ(m_search.query(), QString());
    EXPECT_TRUE(item(u"conversations"_s)->isVisible());
    press(Qt::Key_Escape);
    type(u"Hello"_s);
    EXPECT_EQ(m_chat.draft(), u"Hello"_s) << "an empty field gives the focus back";
}

TEST_F(SearchTest, AnEmptyResultSaysSoOnceTheSearchIsOver)
{
    setSearching(true);
    type(u"zzz"_s);
    EXPECT_EQ(item(u"searchState"_s)->property("text").toString(), u"Searching…"_s);
    setSearching(false);
    EXPECT_EQ(item(u"searchState"_s)->property("text").toString(), u"No chat has these words."_s);
}

TEST_F(SearchTest, TheKeyOpensAHiddenSidebar)
{
    press(Qt::Key_F9);
    press(Qt::Key_K, Qt::ControlModifier);
    type(u"a"_s);
    EXPECT_EQ(m_search.query(), u"a"_s);
    EXPECT_TRUE(m_shell.sidebarOpen);
}

} // namespace morvane
