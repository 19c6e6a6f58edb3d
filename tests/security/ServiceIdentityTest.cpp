#include "security/ServiceIdentity.h"

#include "security/InMemoryKeychainService.h"
#include "support/LogCapture.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Service = ServiceIdentity::Service;

class ServiceIdentityTest : public testing::Test {
protected:
    InMemoryKeychainService keychain;
    ServiceIdentity identity{keychain};
    const KeychainError refusal{KeychainError::Operation::Save, KeychainStatus::NotAvailable};
};

// Reads like an empty keychain and takes nothing.
class WriteProtectedKeychain final : public KeychainServicing {
public:
    int saves = 0;

    void save(const QString &, const QString &) override
    {
        ++saves;
        throw KeychainError(KeychainError::Operation::Save, KeychainStatus::InputOutput);
    }
    std::optional<QString> read(const QString &) override { return std::nullopt; }
    std::optional<QString> read(const QString &, const QString &, std::stop_token) override
    {
        return std::nullopt;
    }
    void remove(const QString &) override {}
    int deleteAll() noexcept override { return 0; }
    void setUserPresence(const QString &, const QString &, UserPresence) override {}
    bool requiresUserPresence(const QString &) noexcept override { return false; }
    void clearCache() override {}
};

TEST_F(ServiceIdentityTest, EachServiceHasANumberOfItsOwnThatStays)
{
    const QString hosted = identity.credential(Service::Hosted);
    const QString search = identity.credential(Service::Search);
    EXPECT_TRUE(QRegularExpression(u"^[0-9a-f]{64}$"_s).match(hosted).hasMatch());
    EXPECT_NE(hosted, search);
    ServiceIdentity nextRun(keychain);
    EXPECT_EQ(nextRun.credential(Service::Hosted), hosted);
    EXPECT_EQ(keychain.read(u"service-identity.hosted"_s), hosted);
    EXPECT_EQ(keychain.read(u"service-identity.search"_s), search);
    keychain.save(u""_s, u"service-identity.search"_s);
    EXPECT_EQ(identity.credential(Service::Search).size(), 64); // an empty one counts as none
}

TEST_F(ServiceIdentityTest, AKeychainThatRefusesEverythingGivesOneNumberForTheRun)
{
    keychain.setFailure(refusal);
    const LogCapture log;
    const QString once = identity.credential(Service::Hosted);
    EXPECT_EQ(identity.credential(Service::Hosted), once);
    EXPECT_NE(identity.credential(Service::Search), once);
    EXPECT_EQ(log.lines().first(),
              u"app: Keychain refused a service credential; using an in-memory one for this run"_s);
    keychain.setFailure(std::nullopt);
    EXPECT_EQ(identity.credential(Service::Hosted), once); // still the run's, and not stored
    EXPECT_EQ(keychain.read(u"service-identity.hosted"_s), std::nullopt);
}

TEST_F(ServiceIdentityTest, AKeychainThatTakesNothingIsAskedOnce)
{
    WriteProtectedKeychain readOnly;
    ServiceIdentity other(readOnly);
    const LogCapture log;
    const QString once = other.credential(Service::Search);
    EXPECT_EQ(other.credential(Service::Search), once);
    EXPECT_EQ(readOnly.saves, 1);
    EXPECT_EQ(
        log.lines(),
        QStringList{u"app: Could not store a service credential; using an in-memory one for this run"_s});
    EXPECT_NE(other.reset(Service::Search), once);
    EXPECT_EQ(log.lines().last(),
              u"app: Could not store a reset service credential; using an in-memory one for this run"_s);
}

TEST_F(ServiceIdentityTest, ResetAndReplaceTakeThePlaceOfTheNumber)
{
    const QString first = identity.credential(Service::Hosted);
    const QString second = identity.reset(Service::Hosted);
    EXPECT_NE(second, first);
    EXPECT_EQ(identity.credential(Service::Hosted), second);
    identity.replace(Service::Hosted, u"exchanged"_s);
    EXPECT_EQ(identity.credential(Service::Hosted), u"exchanged"_s);

    keychain.setFailure(refusal);
    const QString ofThisRun = identity.reset(Service::Hosted);
    const LogCapture log;
    identity.replace(Service::Hosted, u"refused"_s);
    EXPECT_EQ(log.lines(), QStringList{u"app: Could not store an exchanged service credential"_s});
    EXPECT_EQ(identity.credential(Service::Hosted), ofThisRun);
    keychain.setFailure(std::nullopt);
    identity.replace(Service::Hosted, u"stored"_s);
    EXPECT_EQ(identity.credential(Service::Hosted), u"stored"_s);
}

TEST_F(ServiceIdentityTest, CallersOnManyThreadsGetOneNumber)
{
    std::vector<QString> seen(8);
    {
        std::vector<std::jthread> threads;
        for (auto &credential : seen)
            threads.emplace_back([&] { credential = identity.credential(Service::Search); });
    }
    EXPECT_EQ(QStringList(seen.begin(), seen.end()), QStringList(8, seen.front()));
}

} // namespace

} // namespace morvane
