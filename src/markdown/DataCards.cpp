#include "markdown/DataCards.h"

#include "markdown/ChartValues.h"
#include "markdown/LineGrammar.h"
#include "markdown/TextBlockReader.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using namespace MarkdownRenderer;

using Lines = QList<QStringView>;
using Parser = std::optional<Block> (*)(const Lines &);

constexpr qsizetype mostStats = 4;
constexpr qsizetype fewestEntries = 2;
constexpr qsizetype fewestPoints = 2;
constexpr qsizetype mostPoints = 12;
constexpr qsizetype mostQuotes = 10;
constexpr qsizetype fewestTitles = 2;
constexpr qsizetype mostTitles = 4;

Lines linesOf(QStringView text)
{
    Lines lines;
    for (const QStringView line : text.tokenize(u'\n')) {
        const QStringView words = LineGrammar::trimmed(line);
        if (!words.isEmpty())
            lines.append(words);
    }
    return lines;
}

std::optional<QString> third(const QStringList &parts)
{
    return parts.size() > 2 && !parts[2].isEmpty() ? std::optional(parts[2]) : std::nullopt;
}

bool startsWithTwo(const QStringList &parts)
{
    return parts.size() >= 2 && !parts[0].isEmpty() && !parts[1].isEmpty();
}

std::optional<Block> stats(const Lines &lines)
{
    Stats card;
    for (const QStringView line : lines) {
        QStringList parts = LineGrammar::parts(line);
        if (!startsWithTwo(parts))
            continue;
        if (!LineGrammar::looksNumeric(parts[0]) && LineGrammar::looksNumeric(parts[1]))
            parts.swapItemsAt(0, 1);
        card.stats.append({parts[0], parts[1], third(parts)});
    }
    if (card.stats.isEmpty() || card.stats.size() > mostStats)
        return std::nullopt;
    return card;
}

std::optional<Block> facts(const Lines &lines)
{
    Facts card;
    for (const QStringView line : lines) {
        if (auto pair = LineGrammar::labelValue(line))
            card.facts.append({std::move(pair->label), std::move(pair->value)});
    }
    if (card.facts.isEmpty())
        return std::nullopt;
    return card;
}

// The cells of lines that may be written as a table: without "|" at both ends, and without what rules the
// headers off.
QList<QStringList> rowsOf(const Lines &lines)
{
    QList<QStringList> rows;
    for (const QStringView line : lines) {
        if (LineGrammar::isSeparatorRow(line) || LineGrammar::isOpenSeparatorRow(line))
            continue;
        rows.append(LineGrammar::isTableRow(line) ? LineGrammar::tableCells(line) : LineGrammar::parts(line));
    }
    return rows;
}

std::optional<Block> comparison(const Lines &lines)
{
    QList<QStringList> rows = rowsOf(lines);
    if (rows.size() < 2)
        return std::nullopt;
    Comparison card{.titles = rows.takeFirst(), .rows = {}, .heading = {}};
    // The headers of a table name the labels' column too.
    const bool isTable = rows.size() + 1 < lines.size() || LineGrammar::isTableRow(lines.first());
    if (isTable && card.titles.size() == rows.first().size())
        card.heading = card.titles.takeFirst();
    card.titles.removeAll(QString());
    if (card.titles.size() < fewestTitles || card.titles.size() > mostTitles)
        return std::nullopt;
    for (QStringList &row : rows) {
        if (row.size() < 2)
            continue;
        row.resize(card.titles.size() + 1);
        card.rows.append(row);
    }
    if (card.rows.isEmpty())
        return std::nullopt;
    return card;
}

std::optional<Block> timeline(const Lines &lines)
{
    Timeline card;
    for (const QStringView line : lines) {
        if (auto pair = LineGrammar::labelValue(line))
            card.entries.append({std::move(pair->label), std::move(pair->value)});
    }
    if (card.entries.size() < fewestEntries)
        return std::nullopt;
    return card;
}

