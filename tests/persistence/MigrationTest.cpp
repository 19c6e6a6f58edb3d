#include "persistence/Database.h"
#include "persistence/DepartedData.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/LegacyBundleMigration.h"
#include "persistence/LocalDataEraser.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "support/TestData.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString oldest = u"ai.quelmarfolk.macos"_s;
const QString older = u"ai.quelmarfolk.mac"_s;
const QString old = u"com.morvane.Quelmar"_s;

class MigrationTest : public testing::Test {
protected:
    [[nodiscard]] QString domain(const QString &name) const
    {
        return UserDefaultsSettingsRepository::path(folders, name);
    }

    void set(const QString &name, const QString &key, const SettingsValue &value)
    {
        UserDefaultsSettingsRepository(domain(name)).setValue(key, value);
    }

    void migrate()
    {
        const auto open = [this](const QString &name) {
            return UserDefaultsSettingsRepository::existing(domain(name));
        };
        LegacyBundleMigration::runOnce({folders, defaults, open, keychain, keychain});
        EXPECT_EQ(defaults.boolean(QString(LegacyBundleMigration::flagKey)), true);
    }

    void place(const QString &folder, const QString &names, const QByteArray &bytes = "x")
    {
        for (const QString &name : names.split(u' '))
            PrivateFile::write(folders.data + u'/' + folder + u'/' + name, bytes);
    }

    // Names of all items of a folder, with a blank between.
    [[nodiscard]] QString itemsOf(const QString &folder) const
    {
        const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
        return QDir(folders.data + u'/' + folder).entryList(everything, QDir::Name).join(u' ');
    }

    [[nodiscard]] static QByteArray bytesOf(const QString &path)
    {
        return PrivateFile::read(path, 1 << 20).value_or(QByteArray());
    }

    [[nodiscard]] QString supportPath(const QString &name) const
    {
        return folders.data + u"/Morvane/"_s + name;
    }

    QTemporaryDir home;
    SupportFolders folders = SupportFolders::inProfile(home.path());
    InMemorySettingsRepository defaults;
    InMemoryKeychainService keychain;
};

TEST_F(MigrationTest, SettingsOfOlderIdentifiersFillWhatIsNotSet)
{
    defaults.setString(u"aiModel"_s, u"mine"_s);
    defaults.setInteger(u"odd"_s, 1);
    set(oldest, u"aiModel"_s, u"older"_s);
    set(oldest, u"idleMinutes"_s, std::int64_t{9});
    set(older, u"idleMinutes"_s, std::int64_t{10});
    set(older, u"odd"_s, u"text"_s);
    set(old, u"memoryEnabled"_s, false);
    migrate();
    EXPECT_EQ(defaults.string(u"aiModel"_s), u"mine"_s);
    EXPECT_EQ(defaults.integer(u"odd"_s), 1);
    EXPECT_EQ(defaults.integer(u"idleMinutes"_s), 9);
    EXPECT_EQ(defaults.boolean(u"memoryEnabled"_s), false);

    set(old, u"late"_s, true);
    migrate(); // the flag is set
    EXPECT_EQ(defaults.value(u"late"_s), std::nullopt);
}

TEST_F(MigrationTest, SupportFilesMoveUnlessTheirNameIsTaken)
{
    place(oldest, u"code.json .hidden bin/ollama"_s);
    place(old, u"Morvane.store taken"_s, "old");
    place(u"Morvane"_s, u"taken"_s, "new");
    migrate();
    EXPECT_EQ(itemsOf(u"Morvane"_s), u".hidden Morvane.store bin code.json taken"_s);
    EXPECT_EQ(PrivateFile::read(folders.data + u"/Morvane/taken"_s, 9), "new");
    EXPECT_FALSE(QDir(folders.data + u'/' + oldest).exists());
    EXPECT_EQ(itemsOf(old), u"taken"_s);

    defaults.removeAll(); // a failure is logged, and the rest goes on
    QDir(folders.data + u"/Morvane"_s).removeRecursively();
    place(u"."_s, u"Morvane"_s, "a file where the folder belongs");
    keychain.addSecret(older, {u"account"_s, u"value"_s});
    migrate();
    EXPECT_EQ(itemsOf(old), u"taken"_s);
    EXPECT_EQ(keychain.read(u"account"_s), u"value"_s);
}

TEST_F(MigrationTest, AStoreMovesWithItsLogOrNotAtAll)
{
    const QString died = home.filePath(u"died"_s);
    Database database = Database::open(died, Database::Access::Create);
    database.execute(
        "PRAGMA journal_mode=WAL; CREATE TABLE notes(text); INSERT INTO notes VALUES('in the log')");
    for (const QString &folder : {oldest, older}) {
        place(folder, u"store"_s, bytesOf(died));
        place(folder, u"store-wal"_s, bytesOf(died + u"-wal"_s));
    }
    place(old, u"other other-wal single"_s);
    place(u"Morvane"_s, u"single-wal"_s);
    migrate();
    EXPECT_EQ(itemsOf(u"Morvane"_s), u"single-wal store"_s);
    const QString moved = folders.data + u"/Morvane/store"_s;
    EXPECT_EQ(Database::open(moved, Database::Access::ReadWrite).integer("SELECT count(*) FROM notes"), 1);
    EXPECT_EQ(itemsOf(older), u"store store-wal"_s);
    EXPECT_EQ(itemsOf(old), u"other other-wal single"_s) << "none of them is a store, and a log is kept";
}

