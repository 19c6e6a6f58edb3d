#pragma once

#include "markdown/Block.h"

namespace morvane {

// Blocks in one short line, to compare and to read: p(Some <b>bold</b> words) ul(one, two) code[cpp](x).
namespace Sketch {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

inline QString formatted(QString words, const AttributedText::Run &run)
{
    const auto wrap = [&words](QLatin1StringView tag) { words = u"<%1>%2</%1>"_s.arg(tag, words); };
    if (run.formats & AttributedText::Bold)
        wrap("b"_L1);
    if (run.formats & AttributedText::Italic)
        wrap("i"_L1);
    if (run.formats & AttributedText::Strikethrough)
        wrap("s"_L1);
    if (run.formats & AttributedText::Code)
        wrap("c"_L1);
    return run.link.isEmpty() ? words : u"<a %1>%2</a>"_s.arg(run.link, words);
}

template <typename Part>
QString listed(const QList<Part> &parts, const QString &separator = u", "_s);

// A name with the parts of a block in brackets.
template <typename... Parts>
QString named(const QString &name, const Parts &...parts)
{
    return name + u'(' + QStringList{parts...}.join(u"; "_s) + u')';
}

struct SketchOf {
    QString operator()(const QString &text) const { return text; }
    QString operator()(const std::optional<QString> &text) const { return text.value_or(u"-"_s); }
    QString operator()(const AttributedText &text) const
    {
        QString result;
        qsizetype at = 0;
        for (const AttributedText::Run &run : text.runs) {
            result += text.text.sliced(at, run.start - at);
            result += formatted(text.text.sliced(run.start, run.length), run);
            at = run.start + run.length;
        }
        return result + text.text.sliced(at);
    }
    template <typename Cell>
    QString operator()(const QList<Cell> &row) const
    {
        return listed(row, u"|"_s);
    }
    QString operator()(const ListItem &item) const
    {
        const QString task = item.task == ListItem::Task::none   ? QString()
                             : item.task == ListItem::Task::done ? u"[x]"_s
                                                                 : u"[ ]"_s;
        return QString(item.depth, u'>') + (item.number ? QString::number(*item.number) + u'.' : QString()) +
               task + (*this)(item.text);
    }
    QString operator()(const Fact &fact) const { return fact.label + u'=' + fact.value; }
    QString operator()(const TimelineEntry &entry) const { return entry.marker + u'=' + entry.text; }
    QString operator()(const Stat &stat) const { return joined(stat.value, stat.label, stat.delta); }
    QString operator()(const MarketQuote &quote) const
    {
        return joined(quote.name, quote.value, quote.change);
    }
    QString operator()(const ChartPoint &point) const
    {
        const QString value = QString::number(point.value, 'g', 10);
        const QString scaled = QString::number(point.scaled, 'g', 10);
        return joined(point.label, value == scaled ? value : value + u'~' + scaled, point.display);
    }
    QString joined(const QString &a, const QString &b, const std::optional<QString> &c) const
    {
        return a + u'=' + b + u'=' + (*this)(c);
    }

    QString operator()(const Paragraph &block) const { return named(u"p"_s, (*this)(block.text)); }
    QString operator()(const Quote &block) const { return named(u"q"_s, (*this)(block.text)); }
    QString operator()(const Heading &block) const
    {
        return named(u"h%1"_s.arg(block.level), (*this)(block.text));
    }
    QString operator()(const BulletList &block) const { return named(u"ul"_s, listed(block.items)); }
    QString operator()(const NumberedList &block) const { return named(u"ol"_s, listed(block.items)); }
    QString operator()(const Code &block) const
    {
        return named(u"code[%1]"_s.arg((*this)(block.language)), block.text);
    }
    QString operator()(const Table &block) const
    {
        return named(u"table"_s, (*this)(block.headers), listed(block.rows, u"; "_s));
    }
    QString operator()(const Comparison &block) const
    {
        const QString heading = block.heading.isEmpty() ? QString() : block.heading + u':';
        return named(u"compare"_s, heading + (*this)(block.titles), listed(block.rows, u"; "_s));
    }
    QString operator()(const Stats &block) const { return named(u"stats"_s, listed(block.stats)); }
    QString operator()(const Facts &block) const { return named(u"facts"_s, listed(block.facts)); }
    QString operator()(const Timeline &block) const { return named(u"timeline"_s, listed(block.entries)); }
    QString operator()(const Market &block) const { return named(u"market"_s, listed(block.quotes)); }
    QString operator()(const ChartSpec &block) const
    {
        const QString kind = block.kind == ChartSpec::Kind::line ? u"line"_s : u"bar"_s;
        return named(kind + (block.logScale ? u"-log["_s : u"["_s) + (*this)(block.title) + u']',
                     listed(block.points));
    }
    QString operator()(const WeatherInfo &block) const
    {
        const QList<std::optional<QString>> main{block.location, block.condition, block.high, block.low};
        return named(u"weather"_s, listed(main), listed(block.details));
    }
    QString operator()(const Divider &) const { return u"hr"_s; }
};

template <typename Part>
QString listed(const QList<Part> &parts, const QString &separator)
{
    QStringList words;
    for (const Part &part : parts)
        words += SketchOf{}(part);
    return words.join(separator);
}

inline QString of(const AttributedText &text)
{
    return SketchOf{}(text).replace(u'\r', "\\r"_L1);
}

inline QString of(const Blocks &blocks)
{
    QStringList sketches;
    for (const Block &block : blocks)
        sketches += std::visit(SketchOf{}, block);
    return sketches.join(u' ');
}

} // namespace Sketch

} // namespace morvane
