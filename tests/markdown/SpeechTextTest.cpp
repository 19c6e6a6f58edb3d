#include "markdown/MarkdownRenderer.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <random>

namespace morvane {

using namespace Qt::StringLiterals;
using MarkdownRenderer::CodeInSpeech;

namespace {

std::string spoken(const QString &text, CodeInSpeech code = CodeInSpeech::announced)
{
    return MarkdownRenderer::speakable(text, code).toStdString();
}

TEST(SpeechTextTest, FencedCodeIsAnnouncedOrRead)
{
    const QString text = u"Look:\n```cpp\nint i = 1;\n```\nDone ```x``` and ```open"_s;
    EXPECT_EQ(spoken(text),
              "Look:\n…there's a code example here…\nDone …there's a code example here… and ```open");
    EXPECT_EQ(spoken(text, CodeInSpeech::read), "Look:\nint i = 1;\n\nDone  and ```open")
        << "a word straight behind the fence is its language";
    EXPECT_EQ(spoken(u"```\nx\n```"_s), "…there's a code example here…");
}

TEST(SpeechTextTest, MarksAreNotSpoken)
{
    const struct {
        const char *text;
        const char *words;
    } cases[] = {
        {"say `x_y` **now** or __then__", "say x_y now or then"},
        {"an *old* _dog_ ~~cat~~", "an old dog cat"},
        {"![a cat](http://x/y.png)see [the page](http://z) [x] (y)", "see the page [x] (y)"},
        {"![![a](b)", "" /* the first bracket that opens takes it all */},
        {"[[a](b)", "[a"},
        {"[](b) [c](d", "[](b) [c](d"},
        {"# One\n###### Six\n####### Seven", "One\nSix\n####### Seven"},
        {"> quoted\n>twice", "quoted\ntwice"},
        {"- a\n  * b\n\n+ c", "a\nb\nc"},
        {"1. a\n  22. b\n3) c", "a\nb\n3) c"},
        {"a\n\n---\n\nb\n* * *\nc", "a\n\nb\nc"},
        {"a\n-----\n-_-_\nx", "a\n\nx"},
        {"a\n\n\n\n\nb", "a\n\nb"},
        {"**\n***\n---\n> \n# ", ""},
        {"2 * 3 = 6", "2 * 3 = 6"},
    };
    for (const auto &each : cases)
        EXPECT_EQ(spoken(QString::fromUtf8(each.text)), each.words) << each.text;
}

// The rules as patterns. Some of them take a time that grows with the square of a hostile text.
QString byPatterns(QString text)
{
    const struct {
        const char *pattern;
        const char *replacement;
    } rules[] = {
        {"```[a-zA-Z0-9+-]*\\n?([\\s\\S]*?)```", "\\1"},
        {"`([^`\\n]+)`", "\\1"},
        {"!\\[[^\\]]*\\]\\([^)]*\\)", ""},
        {"\\[([^\\]]+)\\]\\([^)]*\\)", "\\1"},
        {"(?m)^#{1,6}\\s+", ""},
        {"(\\*\\*|__)(.*?)\\1", "\\2"},
        {"(\\*|_)([^*_\\n]+)\\1", "\\2"},
        {"~~(.*?)~~", "\\1"},
        {"(?m)^>\\s?", ""},
        {"(?m)^\\s*[-*+]\\s+", ""},
        {"(?m)^\\s*\\d+\\.\\s+", ""},
        {"(?m)^\\s*([-*_]\\s*){3,}$", ""},
        {"\\n{3,}", "\n\n"},
    };
    for (const auto &rule : rules)
        text.replace(QRegularExpression(QString::fromUtf8(rule.pattern)),
                     QString::fromUtf8(rule.replacement));
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
        ASSERT_EQ(spoken(text, CodeInSpeech::read), byPatterns(text).toStdString()) << text.toStdString();
    }
}

} // namespace

} // namespace morvane
