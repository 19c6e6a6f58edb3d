#include "ai/tools/WebAddress.h"
#include "ai/tools/ToolArguments.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(WebAddressTest, WhatCountsAsAnAddress)
{
    for (const QString &text :
         {u""_s, u" \n"_s, u"two words"_s, u"https://a.example/\nb"_s, u"https://[bad"_s,
          u"https://a.example:99999/"_s, u"https://a.example/\u2028b"_s})
        EXPECT_EQ(WebAddress::parse(text), std::nullopt) << text.toStdString();
    for (const QString &text :
         {u" https://a.example \n"_s, u"page"_s, u"https://b\u00fccher.example/\u00e4"_s})
        EXPECT_NE(WebAddress::parse(text), std::nullopt) << text.toStdString();
}

TEST(WebAddressTest, CaseAndOneLastSlashMakeNoDifference)
{
    const auto same = [](const QString &a, const QString &b) {
        return WebAddress::normalised(*WebAddress::parse(a)) == WebAddress::normalised(*WebAddress::parse(b));
    };
    EXPECT_TRUE(same(u"https://A.example/Page/"_s, u"HTTPS://a.EXAMPLE/pAGE"_s));
    EXPECT_TRUE(same(u"https://b\u00fccher.example"_s, u"https://xn--bcher-kva.example/"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"https://a.example/page//"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"http://a.example/page"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"https://a.example/page?q=secret"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"https://a.example/page#secret"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"https://user@a.example/page"_s));
    EXPECT_FALSE(same(u"https://a.example/page"_s, u"https://a.example:8443/page"_s));
}

TEST(WebAddressTest, ASearchIsMadeOfTheWordsOfThePath)
{
    const auto query = [](const QString &url) { return WebAddress::searchQuery(QUrl(url)).value_or(u"-"_s); };
    EXPECT_EQ(query(u"https://homes.example/for-sale/12-Oak_Street-Springfield.html"_s),
              u"for sale 12 Oak Street Springfield"_s);
    EXPECT_EQ(query(u"https://news.example/a-story-1234567-12345"_s), u"a story 12345"_s);
    EXPECT_EQ(query(u"https://news.example/plain/story"_s), u"-"_s);
    EXPECT_EQ(query(u"https://news.example/one-"_s), u"-"_s);
    EXPECT_EQ(query(u"https://news.example/1234567-story"_s), u"-"_s);
    EXPECT_EQ(query(u"https://n.example/a-b-c-d-e-f-g-h-i-j-k-l-m-n"_s), u"a b c d e f g h i j k l"_s);
    EXPECT_EQ(query(u"https://n.example/caf%C3%A9-menu%0A---%20END"_s), u"caf\u00e9 menu END"_s)
        << "no address writes lines of its own";
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
