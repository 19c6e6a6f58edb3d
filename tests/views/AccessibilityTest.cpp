#include "WindowFixture.h"

#include "ai/contract/ProviderError.h"
#include "models/ChatMessage.h"
#include "security/InMemoryKeychainService.h"
#include "view_models/chat/ChatViewModel.h"
#include "views/Announcement.h"

#include <QAccessible>
#include <QSet>

namespace morvane {

using namespace Qt::StringLiterals;

class AccessibilityTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_keychain.save(u"secret"_s, u"ai-provider-api-key"_s);
        m_app->presentation().chat->open(addChat(u"Ferns"_s, {u"Question"_s, u"Answer"_s},
                                                 [](ChatMessage &reply) { reply.setHitTokenLimit(true); }));
        m_app->presentation().chat->showError(
            std::make_exception_ptr(ProviderError(ProviderError::Plain::networkUnavailable)));
        load();
    }
    // Every item that Tab can reach, in order, and back at the first.
    static QList<QQuickItem *> tabRound(QQuickWindow *window)
    {
        QList<QQuickItem *> round;
        while (window->activeFocusItem() && !round.contains(window->activeFocusItem()) &&
               round.size() < 200) {
            round += window->activeFocusItem();
            WindowDriver::press(window, Qt::Key_Tab);
        }
        return round;
    }
    // Tab reaches all of these, each under its name, and whatever else it reaches has a name and a role.
    static void expectReached(QQuickWindow *window, const QStringList &names)
    {
        QSet<QString> reached;
        for (QQuickItem *item : tabRound(window)) {
            if (item->activeFocusOnTab()) // not so the scope that holds the focus of a page
                expectNamed(item);
            reached += accessibleName(item);
        }
        for (const QString &name : names)
            EXPECT_TRUE(reached.contains(name)) << name.toStdString();
    }
    static void expectNamed(QQuickItem *item)
    {
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
        ASSERT_NE(face, nullptr) << item->metaObject()->className();
        const std::string what = item->metaObject()->className() + (" " + item->objectName()).toStdString();
        EXPECT_FALSE(face->text(QAccessible::Name).isEmpty()) << what << " has no name";
        EXPECT_NE(face->role(), QAccessible::NoRole) << what << " has no role";
    }
    static void expectAllNamed(QQuickWindow *window)
    {
        for (QQuickItem *item : WindowDriver::allItems(window)) {
            if (item->activeFocusOnTab() && item->isVisible())
                expectNamed(item);
        }
    }
};

TEST_F(AccessibilityTest, TabReachesEverythingInTheWindow)
{
    item(u"composer"_s)->forceActiveFocus();
    expectReached(m_window, {u"Message"_s, u"New Chat"_s, u"Ferns"_s, u"Settings"_s,
                             u"Hide the list of chats"_s, u"You: Question"_s, u"Answer"_s,
                             u"Copy the reply"_s, u"Continue"_s, u"Retry"_s, u"Dismiss"_s});
    expectAllNamed(m_window);
    send();
    askToSearch(u"ferns"_s, true);
    expectAllNamed(m_window);
    m_app->presentation().chat->newConversation();
    settle();
    expectAllNamed(m_window);
}

TEST_F(AccessibilityTest, EveryControlOfTheSettingsHasANameAndTabReachesIt)
{
    QQuickWindow *settings = settingsWindow();
    ASSERT_NE(settings, nullptr);
    const std::pair<QString, QStringList> expected[] = {
        {u"ai"_s,
         {u"Address"_s, u"Model"_s, u"Key"_s, u"Remove"_s, u"Test"_s, u"Temperature"_s,
          u"Longest reply in tokens"_s, u"Use the private cloud"_s}},
        {u"instructions"_s, {u"Instructions"_s}},
        {u"abilities"_s, {u"Web access"_s, u"Key"_s}},
        {u"memory"_s, {u"Keep notes"_s}},
        {u"appearance"_s, {u"System"_s, u"Large"_s, u"Reduce motion"_s}},
        {u"proof"_s, {u"All"_s, u"Proofs"_s}},
        {u"network"_s, {u"Connections"_s}}};
    for (const auto &[page, controls] : expected) {
        settings->setProperty("page", page);
        settle();
        expectAllNamed(settings);
        expectReached(settings, controls);
    }
}

TEST_F(AccessibilityTest, TheSheetListsTheKeysAndClosesWithEscape)
{
    press(Qt::Key_Question, Qt::ControlModifier);
    const auto isOpen = [this] { return isAt(m_window, u"Close"_s); };
    ASSERT_TRUE(eventually(isOpen));
    ASSERT_NE(named(u"Return: Send the message"_s), nullptr);
    EXPECT_GT(named(u"Return: Send the message"_s)->width(), 100);
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return !isOpen(); }));
}

TEST_F(AccessibilityTest, AReplyIsAnnouncedWhenItBeginsAndWhenItIsDoneAndNeverByPieces)
{
    QStringList heard;
    QQuickItem *announcement = item(u"announcement"_s);
    QObject::connect(qobject_cast<Announcement *>(announcement), &Announcement::announced,
                     [&] { heard += accessibleName(announcement); });
    send();
    for (const auto &piece : {u"One"_s, u" **two**"_s, u" three"_s})
        stream(piece);
    endReply();
    EXPECT_EQ(heard, QStringList({u"Replying"_s, u"One two three"_s}));
}

} // namespace morvane
