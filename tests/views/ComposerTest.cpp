#include "WindowFixture.h"

#include <QInputMethodEvent>

namespace morvane {

using namespace Qt::StringLiterals;

class ComposerTest : public WindowFixture {
protected:
    void compose(const QString &preedit, const QString &committed = {})
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(committed);
        QCoreApplication::sendEvent(item(u"composer"_s), &event);
        settle();
    }
    [[nodiscard]] QString shown() const { return item(u"composer"_s)->property("text").toString(); }
};

TEST_F(ComposerTest, ReturnSendsWhatWasTypedAndEmptiesTheField)
{
    type(u"Hello"_s);
    EXPECT_EQ(m_chat.draft(), u"Hello"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"send Hello"_s));
    EXPECT_EQ(shown(), QString());
}

TEST_F(ComposerTest, ShiftReturnBreaksTheLineAndSendsNothing)
{
    type(u"a"_s);
    press(Qt::Key_Return, Qt::ShiftModifier);
    type(u"b"_s);
    EXPECT_EQ(m_chat.draft(), u"a\nb"_s);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty());
}

TEST_F(ComposerTest, ReturnNeverSendsWhileAnInputMethodComposes)
{
    type(u"a"_s);
    compose(u"にほ"_s);
    press(Qt::Key_Return);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty());
    EXPECT_FALSE(m_chat.draft().contains(u'\n'));

    compose({}, u"日本"_s);
    EXPECT_TRUE(m_chat.draft().endsWith(u"日本"_s)) << m_chat.draft().toStdString();
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls().size(), 1);
}

TEST_F(ComposerTest, NothingIsSentWithoutWordsOrWhileAReplyRuns)
{
    press(Qt::Key_Return);
    EXPECT_FALSE(item(u"sendOrStop"_s)->isEnabled());
    type(u"next"_s);
    m_chat.setResponding(true);
    press(Qt::Key_Return);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty());
    EXPECT_EQ(shown(), u"next"_s) << "the draft stays";
}

TEST_F(ComposerTest, TheSendButtonTurnsIntoStopInPlace)
{
    type(u"Hi"_s);
    QQuickItem *button = item(u"sendOrStop"_s);
    const QPointF place = button->mapToScene({});
    EXPECT_EQ(accessibleName(button), u"Send"_s);
    click(button);
    m_chat.setResponding(true);
    settle();
    EXPECT_EQ(button->mapToScene({}), place);
    EXPECT_EQ(accessibleName(button), u"Stop"_s);
    click(button);
    EXPECT_EQ(m_chat.takeCalls(), QStringList({u"send Hi"_s, u"stop"_s}));
}

TEST_F(ComposerTest, EscapeStopsFromTheComposerAndFromTheList)
{
    m_chat.setResponding(true);
    press(Qt::Key_Escape);
    press(Qt::Key_Tab);
    press(Qt::Key_Escape);
    EXPECT_EQ(m_chat.takeCalls(), QStringList({u"stop"_s, u"stop"_s}));
}

TEST_F(ComposerTest, TheFieldGrowsWithItsTextAndThenScrolls)
{
    QQuickItem *field = item(u"composer"_s);
    QQuickItem *viewport = field->parentItem()->parentItem();
    EXPECT_GE(viewport->height(), 20);
    EXPECT_LE(viewport->height(), 26);
    m_chat.setDraft(u"one\ntwo\nthree"_s);
    settle();
    EXPECT_GT(viewport->height(), 50);
    m_chat.setDraft(u"line\n"_s.repeated(100));
    settle();
    EXPECT_EQ(viewport->height(), 200);
    m_chat.setDraft(QString(5000, u'x')); // one word without a place to break
    settle();
    EXPECT_LE(field->property("contentWidth").toDouble(), viewport->width());
}

TEST_F(ComposerTest, ADraftSetFromOutsideIsShown)
{
    m_chat.setDraft(u"kept from before"_s);
    settle();
    EXPECT_EQ(shown(), u"kept from before"_s);
    type(u"!"_s);
    m_chat.setDraft(u"and again"_s);
    settle();
    EXPECT_EQ(shown(), u"and again"_s) << "typing doesn't cut the tie";
}

TEST_F(ComposerTest, ASuggestionFillsTheFieldAndSendsNothing)
{
    const auto suggestions = allItems();
    const auto isSuggestion = [](QQuickItem *child) {
        return accessibleName(child) == "Make a plan for "_L1;
    };
    const auto found = std::find_if(suggestions.begin(), suggestions.end(), isSuggestion);
    ASSERT_NE(found, suggestions.end());
    click(*found);
    EXPECT_EQ(shown(), u"Make a plan for "_s);
    EXPECT_TRUE(m_chat.takeCalls().isEmpty());
    type(u"x"_s);
    EXPECT_EQ(m_chat.draft(), u"Make a plan for x"_s) << "the field has the focus";
}

} // namespace morvane
