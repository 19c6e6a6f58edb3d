#include "ai/routing/HostPrivacy.h"

#include "async/Work.h"
#include "network/SocketSpy.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// On the real resolver, whose answers are scripted below the C library.
class HostPrivacyTest : public testing::Test {
protected:
    HostPrivacyTest()
    {
        hosts.setSubnets([] { return std::vector<PrivateNetworkAddress::Subnet>(); });
    }

    bool isPrivate(const QString &host) { return TestWait::await(hosts.isPrivate(host, {})); }

    ManualClock clock;
    Work work{clock};
    HostPrivacy hosts{clock, work};
};

TEST_F(HostPrivacyTest, ANameIsPrivateWhenAllItsAddressesAre)
{
    const char *table = "ai/near_hosts.txt";
    int number = 0;
    const auto outcome = [&](const QByteArray &addresses) {
        const QString name = u"row%1.local"_s.arg(number++);
        SocketSpy::setAddresses(name.toLatin1(),
                                {QString::fromLatin1(addresses).split(u' ', Qt::SkipEmptyParts)});
        return isPrivate(name) ? u"private"_s : u"not"_s;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
    const int lookups = SocketSpy::lookups();
    EXPECT_TRUE(isPrivate(u"[FD00::1%eth0]"_s));
    EXPECT_FALSE(isPrivate(u"8.8.8.8"_s));
    EXPECT_TRUE(isPrivate(u"LocalHost."_s));
    EXPECT_EQ(SocketSpy::lookups(), lookups) << "what needs no lookup gets none";
}

TEST_F(HostPrivacyTest, AnAddressOnTheMachinesOwnNetworkIsNear)
{
    SocketSpy::setAddresses("neighbour.local", {{u"2001:db8:0:7f::9"_s}});
    hosts.setSubnets([] {
        return std::vector{
            PrivateNetworkAddress::Subnet{QByteArray::fromHex("20010db8000000400000000000000001"), 58}};
    });
    EXPECT_TRUE(isPrivate(u"neighbour.local"_s));
}

TEST_F(HostPrivacyTest, AnAnswerIsKeptForAMinuteAndAFailureIsNot)
{
    SocketSpy::setAddresses("moving.local", {{u"10.0.0.1"_s}, {u"8.8.8.8"_s}});
    EXPECT_TRUE(isPrivate(u"moving.local"_s));
    clock.advance(59'999ms);
    EXPECT_TRUE(isPrivate(u"Moving.local."_s));
    clock.advance(1ms);
    EXPECT_FALSE(isPrivate(u"moving.local"_s));

    EXPECT_FALSE(isPrivate(u"later.test"_s));
    SocketSpy::setAddresses("later.test", {{u"10.0.0.1"_s}});
    EXPECT_TRUE(isPrivate(u"later.test"_s));
}

TEST_F(HostPrivacyTest, AHangingResolverHoldsUpNobody)
{
    const auto outcome = std::make_shared<TestWait::Outcome<bool>>();
    TestWait::collect(hosts.isPrivate(u"slow.test"_s, {}), outcome);
    SocketSpy::slowLookupBegan.acquire();
    EXPECT_FALSE(outcome->done) << "the caller's thread went on";
    clock.advance(HostLookup::limit);
    TestWait::until([&] { return outcome->done; });
    EXPECT_EQ(outcome->value, false);
    SocketSpy::slowLookupMayEnd.release();

    // Its owner may go while it hangs.
    auto gone = std::make_unique<HostPrivacy>(clock, work);
    const auto orphan = std::make_shared<TestWait::Outcome<bool>>();
    TestWait::collect(gone->isPrivate(u"slow.test"_s, {}), orphan);
    SocketSpy::slowLookupBegan.acquire();
    gone.reset();
    clock.advance(HostLookup::limit);
    TestWait::until([&] { return orphan->done; });
    EXPECT_TRUE(orphan->error);
    SocketSpy::slowLookupMayEnd.release();
}

} // namespace

} // namespace morvane
