#include "StoreFixture.h"
#include "persistence/StoreFiles.h"
#include "support/FileSpy.h"

#include <QDir>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ChatStoreLocation;
using std::chrono::milliseconds;

namespace {

const QString notMoved = u"Could not move the conversation store: "_s;

class ChatStoreMoveTest : public StoreFixture {
protected:
    ChatStoreMoveTest() { PrivateFile::createFolder(folders.data); }

    // A store with one conversation of two messages for each title, and one document.
    void makeStore(
        const QString &file, const QStringList &titles, const std::function<void()> &whileOpen = [] {})
    {
        ObjectContext context(StoreFiles::open(file), sealing);
        ConversationRepository repository(context, clock);
        for (const QString &title : titles)
            makeChat(repository, title, {title, title + u" again"_s});
        if (!titles.isEmpty())
            repository.insert({.id = QUuid::createUuid(), .filename = u""_s});
        whileOpen();
    }

    // An older store that holds "a", and nothing of a move.
    void startOver()
    {
        defaults.removeAll();
        StoreFiles::remove(path);
        makeStore(source, {u"a"_s});
    }

    void expectChats(const QString &file, const QStringList &titles)
    {
        ObjectContext context(StoreFiles::open(file), sealing);
        const auto chats = context.fetch<Conversation>();
        EXPECT_EQ(titlesOf(chats), titles);
        for (const auto &chat : chats) {
            const QString title = chat->title();
            EXPECT_EQ(textsOf(*chat),
                      title == u"empty" ? QStringList() : QStringList({title, title + u" again"_s}));
        }
    }

    [[nodiscard]] Move move()
    {
        return {.source = source,
                .target = path,
                .defaults = defaults,
                .sealing = sealing,
                .isVaultLocked = [this] { return vaultIsLocked; }};
    }

    // The move's outcome and the line it logs; until it is done for good the old store stays as it was.
    template <typename Expected>
    void expectMove(const Move &attempt, const QString &line)
    {
        const auto before = bytesOf(source);
        const auto logged = log.lines().size();
        EXPECT_TRUE(std::holds_alternative<Expected>(moveIfNeeded(attempt)));
        EXPECT_EQ(log.lines().mid(logged),
                  line.isEmpty() ? QStringList() : QStringList{u"persistence: "_s + line});
        const bool isDone = std::is_same_v<Expected, Moved> || std::is_same_v<Expected, NothingToMove>;
        EXPECT_EQ(defaults.boolean(movedFlagKey).value_or(false), isDone);
        if (!isDone) {
            EXPECT_EQ(bytesOf(source), before);
        }
    }

    // Moves one conversation, "a".
    void expectMoved(const QStringList &titles = {u"a"_s})
    {
        expectMove<Moved>(move(), u"Moved 1 conversations, 2 messages and 1 document records into the app's "
                                  "own encrypted store"_s);
        expectChats(path, titles);
        EXPECT_TRUE(QDir(folders.data).entryList({u"default.store*"_s}, QDir::Files).isEmpty());
    }

    // What stands at the target and beside it, lock files aside.
    [[nodiscard]] QStringList targetFiles() const
    {
        return QDir(QFileInfo(path).path()).entryList(QDir::Files).filter(QRegularExpression(u"[^k]$"_s));
    }

