#include "network/AppNetwork.h"

#include "network/NetworkLedger.h"
#include "network/RefusingNetworkAccessManagerFactory.h"
#include "network/SocketSpy.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class AppNetworkTest : public testing::Test {
protected:
    NetworkLedger ledger;
    ManualClock clock;
    AppNetwork network{ledger, clock};
};

// A name's address may change between the moment that somebody judged it and the connection.
TEST_F(AppNetworkTest, ReachesWhatItsFeatureAndItsDataAllowByNameAndByAddress)
{
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "near")));
    SocketSpy::setAddresses("far.local", {{u"93.184.216.34"_s, u"2606:4700::1111"_s}});
    SocketSpy::setAddresses("near.local", {{u"127.0.0.1"_s}});
    const struct {
        EgressFeature feature;
        SensitiveDataSet carrying;
        QString host;
        bool isReached;
    } cases[] = {
        {EgressFeature::aiModel, {}, u"near.local"_s, true},
        {EgressFeature::aiModel, {}, u"far.local"_s, false},
        {EgressFeature::aiModel, SensitiveData::memory, u"near.local"_s, true},
        {EgressFeature::aiModel, SensitiveData::memory, u"far.local"_s, false},
        {EgressFeature::aiModel, SensitiveData::memory, u"public.test"_s, false},
        {EgressFeature::webPage, {}, u"127.0.0.1"_s, false}, // no page comes from a private address
        {EgressFeature::webPage, {}, u"localhost"_s, false},
    };
    const int outside = SocketSpy::outsideConnections();
    for (const auto &[feature, carrying, host, isReached] : cases) {
        SCOPED_TRACE(host.toStdString());
        const int before = server.connections();
        HttpRequest request;
        request.url = server.url();
        request.url.setHost(host);
        std::optional<TransportError::Code> error;
        try {
            TestWait::await(network.session(feature, carrying)->send(request, {}));
        } catch (const TransportError &refusal) {
            error = refusal.code();
        }
        EXPECT_EQ(error, isReached ? std::nullopt : std::optional(TransportError::Code::Blocked));
        EXPECT_TRUE(isReached || server.connections() == before);
        EXPECT_EQ(ledger.snapshot().entries.back().carrying, carrying);
    }
    EXPECT_EQ(SocketSpy::outsideConnections(), outside);
}

TEST_F(AppNetworkTest, OneSessionForAFeatureAndWhatItCarriesUntilTheCacheIsFull)
{
    const auto session = [this](int number) {
        return network.session(EgressFeature::webSearch,
                               SensitiveDataSet::fromInt(static_cast<unsigned>(number)));
    };
    const auto first = session(0); // kept by its caller
    for (int i = 1; i < static_cast<int>(AppNetwork::capacity); ++i)
        EXPECT_NE(session(i), first);
    EXPECT_EQ(session(0), first);
    static_cast<void>(network.session(EgressFeature::aiSetup, {}));
    EXPECT_NE(session(0), first);
    EXPECT_EQ(first.use_count(), 1);
}

TEST(RefusingNetworkAccessManagerFactoryTest, NothingLeaves)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "picture")));
    QObject owner;
    RefusingNetworkAccessManagerFactory factory;
    auto *manager = factory.create(&owner);
    auto *reply = manager->get(QNetworkRequest(server.url()));
    bool hasEnded = false;
    QObject::connect(reply, &QNetworkReply::finished, [&] { hasEnded = true; });
    TestWait::until([&] { return hasEnded; });
    EXPECT_EQ(reply->error(), QNetworkReply::ContentAccessDenied);
    EXPECT_TRUE(reply->readAll().isEmpty());
    EXPECT_EQ(server.connections(), 0);
}

} // namespace

} // namespace morvane
