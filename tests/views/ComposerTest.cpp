#include "WindowFixture.h"

#include "view_models/chat/ChatViewModel.h"

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
    [[nodiscard]] QString sent() const { return transcript().value(0); }
};

TEST_F(ComposerTest, ReturnSendsWhatWasTypedAndEmptiesTheField)
{
    press(Qt::Key_Return);
    EXPECT_FALSE(item(u"sendOrStop"_s)->isEnabled());
    EXPECT_TRUE(transcript().isEmpty()) << "without words nothing is sent";
    type(u"a"_s);
    press(Qt::Key_Return, Qt::ShiftModifier);
    type(u"b"_s);
    EXPECT_TRUE(transcript().isEmpty()) << "with Shift it breaks the line";
    press(Qt::Key_Return);
    EXPECT_EQ(sent(), u"a\nb"_s);
    EXPECT_EQ(shown(), QString());
    type(u"next"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(transcript().size(), 2) << "nothing is sent while a reply runs";
    EXPECT_EQ(shown(), u"next"_s) << "the draft stays";
}

TEST_F(ComposerTest, ReturnNeverSendsWhileAnInputMethodComposes)
{
    type(u"a"_s);
    compose(u"にほ"_s);
    press(Qt::Key_Return);
    EXPECT_TRUE(transcript().isEmpty());
    EXPECT_FALSE(m_app->presentation().chat->draft().contains(u'\n'));
    compose({}, u"日本"_s);
    EXPECT_TRUE(m_app->presentation().chat->draft().endsWith(u"日本"_s))
        << m_app->presentation().chat->draft().toStdString();
    press(Qt::Key_Return);
    EXPECT_TRUE(sent().endsWith(u"日本"_s));
}

TEST_F(ComposerTest, TheSendButtonTurnsIntoStopInPlace)
{
    type(u"Hi"_s);
    QQuickItem *button = item(u"sendOrStop"_s);
    const QPointF place = button->mapToScene({});
    EXPECT_EQ(accessibleName(button), u"Send"_s);
    click(button);
    EXPECT_EQ(sent(), u"Hi"_s);
    EXPECT_EQ(button->mapToScene({}), place);
    EXPECT_EQ(accessibleName(button), u"Stop"_s);
    click(button);
    EXPECT_TRUE(eventually([this] { return !m_app->presentation().chat->isResponding(); }));
}

TEST_F(ComposerTest, EscapeStopsFromBesideTheComposerToo)
{
    send();
    press(Qt::Key_Tab);
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return isAbandoned(); }));
}

TEST_F(ComposerTest, TheFieldGrowsWithItsTextAndThenScrolls)
{
    QQuickItem *field = item(u"composer"_s);
    QQuickItem *viewport = field->parentItem()->parentItem();
    const auto heightOf = [&](const QString &draft) {
        m_app->presentation().chat->setDraft(draft);
        settle();
        return viewport->height();
    };
    const double line = heightOf({});
    EXPECT_NEAR(line, 23, 3);
    EXPECT_GT(heightOf(u"one\ntwo\nthree"_s), 2 * line);
    EXPECT_EQ(heightOf(u"line\n"_s.repeated(100)), 200);
    heightOf(QString(5000, u'x')); // one word without a place to break
    EXPECT_LE(field->property("contentWidth").toDouble(), viewport->width());
}

TEST_F(ComposerTest, ADraftSetFromOutsideIsShown)
{
    for (const auto &draft : {u"kept from before"_s, u"and again"_s}) {
        m_app->presentation().chat->setDraft(draft);
        settle();
        EXPECT_EQ(shown(), draft) << "typing doesn't cut the tie";
        type(u"!"_s);
    }
}

TEST_F(ComposerTest, ASuggestionFillsTheFieldAndSendsNothing)
{
    ASSERT_NE(named(u"Make a plan for "_s), nullptr);
    click(named(u"Make a plan for "_s));
    EXPECT_EQ(shown(), u"Make a plan for "_s);
    EXPECT_TRUE(transcript().isEmpty());
    type(u"x"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"Make a plan for x"_s) << "the field has the focus";
}

} // namespace morvane