TEST_F(MigrationTest, SecretsMoveAndNeverReplaceAnother)
{
    keychain.save(u"in use"_s, u"local-data-key"_s);
    keychain.addSecret(oldest, {u"local-data-key"_s, u"older"_s});
    keychain.addSecret(oldest, {u"ai-provider-api-key"_s, u"k"_s});
    keychain.addSecret(old, {u"empty"_s, QString()});
    keychain.setFailure(KeychainError(KeychainError::Operation::Save, KeychainStatus::NotAvailable));
    migrate();
    keychain.setFailure(std::nullopt);
    EXPECT_EQ(keychain.secretsOf(oldest).size(), 2U);
    defaults.removeAll();
    migrate();
    EXPECT_EQ(keychain.read(u"local-data-key"_s), u"in use"_s);
    EXPECT_EQ(keychain.read(u"ai-provider-api-key"_s), u"k"_s);
    using Secrets = std::vector<LegacySecretListing::Secret>;
    EXPECT_EQ(keychain.secretsOf(oldest), (Secrets{{u"local-data-key"_s, u"older"_s}}));
    EXPECT_EQ(keychain.secretsOf(old).size(), 1U);
}

TEST_F(MigrationTest, WhatDepartedPartsLeftGoesOnceAndNothingElse)
{
    const auto remove = [&] {
        DepartedData::removeCodingEngineOnce(folders, defaults);
        DepartedData::removeModulesOnce(folders, defaults);
    };
    const auto fate = [&](const QByteArray &line) {
        const QString name = QString::fromUtf8(line.sliced(line.indexOf(' ') + 1));
        defaults.removeAll();
        if (line.startsWith("setting"))
            defaults.setString(name, u"x"_s);
        else
            place(u"Morvane"_s, name);
        remove();
        const bool stays = defaults.keys().contains(name) || QFile::exists(supportPath(name));
        return stays ? u"stays"_s : u"goes"_s;
    };
    TestData::expect("persistence/departed.txt", fate);

    place(u"Morvane"_s, u"terminal routines.json"_s);
    remove(); // the flags are set
    EXPECT_TRUE(QFile::exists(supportPath(u"terminal"_s)) && QFile::exists(supportPath(u"routines.json"_s)));
}

TEST_F(MigrationTest, AnErasureTakesItsTableAndNothingElse)
{
    EXPECT_EQ(LocalDataEraser::remove(folders.data + u"/Morvane"_s).count, 0) << "no folder";
    const QString stays = u"bin code lib mine.txt store-Morvane studio"_s;
    place(u"Morvane"_s,
          u"memory-open.md memory-work.md memory-personal.md memory.md instructions.txt "
          "accepted-servers.sealed accepted-servers-dev.sealed voice-debug.log local-ai-setup.log "
          "Morvane.store Morvane.store-wal venice-measurements.json code.json email-accounts.json "
          "email-cache.json gift-people-2.json subscriptions.json telegram-notebook.json learn.json "
          "learn-last-unparseable-1 recurring-jobs.json routines.json price-alerts.json "
          "code-appdata/a telegram/b CompanionArt/c studio/images/d studio/notes.txt"_s);
    place(u"Morvane"_s, u"studio/models/e bin/ollama lib/f mine.txt code store-Morvane"_s);
    EXPECT_EQ(LocalDataEraser::remove(folders.data + u"/Morvane"_s).count, 28);
    EXPECT_EQ(itemsOf(u"Morvane"_s), stays);
    EXPECT_EQ(itemsOf(u"Morvane/studio"_s), u"models"_s);
    EXPECT_EQ(itemsOf(u"Morvane/studio/models"_s), u"e"_s);
}

TEST_F(MigrationTest, AnErasureAlsoTakesWhatANextStartWouldTakeOverAndNamesWhatStays)
{
    set(old, u"customSystemPrompt"_s, u"call me so"_s);
    place(old, u"memory.md"_s);
    place(u"MorvaneGPT set aside 2026-01-02 03.04.05"_s, u"keychain.keys"_s);
    place(u"."_s, u"default.store"_s, "of another program");
    const QString aimed = folders.data + u"/aimed"_s;
    place(u"aimed"_s, u"mine.txt"_s);
    place(u"ai.morvane.macos"_s, u"keychain.keys"_s);
    QFile::link(aimed, folders.data + u"/ai.morvane.macos/telegram"_s);
    place(u"Morvane"_s, u"memory.md/inside"_s); // whatever it is
    const QString reports = folders.state + u"/ai.morvane.macos"_s;
    for (const QString &name : {u"/crash-000000000001-2.txt"_s, u"/other.txt"_s})
        PrivateFile::write(reports + name, "words");
    const auto removed = LocalDataEraser::removeAll(folders);
    EXPECT_EQ(removed.count, 6);
    EXPECT_EQ(QDir(reports).entryList(QDir::Files), QStringList{u"other.txt"_s});
    EXPECT_EQ(removed.leftover, QStringList());
    EXPECT_FALSE(QFileInfo::exists(domain(old)));
    EXPECT_EQ(itemsOf(u"aimed"_s), u"mine.txt"_s) << "a link goes itself";
    EXPECT_EQ(itemsOf(u"."_s), u"Morvane ai.morvane.macos aimed com.morvane.Quelmar default.store"_s);
    EXPECT_TRUE(LocalDataEraser::limits().first().contains(
        u"Snapshots of the disk and other copies of this computer"_s));
}

} // namespace

} // namespace morvane
