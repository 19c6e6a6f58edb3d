#include "markdown/MarkdownRenderer.h"

#include "Sketch.h"
#include "support/TestData.h"

#include <QSet>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(MarkdownRendererTest, LinesDecideTheBlocks)
{
    const char *table = "markdown/blocks.txt";
    EXPECT_EQ(TestData::transcript(
                  table, [](const QString &text) { return Sketch::of(MarkdownRenderer::parse(text)); }),
              TestData::text(table));
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
    const QByteArrayList texts = TestData::lines("markdown/different_blocks.txt");
    QSet<QString> seen;
    QSet<QString> tags;
    for (const QString text : texts) {
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
