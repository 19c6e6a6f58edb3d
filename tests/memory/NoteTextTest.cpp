#include "memory/NoteText.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(NoteTextTest, TextsThatDifferInCaseSpacingAndPunctuationAreTheSameNote)
{
    const std::pair<QString, QString> forms[] = {
        {u"Likes  TEA."_s, u"likes tea"_s},   {u"…likes—tea!"_s, u"likes tea"_s}, {u"!!!"_s, u""_s},
        {u"Room 12b"_s, u"room 12b"_s},       {u"CAFE\u0301"_s, u"caf\u00e9"_s}, // composed or not
        {u"\U00010400x"_s, u"\U00010428x"_s},                                    // letters beyond 16 bits
        {u"東京 、大阪"_s, u"東京 大阪"_s},   {u"snake_case"_s, u"snake case"_s}};
    for (const auto &[text, form] : forms)
        EXPECT_EQ(NoteText::normalized(text), form) << text.toStdString();
}

TEST(NoteTextTest, ADescriptionMatchesAsAWholeOrByAllItsLongWords)
{
    const struct {
        QString note;
        QString description;
        bool matches;
    } cases[] = {{u"likes coffee and tea"_s, u"tea coffee"_s, true},
                 {u"likes tea"_s, u"tea coffee"_s, false},
                 {u"lives in abu dhabi"_s, u"ab"_s, true},   // within a word, though too short to be a word
                 {u"an ox by a mill"_s, u"by ox"_s, false},  // only short words, and not in this order
                 {u"teapot collector"_s, u"tea at"_s, true}, // the short word doesn't count
                 {u"likes tea"_s, u""_s, false}};
    for (const auto &[note, description, matches] : cases)
        EXPECT_EQ(NoteText::matches(note, description), matches) << description.toStdString();
}

TEST(NoteTextTest, StoresTheFirstCharactersThatAPersonSees)
{
    const QString flag = u"\U0001F1E9\U0001F1EA"_s; // one character of four units
    EXPECT_EQ(NoteText::stored(u" \n"_s + flag.repeated(300)), flag.repeated(240));
}

} // namespace

} // namespace morvane
