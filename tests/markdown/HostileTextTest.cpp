#include "markdown/InlineMarkdown.h"
#include "markdown/MarkdownRenderer.h"
#include "markdown/StreamingMarkdown.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <functional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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
