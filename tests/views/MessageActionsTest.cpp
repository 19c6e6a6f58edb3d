#include "WindowFixture.h"

#include "view_models/chat/ChatViewModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

class MessageActionsTest : public WindowFixture {
protected:
    // The first one that is drawn; null when there is none.
    [[nodiscard]] QQuickItem *drawn(const QString &name) const { return WindowDriver::item(m_window, name); }
    // What the open menu can do.
    [[nodiscard]] static QString offeredIn(QQuickWindow *window)
    {
        QStringList words;
        for (QQuickItem *each : WindowDriver::allItems(window)) {
            if (each->inherits("QQuickMenuItem") && each->isEnabled() && each->height() > 0)
                words += each->property("text").toString();
        }
        return words.join(u',');
    }
    [[nodiscard]] QString composed() const { return item(u"composer"_s)->property("text").toString(); }
    [[nodiscard]] ChatViewModel &chat() const { return *m_app->presentation().chat; }
};

TEST_F(MessageActionsTest, AMenuOffersWhatFitsByTheRightButtonAndByTheKeys)
{
    const auto offered = [this] { return offeredIn(m_window); };
    const auto choose = [this](const QString &words) {
        click(named(words));
        settle();
    };
    const auto rightClick = [this](QQuickItem *on) {
        QTest::mouseClick(m_window, Qt::RightButton, {}, on->mapToScene({20, 12}).toPoint());
        settle();
    };
    showReply(u"See [the *page*](https://example.com/a)\n\n|a|b|\n|-|-|\n|**1**|`x`|"_s);
    type(u"draft"_s);
    rightClick(drawn(u"tableText"_s));
    EXPECT_EQ(offered().toStdString(),
              "Copy Table,Copy Table as Markdown,Select All,Quote in Reply,Reply Again");
    choose(u"Copy Table as Markdown"_s);
    EXPECT_EQ(clipboard(), u"| a | b |\n| --- | --- |\n| **1** | `x` |"_s);
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus()) << "where it was";

    QQuickItem *words = drawn(u"paragraph"_s);
    words->forceActiveFocus();
    QMetaObject::invokeMethod(words, "select", Q_ARG(int, 0), Q_ARG(int, 7));
    press(Qt::Key_F10, Qt::ShiftModifier);
    settle();
    EXPECT_EQ(offered().toStdString(),
              "Copy,Copy Link,Copy as Markdown,Select All,Quote in Reply,Reply Again");
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(clipboard(), u"See the"_s);
    EXPECT_TRUE(words->hasActiveFocus());
    press(Qt::Key_Menu);
    settle();
    choose(u"Copy Link"_s);
    EXPECT_EQ(clipboard(), u"https://example.com/a"_s);
    press(Qt::Key_Menu);
    settle();
    choose(u"Select All"_s);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"See the page\n\na\tb\n1\tx"_s);
    rightClick(words);
    choose(u"Quote in Reply"_s);
    EXPECT_EQ(composed(), u"draft\n\n> See the page\n> \n> a\tb\n> 1\tx\n\n"_s);
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus());

    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Menu);
    settle();
    EXPECT_EQ(offered().toStdString(), "Cut,Copy,Paste,Select All");
    choose(u"Cut"_s);
    EXPECT_EQ(composed(), QString());
    showReply(u"# One\ntwo **words**\n- three\n\n```\nfour\n```\nfive | six\n-|-\n7|8\n"_s);
    const struct {
        QString from, to, markdown;
    } copies[] = {{u"heading"_s, u"heading"_s, u"# One"_s},
                  {u"paragraph"_s, u"list"_s, u"two **words**\n- three"_s},
                  {u"codeText"_s, u"codeText"_s, u"```\nfour\n```"_s},
                  {u"codeText"_s, u"tableText"_s, u"```\nfour\n```\nfive | six\n-|-\n7|8"_s}};
    for (const auto &[from, to, markdown] : copies) {
        const auto place = [](QQuickItem *text, int x) { return text->mapToScene({double(x), 9}).toPoint(); };
        QTest::mousePress(m_window, Qt::LeftButton, {}, place(drawn(from), 2));
        QTest::mouseMove(m_window, place(drawn(to), 14));
        QTest::mouseMove(m_window, place(drawn(to), 24));
        QTest::mouseRelease(m_window, Qt::LeftButton, {}, place(drawn(to), 24));
        settle();
        rightClick(drawn(u"heading"_s));
        choose(u"Copy as Markdown"_s);
        EXPECT_EQ(clipboard(), markdown);
    }
    rightClick(drawn(u"ownWords"_s));
    EXPECT_EQ(offered().toStdString(),
              "Copy Message,Select All,Quote in Reply,Edit and Send Again,Delete with Its Reply");
    press(Qt::Key_Escape);
}

