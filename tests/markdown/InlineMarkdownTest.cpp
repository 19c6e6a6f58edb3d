#include "markdown/InlineMarkdown.h"

#include "Sketch.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(InlineMarkdownTest, SpansBecomeRunsAndOnlyLinksToTheWebStay)
{
    const char *table = "markdown/spans.txt";
    EXPECT_EQ(TestData::transcript(
                  table, [](const QString &text) { return Sketch::of(InlineMarkdown::parse(text)); }),
              TestData::text(table));
}

TEST(InlineMarkdownTest, WhatIsNoTextStaysPlain)
{
    const QString broken = u"*a* "_s + QChar(0xD800) + u"b"_s;
    EXPECT_EQ(InlineMarkdown::parse(broken), AttributedText{broken});
    EXPECT_EQ(InlineMarkdown::parse(u"*a*"_s + QChar(0)).text, u"a"_s + QChar(0));
    EXPECT_EQ(InlineMarkdown::parse(u"*a*"_s + QChar(0) + u"b"_s).text, u"a\uFFFDb"_s);
}

TEST(InlineMarkdownTest, ALongTextIsPlainBehindItsFirstPart)
{
    const QString filler(InlineMarkdown::longestParsed - 4, u'x');
    EXPECT_EQ(InlineMarkdown::parse(u"*a*"_s + filler + u"*b*"_s).runs.size(), 1);
    EXPECT_EQ(InlineMarkdown::parse(u"*a*"_s + filler + u"😀*b*"_s).text, u"a"_s + filler + u"😀*b*"_s);
}

} // namespace

} // namespace morvane
