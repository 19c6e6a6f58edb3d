#include "markdown/StreamingMarkdown.h"

#include "markdown/BlockSource.h"
#include "markdown/MarkdownRenderer.h"

#include "Sketch.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <random>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString answer = QString::fromUtf8(TestData::read("markdown/answer.md"));

// Feeds the text in pieces of the size and compares with a whole parse behind each of them.
void expectSameBlocks(const QString &text, qsizetype size)
{
    StreamingMarkdown streaming;
    MarkdownRenderer::Blocks before;
    for (qsizetype at = 0; at < text.size(); at += size) {
        const QStringView piece = QStringView(text).sliced(at, std::min(size, text.size() - at));
        const qsizetype same = streaming.append(piece);
        const QStringView prefix = QStringView(text).first(at + piece.size());
        ASSERT_EQ(streaming.text(), prefix);
        ASSERT_EQ(streaming.blocks(), MarkdownRenderer::parse(prefix))
            << "after " << prefix.last(std::min<qsizetype>(40, prefix.size())).toUtf8().constData() << "\n"
            << Sketch::of(streaming.blocks()).toStdString();
        ASSERT_LE(same, std::min(before.size(), streaming.blocks().size()));
        ASSERT_TRUE(std::equal(before.begin(), before.begin() + same, streaming.blocks().begin()));
        before = streaming.blocks();
    }
}

TEST(StreamingMarkdownTest, EveryPrefixGivesTheBlocksOfAWholeParse)
{
    for (const qsizetype size : {1, 2, 3, 4, 7, 64})
        expectSameBlocks(answer, size);
}

TEST(BlockSourceTest, TheLinesOfEachBlockGiveIt)
{
    const auto blocks = MarkdownRenderer::parse(answer);
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const QString lines = BlockSource::of(answer, i, i);
        const auto read = MarkdownRenderer::parse(lines);
        EXPECT_TRUE(read.contains(blocks[i]) && read.size() <= 3) << i << ": " << lines.toStdString();
    }
    EXPECT_EQ(BlockSource::of(answer, 0, blocks.size()), answer.trimmed());
    EXPECT_EQ(BlockSource::of(answer, 3, 2), QString());
}

// Random texts out of the pieces that have a meaning, with words between them.
TEST(StreamingMarkdownTest, RandomTextsGiveTheBlocksOfAWholeParse)
{
    const QString all =
        u"\n§\n\n§```§`§|§|-|\n§| a |§- §* §1. §# §#§> §---§**§_§~~§[§](§)§http://a.b§:§&amp;§\\§"
        "chart§stat§word§ §  §\t§x§1§9 §é§😀§\r\n§\u00a0§\u2028§<§>§.§a b c§~~~§\n````§\n- [x§] §\n   §\n> "
        "§§\n-|-\n§a | b"
        "§$$§\n\\[§\\]§\\(§\\)§^§。§次§<br>§\n   ```\n"_s;
    const QStringList pieces = all.split(u'§');
    std::mt19937 random(20260401);
    for (int round = 0; round < 1500; ++round) {
        QString text;
        for (int i = 0; i < 40; ++i)
            text += pieces[static_cast<qsizetype>(random() % static_cast<std::size_t>(pieces.size()))];
        expectSameBlocks(text, 1 + static_cast<qsizetype>(random() % 4));
        if (HasFatalFailure())
            break;
    }
}

TEST(StreamingMarkdownTest, ATextThatIsTakenBackIsReadAnew)
{
    StreamingMarkdown streaming;
    for (const QString &text :
         {answer, answer.first(40), u"Other *words*"_s, u"Other *words* more"_s, QString(), u"# New"_s}) {
        streaming.setText(text);
        EXPECT_EQ(streaming.blocks(), MarkdownRenderer::parse(text));
    }
}

TEST(StreamingMarkdownTest, OnlyTheOpenBlockIsToldAsChanged)
{
    StreamingMarkdown streaming;
    streaming.setText(u"# One\n\nTwo\n\n- a\n- b"_s);
    EXPECT_EQ(streaming.append(u" and more"), 2);
    EXPECT_EQ(streaming.append(u" **loud**\n"), 2);
    EXPECT_EQ(streaming.append(u"\nThe next"), 2);
    EXPECT_EQ(streaming.append(u" words"), 3);
}

} // namespace

} // namespace morvane
