#include "utils/text/LinkDetector.h"
#include "support/TestData.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(LinkDetectorTest, FindsWhatAPersonSees)
{
    const auto outcome = [](const QString &text) {
        QStringList found;
        for (const LinkDetector::Link &link : LinkDetector::find(text))
            found += link.url.toString(QUrl::FullyEncoded);
        return found.join(u' ');
    };
    EXPECT_EQ(TestData::transcript("utils/links.txt", outcome), TestData::text("utils/links.txt"));
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
