#include "utils/text/Text.h"
#include "support/TestData.h"
#include "utils/text/LinkDetector.h"
#include "utils/text/ThinkingTags.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s; // one person-visible character
const QString accented = u"e\u0301"_s;

TEST(TextTest, CountsWhatAPersonSeesAndNeverSplitsIt)
{
    EXPECT_EQ(Text::characterCount(u""), 0);
    EXPECT_EQ(Text::characterCount(u"a\r\nb"), 3);
    EXPECT_EQ(Text::characterCount(family + accented + accented), 3);
    EXPECT_EQ(Text::characterCount(u"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"_s), 2); // two flags

    const QString text = u"a"_s + family + accented + u"z"_s;
    EXPECT_EQ(Text::prefix(text, 2), u"a"_s + family);
    EXPECT_EQ(Text::prefix(text, 0), QString());
    EXPECT_EQ(Text::prefix(text, 99), text);
    EXPECT_EQ(Text::prefix(u"ae\u0301"_s, 2), u"ae\u0301"_s); // the mark stands behind an ASCII run
    const QStringList left{text.chopped(1), u"a"_s + family, u"a"_s, QString()};
    for (int count = 1; count <= 5; ++count)
        EXPECT_EQ(Text::droppingLast(text, count), left.value(count - 1)) << count;
    EXPECT_EQ(Text::droppingLast(u"abc", 2), u"a"_s);
    EXPECT_EQ(Text::droppingLast(u"abc", -1), u"abc"_s);
}

// A long text is looked at part by part, and a part may end inside a character.
TEST(TextTest, FindsTheSameBoundariesInALongText)
{
    const struct {
        QString character;
        int count;
    } cases[] = {{u"x"_s, 100},
                 {accented, 100},
                 {family, 100},
                 {u"\U0001F1E9\U0001F1EA"_s, 100},
                 {u"e"_s + QString(19, QChar(0x301)), 30}};
    for (const auto &[character, count] : cases) {
        for (int shift = 0; shift < 9; ++shift) {
            const QString head = u"é"_s.repeated(shift);
            const QString text = head + character.repeated(count) + u"z"_s;
            EXPECT_EQ(Text::prefix(text, shift + 2), head + character.repeated(2));
            EXPECT_TRUE(Text::hasAtLeast(text, shift + count + 1));
            EXPECT_FALSE(Text::hasAtLeast(text, shift + count + 2));
        }
    }
    EXPECT_TRUE(Text::hasAtLeast(u"", 0));
    EXPECT_FALSE(Text::hasAtLeast(u"", 1));
}

TEST(TextTest, EndlessMarksCountAsCharactersOfTheirOwn)
{
    const QString piled = u"e"_s + QString(50, QChar(0x301)) + u"\U000E0101"_s.repeated(20);
    EXPECT_EQ(Text::characterCount(piled + u"z"_s), 6);
    EXPECT_EQ(Text::prefix(piled, 3), piled.first(59)); // no half of a pair
    EXPECT_EQ(Text::droppingLast(piled + u"z"_s, 4), piled.first(40));
}

TEST(TextTest, TrimsByItsOwnRules)
{
    EXPECT_EQ(Text::trimmed(u" \t\n\u00A0\u2003\u0085x\r\n"), u"x"_s);
    EXPECT_EQ(Text::trimmedBlanks(QStringView(u" \t\nx \t")), u"\nx");
    EXPECT_EQ(Text::trimmedBlanks(QByteArrayView(" \t ")), QByteArrayView(""));
}

TEST(ThinkingTagsTest, AreFoundAtTheStartOfAReplyAndNowhereElse)
{
    const auto shown = [](const ThinkingTags::Parts &parts) {
        return parts.thinking + (parts.isOpen ? u"…|"_s : u"|"_s) + parts.answer;
    };
    const auto outcome = [&](const QByteArray &line) {
        const QString text = QString::fromUtf8(line);
        const QString growing = shown(ThinkingTags::split(text, ThinkingTags::Extent::growing));
        const QString whole = shown(ThinkingTags::split(text));
        return growing == whole ? whole : growing + u" → "_s + whole;
    };
    TestData::expect("utils/thinking_tags.txt", outcome);
}

TEST(LinkDetectorTest, FindsWhatAPersonSees)
{
    const auto outcome = [](const QString &text) {
        QStringList found;
        for (const LinkDetector::Link &link : LinkDetector::find(text))
            found += link.url.toString(QUrl::FullyEncoded);
        return found.join(u' ');
    };
    TestData::expect("utils/links.txt", outcome);
}

TEST(LinkDetectorTest, TellsWhereTheLinkStands)
{
    const QString text = u"Ask (example.com/x)."_s;
    const auto links = LinkDetector::find(text);
    ASSERT_EQ(links.size(), 1U);
    EXPECT_EQ(text.mid(links[0].start, links[0].length), u"example.com/x"_s);
}

// Each text is a trap for a finder that looks ahead or back again and again.
TEST(LinkDetectorTest, TakesTimeInProportionToHostileText)
{
    constexpr qsizetype size = 400'000;
    for (const char16_t *unit : {u"http://", u"https://a.", u"a@", u"a.", u"a.com,", u"(", u"a.com/(", u".",
                                 u"a:", u"https://a.com,https:/", u"%", u"a-", u"http:", u"mailto:a@"}) {
        const QString text = QString::fromUtf16(unit).repeated(size / QStringView(unit).size());
        const auto begin = std::chrono::steady_clock::now();
        static_cast<void>(LinkDetector::find(text));
        // A quadratic pass over this text takes minutes.
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10))
            << QString::fromUtf16(unit).toStdString();
    }
}

} // namespace

} // namespace morvane
