#include "network/AppNetwork.h"

#include "network/NetworkLedger.h"
#include "network/RefusingNetworkAccessManagerFactory.h"
#include "network/SocketSpy.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSemaphore>

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
        {EgressFeature::aiModel, SensitiveData::screenText, u"public.test"_s, false},
        {EgressFeature::aiModel, SensitiveData::image, u"public.test"_s, false},
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

TEST_F(AppNetworkTest, AFullCacheGoesAsAWholeAndRequestsUnderWayFinish)
{
    QSemaphore mayAnswer;
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        mayAnswer.tryAcquire(1, 30'000);
        connection.send(ScriptedServer::response("200 OK", "late"));
    });
    auto first = network.session(EgressFeature::webSearch, SensitiveDataSet());
    HttpRequest request;
    request.url = server.url();
    const auto answer = std::make_shared<TestWait::Outcome<HttpResponse>>();
    TestWait::collect(first->send(request, {}), answer);

    const auto key = [](int number) { return SensitiveDataSet::fromInt(static_cast<unsigned>(number)); };
    for (int i = 1; i < static_cast<int>(AppNetwork::capacity); ++i)
        static_cast<void>(network.session(EgressFeature::webSearch, key(i)));
    EXPECT_EQ(network.session(EgressFeature::webSearch, key(0)), first);
    EXPECT_NE(network.session(EgressFeature::webSearch, key(1)), first);
    static_cast<void>(network.session(EgressFeature::aiSetup, key(0)));
    EXPECT_NE(network.session(EgressFeature::webSearch, key(0)), first);

    mayAnswer.release();
    TestWait::until([&] { return answer->done; });
    ASSERT_TRUE(answer->value);
    EXPECT_EQ(TestWait::await(readBody(std::move(*answer->value), 100, {})), "late");
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