    const QString source = oldStorePath(folders);
    bool vaultIsLocked = false;
};

TEST_F(ChatStoreMoveTest, OfAnyAgeTheStoreArrivesWholeAtAFreshTargetAndAtAnEmptyOne)
{
    for (const bool isOld : {false, true}) {
        for (const bool targetExists : {false, true}) {
            SCOPED_TRACE(testing::Message() << isOld << targetExists);
            startOver();
            defaults.setString(leftOldFileKey, u"former"_s);
            if (isOld)
                Database::open(source, Database::Access::ReadWrite)
                    .execute("DROP INDEX Conversation_plain; DROP INDEX ChatMessage_plain;"
                             "ALTER TABLE Conversation RENAME COLUMN sealedTitle TO title;"
                             "ALTER TABLE ChatMessage RENAME COLUMN sealedContent TO content;"
                             "ALTER TABLE ChatMessage DROP COLUMN placeRaw;"
                             "UPDATE Conversation SET title='a'; PRAGMA user_version=0");
            if (targetExists)
                makeStore(path, {});
            expectMoved();
            EXPECT_EQ(defaults.string(leftOldFileKey), std::nullopt);
            EXPECT_EQ(targetFiles(), QStringList{u"Morvane.store"_s});
            EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        }
    }
    makeStore(source, {u"late"_s});
    expectMove<NothingToMove>(move(), {});
    EXPECT_TRUE(StoreFiles::exists(source));
}

// A start whose move failed made an empty chat; one that was killed left the old file when all was copied.
TEST_F(ChatStoreMoveTest, WhatAnEarlierStartLeftDoesNotHoldUpTheMove)
{
    const auto add = [&](const QString &title, const QStringList &texts) {
        ObjectContext context(StoreFiles::open(path), sealing);
        ConversationRepository repository(context, clock);
        makeChat(repository, title, texts);
    };
    startOver();
    const QByteArray old = bytesOf(source);
    add(u"empty"_s, {});
    expectMoved({u"empty"_s, u"a"_s});
    add(u"b"_s, {u"b"_s, u"b again"_s});
    defaults.removeAll();
    PrivateFile::write(source, old);
    expectMoved({u"empty"_s, u"a"_s, u"b"_s});
}

// A power cut at any moment finds a whole store.
TEST_F(ChatStoreMoveTest, TheOldStoreGoesWhenTheNewOneIsOnTheDisk)
{
    const auto steps = [&] {
        FileSpy spy(folders.data);
        expectMoved();
        const QStringList all = spy.steps();
        return all.first(all.indexOf(u"unlink default.store"_s)).replaceInStrings(u"Morvane/"_s, QString());
    };
    startOver();
    EXPECT_EQ(steps().last(3),
              QStringList({u"sync Morvane.store.moving"_s, u"rename Morvane.store.moving Morvane.store"_s,
                           u"sync Morvane"_s}));

    startOver();
    makeStore(path, {});
    const QStringList rows = steps();
    EXPECT_GT(rows.lastIndexOf(u"sync Morvane.store-wal"_s), rows.lastIndexOf(u"write Morvane.store-wal"_s));
    EXPECT_GT(rows.lastIndexOf(u"sync Morvane.store"_s), rows.lastIndexOf(u"write Morvane.store"_s));

    for (const auto &step : {u"sync Morvane/Morvane.store.moving"_s, u"rename"_s, u"sync Morvane"_s}) {
        startOver();
        FileSpy spy(folders.data);
        spy.refuse(step);
        expectMove<Failed>(move(), notMoved + u"the copy could not be put in its place"_s);
    }
}

// A store whose last process died keeps its newest rows in the "-wal" file.
TEST_F(ChatStoreMoveTest, TheCompanionsCount)
{
    const QString elsewhere = home.filePath(u"elsewhere/s"_s);
    makeStore(elsewhere, {});
    makeStore(elsewhere, {u"a"_s}, [&] {
        const auto from = StoreFiles::withCompanions(elsewhere);
        const auto to = StoreFiles::withCompanions(source);
        for (std::size_t i = 0; i < from.size(); ++i)
            ASSERT_TRUE(QFile::copy(from[i], to[i]));
    });
    expectMoved();
}

TEST_F(ChatStoreMoveTest, AStoreThatIsNotOursIsLeftInPlaceAndAnEmptyOneGoes)
{
    defaults.setString(leftOldFileKey, u"former"_s);
    expectMove<NothingToMove>(move(), {}); // there is none
    EXPECT_EQ(defaults.string(leftOldFileKey), std::nullopt);
    for (const bool isDatabase : {false, true}) {
        defaults.removeAll();
        if (isDatabase)
            Database::open(source, Database::Access::Create).execute("CREATE TABLE notes(id TEXT)");
        else
            PrivateFile::write(source, QByteArray(5000, 'x'));
        const auto before = bytesOf(source);
        expectMove<NothingToMove>(
            move(), u"The shared default store is not readable as Morvane's; leaving it in place"_s);
        EXPECT_EQ(bytesOf(source), before);
        StoreFiles::remove(source);
    }
    defaults.removeAll();
    makeStore(source, {});
    expectMove<NothingToMove>(move(), {});
    EXPECT_FALSE(StoreFiles::exists(source));
}

TEST_F(ChatStoreMoveTest, WhatCannotMoveNowStaysWhereItIs)
{
    makeStore(source, {u"a"_s});
    vaultIsLocked = true;
    expectMove<WaitingForUnlock>(move(),
                                 u"The conversation store move is waiting for the app to be unlocked"_s);
    vaultIsLocked = false;
    auto otherKey = move();
    otherKey.sealing = std::make_shared<FakeFieldSealing>();
    expectMove<Failed>(
        otherKey, notMoved + u"5 sealed fields in the older store will not open with this computer's key"_s);
    EXPECT_TRUE(targetFiles().isEmpty());

    PrivateFile::write(path, QByteArray(5000, 'x'));
    expectMove<Failed>(move(), notMoved + u"the store at Morvane.store could not be opened"_s);
    EXPECT_EQ(bytesOf(path), QByteArray(5000, 'x'));

    StoreFiles::remove(path);
    makeStore(path, {u"new"_s});
    expectMove<KeptBoth>(move(),
                         u"Both chat stores hold conversations; left 1 in the older file untouched"_s);
    EXPECT_EQ(defaults.string(leftOldFileKey), source);
    expectChats(path, {u"new"_s});

    StoreFiles::remove(path); // what an earlier attempt left is replaced
    makeStore(path + u".moving"_s, {u"half"_s});
    PrivateFile::write(path + u"-wal"_s, "of a store that is gone");
    expectMoved();
}

TEST_F(ChatStoreMoveTest, ACopyThatIsNotWholeIsUndone)
{
    const auto changed = [](const QByteArray &sql) {
        return [sql](const QString &from, const QString &to) {
            const bool isCopied = Move::copyPrivately(from, to);
            if (to.endsWith(u".moving"))
                Database::open(to, Database::Access::ReadWrite).execute(sql);
            return isCopied;
        };
    };
    const QString missing = u"the copy is missing rows the original has"_s;
    const std::pair<std::function<bool(const QString &, const QString &)>, QString> cases[] = {
        {changed("DELETE FROM Conversation"), missing},
        {changed("DELETE FROM ChatMessage WHERE rowid=2"), missing},
        {changed("DELETE FROM ImportedDocument"), missing},
        {changed("UPDATE ChatMessage SET sealedContent=substr(sealedContent,2), sealedAttachmentName=NULL"),
         u"2 sealed fields did not come through the copy at their original length"_s},
        {[](const QString &, const QString &to) { return PrivateFile::write(to, "half"), true; },
         u"the store at Morvane.store.moving could not be opened"_s},
        {[](const QString &, const QString &to) { return PrivateFile::write(to, "half"), false; },
         u"the copy could not be written"_s},
        {[](const QString &, const QString &to) { return !QDir().mkpath(to + u"/in the way"_s); },
         u"a part-finished move into Morvane.store.moving could not be undone"_s},
    };
    makeStore(source, {u"a"_s});
    for (const auto &[copyFile, reason] : cases) {
        SCOPED_TRACE(reason.toStdString());
        auto faulty = move();
        faulty.copyFile = copyFile;
        expectMove<Failed>(faulty, notMoved + reason);
        EXPECT_TRUE(targetFiles().isEmpty());
    }
}

TEST_F(ChatStoreMoveTest, ASecondLaunchWaitsItsTimeAndLeavesTheMoveToTheFirst)
{
    makeStore(source, {u"a"_s});
    const QString lockPath = QFileInfo(path).path() + u"/.chat-store-move.lock"_s;
    PrivateFile::createFolder(QFileInfo(lockPath).path());
    auto first = FileLock::acquire(lockPath, milliseconds(0));
    ASSERT_TRUE(first);

    auto second = move();
    milliseconds waited{0};
    second.pause = [&](milliseconds duration) { waited += duration; };
    expectMove<AnotherLaunchIsMoving>(
        second, u"Another launch is moving the conversation store; leaving it to that one"_s);
    EXPECT_EQ(waited, std::chrono::seconds(10));

    // The first one finishes while the second waits.
    second.pause = [&](milliseconds) {
        defaults.setBoolean(movedFlagKey, true);
        first.reset();
    };
    expectMove<NothingToMove>(second, {});
    EXPECT_TRUE(StoreFiles::exists(source));
}

} // namespace

} // namespace morvane
