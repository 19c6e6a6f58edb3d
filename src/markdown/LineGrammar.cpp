#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype deepestHeading = 4;
constexpr qsizetype shortestDivider = 3;
constexpr qsizetype shortestTableRow = 3;
constexpr qsizetype mostDigits = 3;
constexpr int columnsOfTab = 4;

qsizetype runLength(QStringView text, QChar character)
{
    const auto end = std::find_if(text.begin(), text.end(), [=](QChar c) { return c != character; });
    return end - text.begin();
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

// "- - -" is a divider with gaps, which counts as ordinary words and not as an item that holds "- -".
bool isGappedDivider(QStringView line)
{
    const QChar mark = line[0];
    return mark != u'+' && line.count(mark) >= shortestDivider &&
           std::all_of(line.begin(), line.end(), [=](QChar c) { return c == mark || c == u' '; });
}

std::optional<QStringView> nonEmpty(QStringView text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace

QStringView LineGrammar::trimmed(QStringView line)
{
    return line.trimmed();
}

int LineGrammar::indentation(QStringView line)
{
    int columns = 0;
    for (const QChar c : line) {
        if (c != u' ' && c != u'\t')
            break;
        columns += c == u'\t' ? columnsOfTab : 1;
    }
    return columns;
}

bool LineGrammar::isNewline(QChar character)
{
    return (character >= u'\n' && character <= u'\r') || character == QChar(0x85) ||
           character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
}

std::optional<LineGrammar::HeadingLine> LineGrammar::heading(QStringView line)
{
    const qsizetype level = runLength(line, u'#');
    if (level < 1 || level > deepestHeading || level >= line.size() || line[level] != u' ')
        return std::nullopt;
    const QStringView text = trimmed(line.sliced(level));
    if (text.isEmpty())
        return std::nullopt;
    return HeadingLine{static_cast<int>(level), text};
}

bool LineGrammar::isDivider(QStringView line)
{
    return line.size() >= shortestDivider && QStringView(u"-*_").contains(line[0]) &&
           runLength(line, line[0]) == line.size();
}

std::optional<QStringView> LineGrammar::quote(QStringView line)
{
    if (!line.startsWith(u'>'))
        return std::nullopt;
    return trimmed(line.sliced(1));
}

std::optional<QStringView> LineGrammar::bulletItem(QStringView line)
{
    if (line.size() < 2 || !QStringView(u"-*+").contains(line[0]) || line[1] != u' ' || isGappedDivider(line))
        return std::nullopt;
    return nonEmpty(trimmed(line.sliced(2)));
}

std::optional<QStringView> LineGrammar::numberedItem(QStringView line)
{
    const auto digits = std::find_if_not(line.begin(), line.end(), isDigit) - line.begin();
    if (digits < 1 || digits > mostDigits)
        return std::nullopt;
    const QStringView rest = line.sliced(digits);
    if (!rest.startsWith(". "_L1) && !rest.startsWith(") "_L1))
        return std::nullopt;
    return nonEmpty(trimmed(rest.sliced(2)));
}

bool LineGrammar::isTableRow(QStringView line)
{
    return line.size() >= shortestTableRow && line.front() == u'|' && line.back() == u'|';
}

bool LineGrammar::isSeparatorRow(QStringView line)
{
    return line.size() >= 2 && line.front() == u'|' && line.back() == u'|' && line.contains(u'-') &&
           std::all_of(line.begin(), line.end(), [](QChar c) { return QStringView(u"-|: ").contains(c); });
}

QList<QStringView> LineGrammar::tableCells(QStringView row)
{
    QList<QStringView> cells;
    for (const QStringView cell : row.sliced(1).chopped(1).tokenize(u'|'))
        cells.append(trimmed(cell));
    return cells;
}

qsizetype LineGrammar::fence(QStringView line)
{
    for (qsizetype at = line.indexOf(u'`'); at >= 0; at = line.indexOf(u'`', at + 1)) {
        if (line.sliced(at).startsWith(u"```"))
            return at;
    }
    return -1;
}

QStringList LineGrammar::parts(QStringView line)
{
    QStringList parts;
    for (const QStringView part : line.tokenize(u'|'))
        parts.append(trimmed(part).toString());
    return parts;
}

std::optional<LineGrammar::LabelValue> LineGrammar::labelValue(QStringView line)
{
    qsizetype at = line.indexOf(u'|');
    if (at < 0)
        at = line.indexOf(u':');
    if (at < 0)
        return std::nullopt;
    const QStringView label = trimmed(line.first(at));
    const QStringView value = trimmed(line.sliced(at + 1));
    if (label.isEmpty() || value.isEmpty())
        return std::nullopt;
    return LabelValue{label.toString(), value.toString()};
}

} // namespace morvane
