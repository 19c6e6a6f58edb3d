#include "security/LocalDataVault.h"

#include "security/InMemoryKeychainService.h"
#include "support/LogCapture.h"
#include "utils/bytes/Base64.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const KeychainError readFailure(KeychainError::Operation::Read, KeychainStatus::NotAvailable);

class LocalDataVaultTest : public testing::Test {
protected:
    QString storedKey() { return keychain.read(LocalDataVault::keyAccount).value_or(QString()); }

    QByteArray contents(const QString &path)
    {
        return PrivateFile::read(path, 1 << 20).value_or(QByteArray("(none)"));
    }

    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    QTemporaryDir home;
};

TEST_F(LocalDataVaultTest, MakesOneKeyOnFirstNeedAndKeepsIt)
{
    EXPECT_EQ(storedKey(), u""_s);
    const auto field = vault.seal(u"words"_s);
    const QString key = storedKey();
    EXPECT_EQ(key.size(), 44);
    EXPECT_EQ(Base64::decode(key.toLatin1())->size(), 32);
    EXPECT_EQ(vault.open(*field), u"words"_s);
    EXPECT_EQ(vault.open(vault.seal(QByteArray("bytes"))), QByteArray("bytes"));
    EXPECT_EQ(storedKey(), key);
}

TEST_F(LocalDataVaultTest, WhileLockedNothingIsSealedOpenedOrWritten)
{
    const auto field = vault.seal(u"words"_s);
    const QByteArray file = vault.seal(QByteArray("bytes"));
    const QString path = home.filePath(u"notes"_s);
    vault.writeSealed("former", path);
    const QByteArray former = contents(path);

    vault.lock();
    EXPECT_EQ(vault.seal(u"words"_s), std::nullopt);
    EXPECT_EQ(vault.open(*field), u""_s);
    EXPECT_THROW((void)vault.seal(QByteArray("bytes")), LocalDataVault::Locked);
    EXPECT_EQ(vault.open(file), std::nullopt);
    EXPECT_THROW(vault.writeSealed("newer", path), LocalDataVault::Locked);
    EXPECT_EQ(contents(path), former);
    EXPECT_THROW(vault.moveKey(UserPresence::Required), LocalDataVault::Locked);
    // What was never sealed stays readable.
    EXPECT_EQ(vault.open(u"plain"_s), u"plain"_s);
    EXPECT_EQ(vault.open(QByteArray("plain")), QByteArray("plain"));

    vault.unlock();
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

TEST_F(LocalDataVaultTest, WithoutAKeyWordsAreKeptReadableAndSealedOnesStayShut)
{
    const auto field = vault.seal(u"words"_s);
    const QByteArray file = vault.seal(QByteArray("bytes"));
    const QString path = home.filePath(u"notes"_s);

    keychain.setFailure(readFailure);
    EXPECT_EQ(vault.seal(u"new words"_s), u"new words"_s);
    EXPECT_EQ(vault.open(*field), u""_s);
    EXPECT_THROW((void)vault.seal(QByteArray("bytes")), KeychainError);
    EXPECT_EQ(vault.open(file), std::nullopt);
    vault.writeSealed("plain notes", path);
    EXPECT_EQ(contents(path), "plain notes");

    keychain.setFailure(std::nullopt);
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

TEST_F(LocalDataVaultTest, AnUnusableKeyIsReplacedUnlessOneMustExist)
{
    const QStringList unusable{u"not base64 !"_s, u""_s, QString::fromLatin1(QByteArray(31, 'k').toBase64()),
                               QString::fromLatin1(QByteArray(33, 'k').toBase64())};
    for (const QString &value : unusable) {
        keychain.save(value, LocalDataVault::keyAccount);
        EXPECT_EQ(vault.open(*vault.seal(u"words"_s)), u"words"_s);
        EXPECT_EQ(storedKey().size(), 44) << qPrintable(value);
    }
    const auto field = vault.seal(u"words"_s);
    vault.requireExistingKey();
    EXPECT_EQ(vault.open(*field), u"words"_s);
    for (const QString &value : unusable) {
        keychain.save(value, LocalDataVault::keyAccount);
        EXPECT_THROW((void)vault.key(), LocalDataVault::KeyMissing);
        EXPECT_EQ(storedKey(), value);
    }
    keychain.remove(LocalDataVault::keyAccount);
    EXPECT_THROW((void)vault.seal(QByteArray("bytes")), LocalDataVault::KeyMissing);
    EXPECT_EQ(vault.seal(u"words"_s), u"words"_s);
    EXPECT_EQ(vault.open(*field), u""_s);
    EXPECT_EQ(storedKey(), u""_s);
}

TEST_F(LocalDataVaultTest, AValueOfAnotherInstallReadsAsNothing)
{
    InMemoryKeychainService otherKeychain;
    const LocalDataVault other(otherKeychain);
    EXPECT_EQ(vault.open(*other.seal(u"words"_s)), u""_s);
    EXPECT_EQ(vault.open(other.seal(QByteArray("bytes"))), std::nullopt);
}

TEST_F(LocalDataVaultTest, TellsPlainFilesFromBrokenSealedOnes)
{
    EXPECT_EQ(vault.open(u""_s), u""_s);
    EXPECT_EQ(vault.open(u"\u0001KVT1:"_s), u""_s);
    EXPECT_EQ(vault.open(QByteArray("KVT1")), QByteArray("KVT1"));
    EXPECT_EQ(vault.open(QByteArray("KVT")), QByteArray("KVT"));
    for (qsizetype size = 5; size <= 31; ++size)
        EXPECT_EQ(vault.open(QByteArray("KVT1").leftJustified(size, 'x')), std::nullopt) << size;
}

TEST_F(LocalDataVaultTest, DestroyingTheKeyMakesTheOldUnreadableAndTheNextSealStartsAnew)
{
    const auto field = vault.seal(u"words"_s);
    const QString former = storedKey();
    vault.requireExistingKey();
    vault.destroyKey();
    EXPECT_EQ(vault.open(*vault.seal(u"later"_s)), u"later"_s);
    EXPECT_NE(storedKey(), former);
    EXPECT_EQ(vault.open(*field), u""_s);

    keychain.setFailure(KeychainError(KeychainError::Operation::Delete, KeychainStatus::InputOutput));
    vault.destroyKey(); // swallowed
    keychain.setFailure(std::nullopt);
    EXPECT_EQ(storedKey().size(), 44);
}

TEST_F(LocalDataVaultTest, TheKeyMovesBehindPresenceAndBack)
{
    const auto field = vault.seal(u"words"_s);
    vault.moveKey(UserPresence::Required);
    EXPECT_TRUE(keychain.requiresUserPresence(LocalDataVault::keyAccount));
    vault.lock();
    vault.unlock(); // the cache is empty now, and nobody has shown that they are there
    EXPECT_EQ(vault.open(*field), u""_s);
    EXPECT_EQ(vault.seal(u"kept readable"_s), u"kept readable"_s);
    EXPECT_TRUE(keychain.read(LocalDataVault::keyAccount, u"unlock MorvaneGPT"_s, {}));
    EXPECT_EQ(vault.open(*field), u"words"_s);
    vault.moveKey(UserPresence::NotRequired);
    vault.lock();
    vault.unlock();
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

TEST_F(LocalDataVaultTest, UnderATestHostTheKeyIsLeftAlone)
{
    const auto field = vault.seal(u"words"_s);
    for (const char *name : {"XCTestConfigurationFilePath", "XCTestBundlePath"}) {
        qputenv(name, "/x");
        const LogCapture log;
        vault.destroyKey();
        EXPECT_THROW(vault.moveKey(UserPresence::Required), LocalDataVault::Locked);
        qunsetenv(name);
        EXPECT_EQ(
            log.lines(),
            (QStringList{u"app: Refused to destroy the local data key under the test host"_s,
                         u"app: Refused to move the local data key behind Touch ID under the test host"_s}));
    }
    EXPECT_FALSE(keychain.requiresUserPresence(LocalDataVault::keyAccount));
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

TEST_F(LocalDataVaultTest, SealsWhatAnOlderBuildLeftInTheClearOnce)
{
    const auto put = [&](const QString &name, const QByteArray &bytes) {
        QDir().mkpath(QFileInfo(home.filePath(name)).path());
        QFile file(home.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    put(u"Morvane/subscriptions.json"_s, "[1]");
    put(u"Morvane/code.json"_s, "");
    put(u"Morvane/other.json"_s, "stays");
    put(u"Morvane/code-app-data/b.json"_s, "{}");
    put(u"Morvane/code-app-data/b.txt"_s, "stays");
    put(u"ai.morvane.macos/memory.md"_s, "# Notes");
    put(u"ai.morvane.macos/memory-work.md"_s, vault.seal(QByteArray("sealed before")));
    put(u"ai.morvane.macos/code.json"_s, "stays");
    QDir().mkpath(home.filePath(u"Morvane/gift-people.json"_s)); // a folder in a file's place

    vault.lock();
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    vault.unlock();
    keychain.setFailure(readFailure);
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    keychain.setFailure(std::nullopt);

    EXPECT_EQ(vault.sealLeftovers(home.path()), (QStringList{u"code.json"_s, u"subscriptions.json"_s,
                                                             u"code-app-data/b.json"_s, u"memory.md"_s}));
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());

    const QString notes = home.filePath(u"ai.morvane.macos/memory.md"_s);
    EXPECT_TRUE(contents(notes).startsWith("KVT1"));
    EXPECT_EQ(vault.open(contents(notes)), QByteArray("# Notes"));
    EXPECT_EQ(QFile::permissions(notes) & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup), 0);
    EXPECT_EQ(vault.open(contents(home.filePath(u"Morvane/code.json"_s))), QByteArray(""));
    for (const auto &untouched :
         {u"Morvane/other.json"_s, u"Morvane/code-app-data/b.txt"_s, u"ai.morvane.macos/code.json"_s})
        EXPECT_EQ(contents(home.filePath(untouched)), "stays");
}

TEST_F(LocalDataVaultTest, FirstSealsFromManyThreadsShareOneKey)
{
    std::vector<QString> fields(16);
    {
        std::vector<std::jthread> threads;
        for (auto &field : fields)
            threads.emplace_back([&] { field = *vault.seal(u"words"_s); });
    }
    for (const auto &field : fields)
        EXPECT_EQ(vault.open(field), u"words"_s);
}

TEST_F(LocalDataVaultTest, ALockThatLandsAmongSealsNeverLetsPlainTextThrough)
{
    const auto known = vault.seal(u"known"_s);
    std::atomic<int> wrong = 0;
    std::atomic<int> dropped = 0;
    std::atomic<int> kept = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&](const std::stop_token &stop) {
                while (!stop.stop_requested()) {
                    const auto field = vault.seal(u"words"_s);
                    ++(field ? kept : dropped);
                    const bool sealedOrDropped = !field || field->startsWith(u"\u0001KVT1:"_s);
                    const QString opened = vault.open(*known);
                    wrong += !sealedOrDropped || (!opened.isEmpty() && opened != u"known"_s);
                }
            });
        while (dropped < 200 || kept < 200) {
            vault.lock();
            vault.unlock();
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(vault.open(*known), u"known"_s);
}

// The lock must not wait for a keychain that waits for a person.
class SlowKeychain final : public KeychainServicing {
public:
    std::atomic<bool> reading = false;
    std::atomic<bool> released = false;

    std::optional<QString> read(const QString &) override
    {
        reading = true;
        reading.notify_all();
        released.wait(false);
        return QString::fromLatin1(QByteArray(32, 'k').toBase64());
    }
    std::optional<QString> read(const QString &account, const QString &, std::stop_token) override
    {
        return read(account);
    }
    void save(const QString &, const QString &) override {}
    void remove(const QString &) override {}
    int deleteAll() noexcept override { return 0; }
    void setUserPresence(const QString &, const QString &, UserPresence) override {}
    bool requiresUserPresence(const QString &) noexcept override { return false; }
    void clearCache() override {}
};

TEST(LocalDataVaultLockTest, LockingDoesNotWaitForAKeychainCallAndDoesNotStopItsSeal)
{
    SlowKeychain keychain;
    LocalDataVault vault(keychain);
    std::optional<QString> field;
    {
        const std::jthread sealing([&] { field = vault.seal(u"words"_s); });
        keychain.reading.wait(false);
        vault.lock();
        EXPECT_EQ(vault.seal(u"dropped"_s), std::nullopt);
        keychain.released = true;
        keychain.released.notify_all();
    }
    ASSERT_TRUE(field);
    vault.unlock();
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

} // namespace

} // namespace morvane
