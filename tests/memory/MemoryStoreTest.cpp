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
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString notesFile = u"memory.md"_s;
const QString notWrittenLine = u"Memory: could not write the notes file: <private>"_s;

class MemoryStoreTest : public testing::Test {
protected:
    QString path(const QString &name = notesFile) const { return directory + u'/' + name; }

    QByteArray onDisk(const QString &name = notesFile) const
    {
        return PrivateFile::read(path(name), 1 << 25).value_or(QByteArray());
    }

    QByteArray opened() const { return vault.open(onDisk()).value_or(QByteArray("(not opened)")); }

    // The notes in the file, with a bar between.
    QString stored() const { return MemoryFile::notes(opened())->join(u'|'); }

    // The notes of the store.
    QString texts() const
    {
        QStringList all;
        for (const auto &fact : store->facts())
            all.append(fact.text);
        return all.join(u'|');
    }

    // A new run over the file; over one with these bytes, sealed, when they are given.
    MemoryStore &start(const std::optional<QByteArray> &plain = {})
    {
        if (plain)
            vault.writeSealed(*plain, path());
        store = std::make_unique<MemoryStore>(settings, vault, clock, directory);
        return *store;
    }

    void record(const QString &notes)
    {
        for (const QString &note : notes.split(u'|'))
            store->record(note);
    }

    qsizetype logged(const QString &line) const { return log.lines().count(u"persistence: "_s + line); }

    QTemporaryDir home;
    const QString directory = home.filePath(u"notes"_s);
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    ManualClock clock;
    LogCapture log;
    std::unique_ptr<MemoryStore> store;
};

TEST_F(MemoryStoreTest, WritesOneSealedPrivateFileAndReadsItAgain)
{
    start();
    record(u"likes tea|works\r\nat\u2028night"_s); // one line in the file, whatever it holds
    EXPECT_TRUE(SealedForm::isSealedFile(onDisk()));
    EXPECT_FALSE(QFile::permissions(path()) & (QFile::ReadGroup | QFile::ReadOther));
    EXPECT_EQ(opened(),
              "# What Morvane remembers\n\nThese are Morvane's notes about you from your chats. Add, "
              "edit and delete them in Settings; the app reads them fresh on every launch. The file "
              "itself is encrypted on this Mac, so a text editor shows only ciphertext.\n\n"
              "- likes tea\n- works at night\n");
    EXPECT_EQ(start().facts().front().recordedAt, clock.now());
    EXPECT_EQ(texts(), u"likes tea|works at night"_s);

    MemoryStore memory(settings, vault, clock, QString()); // without a folder notes last for the run
    memory.record(u"likes tea"_s);
    EXPECT_EQ(memory.facts().size(), 1);
    EXPECT_EQ(QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{u"notes"_s});
}

TEST_F(MemoryStoreTest, ReadsBulletsOfAHandEditedFileAsTheyStand)
{
    const QByteArray longNote(300, 'x');
    start("# My heading\r\n- one\r\n  -  two  \n* three\n-four\n- \n-\n\n- " + longNote + "\n- one");
    EXPECT_EQ(texts(), u"one|two|"_s + QString::fromLatin1(longNote) + u"|one"_s);
    PrivateFile::write(path(), "- never sealed"); // from before sealing
    start();
    EXPECT_EQ(texts(), u"never sealed"_s);
    EXPECT_TRUE(start("- bad \xff").facts().empty());
    EXPECT_FALSE(store->loadFailed());
}

TEST_F(MemoryStoreTest, KeepsTheNewestEighty)
{
    QStringList notes;
    for (int i = 0; i < 83; ++i)
        notes.append(u"note %1"_s.arg(i));
    start(MemoryFile::compose(notes));
    EXPECT_EQ(texts(), notes.sliced(3).join(u'|'));
    const auto receipt = store->remember(u"one more"_s);
    EXPECT_EQ(store->facts().size(), 80);
    EXPECT_EQ(store->facts().front().text, u"note 4"_s);
    record(notes.replaceInStrings(u"note"_s, u"later"_s).join(u'|'));
    const QByteArray before = onDisk();
    store->undo(receipt->id); // its note fell off the list
    EXPECT_EQ(onDisk(), before);
}

TEST_F(MemoryStoreTest, TheSameWordsReplaceTheTextAndUndoBringsItBack)
{
    start();
    const auto first = store->remember(u"likes tea"_s);
    const auto second = store->remember(u" Likes  TEA."_s);
    EXPECT_EQ(stored(), u"Likes  TEA."_s);
    EXPECT_EQ(second->factID, first->factID);
    EXPECT_EQ(first->previousText, std::nullopt);
    EXPECT_EQ(second->previousText, u"likes tea"_s);
    for (int times = 0; times < 2; ++times) { // the second time it is used up
        store->undo(second->id);
        EXPECT_EQ(stored(), u"likes tea"_s);
    }
    store->undo(first->id);
    EXPECT_EQ(stored(), QString());
    EXPECT_EQ(logged(u"Memory: recorded a fact (9 chars)"_s), 1);
    EXPECT_EQ(logged(u"Memory: a save was undone"_s), 2);
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
    EXPECT_EQ(stored(), u"one|two"_s);
}

