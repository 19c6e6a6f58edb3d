#include "WindowFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

class ChatPageTest : public WindowFixture {
protected:
    // Whether a text is drawn anywhere in the window.
    [[nodiscard]] bool shows(const QString &text) const
    {
        const auto items = allItems();
        return std::any_of(items.begin(), items.end(),
                           [&](auto *item) { return item->isVisible() && item->property("text") == text; });
    }
    // The named item of the last row.
    [[nodiscard]] QQuickItem *lastVisible(const QString &name) const
    {
        QQuickItem *last = nullptr;
        for (QQuickItem *next : allItems()) {
            if (next->objectName() == name && next->isVisible() &&
                (!last || next->mapToScene({}).y() > last->mapToScene({}).y()))
                last = next;
        }
        return last;
    }
};

TEST_F(ChatPageTest, ABannerOffersRetryOnlyWhenThatHelps)
{
    m_chat.setBanner({u"It broke."_s, u"Look at it."_s, true});
    settle();
    EXPECT_TRUE(shows(u"It broke."_s));
    EXPECT_TRUE(shows(u"Look at it."_s));
    click(item(u"retry"_s));
    click(item(u"dismissBanner"_s));
    EXPECT_EQ(m_chat.takeCalls(), QStringList({u"retry"_s, u"dismiss"_s}));

    m_chat.setBanner({u"It is over."_s, QString(), false});
    settle();
    EXPECT_FALSE(item(u"retry"_s)->isVisible());
    m_chat.setBanner({});
    settle();
    EXPECT_FALSE(shows(u"It is over."_s));
}

TEST_F(ChatPageTest, OnlyARowThatIsRunningShowsTheDots)
{
    struct Case {
        QVariantMap row;
        QString words;
        bool dots;
    };
    const QList<Case> cases{
        {{{u"running"_s, true}, {u"indicatorText"_s, u"Thinking… 3 s"_s}}, u"Thinking… 3 s"_s, true},
        {{{u"interrupted"_s, true}}, u"This reply was interrupted."_s, false},
        {{{u"cancelled"_s, true}}, u"You stopped this reply."_s, false},
        {{{u"failed"_s, true}, {u"errorText"_s, u"No connection."_s}}, u"No connection."_s, false}};
    for (const Case &expected : cases) {
        m_chat.messages->clear();
        m_chat.messages->addReply({}, expected.row);
        settle();
        EXPECT_TRUE(shows(expected.words)) << expected.words.toStdString();
        EXPECT_EQ(lastVisible(u"replyIndicator"_s) != nullptr, expected.dots) << expected.words.toStdString();
    }
}

TEST_F(ChatPageTest, AReplyIsCopiedAndSaysSo)
{
    m_chat.messages->addUser(u"Question"_s);
    m_chat.messages->addReply(u"The answer"_s);
    settle();
    QQuickItem *copy = lastVisible(u"copyReply"_s);
    ASSERT_NE(copy, nullptr);
    click(copy);
    EXPECT_EQ(m_shell.copied, u"The answer"_s);
    EXPECT_EQ(accessibleName(copy), u"Copied"_s);

    m_chat.answer = u"The newest"_s;
    press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(m_shell.copied, u"The newest"_s);
}

TEST_F(ChatPageTest, AReplyAtItsLimitOffersToGoOn)
{
    m_chat.messages->addReply(u"Half an"_s);
    settle();
    EXPECT_EQ(lastVisible(u"continueReply"_s), nullptr);
    m_chat.messages->set(0, "canContinue", true);
    settle();
    QQuickItem *button = lastVisible(u"continueReply"_s);
    ASSERT_NE(button, nullptr);
    click(button);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"continue m0"_s));
}

TEST_F(ChatPageTest, WhatLooksLikeMarkupStaysText)
{
    const QString hostile =
        u"<img src=\"http://tracker.example/p.png\"><b>bold</b> ![x](http://a.example/y.png)"_s;
    m_chat.title = hostile;
    Q_EMIT m_chat.conversationChanged();
    m_chat.messages->addUser(hostile);
    m_chat.messages->addReply(hostile, {{u"toolLines"_s, QStringList(hostile)},
                                        {u"sources"_s, QStringList(hostile)},
                                        {u"failed"_s, true},
                                        {u"errorText"_s, hostile}});
    m_chat.setBanner({hostile, hostile, true});
    settle();
    int texts = 0;
    const auto all = allItems();
    for (QQuickItem *child : all) {
        if (child->property("text").toString() != hostile || child->property("textFormat").isNull())
            continue;
        ++texts;
        EXPECT_EQ(child->property("textFormat").toInt(), Qt::PlainText) << child->metaObject()->className();
    }
    EXPECT_GE(texts, 6);
}

TEST_F(ChatPageTest, AGrowingReplyKeepsWhatIsSelectedInIt)
{
    m_chat.messages->addReply(u"First words"_s, {{u"running"_s, true}});
    settle();
    QQuickItem *words = lastVisible(u"paragraph"_s);
    ASSERT_NE(words, nullptr);
    QMetaObject::invokeMethod(words, "select", Q_ARG(int, 0), Q_ARG(int, 5));
    words->forceActiveFocus();
    for (const QString &more : {u"First words and"_s, u"First words and **more**\n\nHere"_s}) {
        m_chat.messages->set(0, "text", more);
        settle();
        EXPECT_TRUE(words->property("text").toString().startsWith(u"First words and"_s));
        EXPECT_EQ(words->property("selectedText").toString(), u"First"_s);
    }
    m_chat.messages->set(0, "text", u"Fir"_s); // the last characters were taken back
    settle();
    EXPECT_EQ(words->property("text").toString(), u"Fir"_s);
}

TEST_F(ChatPageTest, WithoutAServerTheEmptyChatLeadsToTheSettings)
{
    EXPECT_FALSE(item(u"emptyStateSettings"_s)->isVisible());
    m_chat.isConfigured = false;
    Q_EMIT m_chat.sourceChanged();
    settle();
    click(item(u"emptyStateSettings"_s));
    EXPECT_NE(settingsWindow(), nullptr);
}

TEST_F(ChatPageTest, AQuestionOfTheApplicationIsAnsweredOrClosed)
{
    m_shell.ask(u"Drop this Ghost chat?"_s, {u"Drop"_s, u"Keep"_s, u"Cancel"_s});
    ASSERT_TRUE(eventually([this] { return shows(u"Keep"_s); }));
    press(Qt::Key_Escape);
    ASSERT_TRUE(eventually([this] { return m_shell.answers.size() == 1; }));
    m_shell.ask(u"Drop this Ghost chat?"_s, {u"Drop"_s, u"Cancel"_s});
    ASSERT_TRUE(eventually([this] { return shows(u"Drop"_s); }));
    settle();
    const auto all = allItems();
    for (QQuickItem *child : all) {
        if (child->isVisible() && accessibleName(child) == "Drop"_L1 && child->property("down").isValid()) {
            click(child);
            break;
        }
    }
    ASSERT_TRUE(eventually([this] { return m_shell.answers.size() == 2; }));
    EXPECT_EQ(m_shell.answers, QList<int>({-1, 0}));
}

} // namespace morvane
