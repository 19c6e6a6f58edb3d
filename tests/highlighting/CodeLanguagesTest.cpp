#include "highlighting/CodeLanguages.h"

#include "support/TestData.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The code with what is told of it in brackets: "[k:return] [n:f](1)".
QString sketch(const CodeLanguage &language, const QString &code)
{
    QString drawn;
    int state = CodeLanguage::start;
    for (const QString &line : code.split(u'\n')) {
        const CodeLanguage::Line read = language.read(line, state);
        qsizetype at = 0;
        for (const CodeSpan &span : read.spans) {
            const QChar mark = u"ktns0c"[static_cast<int>(span.token)];
            drawn += line.sliced(at, span.start - at) + u'[' + mark + u':' +
                     line.sliced(span.start, span.length) + u']';
            at = span.start + span.length;
        }
        drawn += line.sliced(at) + u'⏎';
        state = read.state;
    }
    return drawn.chopped(1);
}

TEST(CodeLanguagesTest, WordsQuotesAndCommentsAreToldApartInEachLanguage)
{
    const char *table = "highlighting/code.txt";
    const auto outcome = [](const QByteArray &input) {
        const QString text = QString::fromUtf8(input);
        const qsizetype bar = text.indexOf(u'|');
        const CodeLanguage *language = CodeLanguages::find(text.first(bar));
        return language ? sketch(*language, text.sliced(bar + 1)) : u"plain"_s;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(CodeLanguagesTest, HostileLinesTakeTimeInProportionToTheirLength)
{
    for (const QString &piece : {u"<"_s, u"<<A"_s, u"(/"_s, u"/*"_s, u"'"_s, u"\""_s, u"a "_s, u"#"_s,
                                 u"<a \""_s, u"</script"_s, u"\\"_s, u"1."_s, u"<!--"_s, u"a    "_s}) {
        for (const QString &name : {u"sh"_s, u"js"_s, u"rust"_s, u"html"_s, u"yaml"_s, u"c++"_s}) {
            const QString line = piece.repeated(200'000 / piece.size());
            QElapsedTimer timer;
            timer.start();
            static_cast<void>(CodeLanguages::find(name)->read(line, CodeLanguage::start));
            EXPECT_LT(timer.elapsed(), 3000) << qPrintable(name + u' ' + piece); // a square: minutes
        }
    }
}

} // namespace

} // namespace morvane
