#include "network/EgressGate.h"
#include "network/PrivateNetworkAddress.h"
#include "network/PublicAddress.h"

#include <QFile>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using PrivateNetworkAddress::HostClass;
using PrivateNetworkAddress::Subnet;

namespace {

TEST(HostJudgementTest, TakesEachHostForWhatTheTableSays)
{
    const std::map<QByteArray, HostClass> classes{{"mac", HostClass::thisMac},
                                                  {"network", HostClass::localNetwork},
                                                  {"own", HostClass::ownService},
                                                  {"third", HostClass::thirdParty}};
    QFile table(QStringLiteral(HOST_JUDGEMENTS));
    ASSERT_TRUE(table.open(QIODevice::ReadOnly));
    int judged = 0;
    while (!table.atEnd()) {
        const QList<QByteArray> row = table.readLine().simplified().split(' ');
        if (row.size() != 4 || row[0] == "#")
            continue;
        SCOPED_TRACE(row[0].toStdString());
        const QString host = row[0] == "-" ? QString() : QUrl::fromPercentEncoding(row[0]);
        EXPECT_EQ(PrivateNetworkAddress::classify(host), classes.at(row[1]));
        const auto isPrivate = PrivateNetworkAddress::isPrivateLiteral(host);
        EXPECT_EQ(isPrivate ? (*isPrivate ? "private" : "public") : "name", row[2]);
        const auto bytes = PrivateNetworkAddress::addressBytes(host);
        EXPECT_EQ(bytes ? (PublicAddress::isPublic(*bytes) ? "yes" : "no") : "-", row[3]);
        ++judged;
    }
    EXPECT_GT(judged, 80);
    EXPECT_FALSE(PublicAddress::isPublic({}));
    EXPECT_FALSE(PublicAddress::isPublic(QByteArray(5, '\x20')));
}

TEST(HostJudgementTest, ComparesWholeBytesAndThenTheRestOfAPrefix)
{
    const QByteArray ipv4 = QByteArray::fromHex("cb007180"); // 203.0.113.128
    const QByteArray ipv6 = QByteArray::fromHex("20010db8000000400000000000000001");
    const struct {
        QString host;
        Subnet subnet;
        bool isInside;
    } cases[] = {
        {u"203.0.113.7"_s, {ipv4, 24}, true},
        {u"203.0.112.7"_s, {ipv4, 24}, false},
        {u"203.0.113.255"_s, {ipv4, 25}, true},
        {u"203.0.113.127"_s, {ipv4, 25}, false},
        {u"203.0.113.128"_s, {ipv4, 32}, true},
        {u"203.0.113.129"_s, {ipv4, 32}, false},
        {u"203.0.113.128"_s, {ipv4, 0}, false},
        {u"203.0.113.128"_s, {ipv4, 33}, false}, // a prefix longer than its address says nothing
        {u"[2001:db8:0:7f::9%eth0]"_s, {ipv6, 58}, true},
        {u"2001:db8:0:80::9"_s, {ipv6, 58}, false},
        {u"203.0.113.7"_s, {ipv6, 58}, false},
        {u"example.com"_s, {ipv4, 24}, false},
        {u"192.168.7.7"_s, {ipv4, 24}, true}, // private wherever it is
    };
    for (const auto &[host, subnet, isInside] : cases)
        EXPECT_EQ(PrivateNetworkAddress::isInside(host, {subnet}), isInside)
            << host.toStdString() << '/' << subnet.prefixLength;
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
    constexpr const char *far = " is not on this Mac or your network, and this request carries your own data";
    const struct {
        QString address;
        std::string anywhere, privateOnly; // reason; empty: it passes
    } cases[] = {
        {u""_s, "a request with no address", "a request with no address"},
        {u"http://[zz]/"_s, "a request with no address", "a request with no address"},
        {u"FTP://127.0.0.1"_s, "ftp is not a web address", "ftp is not a web address"},
        {u"file:///etc/passwd"_s, "file is not a web address", "file is not a web address"},
        {u"//example.com/path"_s, "that is not a web address", "that is not a web address"},
        {u"https:path"_s, "a request with no host", "a request with no host"},
        {u"http:///path"_s, "a request with no host", "a request with no host"},
        {u"HTTPS://EXAMPLE.com/"_s, {}, std::string("example.com") + far},
        {u"https://user@example.com:8443/"_s, {}, std::string("example.com") + far},
        {u"https://127.0.0.1@example.com/"_s, {}, std::string("example.com") + far},
        {u"https://bücher.example/"_s, {}, std::string("xn--bcher-kva.example") + far},
        {u"https://service.morvane.invalid/"_s, {}, std::string("service.morvane.invalid") + far},
        {u"http://[2001:db8::1]/"_s, {}, std::string("2001:db8::1") + far},
        {u"http://127.0.0.1:11434"_s, {}, {}},
        {u"http://localhost/"_s, {}, {}},
        {u"http://[fe80::1%25eth0]/"_s, {}, {}},
        {u"https://printer.local/"_s, {}, {}},
    };
    for (const auto &[address, anywhere, privateOnly] : cases) {
        SCOPED_TRACE(address.toStdString());
        const auto reason = [url = QUrl(address)](EgressGate::Reach reach) {
            return EgressGate::refusalReason(url, reach).value_or(QString()).toStdString();
        };
        EXPECT_EQ(reason(EgressGate::Reach::Anywhere), anywhere);
        EXPECT_EQ(reason(EgressGate::Reach::PrivateOnly), privateOnly);
    }
}

} // namespace

} // namespace morvane
