#include "view_models/blocks/ReplyBlocksModel.h"

#include "markdown/MarkdownRenderer.h"
#include "support/TestData.h"
#include "view_models/blocks/BlockContent.h"
#include "view_models/blocks/Prose.h"
#include "view_models/blocks/WeatherGlyph.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// What a view has that believes the model's signals and nothing else.
class Mirror : public QObject {
public:
    explicit Mirror(ReplyBlocksModel &model)
        : m_model(model)
    {
        connect(&model, &ReplyBlocksModel::rowsInserted, this, [this](const auto &, int first, int last) {
            for (int row = first; row <= last; ++row)
                m_rows.insert(row, rowOf(row));
            m_lowestTouched = std::min(m_lowestTouched, first);
        });
        connect(&model, &ReplyBlocksModel::rowsRemoved, this, [this](const auto &, int first, int last) {
            m_rows.remove(first, last - first + 1);
            m_lowestTouched = std::min(m_lowestTouched, first);
        });
        connect(&model, &ReplyBlocksModel::dataChanged, this, [this](const QModelIndex &first) {
            EXPECT_EQ(m_rows[first.row()].first, rowOf(first.row()).first) << "a row keeps its kind";
            m_rows[first.row()] = rowOf(first.row());
            m_lowestTouched = std::min(m_lowestTouched, first.row());
        });
    }

    using Row = std::pair<QString, QString>; // kind, plain text

    [[nodiscard]] Row rowOf(int row) const
    {
        const QModelIndex index = m_model.index(row);
        return {m_model.data(index, ReplyBlocksModel::KindRole).toString(),
                m_model.data(index, ReplyBlocksModel::PlainTextRole).toString()};
    }
    void expectTrue() const
    {
        ASSERT_EQ(m_rows.size(), m_model.rowCount());
        for (int row = 0; row < m_model.rowCount(); ++row)
            EXPECT_EQ(m_rows[row], rowOf(row));
    }
    // The first row that anything was said about since the last call.
    int takeLowestTouched() { return std::exchange(m_lowestTouched, 1000); }

private:
    ReplyBlocksModel &m_model;
    QList<Row> m_rows;
    int m_lowestTouched = 1000;
};

const QString answer = u"# Title\n\nSome **bold** words.\n\n- one\n- two\n\n```chart\na | 1\nb | 2\n```\n"
                       "| a | b |\n|---|---|\n| 1 | 2 |\n\nThe end, `code`.\n```cpp\nint i;\n```"_s;

QString kindsOf(const ReplyBlocksModel &model)
{
    QStringList kinds;
    for (int row = 0; row < model.rowCount(); ++row)
        kinds += model.data(model.index(row), ReplyBlocksModel::KindRole).toString();
    return kinds.join(u' ');
}

TEST(ReplyBlocksModelTest, ItsSignalsTellTheWholeTruthWhileAReplyStreams)
{
    ReplyBlocksModel model;
    Mirror mirror(model);
    model.setGrowing(true);
    for (qsizetype length = 1; length <= answer.size(); ++length) {
        model.setText(answer.first(length));
        mirror.expectTrue();
    }
    model.setGrowing(false);
    mirror.expectTrue();
    EXPECT_EQ(kindsOf(model), u"heading paragraph bulletList chart table paragraph code"_s);
    for (const QString &other : {answer.first(30), u"- a"_s, u"1. a\n\nb"_s, QString(), answer}) {
        model.setText(other);
        mirror.expectTrue();
    }
}

TEST(ReplyBlocksModelTest, NothingIsSaidAboutTheBlocksAboveTheOpenOne)
{
    ReplyBlocksModel model;
    Mirror mirror(model);
    QString text = u"# Title\n\n- one\n- two\n\nAn opening"_s;
    model.setText(text);
    mirror.takeLowestTouched();
    for (const QString &piece : {u" and"_s, u" **more"_s, u"** words"_s, u".\n"_s}) {
        model.setText(text += piece);
        EXPECT_EQ(mirror.takeLowestTouched(), 2) << piece.toStdString();
    }
    model.setText(text += u"\n## Next"_s);
    EXPECT_EQ(mirror.takeLowestTouched(), 3);
}

TEST(ReplyBlocksModelTest, ARowOfATableWaitsForItsEnd)
{
    ReplyBlocksModel model;
    model.setGrowing(true);
    model.setText(u"| a |\n|---|\n| 1 |\n| 2"_s);
    EXPECT_EQ(kindsOf(model), u"table"_s);
    model.setGrowing(false);
    EXPECT_EQ(kindsOf(model), u"table paragraph"_s) << "a row that never ended shows its words";
    model.setGrowing(true);
    QString text;
    for (const QString &piece : {u"a | b\n--- | ---\n1 | 2\n"_s, u"3"_s})
        model.setText(text += piece);
    EXPECT_EQ(kindsOf(model), u"table"_s);
    model.setText(text += u" | 4\nWords\n"_s);
    EXPECT_EQ(kindsOf(model), u"table paragraph"_s);
}

