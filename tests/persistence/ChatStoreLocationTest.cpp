#include "persistence/ChatStoreLocation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/StoreFiles.h"
#include "support/FakeFieldSealing.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ChatStoreLocation;
using std::chrono::milliseconds;

namespace {

class ChatStoreMoveTest : public testing::Test {
protected:
    ChatStoreMoveTest() { PrivateFile::createFolder(folders.data); }

    // A store with one conversation for each title, two messages in each, and one document.
    void makeStore(const QString &path, const QStringList &titles)
    {
        ObjectContext context(StoreFiles::open(path), sealing);
        ConversationRepository repository(context, clock);
        for (const QString &title : titles) {
            const auto chat = repository.create();
            for (const auto &text : {title, title + u" again"_s})
                repository.add(repository.makeMessage({.id = QUuid::createUuid(),
                                                       .role = MessageRole::user,
                                                       .content = text,
                                                       .createdAt = clock.now(),
                                                       .attachmentName = u"n"_s}),
                               *chat);
        }
        if (!titles.isEmpty())
            repository.insert({.id = QUuid::createUuid(), .filename = u"f"_s});
    }

    [[nodiscard]] QStringList titlesIn(const QString &path)
    {
        ObjectContext context(StoreFiles::open(path), sealing);
        QStringList titles;
        for (const auto &chat : context.fetch<Conversation>()) {
            titles += chat->title();
            EXPECT_EQ(chat->messages().size(), 2U);
            EXPECT_EQ(chat->messages().at(1)->content(), chat->title() + u" again"_s);
        }
        return titles;
    }

    [[nodiscard]] Move move()
    {
        return {.source = oldStorePath(folders),
                .target = storePath(folders),
                .defaults = defaults,
                .sealing = sealing,
                .isVaultLocked = [this] { return vaultIsLocked; }};
    }

    // What stands beside the target, lock files aside.
    [[nodiscard]] QStringList targetFiles() const
    {
        return QDir(QFileInfo(storePath(folders)).path())
            .entryList({u"Morvane.store*"_s}, QDir::Files)
            .filter(QRegularExpression(u"^(?!.*-lock$)"_s));
    }

    [[nodiscard]] bool isMarkedMoved() const { return defaults.boolean(movedFlagKey).value_or(false); }

    void expectFailure(const Move &move, const QString &reason)
    {
        const auto before = PrivateFile::read(move.source, 1 << 30);
        const Outcome outcome = moveIfNeeded(move);
        ASSERT_TRUE(std::holds_alternative<Failed>(outcome));
        EXPECT_EQ(std::get<Failed>(outcome).reason, reason);
        EXPECT_EQ(log.lines().constLast(),
                  u"persistence: Could not move the conversation store: "_s + reason);
        EXPECT_EQ(PrivateFile::read(move.source, 1 << 30), before);
        EXPECT_FALSE(isMarkedMoved());
    }

    QTemporaryDir home;
    SupportFolders folders = SupportFolders::inProfile(home.path());
    InMemorySettingsRepository defaults;
    ManualClock clock;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    bool vaultIsLocked = false;
    LogCapture log;
};

TEST_F(ChatStoreMoveTest, AFreshTargetTakesTheWholeFile)
{
    makeStore(oldStorePath(folders), {u"a"_s, u"b"_s});
    defaults.setString(leftOldFileKey, u"former"_s);
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
    EXPECT_EQ(log.lines().constLast(),
              u"persistence: Moved 2 conversations, 4 messages and 1 document records "
              "into the app's own encrypted store"_s);
    EXPECT_TRUE(isMarkedMoved());
    EXPECT_EQ(defaults.string(leftOldFileKey), std::nullopt);
    EXPECT_TRUE(QDir(folders.data).entryList({u"default.store*"_s}, QDir::Files).isEmpty());
    EXPECT_EQ(targetFiles(), QStringList{u"Morvane.store"_s});
    EXPECT_EQ(QFile::permissions(storePath(folders)) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList({u"a"_s, u"b"_s}));

    makeStore(oldStorePath(folders), {u"late"_s});
    EXPECT_TRUE(std::holds_alternative<NothingToMove>(moveIfNeeded(move())));
    EXPECT_TRUE(StoreFiles::exists(oldStorePath(folders)));
}

// A store whose last process died keeps its newest rows in the "-wal" file.
TEST_F(ChatStoreMoveTest, TheCompanionsCount)
{
    const QString elsewhere = home.filePath(u"elsewhere/s"_s);
    makeStore(elsewhere, {});
    {
        ObjectContext context(StoreFiles::open(elsewhere), sealing);
        ConversationRepository repository(context, clock);
        const auto chat = repository.create();
        for (const auto &text : {u"w"_s, u"w again"_s})
            repository.add(repository.makeMessage(
                               {.id = QUuid::createUuid(), .role = MessageRole::user, .content = text}),
                           *chat);
        const auto from = StoreFiles::withCompanions(elsewhere);
        const auto to = StoreFiles::withCompanions(oldStorePath(folders));
        for (std::size_t i = 0; i < from.size(); ++i)
            ASSERT_TRUE(QFile::copy(from[i], to[i]));
    }
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"w"_s});
}

