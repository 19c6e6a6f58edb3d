#include "Sketch.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

namespace {

QString formatted(QString words, const AttributedText::Run &run)
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

QString sketch(const AttributedText &text)
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

QString sketch(const QString &text)
{
    return text;
}

QString sketch(const std::optional<QString> &text)
{
    return text.value_or(u"-"_s);
}

QString sketch(const Fact &fact)
{
    return fact.label + u'=' + fact.value;
}

QString sketch(const Stat &stat)
{
    return stat.value + u'=' + stat.label + u'=' + sketch(stat.delta);
}

QString sketch(const TimelineEntry &entry)
{
    return entry.marker + u'=' + entry.text;
}

QString sketch(const ChartPoint &point)
{
    return point.label + u'=' + QString::number(point.value, 'g', 10) + u'=' + point.display;
}

QString sketch(const MarketQuote &quote)
{
    return quote.name + u'=' + quote.value + u'=' + sketch(quote.change);
}

template <typename Part>
QString listed(const QList<Part> &parts, const QString &separator = u", "_s)
{
    QStringList words;
    for (const Part &part : parts)
        words += sketch(part);
    return words.join(separator);
}

template <typename Row>
QString rows(const QList<Row> &rows)
{
    QStringList lines;
    for (const Row &row : rows)
        lines += listed(row, u"|"_s);
    return lines.join(u"; "_s);
}

struct SketchOf {
    QString operator()(const Paragraph &block) const { return u"p(%1)"_s.arg(sketch(block.text)); }
    QString operator()(const Heading &block) const
    {
        return u"h%1(%2)"_s.arg(QString::number(block.level), sketch(block.text));
    }
    QString operator()(const BulletList &block) const { return u"ul(%1)"_s.arg(listed(block.items)); }
    QString operator()(const NumberedList &block) const { return u"ol(%1)"_s.arg(listed(block.items)); }
    QString operator()(const Quote &block) const { return u"q(%1)"_s.arg(sketch(block.text)); }
    QString operator()(const Code &block) const
    {
        return u"code[%1](%2)"_s.arg(sketch(block.language), block.text);
    }
    QString operator()(const Table &block) const
    {
        return u"table(%1; %2)"_s.arg(listed(block.headers, u"|"_s), rows(block.rows));
    }
    QString operator()(const Stats &block) const { return u"stats(%1)"_s.arg(listed(block.stats)); }
    QString operator()(const Facts &block) const { return u"facts(%1)"_s.arg(listed(block.facts)); }
    QString operator()(const Comparison &block) const
    {
        return u"compare(%1; %2)"_s.arg(block.titles.join(u'|'), rows(block.rows));
    }
    QString operator()(const Timeline &block) const { return u"timeline(%1)"_s.arg(listed(block.entries)); }
    QString operator()(const ChartSpec &block) const
    {
        return u"%1%2[%3](%4)"_s.arg(block.kind == ChartSpec::Kind::line ? u"line"_s : u"bar"_s,
                                     block.logScale ? u"-log"_s : QString(), sketch(block.title),
                                     listed(block.points));
    }
    QString operator()(const Market &block) const { return u"market(%1)"_s.arg(listed(block.quotes)); }
    QString operator()(const WeatherInfo &block) const
    {
        return u"weather(%1, %2, %3, %4; %5)"_s.arg(sketch(block.location), sketch(block.condition),
                                                    sketch(block.high), sketch(block.low),
                                                    listed(block.details));
    }
    QString operator()(const Divider &) const { return u"hr"_s; }
};

std::string shown(QString sketch)
{
    return sketch.replace(u'\n', "\\n"_L1).toStdString();
}

} // namespace

std::string Sketch::of(const AttributedText &text)
{
    return shown(sketch(text));
}

std::string Sketch::of(const Block &block)
{
    return shown(std::visit(SketchOf{}, block));
}

std::string Sketch::of(const Blocks &blocks)
{
    std::string result;
    for (const Block &block : blocks)
        result += (result.empty() ? "" : " ") + of(block);
    return result;
}

} // namespace morvane