std::optional<Block> chart(const Lines &lines)
{
    ChartSpec card;
    for (const QStringView line : lines) {
        auto pair = ChartValues::labelValue(line);
        if (!pair)
            continue;
        const QString key = pair->label.toLower();
        if (key == "type"_L1)
            card.kind = pair->value.toLower() == "line"_L1 ? ChartSpec::Kind::line : ChartSpec::Kind::bar;
        else if (key == "title"_L1)
            card.title = std::move(pair->value);
        else if (key == "scale"_L1)
            card.logScale = pair->value.toLower() == "log"_L1;
        else if (const auto value = ChartValues::number(pair->value))
            card.points.append({std::move(pair->label), *value, std::move(pair->value), *value});
    }
    if (card.points.size() < fewestPoints || card.points.size() > mostPoints)
        return std::nullopt;
    ChartValues::scale(card.points);
    return card;
}

std::optional<Block> market(const Lines &lines)
{
    Market card;
    for (const QStringView line : lines) {
        const QStringList parts = LineGrammar::parts(line);
        if (startsWithTwo(parts))
            card.quotes.append({parts[0], parts[1], third(parts)});
    }
    if (card.quotes.isEmpty() || card.quotes.size() > mostQuotes)
        return std::nullopt;
    return card;
}

std::optional<Block> weather(const Lines &lines)
{
    WeatherInfo card;
    for (const QStringView line : lines) {
        auto pair = LineGrammar::labelValue(line);
        if (!pair)
            continue;
        const QString key = pair->label.toLower();
        if (key == "location"_L1)
            card.location = std::move(pair->value);
        else if (key == "condition"_L1 || key == "conditions"_L1)
            card.condition = std::move(pair->value);
        else if (key == "high"_L1 || key == "max"_L1)
            card.high = std::move(pair->value);
        else if (key == "low"_L1 || key == "min"_L1)
            card.low = std::move(pair->value);
        else
            card.details.append({std::move(pair->label), std::move(pair->value)});
    }
    if (!card.condition && !card.high)
        return std::nullopt;
    return card;
}

struct Kind {
    QLatin1StringView language;
    Parser parser;
};

constexpr Kind kinds[] = {
    {"stat"_L1, stats},        {"stats"_L1, stats},        {"facts"_L1, facts},
    {"fact"_L1, facts},        {"compare"_L1, comparison}, {"comparison"_L1, comparison},
    {"timeline"_L1, timeline}, {"chart"_L1, chart},        {"market"_L1, market},
    {"markets"_L1, market},    {"tickers"_L1, market},     {"weather"_L1, weather},
    {"forecast"_L1, weather},
};

const Kind *kindOf(QStringView language)
{
    const auto found = std::find_if(std::begin(kinds), std::end(kinds), [language](const Kind &kind) {
        return language.compare(kind.language, Qt::CaseInsensitive) == 0;
    });
    return found == std::end(kinds) ? nullptr : found;
}

} // namespace

bool DataCards::isTyped(QStringView language)
{
    return kindOf(language) != nullptr;
}

std::optional<Block> DataCards::card(QStringView language, QStringView text)
{
    const Kind *kind = kindOf(language);
    return kind ? kind->parser(linesOf(text)) : std::nullopt;
}

std::optional<Table> DataCards::table(QStringView text)
{
    const Lines lines = linesOf(text);
    if (lines.size() < 2)
        return std::nullopt;
    TextBlockReader reader;
    Blocks blocks;
    for (const QStringView line : lines) {
        if (!LineGrammar::isTableRow(line))
            return std::nullopt;
        reader.addLine(line, blocks);
    }
    reader.flush(blocks);
    const auto *table = blocks.size() == 1 ? std::get_if<Table>(&blocks.first()) : nullptr;
    return table ? std::optional(*table) : std::nullopt;
}

} // namespace morvane