TEST_F(MessageActionsTest, FieldsOfTheSettingsAndRowsOfTheSidebarHaveMenusByTheKeys)
{
    showReply(u"By the old wall"_s);
    const auto at = [](QQuickWindow *window, const QString &name) {
        WindowDriver::item(window, name)->forceActiveFocus();
    };
    QQuickWindow *settings = settingsWindow();
    const struct {
        QQuickWindow *window;
        std::function<void()> prepare;
        QString offered;
    } menus[] = {
        {settings, [&] { at(settings, u"address"_s); }, u"Paste,Select All"_s},
        {m_window,
         [&] {
             at(m_window, u"conversations"_s);
             press(Qt::Key_Down);
         },
         u"Rename,Delete…"_s},
        {settings,
         [&] {
             at(settings, u"key"_s);
             WindowDriver::type(settings, u"secret"_s);
             WindowDriver::press(settings, Qt::Key_A, Qt::ControlModifier);
         },
         u"Paste,Select All"_s},
    };
    QGuiApplication::clipboard()->setText(u"words"_s);
    for (const auto &[window, prepare, offered] : menus) {
        window->requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        prepare();
        WindowDriver::press(window, Qt::Key_Menu);
        EXPECT_EQ(offeredIn(window), offered);
        WindowDriver::press(window, Qt::Key_Escape);
    }
}

TEST_F(MessageActionsTest, AReplyIsMadeAgainAndItsVersionsSwitchedByPointerAndKeys)
{
    showReply(u"First answer"_s);
    EXPECT_EQ(drawn(u"formerVersion"_s), nullptr);
    asking([this] { click(drawn(u"regenerate"_s)); });
    EXPECT_EQ(drawn(u"regenerate"_s), nullptr) << "not while a turn runs";
    EXPECT_EQ(drawn(u"editMessage"_s), nullptr);
    stream(u"Second answer"_s);
    EXPECT_EQ(drawn(u"formerVersion"_s), nullptr);
    endReply();
    EXPECT_TRUE(shows(u"Second answer"_s) && shows(u"2 / 2"_s) && !shows(u"First answer"_s));
    click(drawn(u"formerVersion"_s));
    settle();
    EXPECT_TRUE(shows(u"First answer"_s) && shows(u"1 / 2"_s));
    drawn(u"formerVersion"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_TRUE(shows(u"Second answer"_s));
    press(Qt::Key_Left);
    EXPECT_TRUE(shows(u"First answer"_s)) << "and the keyboard stays there";
}

TEST_F(MessageActionsTest, TheLastMessageIsEditedInTheComposerOrLeftAsItWas)
{
    showReply(u"Answer"_s);
    type(u"draft"_s);
    click(drawn(u"editMessage"_s));
    settle();
    EXPECT_EQ(composed(), u"Question"_s);
    press(Qt::Key_Escape);
    EXPECT_EQ(composed(), u"draft"_s);
    EXPECT_FALSE(chat().isEditing());
    click(drawn(u"editMessage"_s));
    settle();
    type(u" two"_s);
    asking([this] { press(Qt::Key_Return); });
    EXPECT_EQ(transcript(), QStringList({u"Question two"_s, QString()}));
    EXPECT_EQ(composed(), u"draft"_s);
    stream(u"Another"_s);
    endReply();
    click(drawn(u"formerVersion"_s));
    EXPECT_EQ(transcript(), QStringList({u"Question"_s, u"Answer"_s}));
}

TEST_F(MessageActionsTest, ADeletedMessageComesBackByUndo)
{
    showReply(u"Answer"_s);
    click(drawn(u"deleteMessage"_s));
    settle();
    EXPECT_TRUE(transcript().isEmpty());
    click(drawn(u"undoDelete"_s));
    settle();
    EXPECT_EQ(transcript(), QStringList({u"Question"_s, u"Answer"_s}));
    EXPECT_EQ(drawn(u"undoDelete"_s), nullptr);
    EXPECT_TRUE(shows(u"Answer"_s));
}

TEST_F(MessageActionsTest, ALongMessageOfThePersonsFoldsAndIsCopiedWhole)
{
    QStringList lines;
    while (lines.size() < 17)
        lines += u"line %1"_s.arg(lines.size());
    const auto open = [this](const QStringList &text) {
        chat().open(addChat(u"Long"_s, {text.join(u'\n'), u"Answer"_s}));
        settle();
    };
    open(lines.first(16));
    EXPECT_EQ(drawn(u"unfoldMessage"_s), nullptr);
    open(lines);
    ASSERT_NE(drawn(u"unfoldMessage"_s), nullptr);
    QQuickItem *words = drawn(u"ownWords"_s);
    const auto clip = [&] { return words->parentItem()->parentItem()->height(); };
    EXPECT_LT(clip(), words->height());
    EXPECT_TRUE(shows(u"Show all 17 lines"_s));
    drawn(u"unfoldMessage"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(clip(), words->height());
    click(drawn(u"unfoldMessage"_s));
    EXPECT_LT(clip(), words->height());
    words->forceActiveFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), lines.join(u'\n'));
}

} // namespace morvane
