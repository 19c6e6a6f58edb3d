#include "ai/tools/WebAddress.h"
#include "ai/tools/ToolArguments.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Two addresses are the same where their normalised texts are; a search is made of the words of the path.
TEST(WebAddressTest, IsReadNormalisedAndTurnedIntoASearch)
{
    const char *table = "ai/web_addresses.txt";
    const auto outcome = [](const QByteArray &line) {
        const auto url = WebAddress::parse(line);
        return url ? WebAddress::normalised(*url) + u" on “"_s + WebAddress::host(*url) + u"”; "_s +
                         WebAddress::searchQuery(*url).value_or(u"no search"_s)
                   : u"no address"_s;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(ToolArgumentsTest, ReadWhatModelsWrite)
{
    const ToolArguments arguments(
        uR"({"text":"a","integer":12345678901,"real":2.5,"flag":true,"null":null,"list":[1],"numeral":"1e3",
             "nan":"nan","inf":"inf","empty":""})"_s);
    EXPECT_EQ(arguments.text("text"_L1), u"a"_s);
    EXPECT_EQ(arguments.text("integer"_L1), u"12345678901"_s);
    EXPECT_EQ(arguments.text("real"_L1), u"2.5"_s);
    EXPECT_EQ(arguments.text("empty"_L1), QString(u""_s));
    EXPECT_EQ(arguments.number("real"_L1), 2.5);
    EXPECT_EQ(arguments.number("numeral"_L1), 1000);
    for (const auto name : {"flag"_L1, "null"_L1, "list"_L1, "missing"_L1})
        EXPECT_EQ(arguments.text(name), std::nullopt) << name.data();
    for (const auto name : {"flag"_L1, "text"_L1, "nan"_L1, "inf"_L1, "empty"_L1, "missing"_L1})
        EXPECT_EQ(arguments.number(name), std::nullopt) << name.data();
    for (const QString &json :
         {u"[1]"_s, u"{"_s, u""_s, u"null"_s, QString(100'000, u'['), uR"({"text":)"_s.repeated(3000)})
        EXPECT_EQ(ToolArguments(json).text("text"_L1), std::nullopt);
}

} // namespace

} // namespace morvane