TEST_F(ChatStoreMoveTest, AnEmptyTargetTakesTheRecords)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    makeStore(storePath(folders), {});
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"a"_s});
    EXPECT_FALSE(StoreFiles::exists(oldStorePath(folders)));
}

TEST_F(ChatStoreMoveTest, FormerColumnNamesComeThroughBothWays)
{
    for (const bool targetExists : {false, true}) {
        SCOPED_TRACE(targetExists);
        defaults.removeAll();
        StoreFiles::remove(storePath(folders));
        makeStore(oldStorePath(folders), {u"a"_s});
        {
            Database old = Database::open(oldStorePath(folders), Database::Access::ReadWrite);
            old.execute("DROP INDEX Conversation_plain; DROP INDEX ChatMessage_plain;"
                        "ALTER TABLE Conversation RENAME COLUMN sealedTitle TO title;"
                        "ALTER TABLE ChatMessage RENAME COLUMN sealedContent TO content;"
                        "ALTER TABLE ChatMessage DROP COLUMN placeRaw;"
                        "UPDATE Conversation SET title='a'; PRAGMA user_version=0");
        }
        if (targetExists)
            makeStore(storePath(folders), {});
        EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
        EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"a"_s});
    }
}

TEST_F(ChatStoreMoveTest, ChatsInBothStoresStayWhereTheyAre)
{
    makeStore(oldStorePath(folders), {u"a"_s, u"b"_s});
    makeStore(storePath(folders), {u"new"_s});
    const auto before = PrivateFile::read(oldStorePath(folders), 1 << 30);
    EXPECT_TRUE(std::holds_alternative<KeptBoth>(moveIfNeeded(move())));
    EXPECT_EQ(log.lines().constLast(),
              u"persistence: Both chat stores hold conversations; left 2 in the older file untouched"_s);
    EXPECT_EQ(defaults.string(leftOldFileKey), oldStorePath(folders));
    EXPECT_FALSE(isMarkedMoved());
    EXPECT_EQ(PrivateFile::read(oldStorePath(folders), 1 << 30), before);
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"new"_s});
}

TEST_F(ChatStoreMoveTest, AStoreThatIsNotOursIsLeftInPlace)
{
    const auto expectLeft = [&](const QByteArray &bytes) {
        EXPECT_TRUE(std::holds_alternative<NothingToMove>(moveIfNeeded(move())));
        EXPECT_EQ(
            log.lines().constLast(),
            u"persistence: The shared default store is not readable as Morvane's; leaving it in place"_s);
        EXPECT_EQ(PrivateFile::read(oldStorePath(folders), 1 << 30), bytes);
        EXPECT_TRUE(isMarkedMoved());
        defaults.removeAll();
    };
    PrivateFile::write(oldStorePath(folders), QByteArray(5000, 'x'));
    expectLeft(QByteArray(5000, 'x'));
    QFile::remove(oldStorePath(folders));
    Database::open(oldStorePath(folders), Database::Access::Create).execute("CREATE TABLE notes(id TEXT)");
    expectLeft(*PrivateFile::read(oldStorePath(folders), 1 << 30));
}

TEST_F(ChatStoreMoveTest, NothingOrAnEmptyStoreIsNothingToMove)
{
    defaults.setString(leftOldFileKey, u"former"_s);
    EXPECT_TRUE(std::holds_alternative<NothingToMove>(moveIfNeeded(move())));
    EXPECT_TRUE(isMarkedMoved());
    EXPECT_EQ(defaults.string(leftOldFileKey), std::nullopt);

    defaults.removeAll();
    makeStore(oldStorePath(folders), {});
    EXPECT_TRUE(std::holds_alternative<NothingToMove>(moveIfNeeded(move())));
    EXPECT_FALSE(StoreFiles::exists(oldStorePath(folders)));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ChatStoreMoveTest, ALockedVaultPutsTheMoveOff)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    vaultIsLocked = true;
    EXPECT_TRUE(std::holds_alternative<WaitingForUnlock>(moveIfNeeded(move())));
    EXPECT_EQ(log.lines().constLast(),
              u"persistence: The conversation store move is waiting for the app to be unlocked"_s);
    EXPECT_FALSE(isMarkedMoved());
    vaultIsLocked = false;
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
}

