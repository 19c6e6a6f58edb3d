#include "markdown/MarkdownRenderer.h"

#include "Sketch.h"

#include <QSet>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Case {
    const char *text;
    const char *blocks;
};

void expectAll(std::initializer_list<Case> cases)
{
    for (const Case &each : cases) {
        const QString text = QString::fromUtf8(each.text);
        EXPECT_EQ(Sketch::of(MarkdownRenderer::parse(text)), each.blocks) << each.text;
    }
}

TEST(MarkdownRendererTest, ALineStartDecidesTheBlock)
{
    expectAll({
        {"", ""},
        {"\n \n\t\n", ""},
        {"one\n  two \n\nthree", "p(one\\n  two) p(three)"},
        {"# one\n#### four", "h1(one) h4(four)"},
        {"##### five", "p(##### five)"},
        {"#nospace", "p(#nospace)"},
        {"#  ", "p(#)"},
        {"## Sharp #", "h2(Sharp #)"},
        {"text\n### Head\ntext", "p(text) h3(Head) p(text)"},
        {"---\n***\n____", "hr hr hr"},
        {"--", "p(--)"},
        {"-*-", "p(-*-)"},
        {"- - -", "p(- - -)"},
        {"> one\n>two\n>  \n\n> three", "q(one\\ntwo\\n) q(three)"},
        {"quoted:\n> yes", "p(quoted:) q(yes)"},
    });
}

TEST(MarkdownRendererTest, DirectlyFollowingItemsOfOneKindMakeAList)
{
    expectAll({
        {"- a\n* b\n+ c", "ul(a, b, c)"},
        {"- a\n\n- b", "ul(a) ul(b)"},
        {"- a\nwords\n- b", "ul(a) p(words) ul(b)"},
        {"-\n-x\n- ", "p(-\\n-x\\n-)"},
        {"  - nested\n\t- tab", "ul(nested, tab)"},
        {"3. a\n1) b\n123) c", "ol(a, b, c)"},
        {"1234. x", "p(1234. x)"},
        {"1.x\n2.", "p(1.x\\n2.)"},
        {"- a\n1. b", "ul(a) ol(b)"},
        {"- # no heading\n- > no quote", "ul(# no heading, > no quote)"},
    });
}

TEST(MarkdownRendererTest, ATableNeedsASeparatorUnderItsHeaders)
{
    expectAll({
        {"|a|b|\n|-|:-:|\n|1|2|", "table(a|b; 1|2)"},
        {"| a | b |\n|---|---|\n| **1** |\n| 1 | 2 | 3 |\nafter", "table(a|b; <b>1</b>|; 1|2) p(after)"},
        {"|a|b|", "p(|a|b|)"},
        {"|a|b|\n|1|2|", "p(|a|b|\\n|1|2|)"},
        {"words\n|a|\n|-|", "p(words) table(a; )"},
        {"|a|\n\n|-|", "p(|a|) p(|-|)"},
        {"|a|\n|:|", "p(|a|\\n|:|)"},
        {"|a|\n|-|\n|1\n|2|", "table(a; ) p(|1\\n|2|)"},
        {"|-|\n|-|", "table(-; )"},
        {"||\n|-|", "p(||\\n|-|)"},
    });
}

TEST(MarkdownRendererTest, AFenceHoldsCodeWhereverItStandsInALine)
{
    expectAll({
        {"```cpp\nint i;\n\n  j\n```\nafter", "code[cpp](int i;\\n\\n  j) p(after)"},
        {"```\n# x\n**y**\n```", "code[-](# x\\n**y**)"},
        {"```py\nopen", "code[py](open)"},
        {"```", ""},
        {"```\n\n\n```", ""},
        {"before ```py\nx\n``` - after\n- more", "p(before) code[py](x) ul(after, more)"},
        {"```\na\nend``` rest", "code[-](a\\nend) p(rest)"},
        {"- a\n```\nx\n```\n- b", "ul(a) code[-](x) ul(b)"},
        {"in ``` line ``` twice\nx", "p(in) code[line ``` twice](x)"},
        {"````\nx\n````", "code[`](x) p(`)"},
        {"```\n  \n```", "code[-](  )"},
    });
}

TEST(MarkdownRendererTest, LinesMayEndInCarriageReturnAndLineFeed)
{
    expectAll({
        {"# a\r\n\r\n---\r\n- b\r\n- c\r\n|x|\r\n|-|\r\n|1|\r\n", "h1(a) hr ul(b, c) table(x; 1)"},
        {"```chart\r\na | 1\r\nb | 2\r\n```\r\n", "bar[-](a=1=1, b=2=2)"},
    });
}

TEST(MarkdownRendererTest, AKeptTextGivesTheSameBlocksUntilItIsForgotten)
{
    const QString text = u"- a\n- b"_s;
    const auto first = MarkdownRenderer::blocks(text);
    EXPECT_EQ(MarkdownRenderer::blocks(text).constData(), first.constData()) << "not parsed again";
    for (int i = 0; i < 400; ++i)
        static_cast<void>(MarkdownRenderer::blocks(QString::number(i)));
    const auto again = MarkdownRenderer::blocks(text);
    EXPECT_NE(again.constData(), first.constData()) << "400 newer texts came";
    EXPECT_EQ(again, first);
    MarkdownRenderer::forgetBlocks();
    EXPECT_NE(MarkdownRenderer::blocks(text).constData(), again.constData());
}

TEST(MarkdownRendererTest, BlocksOfOtherContentHaveOtherIdentities)
{
    const QString all =
        u"a§**a**§# a§## a§- a§- a\n- b§- ab§1. a§> a§```\na§```a\na§---§|a|\n|-|§|a|\n|-|\n|a|§"
        "```stat\n1|a§```facts\na|1§```compare\na|b\nc|d§```timeline\na|b\nc|d§```chart\na|1\nb|2§"
        "```chart\na|1\nb|2\nscale: log§```chart\na|1\nb|2\ntype: line§```market\na|1§"
        "```market\na|1|2§```weather\nhigh: 1§```weather\ncondition: 1"_s;
    const QStringList texts = all.split(u'§');
    QSet<QString> seen;
    QSet<QString> tags;
    for (const QString &text : texts) {
        const auto blocks = MarkdownRenderer::parse(text);
        ASSERT_EQ(blocks.size(), 1) << text.toStdString();
        const QString identity = MarkdownRenderer::identity(blocks.first());
        EXPECT_EQ(identity, MarkdownRenderer::identity(MarkdownRenderer::parse(text).first()));
        seen += identity;
        tags += identity.section(u':', 0, 0);
    }
    EXPECT_EQ(seen.size(), texts.size());
    EXPECT_TRUE(tags.contains(QSet<QString>{u"cmp"_s, u"ch"_s, u"wx"_s}));
}

} // namespace

} // namespace morvane
