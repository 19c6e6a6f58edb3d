#include "markdown/InlineMarkdown.h"

#include "Sketch.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Case {
    const char *text;
    const char *spans;
};

void expectAll(std::initializer_list<Case> cases)
{
    for (const Case &each : cases)
        EXPECT_EQ(Sketch::of(InlineMarkdown::parse(QString::fromUtf8(each.text))), each.spans) << each.text;
}

TEST(InlineMarkdownTest, SpansBecomeRuns)
{
    expectAll({
        {"plain", "plain"},
        {"**bold** and *soft* or ~~gone~~", "<b>bold</b> and <i>soft</i> or <s>gone</s>"},
        {"***both***", "<i><b>both</b></i>"},
        {"**a *b* c**", "<b>a </b><i><b>b</b></i><b> c</b>"},
        {"`a*b*` and `` x`y ``", "<c>a*b*</c> and <c>x`y</c>"},
        {"snake_case_name 2 * 3 * 4", "snake_case_name 2 * 3 * 4"},
        {"**open", "**open"},
        {"\\*no\\* \\x", "*no* \\x"},
        {"&copy; &lt;b&gt; &amp; &quot; &#65; &#x1F600; &nope;", "© <b> & \" A 😀 &nope;"},
        {"größe **日本語** 😀*x*", "größe <b>日本語</b> 😀<i>x</i>"},
        {"![a **cat**](http://x/y.png)!", "a <b>cat</b>!"},
        {"<b>*x*</b>", "<b><i>x</i></b>"},
    });
}

TEST(InlineMarkdownTest, OnlyLinksToTheWebStay)
{
    expectAll({
        {"[a](https://b.c/d?e=f&amp;g)", "<a https://b.c/d?e=f&g>a</a>"},
        {"[a](HTTP://b.c)", "<a http://b.c>a</a>"},
        {"[**a** b](http://c.d \"title\")", "<a http://c.d><b>a</b></a><a http://c.d> b</a>"},
        {"[a](file:///etc/passwd) [b](javascript:x) [c](/d) [e](#f) <mailto:a@b.c>", "a b c e mailto:a@b.c"},
        {"<https://a.b> https://c.d/e. Done",
         "<a https://a.b>https://a.b</a> <a https://c.d/e>https://c.d/e</a>. Done"},
        {"[a](http://b.c/\xd1\x8f\xe2\x80\xae)", "<a http://b.c/%D1%8F%E2%80%AE>a</a>"},
        {"[a](http://[bad)", "a"},
        {"[a]: http://b.c", "[a]: <a http://b.c>http://b.c</a>"},
    });
}

TEST(InlineMarkdownTest, NothingAtTheStartOfALineMeansAnything)
{
    expectAll({
        {"1. x\n# y *z*\n> q\n- i", "1. x\\n# y <i>z</i>\\n> q\\n- i"},
        {"    four **b**", "    four <b>b</b>"},
        {"*a*\n===\n---\n\n\n[x]: y", "<i>a</i>\\n===\\n---\\n\\n\\n[x]: y"},
        {"*a*  \n b", "<i>a</i>  \\n b"},
        {"**a\nb**\r\n`c\nd`", "<b>a\\nb</b>\r\\n<c>c\\nd</c>"},
        {"*a* #", "<i>a</i> #"},
        {"*a* \\#\\", "<i>a</i> #\\"},
        {" *a* ", " <i>a</i> "},
    });
}

TEST(InlineMarkdownTest, ABackslashAtALineEndAsksForTheBreakThatIsThere)
{
    expectAll(
        {{"*a*\\\nb", "<i>a</i>\\nb"}, {"*a*\\\\\nb", "<i>a</i>\\\\nb"}, {"`a\\\nb`", "<c>a\\\\nb</c>"}});
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
