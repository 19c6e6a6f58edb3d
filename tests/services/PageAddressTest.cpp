#include "services/PageAddress.h"

#include "services/WebAccessError.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString judged(const QString &text)
{
    try {
        const QString host = PageAddress::host(PageAddress::parsed(text));
        return (PageAddress::isPrivate(host, {}) ? u"private "_s : u"public "_s) + host;
    } catch (const WebAccessError &error) {
        return error.userMessage();
    }
}

TEST(PageAddressTest, TakesHttpsOnlyAndKnowsPrivateHostsByTheirText)
{
    const char *table = "services/page_addresses.txt";
    EXPECT_EQ(TestData::transcript(table, [](const QByteArray &line) { return judged(line); }),
              TestData::text(table));
    EXPECT_EQ(judged(u"https://example.org/"_s + QString(1980, u'x')), u"public example.org"_s);
    EXPECT_EQ(judged(u"https://example.org/"_s + QString(1981, u'x')),
              u"That doesn't look like a web address."_s);

    EXPECT_TRUE(PageAddress::isPrivateLiteral(u"010.0.0.1"_s, {})); // ten, by its text
    EXPECT_TRUE(PageAddress::isPrivateLiteral(u"fe80::1%eth0"_s, {}));
    EXPECT_FALSE(PageAddress::isPrivateLiteral(u"10.0.0"_s, {}));
    EXPECT_FALSE(PageAddress::isPrivateLiteral(u"10.0.0.256"_s, {}));
}

} // namespace

} // namespace morvane
