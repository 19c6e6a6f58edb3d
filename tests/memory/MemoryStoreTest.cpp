#include "memory/MemoryStore.h"

#include "memory/MemoryFile.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString keyGoneLine =
    u"persistence: Memory: the notes file is sealed with a key this Mac no longer has"_s;
const QString notWrittenLine = u"persistence: Memory: could not write the notes file: <private>"_s;

class MemoryStoreTest : public testing::Test {
protected:
    QString path(const QString &name = u"memory.md"_s) const { return home.path() + u"/notes/"_s + name; }

    void write(const QString &name, const QByteArray &plain) { vault.writeSealed(plain, path(name)); }

    QByteArray onDisk(const QString &name = u"memory.md"_s) const
    {
        return PrivateFile::read(path(name), 1 << 24).value_or(QByteArray());
    }

    QByteArray opened() const { return vault.open(onDisk()).value_or(QByteArray("(not opened)")); }

    MemoryStore &start()
    {
        store.reset();
        store = std::make_unique<MemoryStore>(settings, vault, clock, home.path() + u"/notes"_s);
        return *store;
    }

    QStringList texts() const
    {
        QStringList all;
        for (const auto &fact : store->facts())
            all.append(fact.text);
        return all;
    }

    // Another key than the one that sealed the files so far.
    void loseKey() { keychain.remove(LocalDataVault::keyAccount); }

    QTemporaryDir home;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    ManualClock clock;
    std::unique_ptr<MemoryStore> store;
};

