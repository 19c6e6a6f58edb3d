#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"

#include <QClipboard>
#include <QGuiApplication>
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

// Megabytes of text in a field would be laid out for minutes.
TEST_F(ComposerTest, ATextTooLongToBeTypedIsAttachedByKeyMenuAndDropAndRefusedInTheSettings)
{
    const AttachmentDesk &desk = *m_app->presentation().chat->entries()->attachments();
    const auto expectAttached = [&](const char *way) {
        EXPECT_EQ(desk.name(), u"Pasted text"_s) << way;
        EXPECT_EQ(desk.state(), AttachmentDesk::State::Cut) << way;
        EXPECT_LE(desk.text().size(), m_app->storage().settings->maxExtractedCharacters() + 100) << way;
        EXPECT_EQ(shown(), QString()) << way;
        m_app->presentation().chat->entries()->attachments()->clear();
    };
    const QString most = u"word "_s.repeated(HandedOver::longestTyped / 5);
    const QString huge = u"word "_s.repeated(10'000'000); // 50 million
    QGuiApplication::clipboard()->setText(most);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(shown(), most);
    EXPECT_EQ(desk.state(), AttachmentDesk::State::Empty);
    m_app->presentation().chat->setDraft({});
    QGuiApplication::clipboard()->setText(huge);
    press(Qt::Key_V, Qt::ControlModifier);
    expectAttached("key");
    QMetaObject::invokeMethod(item(u"composer"_s), "pasteMore");
    expectAttached("menu");
    EXPECT_TRUE(m_app->presentation().chat->entries()->attachments()->take({.text = huge}));
    expectAttached("drop");

    QQuickWindow *settings = settingsWindow();
    ASSERT_NE(settings, nullptr);
    for (const auto &[page, name] : {std::pair{u"ai"_s, u"address"_s},
                                     {u"instructions"_s, u"settingsSearch"_s},
                                     {u"instructions"_s, u"instructions.field"_s}}) {
        settings->setProperty("page", page);
        settle();
        QQuickItem *field = WindowDriver::item(settings, name);
        ASSERT_NE(field, nullptr) << name.toStdString();
        field->forceActiveFocus();
        WindowDriver::press(settings, Qt::Key_V, Qt::ControlModifier);
        EXPECT_LE(field->property("text").toString().size(), 1 << 15) << name.toStdString();
    }
    EXPECT_TRUE(shows(settings, u"too long for this field"_s));
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

TEST_F(ComposerTest, LinesKeepTheirHeightWhereverTheTextComesFromAndNoUndoTakesIt)
{
    QQuickItem *field = item(u"composer"_s);
    const auto height = [&] { return field->property("contentHeight").toDouble(); };
    type(u"a"_s);
    const double line = height();
    EXPECT_EQ(line, 23);
    press(Qt::Key_Return, Qt::ShiftModifier);
    type(u"b"_s);
    EXPECT_EQ(height(), 2 * line);
    m_app->presentation().chat->setDraft(u"one\ntwo\nthree"_s);
    settle();
    EXPECT_EQ(height(), 3 * line);
    EXPECT_FALSE(field->property("canUndo").toBool());
    press(Qt::Key_End, Qt::ControlModifier);
    type(u"x"_s);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(shown(), u"one\ntwo\nthree"_s);
    EXPECT_EQ(height(), 3 * line);
}

class SourceMenuTest : public WindowFixture {
protected:
    [[nodiscard]] bool isOpen() const { return item(u"sourceSettings"_s) != nullptr; }
};

TEST_F(SourceMenuTest, APlaceIsPickedByKeysAndOneThatCannotRunIsNot)
{
    m_app->storage().settings->setHostedChatEnabled(true);
    item(u"sourceButton"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return isOpen(); }));
    EXPECT_TRUE(shows(u"This build has no private cloud."_s));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(isOpen()) << "the last one can't run";
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_FALSE(m_app->storage().settings->hostedChatEnabled());
    EXPECT_TRUE(eventually([this] { return !isOpen(); }));
    EXPECT_TRUE(item(u"sourceButton"_s)->hasActiveFocus()) << "where it was opened from";
}

TEST_F(SourceMenuTest, WhoCanReadAMessageIsInPlainViewBeforeItIsSent)
{
    const auto line = [this] { return accessibleName(item(u"sourceLine"_s)); };
    EXPECT_FALSE(line().contains(u"can read"_s)) << line().toStdString();
    m_app->storage().settings->setBaseURLString(u"https://api.example.org/v1"_s);
    settle();
    EXPECT_TRUE(line().contains(u"example.org can read what you send."_s)) << line().toStdString();
    EXPECT_TRUE(shows(u"example.org can read what you send."_s));
    m_app->storage().settings->setBaseURLString(u"http://192.168.7.7/v1"_s);
    settle();
    EXPECT_TRUE(line().contains(u"192.168.7.7 is not encrypted."_s)) << line().toStdString();
}

TEST_F(SourceMenuTest, NothingIsSaidOfAPlaceBeforeAModelIsChosen)
{
    EXPECT_TRUE(shows(u"Stays on this computer"_s));
    m_app->storage().settings->setModel({});
    settle();
    EXPECT_FALSE(shows(u"Stays on"_s));
    EXPECT_TRUE(shows(u"Not set up yet"_s));
    EXPECT_TRUE(accessibleName(item(u"sourceLine"_s)).endsWith(u"Goes nowhere yet"_s));
}

} // namespace morvane
