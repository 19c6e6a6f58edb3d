#include "security/LocalDataVault.h"

#include "security/FakeSecretStore.h"
#include "security/KeychainService.h"
#include "support/LogCapture.h"
#include "support/WipeSpy.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QSemaphore>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class LocalDataVaultTest : public testing::Test {
protected:
    QString storedKey()
    {
        return QString::fromLatin1(store.held[{u"s"_s, LocalDataVault::keyAccount}].value);
    }
    void setStoredKey(const QString &value) { keychain.save(value, LocalDataVault::keyAccount); }
    void loseKey()
    {
        keychain.clearCache();
        store.refuse(FakeSecretStore::Call::Find, KeychainStatus::NotAvailable);
    }
    static QByteArray contents(const QString &path)
    {
        return PrivateFile::read(path, 1 << 20).value_or(QByteArray("(none)"));
    }

    FakeSecretStore store;
    FakePresence presence;
    KeychainService keychain{u"s"_s, store, presence};
    LocalDataVault vault{keychain};
    QTemporaryDir home;
    const QString path = home.filePath(u"notes"_s);
};

TEST_F(LocalDataVaultTest, SealsUnderOneKeyOfItsOwnAndLeavesWhatIsPlainAlone)
{
    EXPECT_TRUE(store.held.empty());
    const auto field = vault.seal(u"words"_s);
    const QByteArray file = vault.seal(QByteArray("bytes"));
    const QString key = storedKey();
    EXPECT_EQ(QByteArray::fromBase64(key.toLatin1()).size(), 32);
    EXPECT_EQ(vault.open(*field), u"words"_s);
    EXPECT_EQ(vault.open(file), QByteArray("bytes"));
    EXPECT_EQ(storedKey(), key);
    vault.writeSealed("notes", path);
    EXPECT_TRUE(contents(path).startsWith("KVT1"));
    EXPECT_EQ(vault.open(contents(path)), QByteArray("notes"));

    EXPECT_EQ(vault.open(u""_s), u""_s);
    EXPECT_EQ(vault.open(u"\u0001KVT1:"_s), u""_s);
    EXPECT_EQ(vault.open(QByteArray("KVT1")), QByteArray("KVT1"));
    EXPECT_EQ(vault.open(QByteArray("KVT1x")), std::nullopt);

    setStoredKey(QString::fromLatin1(QByteArray(32, 'k').toBase64())); // as on another install
    EXPECT_EQ(vault.open(*field), u""_s);
    EXPECT_EQ(vault.open(file), std::nullopt);
}

// Locked, what can't be sealed is dropped; without a key it is kept readable rather than lost.
TEST_F(LocalDataVaultTest, WhileLockedOrWithoutAKeyNothingSealedIsOpened)
{
    const auto field = vault.seal(u"words"_s);
    vault.writeSealed("former", path);
    const QByteArray former = contents(path);
    for (const bool isLocked : {true, false}) {
        isLocked ? vault.lock() : loseKey();
        EXPECT_EQ(vault.seal(u"new"_s), isLocked ? std::nullopt : std::optional(u"new"_s));
        EXPECT_EQ(vault.open(*field), u""_s);
        EXPECT_ANY_THROW((void)vault.seal(QByteArray("bytes")));
        EXPECT_EQ(vault.open(former), std::nullopt);
        EXPECT_EQ(vault.open(u"plain"_s), u"plain"_s);
        EXPECT_EQ(vault.open(QByteArray("plain")), QByteArray("plain"));
        if (isLocked) {
            EXPECT_THROW(vault.writeSealed("newer", path), LocalDataVault::Locked);
            EXPECT_THROW(vault.moveKey(UserPresence::Required), LocalDataVault::Locked);
            EXPECT_EQ(contents(path), former);
        } else {
            vault.writeSealed("newer", path);
            EXPECT_EQ(contents(path), "newer");
        }
        vault.unlock();
        store.refusal = nullptr;
        const int finds = store.calls[FakeSecretStore::Call::Find];
        EXPECT_EQ(vault.open(*field), u"words"_s);
        EXPECT_EQ(store.calls[FakeSecretStore::Call::Find], finds + 1); // the cache was emptied
    }
}

TEST_F(LocalDataVaultTest, AnUnusableKeyIsReplacedUnlessOneMustExist)
{
    const auto ofSize = [](int size) { return QString::fromLatin1(QByteArray(size, 'k').toBase64()); };
    const QStringList unusable{u"not base64 !"_s, u""_s, ofSize(31), ofSize(33)};
    for (const QString &value : unusable) {
        setStoredKey(value);
        EXPECT_EQ(vault.open(*vault.seal(u"words"_s)), u"words"_s);
        EXPECT_EQ(storedKey().size(), 44) << qPrintable(value);
    }
    const auto field = vault.seal(u"words"_s);
    vault.requireExistingKey();
    EXPECT_EQ(vault.open(*field), u"words"_s);
    for (const QString &value : unusable) {
        setStoredKey(value);
        EXPECT_THROW((void)vault.key(), LocalDataVault::KeyMissing);
        EXPECT_EQ(storedKey(), value);
    }
    keychain.remove(LocalDataVault::keyAccount);
    EXPECT_THROW((void)vault.seal(QByteArray("bytes")), LocalDataVault::KeyMissing);
    EXPECT_EQ(vault.seal(u"words"_s), u"words"_s);
    EXPECT_TRUE(store.held.empty());

    vault.destroyKey(); // whoever erases everything starts anew
    EXPECT_EQ(vault.open(*vault.seal(u"later"_s)), u"later"_s);
    EXPECT_EQ(vault.open(*field), u""_s);
    vault.destroyKey();
    EXPECT_TRUE(store.held.empty());
    store.refuse(FakeSecretStore::Call::Remove, KeychainStatus::InputOutput);
    EXPECT_NO_THROW(vault.destroyKey());
}

