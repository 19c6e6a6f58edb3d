#include "network/PublicAddress.h"

#include "network/PrivateNetworkAddress.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(PublicAddressTest, JudgesEachRangeAtItsEdges)
{
    const struct {
        const char *literal;
        bool isPublic;
    } cases[] = {
        {"0.0.0.1", false},
        {"1.0.0.0", true},
        {"9.255.255.255", true},
        {"10.0.0.0", false},
        {"11.0.0.0", true},
        {"100.63.255.255", true},
        {"100.64.0.0", false},
        {"100.127.255.255", false},
        {"100.128.0.0", true},
        {"127.9.9.9", false},
        {"169.253.255.255", true},
        {"169.254.169.254", false},
        {"172.15.255.255", true},
        {"172.16.0.0", false},
        {"172.31.255.255", false},
        {"172.32.0.0", true},
        {"192.167.255.255", true},
        {"192.168.0.0", false},
        {"223.255.255.255", true},
        {"224.0.0.1", false},
        {"255.255.255.255", false},
        {"::", false},
        {"::1", false},
        {"::10.0.0.1", false},
        {"fc00::1", false},
        {"fdff::1", false},
        {"fe80::1", false},
        {"febf::1", false},
        {"fec0::1", false},
        {"ff02::1", false},
        {"2606:4700::1111", true},
        {"::ffff:8.8.8.8", true},
        {"::ffff:10.0.0.1", false},
        {"64:ff9b::8.8.8.8", true},
        {"64:ff9b::127.0.0.1", false},
    };
    for (const auto &[literal, isPublic] : cases) {
        const auto bytes = PrivateNetworkAddress::addressBytes(QString::fromLatin1(literal));
        ASSERT_TRUE(bytes) << literal;
        EXPECT_EQ(PublicAddress::isPublic(*bytes), isPublic) << literal;
    }
    EXPECT_FALSE(PublicAddress::isPublic({}));
    EXPECT_FALSE(PublicAddress::isPublic(QByteArray(5, '\x20')));
}

} // namespace

} // namespace morvane
