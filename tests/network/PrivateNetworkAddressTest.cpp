#include "network/PrivateNetworkAddress.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using PrivateNetworkAddress::HostClass;
using PrivateNetworkAddress::Subnet;

namespace {

struct Judgement {
    QString host;
    std::optional<bool> isPrivate; // nothing: no literal
    HostClass hostClass;
};

void expectAll(const std::vector<Judgement> &table)
{
    for (const auto &[host, isPrivate, hostClass] : table) {
        SCOPED_TRACE(host.toStdString());
        EXPECT_EQ(PrivateNetworkAddress::isPrivateLiteral(host), isPrivate);
        EXPECT_EQ(PrivateNetworkAddress::classify(host), hostClass);
    }
}

constexpr auto thisMac = HostClass::thisMac;
constexpr auto local = HostClass::localNetwork;
constexpr auto own = HostClass::ownService;
constexpr auto third = HostClass::thirdParty;

TEST(HostJudgementTest, IPv4)
{
    expectAll({{u"127.0.0.1"_s, true, thisMac},
               {u"0.0.0.0"_s, true, thisMac},
               {u"0.0.0.1"_s, false, third},
               {u"127.1.2.3"_s, true, local},
               {u"10.0.0.1"_s, true, local},
               {u"10.255.255.255"_s, true, local},
               {u"11.0.0.0"_s, false, third},
               {u"169.254.1.1"_s, true, local},
               {u"169.253.255.255"_s, false, third},
               {u"172.15.255.255"_s, false, third},
               {u"172.16.0.0"_s, true, local},
               {u"172.31.255.255"_s, true, local},
               {u"172.32.0.0"_s, false, third},
               {u"192.168.0.1"_s, true, local},
               {u"192.169.0.1"_s, false, third},
               {u"100.64.0.1"_s, false, third},
               {u"8.8.8.8"_s, false, third}});
}

TEST(HostJudgementTest, IPv6)
{
    expectAll({{u"::1"_s, true, thisMac},
               {u"[::1]"_s, true, thisMac},
               {u"::"_s, true, local},
               {u"::2"_s, false, third},
               {u"0:0:0:0:0:0:0:1"_s, true, local},
               {u"fd00::1"_s, true, local},
               {u"[FC12::9]"_s, true, local},
               {u"fe00::1"_s, false, third},
               {u"fe7f::1"_s, false, third},
               {u"fe80::1"_s, true, local},
               {u"febf::1"_s, true, local},
               {u"fec0::1"_s, false, third},
               {u"fe80::1%en0"_s, true, local},
               {u"2001:db8::1%en0"_s, false, third},
               {u"::ffff:192.168.1.2"_s, true, local},
               {u"::ffff:8.8.8.8"_s, false, third},
               {u"1::ffff:192.168.1.2"_s, false, third},
               {u"2606:4700::1111"_s, false, third}});
}

TEST(HostJudgementTest, NoLiterals)
{
    expectAll({{u""_s, {}, third},
               {u"010.0.0.1"_s, {}, third},
               {u"0x7f.0.0.1"_s, {}, third},
               {u"127.1"_s, {}, third},
               {u"10.0.0"_s, {}, third},
               {u"10.0.0.0.1"_s, {}, third},
               {u"10..0.1"_s, {}, third},
               {u"10.0.0.256"_s, {}, third},
               {u"10.0.0.0001"_s, {}, third},
               {u"10.0.0.+1"_s, {}, third},
               {u"10.0.0.１"_s, {}, third},
               {u":::1"_s, {}, third},
               {u"fd00::g"_s, {}, third},
               {QString(u"fd00::1"_s + QChar(0) + u".example.com"_s), {}, third},
               {u"2130706433"_s, {}, third}});
}

TEST(HostJudgementTest, Names)
{
    expectAll({{u"localhost"_s, {}, thisMac},
               {u"LOCALHOST"_s, {}, thisMac},
               {u"localhost."_s, {}, local},
               {u" localhost\n"_s, {}, local},
               {u"localhost.example.com"_s, {}, third},
               {u"printer.local"_s, {}, local},
               {u"Printer.LOCAL."_s, {}, local},
               {u"a.b-2.local"_s, {}, local},
               {u"my_printer.local"_s, {}, third},
               {u".local"_s, {}, third},
               {u"a..local"_s, {}, third},
               {u"drücker.local"_s, {}, third},
               {u"printer.local.example.com"_s, {}, third},
               {u"notlocal"_s, {}, third},
               {u"service.morvane.invalid"_s, {}, own},
               {u"API.Service.Morvane.invalid"_s, {}, own},
               {u"myservice.morvane.invalid"_s, {}, third},
               {u"example.com"_s, {}, third}});
}

TEST(PrivateNetworkAddressTest, NormalisesInOrder)
{
    const std::vector<std::pair<QString, QString>> table{
        {u"  Example.COM.\n"_s, u"example.com"_s},
        {u"[::1]"_s, u"::1"_s},
        {u"[::1"_s, u"[::1"_s},
        {u"a.."_s, u"a."_s},
        {u"."_s, u"."_s},
        {u"[10.0.0.1.]"_s, u"10.0.0.1"_s},
    };
    for (const auto &[given, expected] : table)
        EXPECT_EQ(PrivateNetworkAddress::normalisedHost(given), expected) << given.toStdString();
}

TEST(PrivateNetworkAddressTest, ComparesWholeBytesAndThenTheRestOfAPrefix)
{
    const QByteArray ipv4 = QByteArray::fromHex("cb007180"); // 203.0.113.128
    const QByteArray ipv6 = QByteArray::fromHex("20010db8000000400000000000000001");
    const auto inside = [](const QString &host, const QByteArray &bytes, int prefix) {
        return PrivateNetworkAddress::isInside(host, {Subnet{bytes, prefix}});
    };
    EXPECT_TRUE(inside(u"203.0.113.7"_s, ipv4, 24));
    EXPECT_FALSE(inside(u"203.0.112.7"_s, ipv4, 24));
    EXPECT_TRUE(inside(u"203.0.113.255"_s, ipv4, 25));
    EXPECT_FALSE(inside(u"203.0.113.127"_s, ipv4, 25));
    EXPECT_TRUE(inside(u"203.0.113.128"_s, ipv4, 32));
    EXPECT_FALSE(inside(u"203.0.113.129"_s, ipv4, 32));
    EXPECT_FALSE(inside(u"203.0.113.128"_s, ipv4, 0));
    EXPECT_FALSE(inside(u"203.0.113.128"_s, ipv4, 33)); // a prefix longer than its address says nothing
    EXPECT_TRUE(inside(u"[2001:db8:0:7f::9%eth0]"_s, ipv6, 58));
    EXPECT_FALSE(inside(u"2001:db8:0:80::9"_s, ipv6, 58));
    EXPECT_FALSE(inside(u"203.0.113.7"_s, ipv6, 58));
    EXPECT_FALSE(inside(u"example.com"_s, ipv4, 24));
    EXPECT_TRUE(PrivateNetworkAddress::isInside(u"192.168.7.7"_s, {}));
}

TEST(PrivateNetworkAddressTest, EverySubnetOfThisMachineIsNarrowAndHoldsItsOwnAddress)
{
    for (const Subnet &subnet : PrivateNetworkAddress::machineSubnets()) {
        const bool isIPv4 = subnet.bytes.size() == 4;
        EXPECT_TRUE(isIPv4 || subnet.bytes.size() == 16);
        EXPECT_GE(subnet.prefixLength, isIPv4 ? 16 : 48);
        EXPECT_LT(subnet.prefixLength, 8 * subnet.bytes.size());
    }
}

TEST(PrivateNetworkAddressTest, ResolvesToNumericAddresses)
{
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"127.0.0.1"_s).contains(u"127.0.0.1"_s));
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"unknown.test"_s).isEmpty());
    EXPECT_TRUE(PrivateNetworkAddress::resolve(u"127.0.0.1"_s + QChar(0) + u".test"_s).isEmpty());
}

} // namespace

} // namespace morvane
