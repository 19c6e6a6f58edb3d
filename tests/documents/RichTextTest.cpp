#include "documents/RichText.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(RichTextTest, ReadsWhatAPersonSees)
{
    const auto outcome = [](const QByteArray &input) {
        const auto text = RichText::text(input);
        if (!text)
            return u"(no rich text)"_s;
        QString line = *text;
        return line.replace(u'\n', u'⏎').replace(u'\t', u'⇥').replace(u'\u00A0', u'⍽');
    };
    EXPECT_EQ(TestData::transcript("documents/rich_text.txt", outcome),
              TestData::text("documents/rich_text.txt"));
}

TEST(RichTextTest, BoundsDepthAndSkipsOfAnyLength)
{
    const auto nested = [](qsizetype depth) {
        return "{\\rtf1 " + QByteArray(depth - 1, '{') + "x" + QByteArray(depth, '}');
    };
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth)), u"x"_s);
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth + 1)), std::nullopt);
    EXPECT_EQ(RichText::text(nested(10'000'000)), std::nullopt);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\bin2147483647 b}"), u"a"_s);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\uc2147483647\\u8364 b}"), u"a€"_s);
}

} // namespace

} // namespace morvane
