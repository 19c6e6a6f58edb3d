#include "services/PageText.h"

#include "support/TestData.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString page(const QString &body)
{
    return u"<!DOCTYPE html><html><head><title>T</title></head><body>%1</body></html>"_s.arg(body);
}

TEST(PageTextTest, ReadsWhatAPersonWouldRead)
{
    const char *texts = "services/page_texts.txt";
    EXPECT_EQ(TestData::transcript(texts, PageText::text), TestData::text(texts));
    const char *titles = "services/page_titles.txt";
    EXPECT_EQ(TestData::transcript(titles, PageText::title), TestData::text(titles));
}

// The scanners give what the patterns give that they stand for.
TEST(PageTextTest, GivesWhatThePatternsGiveOnAnyMarkup)
{
    const char *table = "services/markup_mixes.txt";
    const auto outcome = [](const QByteArray &line) {
        const QString html = QString::fromUtf8(line);
        return PageText::title(html) + u" | "_s + PageText::text(html);
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(PageTextTest, AMainPartCountsOnlyWhenItIsLong)
{
    const auto withMain = [](const char *name, int characters) {
        const QLatin1StringView tag(name);
        return page(u"outside<%1 id=a>%2</%1>after"_s.arg(tag, QString(characters, u'x')));
    };
    for (const char *name : {"main", "article"}) {
        EXPECT_EQ(PageText::text(withMain(name, 2001)), QString(2001, u'x'));
        EXPECT_TRUE(PageText::text(withMain(name, 2000)).startsWith(u"outside"_s));
    }
    const QString accented = u"e\u0301"_s; // one character each
    EXPECT_TRUE(PageText::text(page(u"outside<main>%1</main>"_s.arg(accented.repeated(2000))))
                    .startsWith(u"outside"_s));
    EXPECT_EQ(PageText::text(page(u"<main>short</main><article>%1</article>"_s.arg(QString(2001, u'y')))),
              QString(2001, u'y'));
}

TEST(PageTextTest, DecodesUtf8AndElseLatin1)
{
    EXPECT_EQ(PageText::decoded("caf\xc3\xa9"), u"café"_s);
    EXPECT_EQ(PageText::decoded("caf\xe9 \xc3\xa9"), u"café Ã©"_s);
    EXPECT_EQ(PageText::decoded({}), u""_s);
}

TEST(PageTextTest, KnowsTheWallsThatSitesShowToPrograms)
{
    EXPECT_TRUE(PageText::isBotWall(u"Just a moment..."_s, u"Checking your BROWSER before access"_s));
    EXPECT_FALSE(PageText::isBotWall(u"Just a moment..."_s, u"A story about waiting."_s));
    EXPECT_TRUE(PageText::isBotWall(u"Attention Required! | Shield"_s, u""_s));
    EXPECT_TRUE(PageText::isBotWall(u"T"_s, QString(593, u'x') + u"captcha"_s));
    EXPECT_FALSE(PageText::isBotWall(u"T"_s, QString(594, u'x') + u"captcha"_s));
    EXPECT_TRUE(PageText::isBotWall(u"Press &"_s, u"hold to go on"_s)); // a blank stands between the two
}

// Markup on which a matcher that goes back takes hours. The time is only a net for another order of growth.
TEST(PageTextTest, HostilePagesTakeLinearTime)
{
    constexpr qsizetype size = 1 << 20;
    for (const QString &piece : {u"<script"_s, u"<script>"_s, u"<title>"_s, u"<title"_s,
                                 u"<title>\n</title>"_s, u"<!--"_s, u"<"_s, u"<br "_s, u"<main>"_s, u"&"_s,
                                 u"&amp;"_s, u" "_s, u"</"_s, u"<a>"_s, u"e\u0301"_s, u"\u0301"_s, u"\n"_s}) {
        const QString html = piece.repeated(size / piece.size());
        QElapsedTimer timer;
        timer.start();
        static_cast<void>(PageText::title(html));
        static_cast<void>(PageText::text(html));
        EXPECT_LT(timer.elapsed(), 10'000) << piece.toStdString();
    }
}

} // namespace

} // namespace morvane
