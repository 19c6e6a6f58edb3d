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
    // The name of an item. The toolkit keeps that of a line for secrets to itself.
    static QString told(QQuickItem *item)
    {
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
        if (!face)
            return {};
        return face->text(face->state().passwordEdit ? QAccessible::Description : QAccessible::Name);
    }
    // Tab reaches all of these, each under its name, and whatever else it reaches has a name and a role.
    static void expectReached(QQuickWindow *window, const QStringList &names)
    {
        QSet<QString> reached;
        for (QQuickItem *item : tabRound(window)) {
            if (item->activeFocusOnTab()) // not so the scope that holds the focus of a page
                expectNamed(item);
            reached += told(item);
        }
        for (const QString &name : names)
            EXPECT_TRUE(reached.contains(name)) << name.toStdString();
    }
    static void expectNamed(QQuickItem *item)
    {
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
        ASSERT_NE(face, nullptr) << item->metaObject()->className();
        const std::string what = item->metaObject()->className() + (" " + item->objectName()).toStdString();
        EXPECT_FALSE(told(item).isEmpty()) << what << " has no name";
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
        {u"keyboard"_s, {u"Show the window: None"_s, u"Usual keys"_s, u"Hold to talk: None"_s}},
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

TEST_F(AccessibilityTest, AReplyIsAnnouncedWhenItBeginsAndWhenItIsDoneAndNeverByPieces)
{
    QStringList heard;
    const auto listen = [&heard](QQuickItem *announcement) {
        // Screen readers speak of notifications alone, and what isn't shown says nothing by appearing.
        EXPECT_EQ(QAccessible::queryAccessibleInterface(announcement)->role(), QAccessible::Notification);
        EXPECT_FALSE(announcement->isVisible());
        QObject::connect(qobject_cast<Announcement *>(announcement), &Announcement::announced,
                         [&heard, announcement] { heard += accessibleName(announcement); });
    };
    listen(item(u"announcement"_s));
    send();
    for (const auto &piece : {u"One"_s, u" **two**"_s, u" three"_s})
        stream(piece);
    endReply();
    EXPECT_EQ(heard, QStringList({u"Replying"_s, u"One two three"_s}));
    press(Qt::Key_F, Qt::ControlModifier);
    listen(item(u"findAnnouncement"_s));
    type(u"two"_s);
    m_clock.advance(std::chrono::seconds(1));
    EXPECT_TRUE(eventually([&heard] { return heard.last() == u"1 of 1"_s; }));
    press(Qt::Key_Escape);
    settle();
    EXPECT_EQ(heard.size(), 3) << "that it closes isn't that nothing was found";
}

TEST_F(AccessibilityTest, LinksAndTablesOfAReplyAreATree)
{
    showReply(u"See [the *old* page](https://a.example) or\n[this](https://b.example).\n\n"
              "|Name|Price|\n|-|-|\n|Tea|3|\n|[Shop](https://c.example)|4|"_s);
    const auto faceOf = [this](const QString &name) {
        return QAccessible::queryAccessibleInterface(WindowDriver::item(m_window, name));
    };
    const auto press = [](QAccessibleInterface *face) {
        face->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    QAccessibleInterface *words = faceOf(u"paragraph"_s);
    ASSERT_EQ(words->childCount(), 2);
    EXPECT_EQ(words->child(0)->role(), QAccessible::Link);
    EXPECT_EQ(words->child(0)->text(QAccessible::Name), u"the old page"_s);
    EXPECT_EQ(words->child(0)->parent(), words);
    EXPECT_TRUE(words->rect().contains(words->child(1)->rect()));
    EXPECT_FALSE(words->child(0)->rect().intersects(words->child(1)->rect()));
    press(words->child(1));
    EXPECT_EQ(m_openedLinks, QStringList{u"https://b.example"_s});

    QAccessibleInterface *table = faceOf(u"tableText"_s);
    EXPECT_EQ(table->parent()->child(table->parent()->indexOfChild(table)), table);
    ASSERT_EQ(table->childCount(), 3);
    QAccessibleInterface *row = table->child(2);
    QAccessibleInterface *cell = row->child(1);
    const QAccessibleInterface *header = table->child(0)->child(1);
    EXPECT_EQ(table->role(), QAccessible::Table);
    EXPECT_EQ(row->role(), QAccessible::Row);
    EXPECT_EQ(cell->role(), QAccessible::Cell);
    EXPECT_EQ(header->role(), QAccessible::ColumnHeader);
    EXPECT_EQ(row->text(QAccessible::Name), u"Shop, 4"_s);
    EXPECT_EQ(cell->tableCellInterface()->columnHeaderCells().value(0), header);
    EXPECT_EQ(cell->text(QAccessible::Description), u"Price"_s);
    EXPECT_EQ(cell->tableCellInterface()->table(), table);
    EXPECT_EQ(table->tableInterface()->cellAt(2, 1), cell);
    EXPECT_EQ(table->indexOfChild(row) + row->indexOfChild(cell), 3);
    EXPECT_TRUE(table->rect().contains(cell->rect()));
    EXPECT_EQ(table->childAt(cell->rect().center().x(), cell->rect().center().y()), row);
    press(row->child(0));
    EXPECT_EQ(m_openedLinks.last(), u"https://c.example"_s);
}

} // namespace morvane
