#include "Sketch.h"
#include "markdown/BlockSource.h"
#include "markdown/InlineMarkdown.h"
#include "markdown/MarkdownRenderer.h"
#include "markdown/StreamingMarkdown.h"
#include "support/TestData.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(MarkdownRendererTest, LinesDecideTheBlocks)
{
    TestData::expect("markdown/blocks.txt",
                     [](const QString &text) { return Sketch::of(MarkdownRenderer::parse(text)); });
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

TEST(InlineMarkdownTest, SpansBecomeRunsAndOnlyLinksToTheWebStay)
{
    TestData::expect("markdown/spans.txt",
                     [](const QString &text) { return Sketch::of(InlineMarkdown::parse(text)); });
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

QString fenced(const QString &languageAndLines)
{
    return Sketch::of(MarkdownRenderer::parse(u"```%1\n```"_s.arg(languageAndLines)));
}

TEST(CardsTest, AFenceIsACardWhenItsLinesMakeOne)
{
    TestData::expect("markdown/cards.txt", fenced);
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

using MarkdownRenderer::CodeInSpeech;

QString spoken(const QString &text, CodeInSpeech code = CodeInSpeech::announced)
{
    return MarkdownRenderer::speakable(text, code);
}

TEST(SpeechTextTest, FencedCodeMayBeRead)
{
    const QString text = u"Look:\n```cpp\nint i = 1;\n```\nDone ```x``` and ```open"_s;
    EXPECT_EQ(spoken(text, CodeInSpeech::read), u"Look:\nint i = 1;\n\nDone  and ```open"_s)
        << "a word straight behind the fence is its language";
}

TEST(SpeechTextTest, MarksAreNotSpoken)
{
    TestData::expect("markdown/speech.txt", [](const QString &text) { return spoken(text); });
}

// The rules as patterns. Some of them take a time that grows with the square of a hostile text.
QString byPatterns(QString text)
{
    for (const QString rule : TestData::lines("markdown/speech_patterns.txt")) {
        const QStringList columns = rule.split(u'\t');
        text.replace(QRegularExpression(columns[0]), columns[1]);
    }
    return text.trimmed();
}

TEST(SpeechTextTest, RandomTextsComeOutAsByThePatterns)
{
    const QString marks = u"\n\n\n  --**__++##>``~!![]()1.aB"_s;
    std::mt19937 random(20260402);
    for (int round = 0; round < 3'000; ++round) {
        QString text;
        for (unsigned length = random() % 24; length > 0; --length)
            text += random() % 20 == 0 ? u"```"_s
                                       : QString(marks[random() % static_cast<unsigned>(marks.size())]);
        ASSERT_EQ(spoken(text, CodeInSpeech::read), byPatterns(text)) << text.toStdString();
    }
}

constexpr qsizetype hostileLength = 1'000'000;

QString repeated(const QString &piece)
{
    return piece.repeated(hostileLength / piece.size());
}

// What a reader would choke on, each about a million characters long.
QStringList hostileTexts()
{
    QStringList texts;
    const QString pieces =
        u"[§![§*§*a §_a*§`§```§~~§](§[a](§<§&#§http://a.b/(§>§> §- §# §1. §|§| §|a|\n§-\n§\n§ \n§"
        "\t§\\§\u202e§\u0001§a\u0301§\r§```\n§```chart\na|1\n§```facts\na|1\n```\n§** __ §-§- - §"
        "12§\\(§\\[§$$§$$a§[^§a|`§\n\\[ a\n§\n- [ ] a\n  §a | b\n-|-\n§**。§\n> ```\n> ~~~\n"_s;
    for (const QString &piece : pieces.split(u'§'))
        texts += repeated(piece);
    texts += repeated(QString(QChar(0xD800)));
    texts += repeated(QString(QChar(0)));
    texts += QString(hostileLength, u'x');
    texts += u"|"_s + repeated(u"a|"_s) + u"\n|-|\n|1|"_s;
    texts += u"|"_s + QString(100'000, u'|') + u"|\n|-|\n"_s + repeated(u"|a|\n"_s);
    texts += u"```chart\n"_s + repeated(u"a | 1\n"_s);
    return texts;
}

// Quadratic work on these would take minutes; the limit leaves room for a busy machine and a sanitizer.
void expectPromptly(const std::function<void(const QString &)> &work)
{
    for (const QString &text : hostileTexts()) {
        QElapsedTimer timer;
        timer.start();
        work(text);
        EXPECT_LT(timer.elapsed(), 20'000) << text.first(20).toUtf8().constData();
    }
}

TEST(HostileTextTest, TakesTimeThatGrowsWithItsLength)
{
    expectPromptly([](const QString &text) { static_cast<void>(MarkdownRenderer::parse(text)); });
    expectPromptly([](const QString &text) {
        static_cast<void>(MarkdownRenderer::speakable(text, MarkdownRenderer::CodeInSpeech::read));
    });
    expectPromptly([](const QString &text) {
        StreamingMarkdown streaming;
        for (qsizetype at = 0; at < text.size(); at += text.size() / 20 + 1)
            static_cast<void>(streaming.setText(text.first(at)));
    });
}

// A row is padded to the headers' width, which must not multiply a text.
TEST(HostileTextTest, ATableDoesNotGrowFarBeyondItsText)
{
    const QString text = u"|"_s + QString(2000, u'|') + u"|\n|-|\n"_s + u"|a|\n"_s.repeated(10'000);
    qsizetype cells = 0;
    qsizetype words = 0;
    for (const auto &block : MarkdownRenderer::parse(text)) {
        if (const auto *table = std::get_if<MarkdownRenderer::Table>(&block))
            cells += table->headers.size() * (1 + table->rows.size());
        else if (const auto *paragraph = std::get_if<MarkdownRenderer::Paragraph>(&block))
            words += paragraph->text.text.count(u'a');
    }
    EXPECT_GT(cells, 0);
    EXPECT_LT(cells, 5 * text.size());
    EXPECT_GT(words, 9000) << "the rows that are left show as words";
}

} // namespace

} // namespace morvane
