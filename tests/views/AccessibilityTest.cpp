#include "WindowFixture.h"

#include "views/Announcement.h"

#include <QAccessible>
#include <QSet>

namespace morvane {

using namespace Qt::StringLiterals;

class AccessibilityTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_conversations.append(
            {{u"conversationId"_s, u"A"_s}, {u"title"_s, u"Ferns"_s}, {u"section"_s, u"Today"_s}});
        m_chat.messages->addUser(u"Question"_s);
        m_chat.messages->addReply(u"Answer"_s,
                                  {{u"canContinue"_s, true}, {u"place"_s, u"On this computer"_s}});
        m_chat.setBanner({u"It broke."_s, u"Look."_s, true});
        load();
    }
    // Every item that Tab can reach, in order, and back at the first.
    static QList<QQuickItem *> tabRound(QQuickWindow *window)
    {
        QList<QQuickItem *> round;
        while (window->activeFocusItem() && !round.contains(window->activeFocusItem()) &&
               round.size() < 200) {
            round += window->activeFocusItem();
            press(window, Qt::Key_Tab);
        }
        return round;
    }
    static void expectNamedAndPlaced(QQuickItem *item)
    {
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
        ASSERT_NE(face, nullptr) << item->metaObject()->className();
        const std::string what = item->metaObject()->className() + (" " + item->objectName()).toStdString();
        EXPECT_FALSE(face->text(QAccessible::Name).isEmpty()) << what << " has no name";
        EXPECT_NE(face->role(), QAccessible::NoRole) << what << " has no role";
    }
    // Everything that takes the focus, shown or not.
    static void expectAllNamed(QQuickWindow *window)
    {
        for (QQuickItem *item : allItems(window)) {
            if (item->activeFocusOnTab() && item->isVisible())
                expectNamedAndPlaced(item);
        }
    }
};

TEST_F(AccessibilityTest, EveryControlOfTheWindowHasANameAndARole)
{
    expectAllNamed(m_window);
    ApprovalRequest request;
    request.verb = u"Open a link"_s;
    request.detail = u"https://example.org"_s;
    request.offersChatWideYes = true;
    m_chat.setApproval(request);
    m_chat.messages->addReply({}, {{u"running"_s, true}});
    settle();
    expectAllNamed(m_window);
    m_chat.messages->clear();
    settle();
    expectAllNamed(m_window);
}

TEST_F(AccessibilityTest, TabReachesEverythingInTheWindow)
{
    item(u"composer"_s)->forceActiveFocus();
    QSet<QString> names;
    for (QQuickItem *reached : tabRound(m_window)) {
        expectNamedAndPlaced(reached);
        names += accessibleName(reached);
    }
    for (const QString &name :
         {u"Message"_s, u"New Chat"_s, u"Ferns"_s, u"Settings"_s, u"Hide the list of chats"_s,
          u"You: Question"_s, u"Answer"_s, u"Copy the reply"_s, u"Continue"_s, u"Retry"_s, u"Dismiss"_s})
        EXPECT_TRUE(names.contains(name)) << name.toStdString();
}

TEST_F(AccessibilityTest, EveryControlOfTheSettingsHasANameAndTabReachesIt)
{
    m_aiSettings.hasKey = true;
    QQuickWindow *settings = settingsWindow();
    ASSERT_NE(settings, nullptr);
    const std::pair<QString, QStringList> expected[] = {
        {u"ai"_s,
         {u"Address"_s, u"Model"_s, u"Key"_s, u"Test"_s, u"Temperature"_s, u"Longest reply in tokens"_s}},
        {u"instructions"_s, {u"Instructions"_s}},
        {u"appearance"_s, {u"System"_s, u"Large"_s, u"Reduce motion"_s}},
        {u"network"_s, {u"Connections"_s}}};
    for (const auto &[page, controls] : expected) {
        settings->setProperty("page", page);
        settle();
        expectAllNamed(settings);
        QSet<QString> names;
        for (QQuickItem *reached : tabRound(settings))
            names += accessibleName(reached);
        for (const QString &name : controls)
            EXPECT_TRUE(names.contains(name)) << name.toStdString();
    }
}

TEST_F(AccessibilityTest, TheSheetListsTheKeysAndClosesWithEscape)
{
    press(Qt::Key_Question, Qt::ControlModifier);
    ASSERT_TRUE(eventually([this] { return accessibleName(m_window->activeFocusItem()) == "Close"_L1; }));
    const auto items = allItems();
    EXPECT_TRUE(std::any_of(items.begin(), items.end(), [](QQuickItem *row) {
        return accessibleName(row) == "Return: Send the message"_L1 && row->isVisible() && row->width() > 100;
    }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return accessibleName(m_window->activeFocusItem()) != "Close"_L1; }));
}

TEST_F(AccessibilityTest, AReplyIsAnnouncedWhenItBeginsAndWhenItIsDoneAndNeverByPieces)
{
    QStringList heard;
    QQuickItem *announcement = item(u"announcement"_s);
    QObject::connect(qobject_cast<Announcement *>(announcement), &Announcement::announced,
                     [&] { heard += accessibleName(announcement); });
    m_chat.setResponding(true);
    for (const QString &text : {u"One"_s, u"One two"_s, u"One two three"_s})
        m_chat.messages->set(1, "text", text);
    settle();
    m_chat.setResponding(false);
    Q_EMIT m_chat.replyFinished(u"One two three"_s);
    settle();
    EXPECT_EQ(heard, QStringList({u"Replying"_s, u"One two three"_s}));
}

} // namespace morvane
