#include "memory/NoteText.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(NoteTextTest, TextsThatDifferInCaseSpacingAndPunctuationAreTheSameNote)
{
    const auto form = [](const QByteArray &text) { return NoteText::normalized(QString::fromUtf8(text)); };
    EXPECT_EQ(TestData::transcript("memory/same_note.txt", form), TestData::text("memory/same_note.txt"));
}

TEST(NoteTextTest, ADescriptionMatchesAsAWholeOrByAllItsLongWords)
{
    const auto verdict = [](const QByteArray &line) {
        const QStringList texts = QString::fromUtf8(line).split(u'|');
        return NoteText::matches(texts[0], texts[1]) ? u"matches"_s : u"no"_s;
    };
    EXPECT_EQ(TestData::transcript("memory/matches.txt", verdict), TestData::text("memory/matches.txt"));
}

TEST(NoteTextTest, StoresTheFirstCharactersThatAPersonSees)
{
    const QString flag = u"\U0001F1E9\U0001F1EA"_s; // one character of four units
    EXPECT_EQ(NoteText::stored(u" \n"_s + flag.repeated(300)), flag.repeated(240));
}

} // namespace

} // namespace morvane
