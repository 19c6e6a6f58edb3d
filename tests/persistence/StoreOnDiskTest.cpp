#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "persistence/PersistenceError.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "support/FakeFieldSealing.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype noLimit = 1 << 30;

// The store as one run of the application has it open.
struct Session {
    Session(const QString &profile, SettingsRepository &defaults, std::shared_ptr<const FieldSealing> sealing)
        : persistence(PersistenceController::onDisk({.folders = SupportFolders::inProfile(profile),
                                                     .defaults = defaults,
                                                     .isVaultLocked = [] { return false; },
                                                     .patience = std::chrono::milliseconds(0)},
                                                    std::move(sealing)))
    {}

    std::shared_ptr<ChatMessage> say(Conversation &conversation, const QString &text)
    {
        auto message = repository.makeMessage({.id = QUuid::createUuid(),
                                               .role = MessageRole::user,
                                               .content = text,
                                               .createdAt = clock.now(),
                                               .status = MessageStatus::delivered,
                                               .attachmentName = u"attached "_s + text});
        repository.add(message, conversation);
        return message;
    }

    ManualClock clock;
    std::unique_ptr<PersistenceController> persistence;
    ConversationRepository repository{persistence->mainContext(), clock};
};

mode_t modeOf(const QString &path)
{
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class StoreOnDiskTest : public testing::Test {
protected:
    [[nodiscard]] Session open() { return {home.path(), defaults, sealing}; }

    void expectUnavailable()
    {
        try {
            (void)open();
            ADD_FAILURE() << "the store opened";
        } catch (const PersistenceError &error) {
            EXPECT_EQ(error.userMessage(), u"Local storage could not be opened."_s);
            EXPECT_EQ(
                *error.recoverySuggestion(),
                u"Restart the app. If the problem persists, use Settings → Privacy → Delete All Local Data."_s);
        }
        EXPECT_EQ(log.lines().constLast(), u"persistence: Failed to open model container: <private>"_s);
    }

    void makeStoreWith(const QByteArray &sql)
    {
        PrivateFile::createFolder(QFileInfo(path).path());
        Database database = Database::open(path, Database::Access::Create);
        database.execute(sql);
    }

    QTemporaryDir home;
    QString path = ChatStoreLocation::storePath(SupportFolders::inProfile(home.path()));
    InMemorySettingsRepository defaults;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    LogCapture log;
};

TEST_F(StoreOnDiskTest, WhatWasSavedIsThereAtTheNextStart)
{
    QUuid id;
    {
        auto session = open();
        const auto chat = session.repository.create();
        id = chat->id();
        session.say(*chat, u"first"_s);
        session.say(*chat, u"second"_s)->setContent(u"never saved"_s);
        for (const QString &file : StoreFiles::withCompanions(path))
            EXPECT_EQ(modeOf(file), 0600U) << file.toStdString();
        EXPECT_EQ(modeOf(QFileInfo(path).path()), 0700U);
    }
    EXPECT_EQ(log.lines().constLast(), u"persistence: Model container opened (inMemory: false)"_s);
    auto session = open();
    const auto chat = session.repository.find(id);
    ASSERT_TRUE(chat);
    EXPECT_EQ(chat->title(), u"first"_s);
    ASSERT_EQ(chat->messages().size(), 2U);
    EXPECT_EQ(chat->messages()[1]->content(), u"second"_s);
}

// Every file that a session leaves, while it runs and after it has ended, in the shapes a text can be kept
// in.
TEST_F(StoreOnDiskTest, NothingReadableReachesAFile)
{
    const QString marked = u"Zebra-crossing-4711"_s;
    const auto expectNoTrace = [&] {
        QDirIterator files(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        int seen = 0;
        while (files.hasNext()) {
            const QByteArray bytes = PrivateFile::read(files.next(), noLimit).value();
            const QByteArray utf16(reinterpret_cast<const char *>(marked.utf16()), marked.size() * 2);
            for (const QByteArray &shape : {marked.toUtf8(), utf16, marked.toUtf8().toBase64().chopped(4)})
                EXPECT_FALSE(bytes.contains(shape)) << files.filePath().toStdString();
            ++seen;
        }
        EXPECT_GT(seen, 0);
    };
    {
        auto session = open();
        const auto chat = session.repository.create();
        const auto message = session.say(*chat, marked);
        message->setErrorMessage(marked);
        message->appendToolLine(marked);
        chat->setRollingSummary(marked);
        session.repository.rename(*chat, marked + u" renamed"_s);
        session.repository.insert({.id = QUuid::createUuid(), .filename = marked});
        expectNoTrace();
        session.repository.remove(*chat);
    }
    expectNoTrace();
}

TEST_F(StoreOnDiskTest, AStoreFromBeforeSealingOpensAndIsSealedLater)
{
    const QString id = u"6F9619FF-8B86-D011-B42D-00C04FC964FF"_s;
    makeStoreWith(
        "CREATE TABLE Conversation(rowid INTEGER PRIMARY KEY, id TEXT, title TEXT, createdAt INTEGER, "
        "updatedAt "
        "INTEGER, rollingSummary TEXT);"
        "CREATE TABLE ChatMessage(rowid INTEGER PRIMARY KEY, id TEXT, roleRaw TEXT, content TEXT, createdAt "
        "INTEGER, "
        "statusRaw TEXT, errorMessage TEXT, attachmentID TEXT, attachmentName TEXT, toolSummary TEXT, "
        "conversation "
        "TEXT);"
        "CREATE TABLE ImportedDocument(rowid INTEGER PRIMARY KEY, id TEXT, filename TEXT, fileExtension "
        "TEXT, "
        "fileSizeBytes INTEGER, extractedCharacterCount INTEGER, wasTruncated INTEGER, importedAt INTEGER);"
        "INSERT INTO Conversation VALUES(1,'6F9619FF-8B86-D011-B42D-00C04FC964FF','Old title',5,6,'Old "
        "summary');"
        "INSERT INTO ChatMessage VALUES(1,'AAAAAAAA-0000-0000-0000-000000000001','user','Old "
        "text',7,'delivered',"
        "'Old error',NULL,'old.pdf','Old tools','6F9619FF-8B86-D011-B42D-00C04FC964FF');"
        "INSERT INTO ImportedDocument "
        "VALUES(1,'BBBBBBBB-0000-0000-0000-000000000001','old.pdf','pdf',9,8,1,5)");
    auto session = open();
    const auto chat = session.repository.find(QUuid::fromString(id));
    ASSERT_TRUE(chat);
    const auto message = chat->messages().at(0);
    EXPECT_EQ(message->sealedContent(), u"Old text"_s);
    EXPECT_FALSE(message->hitTokenLimit());

    sealing->setLocked(true);
    session.repository.sealPlainTexts();
    EXPECT_EQ(chat->columns().sealedTitle, u"Old title"_s);
    sealing->setLocked(false);
    session.repository.sealPlainTexts();
    for (const auto &[sealed, opened] : {std::pair(message->sealedContent(), u"Old text"_s),
                                         {*message->columns().sealedErrorMessage, u"Old error"_s},
                                         {*message->columns().sealedAttachmentName, u"old.pdf"_s},
                                         {*message->columns().sealedToolSummary, u"Old tools"_s},
                                         {chat->columns().sealedTitle, u"Old title"_s},
                                         {*chat->columns().sealedRollingSummary, u"Old summary"_s}}) {
        EXPECT_TRUE(FakeFieldSealing::isSealed(sealed));
        EXPECT_EQ(sealing->open(sealed), opened);
    }
    EXPECT_EQ(log.lines().constLast(), u"persistence: Sealed 3 record(s) an older build left in the clear"_s);
    session.repository.sealPlainTexts();
    EXPECT_EQ(log.lines().count(log.lines().constLast()), 1);
    for (const QString &file : StoreFiles::withCompanions(path))
        EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(StoreOnDiskTest, AStoreThatIsNotForThisVersionIsRefusedAndStaysAsItIs)
{
    const auto madeBySession = [&] {
        auto session = open();
        session.say(*session.repository.create(), u"hello"_s);
    };
    const struct {
        const char *what;
        std::function<void()> make;
    } cases[] = {
        {"newer",
         [&] {
             madeBySession();
             makeStoreWith("PRAGMA user_version = 10001");
         }},
        {"another program's",
         [&] { makeStoreWith("CREATE TABLE notes(id TEXT); INSERT INTO notes VALUES('a')"); }},
        {"lacks a column",
         [&] {
             madeBySession();
             makeStoreWith("ALTER TABLE ChatMessage RENAME COLUMN statusRaw TO state");
         }},
        {"no database", [&] { PrivateFile::write(path, QByteArray(5000, 'x')); }},
        {"cut off",
         [&] {
             madeBySession();
             QFile(path).resize(QFileInfo(path).size() - 4096);
         }},
        {"damaged list",
         [&] {
             madeBySession();
             QFile file(path);
             ASSERT_TRUE(file.open(QFile::ReadWrite));
             file.seek(4096);
             file.write(QByteArray(4096, '\xff')); // the root page of the first table
         }},
    };
    for (const auto &[what, make] : cases) {
        SCOPED_TRACE(what);
        QDir(QFileInfo(path).path()).removeRecursively();
        make();
        const auto before = PrivateFile::read(path, noLimit);
        expectUnavailable();
        EXPECT_EQ(PrivateFile::read(path, noLimit), before);
        EXPECT_FALSE(StoreFiles::exists(path + u"-wal"_s));
    }
}

TEST_F(StoreOnDiskTest, OneProcessAtATimeHasTheStoreOpen)
{
    auto first = open();
    expectUnavailable();
    first.say(*first.repository.create(), u"goes on"_s);
    first.persistence.reset();
    EXPECT_EQ(open().repository.count(), 1);
}

TEST_F(StoreOnDiskTest, AFolderThatCannotBeWrittenIsUnavailable)
{
    open().repository.create();
    const QString folder = QFileInfo(path).path();
    const auto before = PrivateFile::read(path, noLimit);
    ::chmod(QFile::encodeName(home.path()).constData(), 0755);
    ::chmod(QFile::encodeName(SupportFolders::inProfile(home.path()).data).constData(), 0755);
    ::chmod(QFile::encodeName(folder).constData(), 0555);
    const uid_t self = ::geteuid();
    if (self == 0) { // permissions don't stop the superuser
        ASSERT_EQ(::seteuid(65534), 0);
    }
    expectUnavailable();
    ASSERT_EQ(::seteuid(self), 0);
    ::chmod(QFile::encodeName(folder).constData(), 0700);
    EXPECT_EQ(PrivateFile::read(path, noLimit), before);
}

TEST_F(StoreOnDiskTest, AFullDiskKeepsTheChangesForTheNextSave)
{
    auto session = open();
    const auto chat = session.repository.create();
    const auto saved = session.say(*chat, u"saved"_s);

    ::signal(SIGXFSZ, SIG_IGN); // a write past the limit then fails like one on a full disk
    rlimit former{};
    ::getrlimit(RLIMIT_FSIZE, &former);
    const rlimit none{1, former.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
    std::shared_ptr<ChatMessage> unsaved;
    EXPECT_THROW(unsaved = session.say(*chat, u"kept in memory"_s), PersistenceError);
    saved->setContent(u"changed"_s);
    EXPECT_THROW(session.repository.save(), PersistenceError);
    EXPECT_THROW(session.repository.create(), PersistenceError);
    EXPECT_EQ(chat->messages().size(), 2U);
    ::setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_TRUE(log.lines().contains(u"persistence: Save failed: <private>"_s));

    session.repository.save();
    const QUuid id = chat->id();
    session.persistence.reset();
    auto next = open();
    const auto reopened = next.repository.find(id);
    ASSERT_EQ(reopened->messages().size(), 2U);
    EXPECT_EQ(reopened->messages()[0]->content(), u"changed"_s);
    EXPECT_EQ(reopened->messages()[1]->content(), u"kept in memory"_s);
    EXPECT_EQ(next.repository.count(), 1);
}

TEST_F(StoreOnDiskTest, AdoptingThatCannotBeSavedLeavesTheStoreAsBefore)
{
    auto session = open();
    const auto ghostStore = PersistenceController::inMemory(sealing);
    ConversationRepository ghosts(ghostStore->mainContext(), session.clock);
    const auto ghost = ghosts.create();
    ghosts.add(
        ghosts.makeMessage({.id = QUuid::createUuid(), .role = MessageRole::user, .content = u"boo"_s}),
        *ghost);

    ::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    ::getrlimit(RLIMIT_FSIZE, &former);
    const rlimit none{1, former.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_THROW(session.repository.adopt(*ghost), PersistenceError);
    ::setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_FALSE(session.persistence->mainContext().hasChanges());
    EXPECT_EQ(session.repository.count(), 0);
    EXPECT_EQ(session.repository.adopt(*ghost)->messages().size(), 1U);
    EXPECT_EQ(session.repository.count(), 1);
}

} // namespace

} // namespace morvane
