#include "markdown/LineGrammar.h"

#include "markdown/CodeSpans.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype deepestHeading = 4;
constexpr qsizetype shortestDivider = 3;
constexpr qsizetype shortestTableRow = 3;
constexpr qsizetype mostDigits = 3;
constexpr int columnsOfTab = 4;
constexpr qsizetype shortestFence = 3;
constexpr qsizetype taskMarkLength = 3;
constexpr qsizetype mostLettersOfANumber = 3; // a unit, such as "km" or "USD"

qsizetype runLength(QStringView text, QChar character)
{
    const auto end = std::find_if(text.begin(), text.end(), [=](QChar c) { return c != character; });
    return end - text.begin();
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isOfSeparator(QChar character)
{
    return character == u'-' || character == u'|' || character == u':' || character == u' ';
}

// "- - -" is a divider with gaps, which counts as ordinary words and not as an item that holds "- -".
bool isGappedDivider(QStringView line)
{
    const QChar mark = line[0];
    return mark != u'+' &&
           std::all_of(line.begin(), line.end(), [=](QChar c) { return c == mark || c == u' '; }) &&
           line.count(mark) >= shortestDivider;
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

QStringView LineGrammar::withoutIndentation(QStringView line, int columns)
{
    qsizetype at = 0;
    while (at < line.size() && (line[at] == u' ' || line[at] == u'\t')) {
        columns -= line[at] == u'\t' ? columnsOfTab : 1;
        if (columns < 0)
            break;
        ++at;
    }
    return line.sliced(at);
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
    return line.size() >= shortestDivider && runLength(line, line[0]) == line.size() &&
           QStringView(u"-*_").contains(line[0]);
}

std::optional<QStringView> LineGrammar::quote(QStringView line)
{
    if (!line.startsWith(u'>'))
        return std::nullopt;
    return trimmed(line.sliced(1));
}

std::optional<QStringView> LineGrammar::bulletItem(QStringView line)
{
    if (line.size() < 2 || line[1] != u' ' || !QStringView(u"-*+").contains(line[0]) || isGappedDivider(line))
        return std::nullopt;
    return nonEmpty(trimmed(line.sliced(2)));
}

std::optional<LineGrammar::NumberedLine> LineGrammar::numberedItem(QStringView line)
{
    const auto digits = std::find_if_not(line.begin(), line.end(), isDigit) - line.begin();
    if (digits < 1 || digits > mostDigits)
        return std::nullopt;
    const QStringView rest = line.sliced(digits);
    if (!rest.startsWith(". "_L1) && !rest.startsWith(") "_L1))
        return std::nullopt;
    const QStringView text = trimmed(rest.sliced(2));
    if (text.isEmpty())
        return std::nullopt;
    return NumberedLine{line.first(digits).toInt(), text};
}

qsizetype LineGrammar::itemWords(QStringView line)
{
    if (const auto item = bulletItem(line))
        return item->data() - line.data();
    const auto step = numberedItem(line);
    return step ? step->text.data() - line.data() : 0;
}

std::optional<LineGrammar::TaskWords> LineGrammar::task(QStringView item)
{
    if (item.size() <= taskMarkLength || item[0] != u'[' || item[2] != u']' ||
        !item[taskMarkLength].isSpace() || !QStringView(u" xX").contains(item[1]))
        return std::nullopt;
    return TaskWords{item[1] != u' ', trimmed(item.sliced(taskMarkLength))};
}

bool LineGrammar::mayBecomeTask(QStringView item)
{
    return item.startsWith(u'[') && item.size() <= taskMarkLength;
}

bool LineGrammar::isTableRow(QStringView line)
{
    return line.size() >= shortestTableRow && line.front() == u'|' && line.back() == u'|' &&
           !line.endsWith("\\|"_L1);
}

bool LineGrammar::isSeparatorRow(QStringView line)
{
    return line.size() >= 2 && line.front() == u'|' && line.back() == u'|' &&
           std::all_of(line.begin(), line.end(), isOfSeparator) && line.contains(u'-');
}

bool LineGrammar::isOpenSeparatorRow(QStringView line)
{
    if (!std::all_of(line.begin(), line.end(), isOfSeparator) || !line.contains(u'|'))
        return false;
    const QStringList cells = tableCells(line);
    return cells.size() >= 2 && std::all_of(cells.begin(), cells.end(), [](QStringView cell) {
               cell = cell.sliced(cell.startsWith(u':') ? 1 : 0);
               cell.chop(cell.endsWith(u':') ? 1 : 0);
               return !cell.isEmpty() && runLength(cell, u'-') == cell.size();
           });
}

QStringList LineGrammar::tableCells(QStringView row)
{
    if (row.size() > 1 && row.back() == u'|' && !row.endsWith("\\|"_L1))
        row.chop(1);
    row = row.sliced(row.startsWith(u'|') ? 1 : 0);
    if (!row.contains(u'`') && !row.contains(u'\\'))
        return parts(row);
    CodeSpans code(row);
    QStringList cells;
    QString cell;
    const auto end = [&] {
        cells.append(cell.trimmed());
        cell.clear();
    };
    for (qsizetype at = 0; at < row.size();) {
        const QChar c = row[at];
        const bool escapes = c == u'\\' && at + 1 < row.size() && row[at + 1] == u'|';
        const qsizetype next = c == u'`' ? code.endOfSpan(at) : at + (escapes ? 2 : 1);
        if (c == u'|')
            end();
        else if (c == u'`')
            cell += row.sliced(at, next - at).toString().replace("\\|"_L1, "|"_L1);
        else
            cell += row[next - 1];
        at = next;
    }
    end();
    return cells;
}

std::optional<LineGrammar::Fence> LineGrammar::openingFence(QStringView line)
{
    const QStringView words = trimmed(line);
    if (words.startsWith(u'~') || words.startsWith(u'>')) {
        const QStringView inner = trimmed(withoutQuoteMarks(line, mostQuoteMarks).text);
        const qsizetype tildes = runLength(inner, u'~');
        if (tildes >= shortestFence && !inner.sliced(tildes).contains(u'~'))
            return Fence{line.size() - inner.size(), tildes, u'~'};
    }
    for (qsizetype at = line.indexOf(u'`'); at >= 0; at = line.indexOf(u'`', at)) {
        const qsizetype length = runLength(line.sliced(at), u'`');
        if (length >= shortestFence)
            return Fence{at, length, u'`'};
        at += length;
    }
    return std::nullopt;
}

std::optional<qsizetype> LineGrammar::closingFence(QStringView line, const Fence &opening)
{
    const qsizetype length = runLength(line, opening.mark);
    return length >= opening.length ? std::optional(length) : std::nullopt;
}

LineGrammar::QuotedLine LineGrammar::withoutQuoteMarks(QStringView line, int most)
{
    QuotedLine quoted{0, line};
    while (quoted.depth < most) {
        const QStringView rest = withoutIndentation(quoted.text, indentation(quoted.text));
        if (!rest.startsWith(u'>'))
            break;
        quoted.text = rest.sliced(rest.startsWith(u"> ") ? 2 : 1);
        ++quoted.depth;
    }
    return quoted;
}

bool LineGrammar::looksNumeric(QStringView text)
{
    const auto isLetter = [](QChar c) { return c.isLetter(); };
    const auto isAnyDigit = [](QChar c) { return c.isDigit(); };
    return std::any_of(text.begin(), text.end(), isAnyDigit) &&
           std::count_if(text.begin(), text.end(), isLetter) <= mostLettersOfANumber;
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
