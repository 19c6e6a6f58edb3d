#include "markdown/MarkdownRenderer.h"

#include "Sketch.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::string fenced(const char *language, const QString &text)
{
    return Sketch::of(MarkdownRenderer::parse(u"```%1\n%2\n```"_s.arg(QString::fromUtf8(language), text)));
}

QString lines(int count, const char *pattern)
{
    QStringList result;
    for (int i = 1; i <= count; ++i)
        result += QString::fromUtf8(pattern).arg(i);
    return result.join(u'\n');
}

struct Case {
    const char *language;
    const char *text;
    const char *block;
};

TEST(CardsTest, EachKindReadsItsLines)
{
    const Case cases[] = {
        {"stat", "$32M | Asking price | +12%\n7.1% | Cap rate",
         "stats($32M=Asking price=+12%, 7.1%=Cap rate=-)"},
        {"stats", "Asking price | $32M | -3\n| x\nalone", "stats($32M=Asking price=-3)"},
        {"Stat", "4 km/h | 9", "stats(4 km/h=9=-)"},
        {"stat", "4 miles | 9", "stats(9=4 miles=-)"},
        {"stat", "Name | Place |", "stats(Name=Place=-)"},
        {"facts", "Built | 2004\n\n Lot: 2.1: acres ", "facts(Built=2004, Lot=2.1: acres)"},
        {"fact", "time: 10 | 30\nbroken:", "facts(time: 10=30)"},
        {"compare", "A | B | C\nRange | 1 | 2 | 3 | 4\nPrice | 5\nlost",
         "compare(A|B|C; Range|1|2|3; Price|5||)"},
        {"comparison", " | A | B\nx | 1 | 2", "compare(A|B; x|1|2)"},
        {"timeline", "2019 | Listed\n2023: Sold", "timeline(2019=Listed, 2023=Sold)"},
        {"chart", "type: line\ntitle: Bitcoin — 7 days\n2024-08-09 | $60,123\n2024-08-10 | $61,480.5",
         "line[Bitcoin — 7 days](2024-08-09=60123=$60,123, 2024-08-10=61480.5=$61,480.5)"},
        {"CHART", "Scale | LOG\nType: pie\na: -1\nnone: n/a\nb: .5\nrange: 1-2",
         "bar-log[-](a=-1=-1, b=0.5=.5)"},
        {"market", "S&P 500 | 7,728.20 | -0.32%\nGold | 2,400 |\n| 1\nx",
         "market(S&P 500=7,728.20=-0.32%, Gold=2,400=-)"},
        {"tickers", "a|1", "market(a=1=-)"},
        {"markets", "a|1", "market(a=1=-)"},
        {"weather", "location: Cumming, GA\ncondition: Storms\nhigh: 90°F\nlow: 72°F\nrain: 40%",
         "weather(Cumming, GA, Storms, 90°F, 72°F; rain=40%)"},
        {"forecast", "Conditions | Sun\nMAX | 3\nmin | 1", "weather(-, Sun, 3, 1; )"},
    };
    for (const Case &each : cases)
        EXPECT_EQ(fenced(each.language, QString::fromUtf8(each.text)), each.block) << each.text;
}

TEST(CardsTest, WhatMakesNoCardShowsItsWords)
{
    const Case cases[] = {
        {"stat", "words only", "code[stat](words only)"},
        {"facts", "a |\n| b", "code[facts](a |\\n| b)"},
        {"compare", "A | B", "code[compare](A | B)"},
        {"compare", "A\nx | 1", "code[compare](A\\nx | 1)"},
        {"compare", "A | B | C | D | E\nx | 1", "code[compare](A | B | C | D | E\\nx | 1)"},
        {"compare", "A | B\nlost", "code[compare](A | B\\nlost)"},
        {"timeline", "2019 | Listed", "code[timeline](2019 | Listed)"},
        {"chart", "a | 1", "code[chart](a | 1)"},
        {"weather", "location: Rome", "code[weather](location: Rome)"},
        {"market", "S&P", "code[market](S&P)"},
        {"charts", "a | 1\nb | 2", "code[charts](a | 1\\nb | 2)"},
    };
    for (const Case &each : cases)
        EXPECT_EQ(fenced(each.language, QString::fromUtf8(each.text)), each.block) << each.text;
}

TEST(CardsTest, CountsHaveLimits)
{
    struct {
        const char *language;
        const char *pattern;
        int most;
    } const limits[] = {{"stat", "%1 | a", 4}, {"chart", "p%1 | 5", 12}, {"market", "n%1 | 5", 10}};
    for (const auto &limit : limits) {
        const std::string code = std::string("code[") + limit.language;
        EXPECT_NE(fenced(limit.language, lines(limit.most, limit.pattern)).substr(0, code.size()), code);
        EXPECT_EQ(fenced(limit.language, lines(limit.most + 1, limit.pattern)).substr(0, code.size()), code);
    }
    // A number beyond what a double holds is none.
    EXPECT_EQ(fenced("chart", u"a | 1\nb | "_s + QString(400, u'9')).substr(0, 4), "code");
}

TEST(CardsTest, APipeTableInAFenceIsATable)
{
    const QString table = u"| a | b |\n|---|---|\n| 1 | 2 |"_s;
    EXPECT_EQ(fenced("", table), "table(a|b; 1|2)");
    EXPECT_EQ(fenced("weather", table), "table(a|b; 1|2)") << "no weather, but a table";
    EXPECT_EQ(fenced("text", table).substr(0, 4), "code") << "a language that is not ours stays code";
    EXPECT_EQ(fenced("", table + u"\nwords"_s).substr(0, 4), "code") << "no word is left out";
    EXPECT_EQ(fenced("", table + u"\n| open"_s).substr(0, 4), "code");
    EXPECT_EQ(fenced("", u"| a |\n| 1 |"_s).substr(0, 4), "code");
}

} // namespace

} // namespace morvane
