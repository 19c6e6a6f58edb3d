#include "markdown/MarkdownRenderer.h"

#include "Sketch.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString fenced(const QString &languageAndLines)
{
    return Sketch::of(MarkdownRenderer::parse(u"```%1\n```"_s.arg(languageAndLines)));
}

TEST(CardsTest, AFenceIsACardWhenItsLinesMakeOne)
{
    const char *table = "markdown/cards.txt";
    EXPECT_EQ(TestData::transcript(table, fenced), TestData::text(table));
}

TEST(CardsTest, CountsHaveLimits)
{
    const auto isCard = [](const QString &language, const QString &line, int count) {
        QString text = language;
        for (int i = 0; i < count; ++i)
            text += u'\n' + line;
        return !fenced(text).startsWith("code["_L1);
    };
    const std::tuple<QString, QString, int> limits[] = {
        {u"stat"_s, u"1 | a"_s, 4}, {u"chart"_s, u"p | 5"_s, 12}, {u"market"_s, u"n | 5"_s, 10}};
    for (const auto &[language, line, most] : limits) {
        EXPECT_TRUE(isCard(language, line, most)) << language.toStdString();
        EXPECT_FALSE(isCard(language, line, most + 1)) << language.toStdString();
    }
    // A number beyond what a double holds is none.
    EXPECT_TRUE(fenced(u"chart\na | 1\nb | "_s + QString(400, u'9')).startsWith("code["_L1));
}

} // namespace

} // namespace morvane
