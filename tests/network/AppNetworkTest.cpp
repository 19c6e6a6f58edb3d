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

TEST_F(AppNetworkTest, OneSessionForAFeatureAndWhatItCarries)
{
    const auto session =
        network.session(EgressFeature::aiModel, SensitiveData::image | SensitiveData::memory);
    EXPECT_EQ(session, network.session(EgressFeature::aiModel, SensitiveData::memory | SensitiveData::image));
    EXPECT_NE(session, network.session(EgressFeature::aiModel, SensitiveData::image));
    EXPECT_NE(session, network.session(EgressFeature::aiSetup, SensitiveData::image | SensitiveData::memory));
}

TEST_F(AppNetworkTest, AnySensitiveDataKeepsASessionOnTheLocalNetwork)
{
    for (const auto data : {SensitiveData::screenText, SensitiveData::memory, SensitiveData::image}) {
        const auto session = network.session(EgressFeature::aiModel, data);
        HttpRequest request;
        request.url = QUrl(u"https://public.test/"_s);
        try {
            TestWait::await(session->send(request, {}));
            FAIL() << "the request left";
        } catch (const TransportError &error) {
            EXPECT_EQ(error.code(), TransportError::Code::Blocked);
        }
    }
    const auto rows = ledger.snapshot().entries;
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[1].carrying, SensitiveDataSet(SensitiveData::memory));
}

// A name's address may change between the moment that somebody judged it and the connection.
TEST_F(AppNetworkTest, AHostThatIsNearByItsNameIsReachedOnlyAtALocalAddress)
{
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "near")));
    SocketSpy::setAddresses("far.local", {{u"93.184.216.34"_s, u"2606:4700::1111"_s}});
    SocketSpy::setAddresses("near.local", {{u"127.0.0.1"_s}});
    const int before = SocketSpy::outsideConnections();
    for (const SensitiveDataSet data : {SensitiveDataSet(), SensitiveDataSet(SensitiveData::memory)}) {
        const auto session = network.session(EgressFeature::aiModel, data);
        HttpRequest request;
        request.url = server.url();
        request.url.setHost(u"near.local"_s);
        EXPECT_EQ(TestWait::await(session->send(request, {})).status, 200);
        request.url.setHost(u"far.local"_s);
        try {
            static_cast<void>(TestWait::await(session->send(request, {})));
            ADD_FAILURE() << "the request left";
        } catch (const TransportError &error) {
            EXPECT_EQ(error.code(), TransportError::Code::Blocked);
        }
    }
    EXPECT_EQ(SocketSpy::outsideConnections(), before);
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
    static_cast<void>(network.session(EgressFeature::aiSetup, key(0)));
    EXPECT_NE(network.session(EgressFeature::webSearch, key(0)), first);

    mayAnswer.release();
    TestWait::until([&] { return answer->done; });
    ASSERT_TRUE(answer->value);
    EXPECT_EQ(TestWait::await(readBody(std::move(*answer->value), 100, {})), "late");
}

TEST_F(AppNetworkTest, APageIsNeverReadFromAPrivateAddress)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "router")));
    for (const auto &host : {u"127.0.0.1"_s, u"localhost"_s}) {
        HttpRequest request;
        request.url = server.url();
        request.url.setHost(host);
        try {
            TestWait::await(network.session(EgressFeature::webPage, {})->send(request, {}));
            FAIL() << "the request left";
        } catch (const TransportError &error) {
            EXPECT_EQ(error.code(), TransportError::Code::Blocked);
        }
    }
    EXPECT_EQ(server.connections(), 0);
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
