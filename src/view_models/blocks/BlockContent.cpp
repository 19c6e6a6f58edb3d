#include "view_models/blocks/BlockContent.h"

#include "view_models/blocks/Prose.h"
#include "view_models/blocks/WeatherGlyph.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

namespace {

// A line that is longer stands as several ones: no line layout is made for megabytes.
constexpr qsizetype longestLine = 4000;

QVariant words(const AttributedText &text)
{
    return QVariant::fromValue(Prose{{text}, {}});
}

QString signOf(const ListItem &item)
{
    static constexpr std::array bullets{u'•', u'◦', u'▪'};
    QString sign = item.number ? QString::number(*item.number) + u'.' : QString();
    if (item.task != ListItem::Task::none)
        sign += (sign.isEmpty() ? QString() : u" "_s) + (item.task == ListItem::Task::done ? u'☑' : u'☐');
    return sign.isEmpty() ? QString(bullets[item.depth % bullets.size()]) : sign;
}

Prose proseOf(const QList<ListItem> &items)
{
    Prose prose;
    for (const ListItem &item : items) {
        prose.parts.append(item.text);
        prose.marks.append({item.depth, signOf(item)});
    }
    return prose;
}

QString withLineBreaks(const QString &code)
{
    QString result;
    qsizetype lineStart = 0;
    for (qsizetype at = 0; at < code.size(); at = lineStart) {
        const qsizetype lineEnd = code.indexOf(u'\n', at);
        const qsizetype end = lineEnd < 0 ? code.size() : lineEnd + 1;
        if (end - at <= longestLine) {
            lineStart = end;
            result += QStringView(code).sliced(at, end - at);
        } else {
            lineStart = at + longestLine - (code[at + longestLine].isLowSurrogate() ? 1 : 0);
            result += QStringView(code).sliced(at, lineStart - at);
            result += u'\n';
        }
    }
    return result;
}

// The sign of a change such as "+1.2%" or "−3": 1, -1, or 0 where none is written.
int direction(const std::optional<QString> &change)
{
    const QString text = change.value_or(QString()).trimmed();
    if (text.startsWith(u'+') || text.startsWith(u'▲') || text.startsWith(u'↑'))
        return 1;
    const bool falls = text.startsWith(u'-') || text.startsWith(u'−') || text.startsWith(u'–') ||
                       text.startsWith(u'▼') || text.startsWith(u'↓');
    return falls ? -1 : 0;
}

template <typename Entry, typename Shape>
void addEntries(QVariantMap &content, const QList<Entry> &entries, Shape shape)
{
    QVariantList shaped;
    for (const Entry &entry : entries.first(std::min(entries.size(), BlockContent::mostEntries)))
        shaped.append(QVariant(shape(entry)));
    content[u"entries"_s] = shaped;
    content[u"more"_s] = entries.size() - shaped.size();
}

QVariantMap labelled(const Fact &fact)
{
    return {{u"label"_s, fact.label}, {u"value"_s, fact.value}};
}

TableWords tableOf(const Comparison &comparison)
{
    TableWords table;
    table.headers.append({comparison.heading, {}});
    for (const QString &title : comparison.titles)
        table.headers.append({title});
    for (const QStringList &row : comparison.rows) {
        QList<AttributedText> cells;
        for (const QString &cell : row)
            cells.append({cell});
        table.rows.append(cells);
    }
    return table;
}

QString joined(const QList<AttributedText> &cells)
{
    QStringList texts;
    for (const AttributedText &cell : cells)
        texts.append(QString(cell.text).replace(u'\n', u' '));
    return texts.join(u'\t');
}

QString plain(const TableWords &table)
{
    QStringList lines{joined(table.headers)};
    for (const auto &row : table.rows)
        lines.append(joined(row));
    return lines.join(u'\n');
}

QString beside(const std::optional<QString> &text, const QString &lead = u" "_s)
{
    return text ? lead + *text : QString();
}

struct ContentOf {
    QVariantMap operator()(const Paragraph &block) const { return {{u"words"_s, words(block.text)}}; }
    QVariantMap operator()(const Heading &block) const
    {
        return {{u"level"_s, block.level}, {u"words"_s, words(block.text)}};
    }
    QVariantMap operator()(const BulletList &block) const
    {
        return {{u"words"_s, QVariant::fromValue(proseOf(block.items))}};
    }
    QVariantMap operator()(const NumberedList &block) const
    {
        return {{u"words"_s, QVariant::fromValue(proseOf(block.items))}};
    }
    QVariantMap operator()(const Quote &block) const { return {{u"words"_s, words(block.text)}}; }
    QVariantMap operator()(const Code &block) const
    {
        return {{u"code"_s, withLineBreaks(block.text)},
                {u"lines"_s, block.text.count(u'\n') + 1},
                {u"language"_s, block.language.value_or(QString())}};
    }
    QVariantMap operator()(const Table &block) const
    {
        return {{u"table"_s, QVariant::fromValue(TableWords{block.headers, block.rows})}};
    }
    QVariantMap operator()(const Comparison &block) const
    {
        return {{u"table"_s, QVariant::fromValue(tableOf(block))}};
    }
    QVariantMap operator()(const Stats &block) const
    {
        QVariantMap content;
        addEntries(content, block.stats, [](const Stat &stat) -> QVariantMap {
            return {{u"value"_s, stat.value},
                    {u"label"_s, stat.label},
                    {u"change"_s, stat.delta.value_or(QString())},
                    {u"direction"_s, direction(stat.delta)}};
        });
        return content;
    }
    QVariantMap operator()(const Facts &block) const
    {
        QVariantMap content;
        addEntries(content, block.facts, labelled);
        return content;
    }
    QVariantMap operator()(const Timeline &block) const
    {
        QVariantMap content;
        addEntries(content, block.entries, [](const TimelineEntry &entry) -> QVariantMap {
            return {{u"marker"_s, entry.marker}, {u"text"_s, entry.text}};
        });
        return content;
    }
    QVariantMap operator()(const ChartSpec &block) const
    {
        QVariantList values;
        QStringList labels;
        QStringList displays;
        for (const ChartPoint &point : block.points) {
            values.append(point.scaled);
            labels.append(point.label);
            displays.append(point.display);
        }
        return {{u"isLine"_s, block.kind == ChartSpec::Kind::line},
                {u"logScale"_s, block.logScale},
                {u"title"_s, block.title.value_or(QString())},
                {u"values"_s, values},
                {u"labels"_s, labels},
                {u"displays"_s, displays}};
    }
    QVariantMap operator()(const Market &block) const
    {
        QVariantMap content;
        addEntries(content, block.quotes, [](const MarketQuote &quote) -> QVariantMap {
            return {{u"name"_s, quote.name},
                    {u"value"_s, quote.value},
                    {u"change"_s, quote.change.value_or(QString())},
                    {u"direction"_s, direction(quote.change)}};
        });
        return content;
    }
    QVariantMap operator()(const WeatherInfo &block) const
    {
        QVariantMap content{{u"location"_s, block.location.value_or(QString())},
                            {u"condition"_s, block.condition.value_or(QString())},
                            {u"high"_s, block.high.value_or(QString())},
                            {u"low"_s, block.low.value_or(QString())},
                            {u"glyph"_s, WeatherGlyph::of(block.condition.value_or(QString()))}};
        addEntries(content, block.details, labelled);
        return content;
    }
    QVariantMap operator()(const Divider &) const { return {}; }
};

template <typename Entry, typename Line>
QString linesOf(const QList<Entry> &entries, Line line)
{
    QStringList lines;
    for (const Entry &entry : entries)
        lines.append(line(entry));
    return lines.join(u'\n');
}

struct PlainTextOf {
    QString operator()(const Paragraph &block) const { return block.text.text; }
    QString operator()(const Heading &block) const { return block.text.text; }
    QString operator()(const BulletList &block) const { return proseOf(block.items).plainText(); }
    QString operator()(const NumberedList &block) const { return proseOf(block.items).plainText(); }
    QString operator()(const Quote &block) const { return block.text.text; }
    QString operator()(const Code &block) const { return block.text; }
    QString operator()(const Table &block) const { return plain({block.headers, block.rows}); }
    QString operator()(const Comparison &block) const { return plain(tableOf(block)); }
    QString operator()(const Stats &block) const
    {
        return linesOf(block.stats, [](const Stat &stat) {
            return stat.label + u": "_s + stat.value + beside(stat.delta);
        });
    }
    QString operator()(const Facts &block) const
    {
        return linesOf(block.facts, [](const Fact &fact) { return fact.label + u": "_s + fact.value; });
    }
    QString operator()(const Timeline &block) const
    {
        return linesOf(block.entries,
                       [](const TimelineEntry &entry) { return entry.marker + u": "_s + entry.text; });
    }
    QString operator()(const ChartSpec &block) const
    {
        const QString points = linesOf(
            block.points, [](const ChartPoint &point) { return point.label + u": "_s + point.display; });
        return block.title ? *block.title + u'\n' + points : points;
    }
    QString operator()(const Market &block) const
    {
        return linesOf(block.quotes, [](const MarketQuote &quote) {
            return quote.name + u": "_s + quote.value + beside(quote.change);
        });
    }
    QString operator()(const WeatherInfo &block) const
    {
        QStringList lines;
        for (const auto &part : {block.location, block.condition}) {
            if (part)
                lines.append(*part);
        }
        if (block.high)
            lines.append(u"High: "_s + *block.high);
        if (block.low)
            lines.append(u"Low: "_s + *block.low);
        for (const Fact &fact : block.details)
            lines.append(fact.label + u": "_s + fact.value);
        return lines.join(u'\n');
    }
    QString operator()(const Divider &) const { return {}; }
};

} // namespace

QVariantMap BlockContent::of(const Block &block)
{
    return std::visit(ContentOf{}, block);
}

QString BlockContent::plainText(const Block &block)
{
    return std::visit(PlainTextOf{}, block);
}

QString BlockContent::plainText(const Blocks &blocks)
{
    QStringList texts;
    for (const Block &block : blocks)
        texts.append(plainText(block));
    texts.removeAll(QString());
    return texts.join(u"\n\n"_s);
}

} // namespace morvane
