#include "documents/RichText.h"

#include "support/TestData.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(RichTextTest, ReadsWhatAPersonSees)
{
    const auto outcome = [](const QByteArray &input) {
        const auto text = RichText::text(input);
        if (!text)
            return u"(no rich text)"_s;
        QString line = *text;
        return line.replace(u'\n', u'⏎').replace(u'\t', u'⇥').replace(u'\u00A0', u'⍽');
    };
    EXPECT_EQ(TestData::transcript("documents/rich_text.txt", outcome),
              TestData::text("documents/rich_text.txt"));
}

// The same document as an office program wrote it, without most of its styles, and as the one that is
// installed here writes it now.
TEST(RichTextTest, ReadsWhatAnOfficeProgramWrites)
{
    const QString meant = QString::fromUtf8(TestData::read("documents/office.txt"));
    EXPECT_EQ(RichText::text(TestData::read("documents/office.rtf")), meant);
    const QString office = QStandardPaths::findExecutable(u"soffice"_s);
    if (office.isEmpty())
        GTEST_SKIP() << "only what was kept: no office program is installed";
    const QTemporaryDir folder;
    const QStringList arguments{u"-env:UserInstallation=file://"_s + folder.filePath(u"profile"_s),
                                u"--headless"_s,
                                u"--convert-to"_s,
                                u"rtf"_s,
                                u"--outdir"_s,
                                folder.path(),
                                TestData::pathOf("documents/office.fodt")};
    ASSERT_EQ(QProcess::execute(office, arguments), 0);
    QFile written(folder.filePath(u"office.rtf"_s));
    ASSERT_TRUE(written.open(QFile::ReadOnly));
    EXPECT_EQ(RichText::text(written.readAll()), meant);
}

TEST(RichTextTest, BoundsDepthAndSkipsOfAnyLength)
{
    const auto nested = [](qsizetype depth) {
        return "{\\rtf1 " + QByteArray(depth - 1, '{') + "x" + QByteArray(depth, '}');
    };
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth)), u"x"_s);
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth + 1)), std::nullopt);
    EXPECT_EQ(RichText::text(nested(10'000'000)), std::nullopt);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\bin2147483647 b}"), u"a"_s);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\uc2147483647\\u8364 b}"), u"a€"_s);
}

} // namespace

} // namespace morvane
