#include "network/NetworkLedger.h"
#include "network/AppNetwork.h"
#include "network/EgressGate.h"
#include "network/LedgerExport.h"
#include "network/PrivateNetworkAddress.h"
#include "network/PublicAddress.h"
#include "network/RefusingNetworkAccessManagerFactory.h"
#include "network/SocketSpy.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

NetworkLedger::Entry row(int number, const EgressOutcome &outcome = {EgressOutcome::Completed{200}})
{
    NetworkLedger::Entry entry;
    entry.host = QString::number(number);
    entry.outcome = outcome;
    return entry;
}

TEST(NetworkLedgerTest, KeepsTheNewestFiveHundredAndWhatIsStillRunning)
{
    const EgressOutcome running{EgressOutcome::InFlight{}};
    NetworkLedger ledger;
    for (int i = 0; i < 502; ++i)
        ledger.record(row(i, i == 1 ? running : EgressOutcome{}));
    auto [entries, revision] = ledger.snapshot();
    ASSERT_EQ(entries.size(), 500U);
    EXPECT_EQ(entries[0].host, u"1"_s);
    EXPECT_EQ(entries[1].host, u"3"_s);
    EXPECT_EQ(entries.back().host, u"501"_s);
    std::set<QUuid> ids;
    for (const auto &entry : entries)
        ids.insert(entry.id);
    EXPECT_EQ(ids.size(), 500U);

    ledger.clear();
    for (int i = 0; i < 510; ++i)
        ledger.record(row(i, running));
    EXPECT_EQ(ledger.snapshot().entries.size(), 510U); // nothing finished to drop
    EXPECT_EQ(ledger.snapshot().revision, 502U + 1U + 510U);
}

TEST(LedgerRingTest, AnyThreadMayAppendAndFindsItsRowById)
{
    LedgerRing<NetworkLedger::Entry> ring(150);
    const auto work = [&ring] {
        for (int i = 0; i < 100; ++i) {
            const QUuid id = ring.append(row(i));
            const auto [entries, revision] = ring.snapshot();
            ASSERT_EQ(entries.size(), std::min<std::uint64_t>(revision, 150)); // of one moment
            ASSERT_TRUE(std::any_of(entries.begin(), entries.end(),
                                    [&](const auto &entry) { return entry.id == id; }));
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(ring.snapshot().revision, 200U);
}

TEST(LedgerExportTest, QuotesEveryFieldInAFileNamedAfterItsMinute)
{
    NetworkLedger::Entry refused;
    refused.startedAt = UniversalTime::at({2026, 3, 1}, {9, 5, 7, 80});
    refused.host = u"(no host)"_s;
    refused.feature = EgressFeature::serverList;
    refused.outcome = {EgressOutcome::Blocked{u"no \"host\", none"_s}};
    NetworkLedger::Entry sent = refused;
    sent.host = u"::1"_s;
    sent.feature = EgressFeature::aiModel;
    sent.carrying = SensitiveData::screenText | SensitiveData::image | SensitiveData::memory;
    sent.bytesSent = 5'000'000'000;
    sent.bytesReceived = 12;
    sent.outcome = {EgressOutcome::Completed{204}};

    EXPECT_EQ(LedgerExport::csv({refused, sent}).toStdString(), TestData::text("network/ledger.csv"));
    EXPECT_EQ(LedgerExport::fileName(QDateTime({2026, 3, 1}, {9, 5, 59})),
              u"morvane-network-ledger-2026-03-01-0905.csv"_s);
}

using PrivateNetworkAddress::HostClass;
using PrivateNetworkAddress::Subnet;

TEST(HostJudgementTest, TakesEachHostForWhatTheTableSays)
{
    const std::map<HostClass, QString> classes{{HostClass::thisMac, u"mac"_s},
                                               {HostClass::localNetwork, u"network"_s},
                                               {HostClass::ownService, u"own"_s},
                                               {HostClass::thirdParty, u"third"_s}};
    const std::vector<Subnet> own{{*PrivateNetworkAddress::addressBytes(u"20.1.2.3"_s), 24},
                                  {*PrivateNetworkAddress::addressBytes(u"2a00:1:2:3::4"_s), 64}};
    const auto outcome = [&](const QByteArray &line) {
        const QString host = line == "-" ? QString() : QUrl::fromPercentEncoding(line);
        const auto isPrivate = PrivateNetworkAddress::isPrivateLiteral(host);
        const auto bytes = PrivateNetworkAddress::addressBytes(host);
        return QStringList{classes.at(PrivateNetworkAddress::classify(host)),
                           isPrivate ? (*isPrivate ? u"private"_s : u"public"_s) : u"name"_s,
                           bytes ? (PublicAddress::isPublic(*bytes, own) ? u"yes"_s : u"no"_s) : u"-"_s}
            .join(u' ');
    };
    TestData::expect("network/hosts.txt", outcome);
    EXPECT_FALSE(PublicAddress::isPublic({}, {}));
    EXPECT_FALSE(PublicAddress::isPublic(QByteArray(5, '\x20'), {}));
}

TEST(HostJudgementTest, ComparesWholeBytesAndThenTheRestOfAPrefix)
{
    const auto outcome = [](const QByteArray &line) {
        const QStringList words = QString::fromUtf8(line).split(u' ');
        const Subnet subnet{*PrivateNetworkAddress::addressBytes(words[1]), words[2].toInt()};
        return PrivateNetworkAddress::isInside(words[0], {subnet}) ? u"inside"_s : u"outside"_s;
    };
    TestData::expect("network/subnets.txt", outcome);
    for (const Subnet &subnet : PrivateNetworkAddress::machineSubnets()) {
        EXPECT_GE(subnet.prefixLength, subnet.bytes.size() == 4 ? 16 : 48);
        EXPECT_LT(subnet.prefixLength, 8 * subnet.bytes.size());
    }
}

TEST(HostJudgementTest, ResolvesToNumericAddresses)
{
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"127.0.0.1"_s).contains(u"127.0.0.1"_s));
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"unknown.test"_s).isEmpty());
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"127.0.0.1"_s + QChar(0) + u".test"_s).isEmpty());
}

TEST(EgressGateTest, LetsWebAddressesPassAndPrivateDataOnlyNearby)
{
    const auto outcome = [](const QByteArray &line) {
        const auto reason = [url = QUrl(QString::fromUtf8(line))](EgressGate::Reach reach) {
            return EgressGate::refusalReason(url, reach).value_or(u"passes"_s);
        };
        return reason(EgressGate::Reach::Anywhere) + u"; private: "_s +
               reason(EgressGate::Reach::PrivateOnly);
    };
    TestData::expect("network/egress.txt", outcome);
}

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
