#include "memory/MemoryStore.h"
#include "memory/MemoryFile.h"
#include "memory/NoteText.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/TestData.h"
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
    EXPECT_EQ(opened(), TestData::read("memory/memory.md"));
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

// The same words replace a note's text and undo brings it back; receipts go with their note; the file is
// written for a change alone.
TEST_F(MemoryStoreTest, NotesAndReceiptsFollowWhatIsRememberedForgottenAndUndone)
{
    std::vector<MemoryStore::Receipt> given;
    const auto outcome = [&](const QByteArray &line) {
        const QString verb = QString::fromUtf8(line).section(u' ', 0, 0);
        const QString text = QString::fromUtf8(line).section(u' ', 1);
        const auto before = onDisk();
        if (verb == u"start"_s)
            start("");
        else if (verb == u"remember"_s)
            given.push_back(store->remember(text).value_or(MemoryStore::Receipt()));
        else if (verb == u"forget"_s && store->forget(text) > 0)
            given.push_back(store->receipts().back());
        else if (verb == u"undo"_s)
            store->undo(given.at(text.toUInt()).id);
        else if (verb == u"dismiss"_s)
            store->dismiss(given.at(text.toUInt()).id);
        else if (verb == u"remove"_s)
            store->remove(given.at(text.toUInt()).factID);
        else if (verb == u"edit"_s)
            store->update(store->facts().front().id, text);
        QString all = stored() + (onDisk() == before ? u" (not written)"_s : QString());
        for (const auto &receipt : store->receipts())
            all += u"; receipt for %1, "_s.arg(receipt.text) +
                   (receipt.forgotten.empty() ? u"before: "_s + receipt.previousText.value_or(u"-"_s)
                                              : u"forgotten"_s);
        return all;
    };
    TestData::expect("memory/story.txt", outcome);
    EXPECT_EQ(store->matching(u"Dhabi lives"_s).size(), 1U);
    EXPECT_EQ(logged(u"Memory: recorded a fact (9 chars)"_s), 1);
    EXPECT_EQ(logged(u"Memory: a save was undone"_s), 2);
    EXPECT_EQ(logged(u"Memory: forgot 2 fact(s)"_s), 1);
}

TEST_F(MemoryStoreTest, ThePromptTakesTheNewestNotesThatFitItsBudget)
{
    EXPECT_EQ(start().promptBlock(), std::nullopt);
    record(u"likes tea|works at night"_s);
    EXPECT_EQ(store->promptBlock()->toStdString() + '\n', TestData::text("memory/prompt.txt"));
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
        store->load();
        for (const auto &fact : std::vector(store->facts())) // as they stood
            store->remove(fact.id);
        EXPECT_EQ(start().loadFailed(), isKeyLost);
        EXPECT_TRUE(store->isUnreadable());
        EXPECT_TRUE(store->facts().empty());
        EXPECT_EQ(store->remember(u"new"_s), std::nullopt);
        store->forget(u"new"_s);
        EXPECT_EQ(onDisk(), before);
        store->clear();
        EXPECT_FALSE(store->loadFailed());
        EXPECT_EQ(stored(), QString());
        record(u"again"_s);
        EXPECT_FALSE(start().loadFailed());
        EXPECT_EQ(texts(), u"again"_s);
    }
    EXPECT_EQ(logged(u"Memory: the notes file is sealed with a key this Mac no longer has"_s), 2);
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

TEST(NoteTextTest, TextsThatDifferInCaseSpacingAndPunctuationAreTheSameNote)
{
    const auto form = [](const QByteArray &text) { return NoteText::normalized(QString::fromUtf8(text)); };
    TestData::expect("memory/same_note.txt", form);
}

TEST(NoteTextTest, ADescriptionMatchesAsAWholeOrByAllItsLongWords)
{
    const auto verdict = [](const QByteArray &line) {
        const QStringList texts = QString::fromUtf8(line).split(u'|');
        return NoteText::matches(texts[0], texts[1]) ? u"matches"_s : u"no"_s;
    };
    TestData::expect("memory/matches.txt", verdict);
}

TEST(NoteTextTest, StoresTheFirstCharactersThatAPersonSees)
{
    const QString flag = u"\U0001F1E9\U0001F1EA"_s; // one character of four units
    EXPECT_EQ(NoteText::stored(u" \n"_s + flag.repeated(300)), flag.repeated(240));
}

} // namespace

} // namespace morvane