TEST_F(ChatStoreMoveTest, AFieldThatDoesNotOpenKeepsTheOldStoreWhole)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    sealing = std::make_shared<FakeFieldSealing>('o'); // another key
    expectFailure(move(), u"6 sealed fields in the older store will not open with this Mac's key"_s);
    EXPECT_TRUE(targetFiles().isEmpty());
}

TEST_F(ChatStoreMoveTest, ACopyThatIsNotWholeIsUndone)
{
    const auto changed = [](const QByteArray &sql) {
        return [sql](const QString &from, const QString &to) {
            if (!Move::copyPrivately(from, to))
                return false;
            if (!to.endsWith(u"-wal") && !to.endsWith(u"-shm"))
                Database::open(to, Database::Access::ReadWrite).execute(sql);
            return true;
        };
    };
    const struct {
        std::function<bool(const QString &, const QString &)> copyFile;
        QString reason;
    } cases[] = {
        {changed("DELETE FROM ChatMessage WHERE rowid=2"), u"the copy is missing rows the original has"_s},
        {changed("DELETE FROM ImportedDocument"), u"the copy is missing rows the original has"_s},
        {changed("UPDATE ChatMessage SET sealedContent=substr(sealedContent,2), sealedAttachmentName=NULL"),
         u"2 sealed fields did not come through the copy at their original length"_s},
        {[](const QString &, const QString &to) {
             PrivateFile::write(to, "half");
             return true;
         },
         u"the store at Morvane.store.moving could not be opened"_s},
        {[](const QString &, const QString &to) {
             PrivateFile::write(to, "half");
             return false;
         },
         u"the copy could not be written"_s},
        {[](const QString &, const QString &to) { return !QDir().mkpath(to + u"/in the way"_s); },
         u"a part-finished move into Morvane.store.moving could not be undone"_s},
    };
    makeStore(oldStorePath(folders), {u"a"_s});
    for (const auto &[copyFile, reason] : cases) {
        SCOPED_TRACE(reason.toStdString());
        auto faulty = move();
        faulty.copyFile = copyFile;
        expectFailure(faulty, reason);
        EXPECT_TRUE(targetFiles().isEmpty());
    }
    QDir(storePath(folders) + u".moving"_s).removeRecursively();
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"a"_s});
}

TEST_F(ChatStoreMoveTest, WhatAnEarlierAttemptLeftIsReplaced)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    makeStore(storePath(folders) + u".moving"_s, {u"half"_s});
    PrivateFile::write(storePath(folders) + u"-wal"_s, "of a store that is gone");
    EXPECT_TRUE(std::holds_alternative<Moved>(moveIfNeeded(move())));
    EXPECT_EQ(titlesIn(storePath(folders)), QStringList{u"a"_s});
}

TEST_F(ChatStoreMoveTest, ATargetThatCannotBeOpenedKeepsTheOldStore)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    PrivateFile::write(storePath(folders), QByteArray(5000, 'x'));
    expectFailure(move(), u"the store at Morvane.store could not be opened"_s);
    EXPECT_EQ(PrivateFile::read(storePath(folders), 9000), QByteArray(5000, 'x'));
}

TEST_F(ChatStoreMoveTest, ASecondLaunchWaitsItsTimeAndLeavesTheMoveToTheFirst)
{
    makeStore(oldStorePath(folders), {u"a"_s});
    const QString lockPath = QFileInfo(storePath(folders)).path() + u"/.chat-store-move.lock"_s;
    PrivateFile::createFolder(QFileInfo(lockPath).path());
    auto first = FileLock::acquire(lockPath, milliseconds(0));
    ASSERT_TRUE(first);

    auto second = move();
    milliseconds waited{0};
    second.pause = [&](milliseconds duration) { waited += duration; };
    EXPECT_TRUE(std::holds_alternative<AnotherLaunchIsMoving>(moveIfNeeded(second)));
    EXPECT_EQ(waited, std::chrono::seconds(10));
    EXPECT_EQ(log.lines().constLast(),
              u"persistence: Another launch is moving the conversation store; leaving it to that one"_s);
    EXPECT_FALSE(isMarkedMoved());
    EXPECT_TRUE(StoreFiles::exists(oldStorePath(folders)));

    // The first one finishes while the second waits.
    second.pause = [&](milliseconds) {
        defaults.setBoolean(movedFlagKey, true);
        first.reset();
    };
    EXPECT_TRUE(std::holds_alternative<NothingToMove>(moveIfNeeded(second)));
    EXPECT_TRUE(StoreFiles::exists(oldStorePath(folders)));
}

} // namespace

} // namespace morvane
