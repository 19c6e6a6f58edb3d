#include "network/EgressGate.h"
#include "network/PrivateNetworkAddress.h"
#include "network/PublicAddress.h"
#include "support/TestData.h"

#include <QUrl>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using PrivateNetworkAddress::HostClass;
using PrivateNetworkAddress::Subnet;

namespace {

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
    EXPECT_EQ(TestData::transcript("network/hosts.txt", outcome), TestData::text("network/hosts.txt"));
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
    EXPECT_EQ(TestData::transcript("network/subnets.txt", outcome), TestData::text("network/subnets.txt"));
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
    EXPECT_EQ(TestData::transcript("network/egress.txt", outcome), TestData::text("network/egress.txt"));
}

} // namespace

} // namespace morvane
