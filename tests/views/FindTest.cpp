#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "support/ManualClock.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/sidebar/HistorySearchModel.h"
#include "views/MarkLayer.h"

namespace morvane {

using namespace Qt::StringLiterals;

class FindTest : public WindowFixture {
protected:
    [[nodiscard]] FindViewModel &bar() { return *m_app->presentation().find; }
    void find(const QString &words)
    {
        press(Qt::Key_F, Qt::ControlModifier);
        type(words);
        search();
    }
    void search()
    {
        m_clock.advance(std::chrono::seconds(1));
        ASSERT_TRUE(eventually([this] { return !bar().isSearching(); }));
        settle();
    }
    // Those that mark something.
    [[nodiscard]] QList<MarkLayer *> layers() const
    {
        QList<MarkLayer *> found;
        for (QQuickItem *item : allItems()) {
            auto *layer = qobject_cast<MarkLayer *>(item);
            if (layer && layer->isVisible() && layer->marks() != MarkLayer::Marks())
                found += layer;
        }
        return found;
    }
    mutable double m_place = 0; // of the strong mark in its text, from 0 at the left to 1
    // The text with the strong mark, if that is wholly in the view and clear of the bar.
    [[nodiscard]] QString current() const
    {
        const QQuickItem *list = item(u"messages"_s);
        const QQuickItem *over = item(u"findBar"_s);
        for (const MarkLayer *layer : layers()) {
            if (layer->marks().current.isEmpty())
                continue;
            const QRectF place = layer->mapRectToItem(list, layer->marks().current.first());
            const bool isClear = list->boundingRect().contains(place) &&
                                 !over->mapRectToItem(list, over->boundingRect()).intersects(place);
            m_place = layer->marks().current.first().center().x() / layer->parentItem()->width();
            const auto words = [layer](const char *name) {
                return layer->parentItem()->property(name).toStringList().join(u' ');
            };
            return isClear ? words("text") + words("labels") : u"out of sight"_s; // of a chart
        }
        return {};
    }
};

TEST_F(FindTest, EveryBlockIsFoundMarkedAndBroughtIntoView)
{
    const QString filler = u"\n\n"_s + u"Words between. "_s.repeated(60) + u"\n\n"_s;
    const QStringList parts{
        u"A **nee**dle1 in prose"_s,
        u"# Needle2"_s,
        u"- one\n- `needle3`\n  - needle4"_s,
        u"> said the needle5"_s,
        u"```py\n"_s + u"# line\n"_s.repeated(40) + u"needle6 = 1\n```"_s,
        u"|a|b|\n|-|-|\n|1|needle7|"_s,
        u"```stat\nneedle8 | needle9 | +1 needle10"_s + u"\n```"_s,
        u"```facts\nneedle11 | needle12\n```"_s,
        u"```compare\nA | needle13\nx | 1 | needle14\n```"_s,
        u"```timeline\nneedle15 | L\n2020 | needle16\n```"_s,
        u"```chart\ntitle: needle17\na | 1\nneedle18 | 2\n```"_s,
        u"```market\nneedle19 | needle20 | -1%\n```"_s,
        u"```weather\ncondition: needle21\nlocation: needle22\nhigh: needle23\nlow: needle24\nneedle25: x\n```"_s,
        u"word "_s.repeated(80) + u"needle26"_s,
    };
    m_app->presentation().chat->open(
        addChat(u"A chat"_s, {u"line\n"_s.repeated(40) + u"A needle0?"_s, parts.join(filler)}));
    settle();
    find(u"NEEDLE"_s);
    ASSERT_EQ(bar().count(), 27);
    EXPECT_EQ(bar().position(), 2) << "the question is out of sight";
    press(Qt::Key_F3, Qt::ShiftModifier);
    for (int i = 0; i < 27; ++i) {
        EXPECT_EQ(bar().position(), i + 1);
        const QString found = u"needle%1"_s.arg(i);
        EXPECT_TRUE(eventually([&] { return current().contains(found, Qt::CaseInsensitive); }))
            << i << ": " << qPrintable(current());
        EXPECT_TRUE(i != 18 || m_place > 0.5) << "at the second of two labels";
        press(Qt::Key_Return);
    }
    EXPECT_EQ(bar().position(), 1) << "from the last one to the first";
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(bar().position(), 27);
    press(Qt::Key_Escape);
    EXPECT_TRUE(isAt(m_window, u"Message"_s)) << "the composer has the keys again";
    settle();
    EXPECT_EQ(layers().size(), 0);
}

TEST_F(FindTest, AGrowingReplyIsSearchedOnAndTheFindStays)
{
    showReply(u"A fern. "_s + u"Words. "_s.repeated(400));
    find(u"fern"_s);
    ASSERT_TRUE(eventually([this] { return current().contains(u"A fern"_s); }));
    send(u"And a fern?"_s);
    find(u"fern"_s);
    const int position = bar().position();
    for (int i = 0; i < 3; ++i) {
        stream(u"One more fern. "_s);
        search();
    }
    ASSERT_TRUE(eventually([this] { return bar().count() == 5; }));
    EXPECT_EQ(bar().position(), position);
    endReply();
    m_app->presentation().chat->newConversation();
    EXPECT_FALSE(bar().isOpen());
}

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