TEST(ReplyBlocksModelTest, MarksThatAreAboutToCloseWaitOnce)
{
    const char *table = "view_models/held_marks.txt";
    const auto outcome = [](const QByteArray &line) {
        HeldMarks marks;
        QString text;
        QString before;
        QStringList all;
        for (const QString &piece : QString::fromUtf8(line).split(u'¦')) {
            text += piece;
            const QString shown = text.first(marks.shownLength(text));
            all.append(shown == before ? u"."_s : shown);
            before = shown;
        }
        return all.join(u'¦');
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));

    ReplyBlocksModel model;
    model.setGrowing(true);
    model.setText(u"Words\n\n- one\n-"_s);
    EXPECT_EQ(kindsOf(model), u"paragraph bulletList"_s);
    EXPECT_TRUE(model.isHolding());
    model.showHeld();
    EXPECT_FALSE(model.isHolding());
    EXPECT_EQ(kindsOf(model), u"paragraph bulletList paragraph"_s);
    model.setText(u"Words\n\n- one\n- two **b"_s);
    model.setGrowing(false);
    EXPECT_FALSE(model.isHolding());
    EXPECT_TRUE(model.data(model.index(1), ReplyBlocksModel::PlainTextRole).toString().endsWith(u"**b"_s));
}

TEST(ReplyBlocksModelTest, MoreBlocksThanAnyoneReadsAreShownInPortions)
{
    ReplyBlocksModel model;
    Mirror mirror(model);
    model.setText(u"---\n"_s.repeated(700));
    EXPECT_EQ(model.rowCount() + model.hiddenCount(), 700);
    const int first = model.rowCount();
    EXPECT_LT(first, 400);
    model.showMore();
    EXPECT_GT(model.rowCount(), first);
    model.showMore();
    EXPECT_EQ(model.hiddenCount(), 0);
    mirror.expectTrue();
}

QVariantMap contentOf(const QString &text)
{
    return BlockContent::of(MarkdownRenderer::parse(text).first());
}

TEST(BlockContentTest, ChangesHaveADirection)
{
    const QVariantList quotes =
        contentOf(u"```market\na|1|+2%\nb|1|-2%\nc|1|−2\nd|1|2\ne|1|▲ 3\nf|1"_s).value(u"entries"_s).toList();
    QString directions;
    for (const QVariant &quote : quotes)
        directions += QString::number(quote.toMap().value(u"direction"_s).toInt()) + u' ';
    EXPECT_EQ(directions, u"1 -1 -1 0 1 0 "_s);
}

TEST(BlockContentTest, WhatIsTooMuchToDrawIsCountedOrCut)
{
    QString facts = u"```facts\n"_s;
    for (int i = 0; i < 130; ++i)
        facts += u"a | %1\n"_s.arg(i);
    EXPECT_EQ(contentOf(facts).value(u"entries"_s).toList().size(), 100);
    EXPECT_EQ(contentOf(facts).value(u"more"_s), 30);

    const QString line(10'000, u'x');
    const QString code = contentOf(u"```\nab\n"_s + line + u"\ncd"_s).value(u"code"_s).toString();
    EXPECT_EQ(code.count(u'\n'), 4);
    EXPECT_EQ(QString(code).remove(u'\n'), u"ab"_s + line + u"cd"_s) << "nothing is lost";
}

TEST(BlockContentTest, TablesKeepTheirColumnsInWordsAlone)
{
    const auto plain = [](const QString &text) {
        return BlockContent::plainText(MarkdownRenderer::parse(text).first());
    };
    EXPECT_EQ(plain(u"```compare\nA | B\nx | 1 | 2"_s), u"\tA\tB\nx\t1\t2"_s);
    EXPECT_EQ(plain(u"a | b\n--- | ---\n1<br>2 | 3"_s), u"a\tb\n1 2\t3"_s);
    EXPECT_EQ(plain(u"2. [x] a\n3. b\n  - c"_s), u"2. ☑ a\n3. b\n  ◦ c"_s);
    EXPECT_EQ(contentOf(u"```chart\na | −2K\nb | 1"_s).value(u"values"_s), QVariantList({-2000.0, 1.0}));
}

TEST(BlockContentTest, AWeatherReportHasTheDrawingOfItsWords)
{
    const QString cases =
        u"Scattered Thunderstorms=storm,Light rain=rain,Snow showers=snow,Partly cloudy=partly,"
        "Sunny=sun,Overcast=cloud,Patchy fog=fog,Windy=wind,Frogs=,Nice=,=,Teilweise bewölkt=partly,"
        "Spritzig=,Ciel dégagé=sun,TORMENTAS aisladas=storm,小雨=rain,晴れ=sun"_s;
    for (const QString &each : cases.split(u','))
        EXPECT_EQ(WeatherGlyph::of(each.section(u'=', 0, 0)).section(u'-', 1), each.section(u'=', 1))
            << each.toStdString();
}

} // namespace

} // namespace morvane
