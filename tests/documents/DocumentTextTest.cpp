#include "documents/DocumentText.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(DocumentTextTest, DecodesByMarkThenUtf8ThenLatin1)
{
    const struct {
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"Gr\xc3\xbc\xc3\x9f"
         "e",
         u"Grüße"_s},
        {"Gr\xfc\xdf"
         "e",
         u"Grüße"_s},
        {"caf\xc3", u"caf\u00c3"_s}, // half a character of UTF-8
        {"\xef\xbb\xbfhi", u"hi"_s},
        {QByteArray("\xff\xfe\x42\x04\x3d\xd8\x00\xde", 8), u"т\U0001F600"_s},
        {QByteArray("\xfe\xff\x04\x42", 4), u"т"_s},
        {QByteArray("\xff\xfe\x00\x00\x42\x04\x00\x00", 8), u"т"_s},
        {"a\r\nb\rc\n\r\nd", u"a\nb\nc\n\nd"_s},
        {{}, {}},
    };
    for (const auto &[bytes, text] : cases)
        EXPECT_EQ(DocumentText::decoded(bytes), text) << bytes.toHex().toStdString();
}

TEST(DocumentTextTest, CutsAtAParagraphOrASentenceOfTheLastFifth)
{
    const auto words = [](int count) { return QString(count, u'x'); };
    const QString flag = u"\U0001F1E9\U0001F1EA"_s;
    const struct {
        const char *what;
        QString text;
        qsizetype limit;
        QString kept;
        bool wasTruncated = true;
    } cases[] = {
        {"all of it", words(100), 100, words(100), false},
        {"blanks at the ends don't count", u" \n"_s + words(100) + u"\n\t "_s, 100, words(100), false},
        {"a paragraph", words(95) + u"\n\n"_s + words(50), 100, words(95)},
        {"a paragraph before a sentence behind it", words(85) + u"\n\nx. "_s + words(50), 100, words(85)},
        {"a paragraph just at four fifths", words(80) + u"\n\n"_s + words(50), 100, words(80)},
        {"one too early", words(79) + u"\n\n"_s + words(50), 100, words(79) + u"\n\n"_s + words(19)},
        {"the last sentence", words(70) + u"\n\n"_s + words(10) + u". x. "_s + words(50), 100,
         words(70) + u"\n\n"_s + words(10) + u". x. "_s},
        {"a stop without its blank", words(98) + u"x. "_s + words(9), 100, words(99) + u"."_s},
        {"characters, not units", flag.repeated(100), 10, flag.repeated(10)},
        {"the fifth in characters", flag.repeated(8) + u". "_s + flag.repeated(9), 12,
         flag.repeated(8) + u". "_s + flag.repeated(2)},
        {"the fifth in characters, reached", flag.repeated(10) + u". "_s + flag.repeated(9), 12,
         flag.repeated(10) + u". "_s},
        {"nothing", words(5), 0, {}},
    };
    for (const auto &[what, text, limit, kept, wasTruncated] : cases) {
        const DocumentText::Cut cut = DocumentText::cut(text, limit);
        EXPECT_EQ(cut.text, kept) << what;
        EXPECT_EQ(cut.wasTruncated, wasTruncated) << what;
    }
}

} // namespace

} // namespace morvane
