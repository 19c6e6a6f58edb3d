#include "StoreFixture.h"
#include "persistence/PersistenceError.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "support/FileSpy.h"
#include "support/TestData.h"
#include "support/TextForms.h"

#include <QDirIterator>

#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString &path)
{
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class StoreOnDiskTest : public StoreFixture {
protected:
    void expectUnavailable(const QString &advice =
                               u"Restart the app. If the problem persists, use Settings → Privacy → Delete "
                               "All Local Data."_s)
    {
        try {
            (void)onDisk();
            ADD_FAILURE() << "the store opened";
        } catch (const PersistenceError &error) {
            EXPECT_EQ(error.userMessage(), u"Local storage could not be opened."_s);
            EXPECT_EQ(error.recoverySuggestion(), advice);
        }
    }

    void makeStoreWith(const QByteArray &sql)
    {
        PrivateFile::createFolder(folder);
        Database::open(path, Database::Access::Create).execute(sql);
    }

    // Whether a file of the profile holds these bytes.
    [[nodiscard]] bool isOnDisk(const QByteArray &bytes) const
    {
        QDirIterator files(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            if (bytesOf(files.next()).contains(bytes))
                return true;
        }
        return false;
    }

    const QString folder = QFileInfo(path).path();
};

TEST_F(StoreOnDiskTest, ASaveWaitsForTheDiskAndIsThereAtTheNextStart)
{
    QUuid id;
    {
        auto session = onDisk();
        const auto chat = makeChat(session.repository, u"title"_s, {u"first"_s, u"second"_s});
        id = chat->id();
        for (const QString &file : StoreFiles::withCompanions(path))
            EXPECT_EQ(modeOf(file), 0600U) << file.toStdString();
        EXPECT_EQ(modeOf(folder), 0700U);
        expectUnavailable(u"Another program has your chats open. Close it and try again."_s);

        FileSpy spy(folder);
        say(session.repository, *chat, u"third"_s);
        EXPECT_EQ(spy.steps(), QStringList({u"write Morvane.store-wal"_s, u"sync Morvane.store-wal"_s}));
        chat->messages().back()->setContent(u"never saved"_s);
    }
    auto session = onDisk();
    const auto chat = session.repository.find(id);
    ASSERT_TRUE(chat);
    EXPECT_EQ(chat->title(), u"title"_s);
    EXPECT_EQ(textsOf(*chat), QStringList({u"first"_s, u"second"_s, u"third"_s}));
}

// Every file that a session leaves, while it runs and after it has ended, in the shapes a text can be kept
// in; of what was removed not even the sealed form.
TEST_F(StoreOnDiskTest, NothingReadableReachesAFileAndWhatIsRemovedLeavesIt)
{
    const QString marked = u"Zebra-crossing-4711"_s;
    const auto expectNoTrace = [&] {
        for (const QByteArray &form : formsOf(marked))
            EXPECT_FALSE(isOnDisk(form));
    };
    QByteArrayList sealed;
    {
        auto session = onDisk();
        const auto chat = makeChat(session.repository, marked, {u"short"_s, QString(9000, u'x')});
        const auto message = say(session.repository, *chat, marked);
        message->setErrorMessage(marked);
        message->appendToolLine(marked, ToolLineState::running, {marked, marked});
        chat->setRollingSummary(marked);
        chat->setDraft(marked);
        session.repository.rename(*chat, marked + u" renamed"_s);
        session.repository.insert({.id = QUuid::createUuid(), .filename = marked});
        makeChat(session.repository, u"stays"_s, {u"stays"_s});
        expectNoTrace();
        for (const auto &one : chat->messages()) {
            sealed += one->sealedContent().toUtf8();
            EXPECT_TRUE(isOnDisk(sealed.constLast().sliced(6, 30)));
        }
        session.repository.remove(*chat);
    }
    expectNoTrace();
    for (const QByteArray &text : sealed)
        EXPECT_FALSE(isOnDisk(text.sliced(6, 30)));
}

TEST_F(StoreOnDiskTest, AStoreLooksLikeEveryOther)
{
    (void)onDisk();
    Database database = Database::open(path, Database::Access::ReadOnly);
    Statement rows = database.prepare("SELECT sql FROM sqlite_schema");
    QByteArray statements;
    while (rows.step())
        statements += rows.text().toUtf8() + '\n';
    EXPECT_TRUE(TestData::read("persistence/schema.sql").endsWith("\n" + statements)) << statements.data();
    EXPECT_EQ(database.integer("PRAGMA user_version"), 10200);
}

TEST_F(StoreOnDiskTest, AStoreFromBeforeSealingOpensAndIsSealedLater)
{
    makeStoreWith(TestData::read("persistence/before_sealing.sql"));
    auto session = onDisk();
    const auto chat = session.repository.all().at(0);
    const auto message = chat->messages().at(0);
    const auto document = session.context().fetch<ImportedDocument>().at(0);
    EXPECT_EQ(message->sealedContent(), u"Old text"_s);
    EXPECT_FALSE(message->hitTokenLimit());

    sealing->setLocked(true);
    session.repository.sealPlainTexts();
    EXPECT_EQ(chat->columns().sealedTitle, u"Old title"_s);
    sealing->setLocked(false);
    session.repository.sealPlainTexts();
    const auto &reply = message->columns();
    QStringList opened;
    for (const QString &text : {reply.sealedContent, *reply.sealedErrorMessage, *reply.sealedAttachmentName,
                                *reply.sealedToolSummary, chat->columns().sealedTitle,
                                *chat->columns().sealedRollingSummary, document->columns().sealedFilename})
        opened += FakeFieldSealing::isSealed(text) ? sealing->open(text) : u"(readable)"_s;
    EXPECT_EQ(opened.join(u'|'), u"Old text|Old error|old.pdf|Old tools|Old title|Old summary|old.pdf"_s);
    for (const QString &file : StoreFiles::withCompanions(path))
        EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(StoreOnDiskTest, AnOlderStoreTakesWhatCameSinceForGood)
{
    const QByteArray before12 = TestData::read("persistence/to_before_12.sql");
    const QByteArray before11 = TestData::read("persistence/to_before_11.sql");
    for (const QByteArray &downgrade : {before12, before12 + before11}) {
        QDir(folder).removeRecursively();
        {
            auto session = onDisk();
            makeChat(session.repository, u"marked"_s, {u"hello"_s});
        }
        makeStoreWith(downgrade);
        for (const bool isMarked : {false, true}) {
            auto session = onDisk();
            const auto chat = session.repository.all().at(0);
            EXPECT_EQ(textsOf(*chat), QStringList{u"hello"_s});
            EXPECT_EQ(chat->carriesScreenText() && chat->carriesPicture(), isMarked);
            EXPECT_EQ(chat->messages().front()->isSetAside(), isMarked);
            chat->noteScreenText();
            chat->notePicture();
            chat->messages().front()->setSetAside(true);
            session.repository.save();
        }
        makeStoreWith("UPDATE Conversation SET sealedDraft = 'begun'");
        auto session = onDisk();
        session.repository.sealPlainTexts();
        const auto chat = session.repository.all().at(0);
        EXPECT_TRUE(FakeFieldSealing::isSealed(chat->columns().sealedDraft.value_or(QString())));
        EXPECT_EQ(chat->draft(), u"begun"_s);
        Database database = Database::open(path, Database::Access::ReadOnly);
        EXPECT_EQ(database.integer("SELECT count(*) FROM sqlite_schema WHERE name = 'Conversation_plain' AND "
                                   "sql LIKE '%sealedDraft%'"),
                  1);
    }
}

TEST_F(StoreOnDiskTest, AStoreThatIsNotForThisVersionIsRefusedAndStaysAsItIs)
{
    const auto executing = [&](const QByteArray &sql) { return [this, sql] { makeStoreWith(sql); }; };
    const struct {
        const char *what;
        bool begins; // as a store of ours
        std::function<void()> change;
    } cases[] = {
        {"newer", true, executing("PRAGMA user_version = 10201")},
        {"lacks a column", true, executing("ALTER TABLE ChatMessage RENAME COLUMN statusRaw TO state")},
        {"another program's", false, executing("CREATE TABLE notes(id TEXT)")},
        {"no database", false, [&] { PrivateFile::write(path, QByteArray(5000, 'x')); }},
        {"cut off", true, [&] { QFile(path).resize(QFileInfo(path).size() - 4096); }},
        {"damaged list", true,
         [&] {
             QFile file(path);
             ASSERT_TRUE(file.open(QFile::ReadWrite) && file.seek(4096)); // the root page of the first table
             file.write(QByteArray(4096, '\xff'));
         }},
    };
    for (const auto &[what, begins, change] : cases) {
        SCOPED_TRACE(what);
        QDir(folder).removeRecursively();
        if (begins) {
            auto session = onDisk();
            makeChat(session.repository, u"title"_s, {u"hello"_s});
        }
        change();
        const auto before = bytesOf(path);
        expectUnavailable();
        EXPECT_EQ(bytesOf(path), before);
        EXPECT_FALSE(StoreFiles::exists(path + u"-wal"_s));
    }
}

// Damage that the list of chats doesn't meet is found by reading all of the file, and until that is decided
// on not a byte of the file changes; what is said meanwhile is in the log.
TEST_F(StoreOnDiskTest, ADamagedFileIsFoundLeftAsItIsAndSetAsideWithAllThatWasSaid)
{
    EXPECT_EQ(StoreFiles::examine(path, {}), StoreFiles::Condition::Unknown);
    {
        auto session = onDisk();
        makeChat(session.repository, u"title"_s, QStringList(60, QString(900, u'x')));
        EXPECT_EQ(StoreFiles::examine(path, {}), StoreFiles::Condition::Whole);
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite) && file.seek(file.size() / 2 / 4096 * 4096));
    file.write(QByteArray(4096, '\xff'));
    file.close();
    const auto before = bytesOf(path);
    EXPECT_EQ(StoreFiles::examine(path, {}), StoreFiles::Condition::Damaged);
    {
        auto session = onDisk();
        session.context().setWriting(Database::Writing::ToLogAlone);
        makeChat(session.repository, u"long"_s, {QString(6'000'000, u'y')}); // more than a log usually takes
        EXPECT_EQ(StoreFiles::examine(path, {}), StoreFiles::Condition::Damaged);
    }
    EXPECT_EQ(bytesOf(path), before);
    auto session = onDisk();
    session.context().setWriting(Database::Writing::ToLogAlone);
    EXPECT_EQ(titlesOf(session.repository.all()), QStringList({u"long"_s, u"title"_s}));
    EXPECT_EQ(StoreFiles::setAside(path), path + u".damaged-1"_s);
    EXPECT_EQ(bytesOf(path + u".damaged-1"_s), before);
    for (const QString &former : StoreFiles::withCompanions(path))
        EXPECT_FALSE(StoreFiles::exists(former));
    EXPECT_EQ(StoreFiles::openToRead(path + u".damaged-1"_s).integer("SELECT count(*) FROM Conversation"), 2);
}

TEST_F(StoreOnDiskTest, ADiskThatRefusesKeepsTheChangesForTheNextSave)
{
    auto ghosts = inMemory();
    const auto ghost = makeChat(ghosts.repository, u"ghost"_s, {u"boo"_s});
    for (const auto &step : {u"write Morvane.store-wal"_s, u"sync Morvane.store-wal"_s}) {
        SCOPED_TRACE(step.toStdString());
        QDir(folder).removeRecursively();
        QUuid id;
        {
            auto session = onDisk();
            auto &repository = session.repository;
            const auto chat = makeChat(repository, u"title"_s, {u"saved"_s});
            id = chat->id();
            {
                FileSpy spy(folder);
                spy.refuse(step);
                EXPECT_THROW(repository.adopt(*ghost), PersistenceError); // leaves nothing of it
                EXPECT_FALSE(session.context().hasChanges());
                EXPECT_THROW(say(repository, *chat, u"kept in memory"_s), PersistenceError);
                chat->messages().front()->setContent(u"changed"_s);
                EXPECT_THROW(repository.save(), PersistenceError);
                EXPECT_THROW(repository.create(), PersistenceError);
            }
            repository.save();
        }
        auto next = onDisk();
        EXPECT_EQ(textsOf(*next.repository.find(id)), QStringList({u"changed"_s, u"kept in memory"_s}));
        EXPECT_EQ(next.repository.count(), 1);
        EXPECT_EQ(next.repository.adopt(*ghost)->messages().size(), 1U);
    }
}

} // namespace

} // namespace morvane