TEST_F(MemoryStoreTest, WritesOneSealedPrivateFileAndReadsItAgain)
{
    start().record(u"likes tea"_s);
    store->record(u"works\r\nat\u2028night"_s); // one line in the file, whatever it holds
    EXPECT_TRUE(SealedForm::isSealedFile(onDisk()));
    EXPECT_EQ(QFile::permissions(path()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(opened(),
              "# What Morvane remembers\n\nThese are Morvane's notes about you from your chats. Add, "
              "edit and delete them in Settings; the app reads them fresh on every launch. The file "
              "itself is encrypted on this Mac, so a text editor shows only ciphertext.\n\n"
              "- likes tea\n- works at night\n");
    EXPECT_EQ(start().facts().size(), 2);
    EXPECT_EQ(texts(), (QStringList{u"likes tea"_s, u"works at night"_s}));
    EXPECT_EQ(store->facts().front().recordedAt, clock.now());
}

TEST_F(MemoryStoreTest, ReadsBulletsOfAHandEditedFileAsTheyStand)
{
    const QString longNote(300, u'x');
    write(
        u"memory.md"_s,
        ("# My heading\r\n- one\r\n  -  two  \n* three\n-four\n- \n-\n\n- " + longNote + "\n- one").toUtf8());
    start();
    EXPECT_EQ(texts(), (QStringList{u"one"_s, u"two"_s, longNote, u"one"_s}));

    PrivateFile::write(path(), "- never sealed"); // from before sealing
    start();
    EXPECT_EQ(texts(), QStringList{u"never sealed"_s});
    write(u"memory.md"_s, "- bad \xff");
    EXPECT_TRUE(start().facts().empty());
    EXPECT_FALSE(store->loadFailed());
}

TEST_F(MemoryStoreTest, KeepsTheNewestEighty)
{
    QStringList notes;
    for (int i = 0; i < 83; ++i)
        notes.append(u"note %1"_s.arg(i));
    write(u"memory.md"_s, MemoryFile::compose(notes));
    start();
    EXPECT_EQ(texts(), notes.sliced(3));
    const auto receipt = store->remember(u"one more"_s);
    EXPECT_EQ(store->facts().size(), 80);
    EXPECT_EQ(texts().first(), u"note 4"_s);
    for (int i = 0; i < 80; ++i)
        store->record(u"later %1"_s.arg(i));
    const QByteArray before = onDisk();
    store->undo(receipt->id); // its note fell off the list
    EXPECT_EQ(onDisk(), before);
}

TEST_F(MemoryStoreTest, TheSameWordsReplaceTheTextAndUndoBringsItBack)
{
    start();
    const LogCapture log;
    const auto first = store->remember(u"likes tea"_s);
    const auto second = store->remember(u" Likes  TEA."_s);
    EXPECT_EQ(texts(), QStringList{u"Likes  TEA."_s});
    EXPECT_EQ(second->factID, first->factID);
    EXPECT_EQ(first->previousText, std::nullopt);
    EXPECT_EQ(second->previousText, u"likes tea"_s);
    store->undo(second->id);
    EXPECT_EQ(texts(), QStringList{u"likes tea"_s});
    store->undo(second->id); // used up
    store->undo(first->id);
    EXPECT_TRUE(texts().isEmpty());
    EXPECT_TRUE(MemoryFile::notes(opened())->isEmpty());
    EXPECT_EQ(log.lines(), (QStringList{u"persistence: Memory: recorded a fact (9 chars)"_s,
                                        u"persistence: Memory: a save was undone"_s,
                                        u"persistence: Memory: a save was undone"_s}));
    EXPECT_EQ(store->remember(u" \n"_s), std::nullopt);

    const QString tooLong(300, u'x');
    EXPECT_EQ(store->remember(tooLong)->text, QString(240, u'x'));
    EXPECT_EQ(store->remember(tooLong)->previousText, QString(240, u'x'));
}

TEST_F(MemoryStoreTest, ReceiptsAreTheLastThreeAndGoWithTheirNote)
{
    start();
    for (const QString &note : {u"one"_s, u"two"_s, u"three"_s, u"four"_s})
        store->remember(note);
    ASSERT_EQ(store->receipts().size(), 3);
    EXPECT_EQ(store->receipts().front().text, u"two"_s);
    store->dismiss(store->receipts().front().id);
    EXPECT_EQ(store->facts().size(), 4);
    store->remove(store->receipts().front().factID);
    EXPECT_EQ(store->forget(u"four"_s), 1);
    EXPECT_TRUE(store->receipts().empty());
    EXPECT_EQ(texts(), (QStringList{u"one"_s, u"two"_s}));
}

TEST_F(MemoryStoreTest, ForgetsWhatMatchesAndWritesOnlyThen)
{
    start();
    for (const QString &note : {u"coffee, then tea"_s, u"tea"_s, u"lives in Abu Dhabi"_s})
        store->record(note);
    const QByteArray before = onDisk();
    EXPECT_EQ(store->forget(u"cocoa"_s), 0);
    EXPECT_EQ(store->forget(u"?!"_s), 0);
    EXPECT_EQ(onDisk(), before);
    EXPECT_EQ(store->matching(u"tea coffee"_s).size(), 1);
    const LogCapture log;
    EXPECT_EQ(store->forget(u"Tea."_s), 2);
    EXPECT_EQ(log.lines(), QStringList{u"persistence: Memory: forgot 2 fact(s)"_s});
    EXPECT_EQ(MemoryFile::notes(opened()), QStringList{u"lives in Abu Dhabi"_s});
}

TEST_F(MemoryStoreTest, EditsAreTrimmedBoundedAndStored)
{
    start().record(u"likes tea"_s);
    const QUuid id = store->facts().front().id;
    store->update(id, u"  \n"_s);
    EXPECT_EQ(texts(), QStringList{u"likes tea"_s});
    store->update(id, u' ' + QString(300, u'y'));
    EXPECT_EQ(texts(), QStringList{QString(240, u'y')});
    EXPECT_EQ(store->facts().front().id, id);
    EXPECT_EQ(*MemoryFile::notes(opened()), texts());
}

TEST_F(MemoryStoreTest, ThePromptTakesTheNewestNotesThatFitItsBudget)
{
    EXPECT_EQ(start().promptBlock(), std::nullopt);
    store->record(u"likes tea"_s);
    store->record(u"lives in Ghent"_s);
    EXPECT_EQ(store->promptBlock(),
              u"What you remember about this person from earlier conversations:\n- lives in Ghent\n- likes "
              u"tea\n\nUse these naturally when they're relevant. Don't recite them back or mention that you "
              u"have notes unless asked."_s);
    settings.setMemoryEnabled(false);
    EXPECT_EQ(store->promptBlock(), std::nullopt);
    settings.setMemoryEnabled(true);

    // A line of 3,999 characters is the longest that fits; a family of 7 code points is one character.
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s;
    write(u"memory.md"_s, MemoryFile::compose({u"old"_s, family + QString(3996, u'x')}));
    EXPECT_TRUE(start().promptBlock());
    EXPECT_FALSE(store->promptBlock()->contains(u"old"_s));
    write(u"memory.md"_s, MemoryFile::compose({u"old"_s, QString(3998, u'x')}));
    EXPECT_EQ(start().promptBlock(), std::nullopt); // nothing behind the one that stops it either
}

TEST_F(MemoryStoreTest, AFileUnderALostKeyIsKeptUntilItIsCleared)
{
    start().record(u"likes tea"_s);
    const QByteArray sealed = onDisk();
    loseKey();
    const LogCapture log;
    start();
    EXPECT_TRUE(store->loadFailed());
    EXPECT_TRUE(log.lines().contains(keyGoneLine));
    store->remember(u"new"_s);
    store->forget(u"new"_s);
    EXPECT_EQ(onDisk(), sealed);
    store->clear();
    EXPECT_FALSE(store->loadFailed());
    EXPECT_TRUE(log.lines().contains(u"persistence: Memory: cleared at user request"_s));
    EXPECT_TRUE(MemoryFile::notes(opened())->isEmpty());
    EXPECT_FALSE(start().loadFailed());
}

TEST_F(MemoryStoreTest, WhileLockedChangesStayInMemoryAndAnUnlockReadsAnew)
{
    start().record(u"likes tea"_s);
    const QByteArray sealed = onDisk();
    vault.lock();
    const LogCapture log;
    store->record(u"unwritten"_s);
    EXPECT_EQ(store->facts().size(), 2);
    EXPECT_EQ(onDisk(), sealed);
    EXPECT_TRUE(log.lines().contains(notWrittenLine));
    EXPECT_TRUE(start().loadFailed()); // a start behind the lock
    vault.unlock();
    store->readAnew();
    EXPECT_FALSE(store->loadFailed());
    EXPECT_EQ(texts(), QStringList{u"likes tea"_s});
}

TEST_F(MemoryStoreTest, AFileThatTheSystemWontReadIsNotWrittenOver)
{
    PrivateFile::write(path(), QByteArray((16 << 20) + 1, 'x')); // stands for any failure to read
    start();
    EXPECT_TRUE(store->facts().empty());
    EXPECT_FALSE(store->loadFailed());
    const LogCapture log;
    store->record(u"likes tea"_s);
    EXPECT_TRUE(log.lines().contains(notWrittenLine));
    EXPECT_EQ(QFileInfo(path()).size(), (16 << 20) + 1);
    store->clear();
    store->record(u"likes tea"_s);
    EXPECT_EQ(*MemoryFile::notes(opened()), QStringList{u"likes tea"_s});
}

TEST_F(MemoryStoreTest, FoldsTheThreeOldFilesIntoOne)
{
    write(u"memory.md"_s, "- kept\n- Same note\n");
    write(u"memory-personal.md"_s, "- personal\n- !!\n");
    PrivateFile::write(path(u"memory-open.md"_s), "heading\n- same  note.\n- open\n"); // from before sealing
    const LogCapture log;
    start();
    EXPECT_EQ(texts(), (QStringList{u"kept"_s, u"Same note"_s, u"open"_s, u"personal"_s}));
    EXPECT_TRUE(SealedForm::isSealedFile(onDisk()));
    EXPECT_EQ(QDir(home.path() + u"/notes"_s).entryList(QDir::Files), QStringList{u"memory.md"_s});
    EXPECT_EQ(log.lines(), QStringList{u"persistence: Memory: folded 2 partition file(s) into one"_s});
}

TEST_F(MemoryStoreTest, TheFoldWaitsWhileAFileCantBeOpened)
{
    const QStringList names{u"memory.md"_s, u"memory-work.md"_s};
    for (const QString &foreign : names) {
        for (const QString &name : names)
            PrivateFile::write(path(name), "- " + name.toLatin1());
        InMemoryKeychainService otherKeychain;
        LocalDataVault(otherKeychain).writeSealed("- foreign", path(foreign));
        const QByteArrayList before{onDisk(names[0]), onDisk(names[1])};
        const LogCapture log;
        start();
        EXPECT_EQ((QByteArrayList{onDisk(names[0]), onDisk(names[1])}), before);
        EXPECT_EQ(log.lines().first(),
                  u"persistence: Memory: %1 could not be opened; the merge waits"_s.arg(foreign));
    }
}

TEST_F(MemoryStoreTest, WithoutAFolderNotesLastForTheRun)
{
    MemoryStore memory(settings, vault, clock, QString());
    memory.record(u"likes tea"_s);
    EXPECT_EQ(memory.facts().size(), 1);
    EXPECT_TRUE(QDir(home.path()).isEmpty());
}

} // namespace

} // namespace morvane