TEST_F(MemoryStoreTest, ForgetsWhatMatchesAndWritesOnlyThen)
{
    start();
    record(u"coffee, then tea|tea|lives in Abu Dhabi"_s);
    const QByteArray before = onDisk();
    EXPECT_EQ(store->forget(u"cocoa"_s) + store->forget(u"?!"_s), 0);
    EXPECT_EQ(onDisk(), before);
    EXPECT_EQ(store->matching(u"tea coffee"_s).size(), 1);
    EXPECT_EQ(store->forget(u"Tea."_s), 2);
    EXPECT_EQ(logged(u"Memory: forgot 2 fact(s)"_s), 1);
    EXPECT_EQ(stored(), u"lives in Abu Dhabi"_s);
    const QUuid id = store->facts().front().id;
    store->update(id, u"  \n"_s); // an edit is trimmed and bounded
    EXPECT_EQ(texts(), u"lives in Abu Dhabi"_s);
    store->update(id, u' ' + QString(300, u'y'));
    EXPECT_EQ(stored(), QString(240, u'y'));
    EXPECT_EQ(store->facts().front().id, id);
}

TEST_F(MemoryStoreTest, ThePromptTakesTheNewestNotesThatFitItsBudget)
{
    EXPECT_EQ(start().promptBlock(), std::nullopt);
    record(u"likes tea|lives in Ghent"_s);
    EXPECT_EQ(store->promptBlock(),
              u"What you remember about this person from earlier conversations:\n- lives in Ghent\n- likes "
              u"tea\n\nUse these naturally when they're relevant. Don't recite them back or mention that you "
              u"have notes unless asked."_s);
    settings.setMemoryEnabled(false);
    EXPECT_EQ(store->promptBlock(), std::nullopt);
    settings.setMemoryEnabled(true);

    // A line of 3,999 characters is the longest that fits; a family of 7 code points is one character.
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s;
    start(MemoryFile::compose({u"old"_s, family + QString(3996, u'x')}));
    ASSERT_TRUE(store->promptBlock());
    EXPECT_FALSE(store->promptBlock()->contains(u"old"_s));
    start(MemoryFile::compose({u"old"_s, QString(3998, u'x')}));
    EXPECT_EQ(store->promptBlock(), std::nullopt); // nothing behind the one that stops it either
}

TEST_F(MemoryStoreTest, AFileThatDoesNotOpenOrCannotBeReadIsKeptUntilItIsCleared)
{
    const QByteArray tooLarge((16 << 20) + 1, 'x'); // stands for any failure to read
    for (const bool isKeyLost : {true, false}) {
        start("- likes tea");
        if (isKeyLost)
            keychain.remove(LocalDataVault::keyAccount);
        else
            PrivateFile::write(path(), tooLarge);
        const QByteArray before = onDisk();
        EXPECT_EQ(start().loadFailed(), isKeyLost);
        EXPECT_TRUE(store->facts().empty());
        store->remember(u"new"_s);
        store->forget(u"new"_s);
        EXPECT_EQ(onDisk(), before);
        store->clear();
        EXPECT_FALSE(store->loadFailed());
        EXPECT_EQ(stored(), QString());
        record(u"again"_s);
        EXPECT_FALSE(start().loadFailed());
        EXPECT_EQ(texts(), u"again"_s);
    }
    EXPECT_EQ(logged(u"Memory: the notes file is sealed with a key this Mac no longer has"_s), 1);
    EXPECT_EQ(logged(notWrittenLine), 2);
    EXPECT_EQ(logged(u"Memory: cleared at user request"_s), 2);
}

TEST_F(MemoryStoreTest, WhileLockedChangesStayInMemoryAndAnUnlockReadsAnew)
{
    start("- likes tea");
    const QByteArray sealed = onDisk();
    vault.lock();
    record(u"unwritten"_s);
    EXPECT_EQ(texts(), u"likes tea|unwritten"_s);
    EXPECT_EQ(onDisk(), sealed);
    EXPECT_EQ(logged(notWrittenLine), 1);
    EXPECT_TRUE(start().loadFailed()); // a start behind the lock
    vault.unlock();
    store->readAnew();
    EXPECT_FALSE(store->loadFailed());
    EXPECT_EQ(texts(), u"likes tea"_s);
}

TEST_F(MemoryStoreTest, FoldsTheThreeOldFilesIntoOneWhenAllOfThemOpen)
{
    const QString personal = u"memory-personal.md"_s;
    InMemoryKeychainService otherKeychain;
    const LocalDataVault otherVault(otherKeychain);
    const auto place = [&](const QString &foreign) {
        for (const auto &[name, bytes] :
             {std::pair(notesFile, "- kept\n- Same note\n"), {personal, "- personal\n- !!\n"}})
            (name == foreign ? otherVault : vault).writeSealed(bytes, path(name));
        PrivateFile::write(path(u"memory-open.md"_s), "heading\n- same  note.\n- open\n"); // never sealed
        PrivateFile::write(path(u"memory-work.md"_s), "- work\n");
    };
    for (const QString &foreign : {notesFile, personal}) {
        place(foreign);
        const QByteArrayList before{onDisk(), onDisk(personal)};
        start();
        EXPECT_EQ((QByteArrayList{onDisk(), onDisk(personal)}), before);
        EXPECT_EQ(logged(u"Memory: %1 could not be opened; the merge waits"_s.arg(foreign)), 1);
        EXPECT_EQ(QDir(directory).entryList(QDir::Files).size(), 4);
    }
    place({});
    start();
    EXPECT_EQ(texts(), u"kept|Same note|open|work|personal"_s);
    EXPECT_TRUE(SealedForm::isSealedFile(onDisk()));
    EXPECT_EQ(QDir(directory).entryList(QDir::Files), QStringList{notesFile});
    EXPECT_EQ(logged(u"Memory: folded 3 partition file(s) into one"_s), 1);
}

} // namespace

} // namespace morvane
