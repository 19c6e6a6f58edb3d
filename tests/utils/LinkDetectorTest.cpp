#include "utils/text/LinkDetector.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QStringList addresses(QStringView text)
{
    QStringList found;
    for (const LinkDetector::Link &link : LinkDetector::find(text))
        found.append(link.url.toString(QUrl::FullyEncoded));
    return found;
}

struct Row {
    const char16_t *text;
    QStringList links;
};

TEST(LinkDetectorTest, FindsWhatAPersonSees)
{
    const Row rows[] = {
        {u"Read https://Example.com/A?b=c#d now", {u"https://example.com/A?b=c#d"_s}},
        {u"HTTPS://EXAMPLE.COM and ftp://files.example.org/x",
         {u"https://EXAMPLE.COM"_s.toLower(), u"ftp://files.example.org/x"_s}},
        {u"see example.com, www.example.org/a/b?c. Or example.net:8080/x!",
         {u"http://example.com"_s, u"http://www.example.org/a/b?c"_s, u"http://example.net:8080/x"_s}},
        {u"http://localhost:11434/v1 and http://[::1]:8080/ and http://192.168.1.1",
         {u"http://localhost:11434/v1"_s, u"http://[::1]:8080/"_s, u"http://192.168.1.1"_s}},
        // Brackets and quotes
        {u"(https://en.wikipedia.org/wiki/Rust_(fungus))",
         {u"https://en.wikipedia.org/wiki/Rust_(fungus)"_s}},
        {u"[a](https://a.example/x),[b](https://b.example/y_(z))",
         {u"https://a.example/x"_s, u"https://b.example/y_(z)"_s}},
        {u"<https://a.example/x> “https://b.example/y” 'https://c.example/z', **https://d.example**",
         {u"https://a.example/x"_s, u"https://b.example/y"_s, u"https://c.example/z"_s,
          u"https://d.example"_s}},
        {u"https://a.example/(open", {u"https://a.example/(open"_s}},
        {u"https://a.example,https://b.example;https://c.example.",
         {u"https://a.example"_s, u"https://b.example"_s, u"https://c.example"_s}},
        {u"https://a.example/?u=https://b.example/", {u"https://a.example/?u=https://b.example/"_s}},
        // Other scripts
        {u"https://bücher.example/straße", {u"https://xn--bcher-kva.example/stra%C3%9Fe"_s}},
        {u"请看https://example.com/页。谢谢", {u"https://example.com/%E9%A1%B5"_s}},
        {u"пример.рф", {u"http://xn--e1afmkfd.xn--p1ai"_s}},
        {u"👻example.com👻", {u"http://example.com"_s}},
        // E-mail
        {u"Mail ann.b+c@example.com.", {u"mailto:ann.b+c@example.com"_s}},
        {u"(mailto:a@example.org?subject=Hi)", {u"mailto:a@example.org?subject=Hi"_s}},
        // No links
        {u"file.txt README.md main.rs run.sh lib.so e.g. i.e. 1.2.3 v2.0 192.168.1.1 3.14 a@b foo@bar.txt",
         {}},
        {u"It works.So we go on. Done.It is. wait...what", {}},
        {u"@example.com /usr/share/example.com C:\\example.com -example-.com a..com .com com example._com",
         {}},
        {u"https:// http://. https://) http:///path javascript://example.com/%0aalert(1) xhttp://a", {}},
        {u"http://a.example:99999/ http://[::zz]/", {}},
    };
    for (const Row &row : rows)
        EXPECT_EQ(addresses(row.text), row.links) << QString::fromUtf16(row.text).toStdString() << " gave "
                                                  << addresses(row.text).join(u' ').toStdString();
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
        const auto taken = std::chrono::steady_clock::now() - begin;
        // A quadratic pass over this text takes minutes.
        EXPECT_LT(taken, std::chrono::seconds(10)) << QString::fromUtf16(unit).toStdString();
    }
}

} // namespace

} // namespace morvane
