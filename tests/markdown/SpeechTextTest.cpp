#include "markdown/MarkdownRenderer.h"
#include "support/TestData.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <random>

namespace morvane {

using namespace Qt::StringLiterals;
using MarkdownRenderer::CodeInSpeech;

namespace {

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
    const char *table = "markdown/speech.txt";
    EXPECT_EQ(TestData::transcript(table, [](const QString &text) { return spoken(text); }),
              TestData::text(table));
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

} // namespace

} // namespace morvane
