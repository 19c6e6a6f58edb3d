#include "persistence/DepartedData.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/LegacyBundleMigration.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "support/LogCapture.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString currentFlag = QString(LegacyBundleMigration::flagKey);

class MigrationTest : public testing::Test {
protected:
    void legacySetting(const QString &identifier, const QString &key, const SettingsValue &value)
    {
        UserDefaultsSettingsRepository(UserDefaultsSettingsRepository::path(folders, identifier))
            .setValue(key, value);
    }

    void migrate()
    {
        LegacyBundleMigration::runOnce({folders, defaults,
                                        [this](const QString &identifier) {
                                            return UserDefaultsSettingsRepository::existing(
                                                UserDefaultsSettingsRepository::path(folders, identifier));
                                        },
                                        keychain, keychain});
    }

    void place(const QString &relative, const QByteArray &bytes = "x")
    {
        PrivateFile::write(folders.data + u'/' + relative, bytes);
    }

    [[nodiscard]] QStringList itemsOf(const QString &folder) const
    {
        return QDir(folders.data + u'/' + folder)
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    QTemporaryDir home;
    SupportFolders folders = SupportFolders::inProfile(home.path());
    InMemorySettingsRepository defaults;
    InMemoryKeychainService keychain;
    LogCapture log;
};

TEST_F(MigrationTest, SettingsOfOlderIdentifiersFillWhatIsNotSet)
{
    defaults.setString(u"aiModel"_s, u"mine"_s);
    defaults.setInteger(u"odd"_s, 1);
    legacySetting(u"ai.quelmarfolk.macos"_s, u"aiModel"_s, u"older"_s);
    legacySetting(u"ai.quelmarfolk.macos"_s, u"appLockIdleMinutes"_s, std::int64_t{9});
    legacySetting(u"ai.quelmarfolk.mac"_s, u"appLockIdleMinutes"_s, std::int64_t{10});
    legacySetting(u"ai.quelmarfolk.mac"_s, u"odd"_s, u"text"_s);
    legacySetting(u"com.morvane.Quelmar"_s, u"memoryEnabled"_s, false);
    migrate();
    EXPECT_EQ(defaults.string(u"aiModel"_s), u"mine"_s);
    EXPECT_EQ(defaults.integer(u"odd"_s), 1);
    EXPECT_EQ(defaults.integer(u"appLockIdleMinutes"_s), 9);
    EXPECT_EQ(defaults.boolean(u"memoryEnabled"_s), false);
    EXPECT_EQ(log.lines(),
              QStringList({u"persistence: Migration: carried over 1 setting(s) from ai.quelmarfolk.macos"_s,
                           u"persistence: Migration: carried over 1 setting(s) from com.morvane.Quelmar"_s,
                           u"persistence: Completed migration from the legacy bundle identifier"_s}));

    legacySetting(u"com.morvane.Quelmar"_s, u"late"_s, true);
    migrate(); // the flag is set
    EXPECT_EQ(defaults.value(u"late"_s), std::nullopt);
    EXPECT_EQ(log.lines().size(), 3);
}

TEST_F(MigrationTest, SupportFilesMoveUnlessTheirNameIsTaken)
{
    place(u"ai.quelmarfolk.macos/code.json"_s, "old");
    place(u"ai.quelmarfolk.macos/.hidden"_s);
    place(u"ai.quelmarfolk.macos/bin/ollama"_s);
    place(u"com.morvane.Quelmar/Morvane.store"_s);
    place(u"com.morvane.Quelmar/taken"_s, "old");
    place(u"Morvane/taken"_s, "new");
    migrate();
    EXPECT_EQ(itemsOf(u"Morvane"_s),
              QStringList({u".hidden"_s, u"Morvane.store"_s, u"bin"_s, u"code.json"_s, u"taken"_s}));
    EXPECT_EQ(PrivateFile::read(folders.data + u"/Morvane/taken"_s, 9), "new");
    EXPECT_FALSE(QDir(folders.data + u"/ai.quelmarfolk.macos"_s).exists());
    EXPECT_EQ(itemsOf(u"com.morvane.Quelmar"_s), QStringList{u"taken"_s});
    EXPECT_EQ(log.lines().count(u"persistence: Migration: moved app-support contents to the new folder"_s),
              2);
}

TEST_F(MigrationTest, AFailedFileMoveIsLoggedAndTheRestGoesOn)
{
    place(u"ai.quelmarfolk.macos/code.json"_s);
    place(u"Morvane"_s, "a file where the folder belongs");
    keychain.addSecret(u"ai.quelmarfolk.mac"_s, {u"account"_s, u"value"_s});
    migrate();
    EXPECT_EQ(itemsOf(u"ai.quelmarfolk.macos"_s), QStringList{u"code.json"_s});
    EXPECT_TRUE(log.lines().contains(u"persistence: Migration: app-support move failed — <private>"_s));
    EXPECT_EQ(keychain.read(u"account"_s), u"value"_s);
    EXPECT_EQ(defaults.boolean(currentFlag), true);
}

TEST_F(MigrationTest, SecretsMoveAndNeverReplaceAnother)
{
    keychain.save(u"in use"_s, u"local-data-key"_s);
    keychain.addSecret(u"ai.quelmarfolk.macos"_s, {u"local-data-key"_s, u"older"_s});
    keychain.addSecret(u"ai.quelmarfolk.macos"_s, {u"ai-provider-api-key"_s, u"k"_s});
    keychain.addSecret(u"com.morvane.Quelmar"_s, {u"empty"_s, QString()});
    migrate();
    EXPECT_EQ(keychain.read(u"local-data-key"_s), u"in use"_s);
    EXPECT_EQ(keychain.read(u"ai-provider-api-key"_s), u"k"_s);
    using Secrets = std::vector<LegacySecretListing::Secret>;
    EXPECT_EQ(keychain.secretsOf(u"ai.quelmarfolk.macos"_s), (Secrets{{u"local-data-key"_s, u"older"_s}}));
    EXPECT_EQ(keychain.secretsOf(u"com.morvane.Quelmar"_s).size(), 1U);
    EXPECT_EQ(
        log.lines().count(u"persistence: Migration: moved a stored secret to the new Keychain service"_s), 1);
    EXPECT_EQ(
        log.lines().count(u"persistence: Migration: Keychain move failed; the old entry was left in place"_s),
        1);
}

TEST_F(MigrationTest, AKeychainThatRefusesKeepsTheOldSecrets)
{
    keychain.addSecret(u"ai.quelmarfolk.macos"_s, {u"account"_s, u"value"_s});
    keychain.setFailure(KeychainError(KeychainError::Operation::Save, KeychainStatus::NotAvailable));
    migrate();
    keychain.setFailure(std::nullopt);
    EXPECT_EQ(keychain.secretsOf(u"ai.quelmarfolk.macos"_s).size(), 1U);
    EXPECT_TRUE(log.lines().contains(
        u"persistence: Migration: Keychain move failed; the old entry was left in place"_s));
    EXPECT_EQ(defaults.boolean(currentFlag), true);
}

TEST_F(MigrationTest, CodingEngineLeftoversGoOnce)
{
    for (const auto &item : {u"claude-code-scan.json"_s, u"terminal/log"_s, u"code.json"_s})
        place(u"Morvane/"_s + item);
    defaults.setString(u"codeClaudeModel"_s, u"m"_s);
    defaults.setString(u"aiModel"_s, u"m"_s);
    DepartedData::removeCodingEngineOnce(folders, defaults);
    EXPECT_EQ(itemsOf(u"Morvane"_s), QStringList{u"code.json"_s});
    EXPECT_EQ(log.lines(),
              QStringList({u"persistence: Removed leftover coding-engine data: claude-code-scan.json"_s,
                           u"persistence: Removed leftover coding-engine data: terminal"_s}));
    EXPECT_EQ(defaults.keys(), QStringList({u"aiModel"_s, u"didRemoveExternalCodingEngineData.v1"_s}));

    place(u"Morvane/terminal"_s);
    DepartedData::removeCodingEngineOnce(folders, defaults);
    EXPECT_EQ(itemsOf(u"Morvane"_s).size(), 2);
}

TEST_F(MigrationTest, DepartedModulesLoseTheirFilesAndKeepTheirFolders)
{
    for (const auto &item :
         {u"email-accounts.json"_s, u"email-cache.json"_s, u"gift-people.json"_s,
          u"gift-people.backup.json"_s, u"subscriptions.json"_s, u"telegram-notebook.json"_s, u"learn.json"_s,
          u"learn-last-unparseable-3"_s, u"recurring-jobs.json"_s, u"routines.json"_s, u"price-alerts.json"_s,
          u"telegram/database"_s, u"gift-people-folder/x"_s, u"Morvane.store"_s, u"learn.json.bak"_s,
          u"code.json"_s})
        place(u"Morvane/"_s + item);
    defaults.setBoolean(u"proactiveEnabled"_s, true);
    defaults.setBoolean(u"hostedChatEnabled"_s, true);
    DepartedData::removeModulesOnce(folders, defaults);
    EXPECT_EQ(itemsOf(u"Morvane"_s), QStringList({u"Morvane.store"_s, u"code.json"_s, u"gift-people-folder"_s,
                                                  u"learn.json.bak"_s, u"telegram"_s}));
    EXPECT_EQ(log.lines().size(), 12);
    EXPECT_EQ(log.lines().constFirst(),
              u"persistence: Removed a departed module's store: email-accounts.json"_s);
    EXPECT_EQ(log.lines().constLast(), u"persistence: Removed 11 store(s) the departed modules left"_s);
    EXPECT_EQ(defaults.keys(), QStringList({u"didRemoveDepartedModuleData.v1"_s, u"hostedChatEnabled"_s}));
    DepartedData::removeModulesOnce(folders, defaults);
    EXPECT_EQ(log.lines().size(), 12);
}

} // namespace

} // namespace morvane
