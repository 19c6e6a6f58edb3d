#include "async/Work.h"
#include "security/KeychainTasks.h"
#include "security/SecretsScript.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QDir>
#include <QRegularExpression>
#include <QSemaphore>

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

// The keychain and what stands on it: most rules are told in transcripts, what takes threads or files here.

namespace {

std::vector<QString> onManyThreads(const std::function<QString()> &work)
{
    std::vector<QString> results(16);
    {
        std::vector<std::jthread> threads;
        for (auto &result : results)
            threads.emplace_back([&] { result = work(); });
    }
    return results;
}

class KeychainServiceTest : public testing::Test, protected Secrets {};

TEST_F(KeychainServiceTest, RemembersWhatWasReadOrSavedAndLeavesNoCopyBehind)
{
    SecretsScript::expect("security/keychain_memory.txt");
}

TEST_F(KeychainServiceTest, ReadsBehindPresenceOnlyForWhoIsThere)
{
    SecretsScript::expect("security/keychain_presence.txt");
}

TEST_F(KeychainServiceTest, TellsAndLogsRefusalsAndCountsWhatAnErasureTook)
{
    SecretsScript::expect("security/keychain_refusals.txt");
    const KeychainError error(KeychainError::Operation::Delete, KeychainStatus::InputOutput);
    EXPECT_EQ(
        error.recoverySuggestion(),
        u"Try again. If the problem persists, check your desktop's password manager for a locked or damaged keyring."_s);
    EXPECT_TRUE(error.isRetryable());
}

TEST_F(KeychainServiceTest, TheGuiThreadMayHaveItsCallsDoneBesideIt)
{
    ManualClock clock;
    Work work{clock};
    TestWait::await(KeychainTasks::save(work, keychain, u"v"_s, u"a"_s));
    keychain.clearCache();
    EXPECT_EQ(TestWait::await(KeychainTasks::read(work, keychain, u"a"_s, u"reason"_s, {})), u"v"_s);
    TestWait::await(KeychainTasks::remove(work, keychain, u"a"_s));
    EXPECT_TRUE(store.held.empty());
    store.refuse(FakeSecretStore::Call::Update, KeychainStatus::InputOutput);
    EXPECT_THROW(TestWait::await(KeychainTasks::save(work, keychain, u"v"_s, u"a"_s)), KeychainError);
}

class LocalDataVaultTest : public testing::Test, protected Secrets {
protected:
    static QByteArray contents(const QString &path)
    {
        return PrivateFile::read(path, 1 << 20).value_or(QByteArray("(none)"));
    }
};

TEST_F(LocalDataVaultTest, SealsUnderOneKeyAndOpensNothingWhileLockedOrWithoutIt)
{
    SecretsScript::expect("security/vault.txt");
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
    store.refuse(FakeSecretStore::Call::Find, KeychainStatus::NotAvailable);
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
    for (const auto &field : onManyThreads([this] { return *vault.seal(u"words"_s); }))
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

class ServiceIdentityTest : public testing::Test, protected Secrets {};

TEST_F(ServiceIdentityTest, EachServiceHasANumberOfItsOwnWhateverTheKeychainRefuses)
{
    SecretsScript::expect("security/credentials.txt");
}

TEST_F(ServiceIdentityTest, CallersOnManyThreadsGetOneNumber)
{
    const auto seen = onManyThreads([this] { return identity.credential(ServiceIdentity::Service::Search); });
    EXPECT_EQ(seen, std::vector(seen.size(), seen.front()));
    EXPECT_TRUE(QRegularExpression(u"^[0-9a-f]{64}$"_s).match(seen.front()).hasMatch());
}

} // namespace

} // namespace morvane
