#include "security/ServiceIdentity.h"

#include "security/FakeSecretStore.h"
#include "security/KeychainService.h"
#include "support/LogCapture.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Call = FakeSecretStore::Call;
using Service = ServiceIdentity::Service;

class ServiceIdentityTest : public testing::Test {
protected:
    FakeSecretStore store;
    FakePresence presence;
    KeychainService keychain{u"service"_s, store, presence};
    ServiceIdentity identity{keychain};
};

TEST_F(ServiceIdentityTest, EachServiceHasANumberOfItsOwnThatStaysUntilItIsReset)
{
    const QString hosted = identity.credential(Service::Hosted);
    EXPECT_TRUE(QRegularExpression(u"^[0-9a-f]{64}$"_s).match(hosted).hasMatch());
    EXPECT_EQ(ServiceIdentity(keychain).credential(Service::Hosted), hosted);
    const QString search = identity.credential(Service::Search);
    EXPECT_NE(hosted, search);
    EXPECT_EQ(keychain.read(u"service-identity.hosted"_s), hosted);
    EXPECT_EQ(keychain.read(u"service-identity.search"_s), search);
    keychain.save(u""_s, u"service-identity.search"_s);
    EXPECT_EQ(identity.credential(Service::Search).size(), 64); // an empty one counts as none

    const QString second = identity.reset(Service::Hosted);
    EXPECT_NE(second, hosted);
    EXPECT_EQ(identity.credential(Service::Hosted), second);
    identity.replace(Service::Hosted, u"exchanged"_s);
    EXPECT_EQ(identity.credential(Service::Hosted), u"exchanged"_s);
}

TEST_F(ServiceIdentityTest, AKeychainThatCannotBeReadGivesOneNumberForTheRun)
{
    store.refuse(Call::Find, KeychainStatus::NotAvailable);
    const LogCapture log;
    const QString once = identity.credential(Service::Hosted);
    EXPECT_EQ(log.lines().last(),
              u"app: Keychain refused a service credential; using an in-memory one for this run"_s);
    EXPECT_EQ(identity.credential(Service::Hosted), once);
    EXPECT_NE(identity.credential(Service::Search), once);
    store.refusal = nullptr;
    EXPECT_EQ(identity.credential(Service::Hosted), once); // still the run's, and not stored
    EXPECT_TRUE(store.held.empty());
}

TEST_F(ServiceIdentityTest, AKeychainThatTakesNothingIsAskedOnce)
{
    store.refuse(Call::Update, KeychainStatus::InputOutput);
    const LogCapture log;
    const QString once = identity.credential(Service::Search);
    EXPECT_EQ(identity.credential(Service::Search), once);
    EXPECT_EQ(store.calls[Call::Update], 1);
    EXPECT_EQ(log.lines().last(),
              u"app: Could not store a service credential; using an in-memory one for this run"_s);
    const QString second = identity.reset(Service::Search);
    EXPECT_NE(second, once);
    EXPECT_EQ(log.lines().last(),
              u"app: Could not store a reset service credential; using an in-memory one for this run"_s);
    identity.replace(Service::Search, u"refused"_s);
    EXPECT_EQ(log.lines().last(), u"app: Could not store an exchanged service credential"_s);
    EXPECT_EQ(identity.credential(Service::Search), second);
    store.refusal = nullptr;
    identity.replace(Service::Search, u"stored"_s);
    EXPECT_EQ(identity.credential(Service::Search), u"stored"_s);
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
