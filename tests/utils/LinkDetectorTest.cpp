#include "utils/text/LinkDetector.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(LinkDetectorTest, FindsWhatAPersonSees)
{
    QFile table(QStringLiteral(LINKS));
    ASSERT_TRUE(table.open(QIODevice::ReadOnly));
    QStringList found, expected;
    QString text;
    for (const QString &line : QString::fromUtf8(table.readAll()).split(u'\n')) {
        if (line.startsWith("> "_L1)) {
            expected.append(text + u'\n' + line.sliced(2));
            continue;
        }
        if (line.startsWith("# "_L1))
            continue;
        text = line;
        for (const LinkDetector::Link &link : LinkDetector::find(text))
            found.append(text + u'\n' + link.url.toString(QUrl::FullyEncoded));
    }
    ASSERT_GT(expected.size(), 25);
    EXPECT_EQ(found.join(u'\n').toStdString(), expected.join(u'\n').toStdString());
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