TEST_F(LocalDataVaultTest, TheKeyMovesBehindPresenceAndBack)
{
    const auto field = vault.seal(u"words"_s);
    vault.moveKey(UserPresence::Required);
    vault.lock();
    vault.unlock(); // the cache is empty now, and nobody has shown that they are there
    EXPECT_EQ(vault.open(*field), u""_s);
    presence.answer = UserPresenceConfirming::Answer::Confirmed;
    EXPECT_TRUE(keychain.read(LocalDataVault::keyAccount, u"unlock MorvaneGPT"_s, {}));
    vault.moveKey(UserPresence::NotRequired);
    vault.lock();
    vault.unlock();
    EXPECT_EQ(vault.open(*field), u"words"_s);
}

TEST_F(LocalDataVaultTest, LeavesNoCopyOfTheKeyOrTheWordsBehind)
{
    const QString key(32, u'k');
    setStoredKey(QString::fromLatin1(key.toLatin1().toBase64()));
    {
        WipeSpy spy(key);
        (void)vault.key();
        EXPECT_EQ(spy.takeCount(), 2); // as it was decoded, and as it was used
    }
    {
        WipeSpy words(u"open sesame"_s);
        const auto field = vault.seal(u"open sesame"_s);
        EXPECT_EQ(words.takeCount(), 1);
        (void)vault.open(*field);
        EXPECT_EQ(words.takeCount(), 1);
    }
    WipeSpy encoded(storedKey());
    vault.moveKey(UserPresence::Required);
    EXPECT_EQ(encoded.takeCount(), 2); // for the keychain, and in it
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
        PrivateFile::write(home.filePath(name), bytes);
    };
    const QStringList untouched{u"Morvane/other.json"_s, u"Morvane/code-app-data/b.txt"_s,
                                u"ai.morvane.macos/code.json"_s};
    for (const QString &name : untouched)
        put(name, "stays");
    put(u"Morvane/subscriptions.json"_s, "[1]");
    put(u"Morvane/code.json"_s, "");
    put(u"Morvane/code-app-data/b.json"_s, "{}");
    put(u"ai.morvane.macos/memory.md"_s, "# Notes");
    put(u"ai.morvane.macos/memory-work.md"_s, vault.seal(QByteArray("sealed before")));
    QDir().mkpath(home.filePath(u"Morvane/gift-people.json"_s)); // a folder in a file's place
    const QString notes = home.filePath(u"ai.morvane.macos/memory.md"_s);
    QFile::setPermissions(notes, QFile::permissions(notes) | QFile::ReadGroup | QFile::ReadOther);

    vault.lock();
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    vault.unlock();
    loseKey();
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    store.refusal = nullptr;
    EXPECT_EQ(contents(notes), "# Notes");

    EXPECT_EQ(vault.sealLeftovers(home.path()), (QStringList{u"code.json"_s, u"subscriptions.json"_s,
                                                             u"code-app-data/b.json"_s, u"memory.md"_s}));
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    EXPECT_TRUE(contents(notes).startsWith("KVT1"));
    EXPECT_EQ(vault.open(contents(notes)), QByteArray("# Notes"));
    EXPECT_EQ(QFile::permissions(notes) & (QFile::ReadGroup | QFile::ReadOther), 0);
    for (const auto &name : untouched)
        EXPECT_EQ(contents(home.filePath(name)), "stays");
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

// The lock must not wait for a keychain that waits for a person.
TEST_F(LocalDataVaultTest, LockingDoesNotWaitForAKeychainCallAndDoesNotStopItsSeal)
{
    (void)vault.seal(u"first"_s);
    keychain.clearCache();
    QSemaphore reading, answered;
    store.refusal = [&](FakeSecretStore::Call) {
        reading.release();
        answered.acquire();
        return std::nullopt;
    };
    std::optional<QString> field;
    {
        const std::jthread sealing([&] { field = vault.seal(u"words"_s); });
        reading.acquire();
        vault.lock();
        EXPECT_EQ(vault.seal(u"dropped"_s), std::nullopt);
        answered.release();
    }
    store.refusal = nullptr;
    vault.unlock();
    EXPECT_EQ(vault.open(field.value_or(QString())), u"words"_s);
}

} // namespace

} // namespace morvane
