#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "services/AppLockService.h"
#include "support/Await.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/AppLockViewModel.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// All that a screen reader could be told of a window.
void collect(QAccessibleInterface *face, QStringList &words)
{
    if (!face || !face->isValid())
        return;
    for (const auto kind :
         {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help})
        words += face->text(kind);
    if (auto *const text = face->textInterface())
        words += text->text(0, text->characterCount());
    for (int i = 0; i < face->childCount(); ++i)
        collect(face->child(i), words);
}

class LockTest : public WindowFixture {
protected:
    void switchOn()
    {
        (void)m_app->storage().vault->key();
        // Nobody can be asked here, so the key goes where the switch would put it.
        m_app->storage().vault->moveKey(UserPresence::Required);
        m_app->storage().settings->setAppLockEnabled(true);
        settle();
    }
    [[nodiscard]] AppLockViewModel &lock() { return *m_app->presentation().lock; }
    void unlock()
    {
        click(item(u"unlockButton"_s));
        ASSERT_TRUE(eventually([this] { return !lock().isLocked(); }));
        settle();
    }
    // Of every window of the program, whether it is shown or not.
    [[nodiscard]] static QString everythingSaid()
    {
        QStringList words;
        for (QWindow *window : QGuiApplication::allWindows()) {
            words += window->title();
            collect(QAccessible::queryAccessibleInterface(window), words);
            if (auto *const quick = qobject_cast<QQuickWindow *>(window)) {
                for (QQuickItem *item : WindowDriver::allItems(quick)) {
                    for (const char *property : {"text", "placeholderText", "title"})
                        words += item->property(property).toString();
                }
            }
        }
        return words.join(u'\n');
    }
};

TEST_F(LockTest, LockedWindowSaysNoWordAndComesBackAsItWas)
{
    addChat(u"Ferns SECRETtitle"_s, {u"Which ferns SECRETquestion"_s, u"Many SECRETanswer kinds"_s});
    load();
    QStringList longChat;
    for (int i = 0; i < 40; ++i)
        longChat += u"SECRETline %1"_s.arg(i);
    m_app->presentation().chat->open(addChat(u"SECRETlong"_s, longChat));
    switchOn();
    settle();
    type(u"SECRETdraft begun"_s);
    ASSERT_TRUE(settingsWindow());
    m_window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    auto *const list = item(u"messages"_s);
    for (int i = 0; i < 3; ++i)
        press(Qt::Key_PageUp);
    settle();
    const double place = list->property("contentY").toDouble() - list->property("originY").toDouble();
    ASSERT_TRUE(everythingSaid().contains(u"SECRET"_s));

    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(lock().isLocked());
    settle();
    EXPECT_EQ(everythingSaid().toStdString().find("SECRET"), std::string::npos)
        << everythingSaid().toStdString();
    EXPECT_TRUE(isAt(m_window, u"Unlock"_s));
    for (const int key : {Qt::Key_Tab, Qt::Key_N, Qt::Key_Comma, Qt::Key_F9})
        press(key, key == Qt::Key_Tab ? Qt::NoModifier : Qt::ControlModifier); // nothing behind it hears
    EXPECT_FALSE(item(u"messages"_s));

    unlock();
    EXPECT_EQ(m_app->presentation().chat->draft(), u"SECRETdraft begun"_s);
    EXPECT_TRUE(everythingSaid().contains(u"SECRETlong"_s)) << "the list of chats";
    auto *const again = item(u"messages"_s);
    ASSERT_TRUE(again);
    EXPECT_TRUE(eventually([&] {
        return std::abs(again->property("contentY").toDouble() - again->property("originY").toDouble() -
                        place) < 60;
    })) << place
        << " " << again->property("contentY").toDouble() - again->property("originY").toDouble();
    m_window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    type(u" and ended"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"SECRETdraft begun and ended"_s);
}

TEST_F(LockTest, ATurnEndsWithTheLockAndKeepsWhatHadCome)
{
    switchOn();
    send(u"Question"_s);
    stream(u"The first half"_s);
    lock().lock();
    EXPECT_TRUE(isAbandoned());
    EXPECT_EQ(m_app->presentation().chat->turnsInFlight(), 0);
    EXPECT_EQ(m_app->presentation().chat->messages()->rowCount(), 0);
    settle();
    unlock();
    EXPECT_EQ(transcript(), QStringList({u"Question"_s, u"The first half"_s}));
}

TEST_F(LockTest, AStartWithTheLockOnReadsNothingBeforeItIsOpened)
{
    addChat(u"Ferns"_s, {u"Which?"_s, u"Many."_s});
    switchOn();
    load();
    EXPECT_TRUE(m_app->storage().vault->isLocked());
    EXPECT_FALSE(item(u"messages"_s));
    EXPECT_FALSE(m_app->presentation().chat->conversation());
    EXPECT_EQ(everythingSaid().indexOf(u"Ferns"_s), -1);
    unlock();
    EXPECT_TRUE(shows(u"Ferns"_s));
    ASSERT_TRUE(m_app->presentation().chat->conversation());
    send(u"More"_s);
    endReply();
    EXPECT_FALSE(transcript().isEmpty());
}

TEST_F(LockTest, WordsThatTakeAMessagesPlaceOutlastALock)
{
    showReply(u"An answer"_s);
    switchOn();
    auto &chat = *m_app->presentation().chat;
    chat.beginEdit(chat.messages()->index(0).data(MessageListModel::MessageIdRole).toString());
    chat.setDraft(u"Other words"_s);
    lock().lock();
    EXPECT_EQ(chat.draft(), QString());
    settle();
    unlock();
    EXPECT_TRUE(chat.isEditing());
    EXPECT_EQ(chat.draft(), u"Other words"_s);
}

} // namespace

} // namespace morvane
