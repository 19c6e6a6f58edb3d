#include "markdown/TextBlockReader.h"

#include "markdown/InlineMarkdown.h"
#include "markdown/LineGrammar.h"
#include "markdown/SpanMask.h"

#include <QRegularExpression>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

namespace {

// A wide header over many narrow rows would grow far beyond the text it came in: such rows are words. No
// table that is meant to be read comes near.
constexpr qsizetype freePadding = 1000;
constexpr qsizetype mostPaddingPerCharacter = 4;

constexpr int leastNesting = 2; // columns

// A line of a table is one of the text, so that a cell's own lines are parted by "<br>".
AttributedText withLineBreaks(AttributedText cell)
{
    if (!cell.text.contains(u'<') || !cell.text.contains("<br"_L1, Qt::CaseInsensitive))
        return cell;
    static const QRegularExpression lineBreak(u"\\s*<br\\s*/?>\\s*"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    AttributedText result;
    qsizetype at = 0;
    const auto take = [&](qsizetype end, AttributedText::Formats formats, const QString &link) {
        QString words = cell.text.sliced(at, end - at);
        if (!(formats & AttributedText::Code))
            words.replace(lineBreak, u"\n"_s);
        result.append(words, formats, link);
        at = end;
    };
    for (const AttributedText::Run &run : cell.runs) {
        take(run.start, {}, {});
        take(run.start + run.length, run.formats, run.link);
    }
    take(cell.text.size(), {}, {});
    return result;
}

QList<AttributedText> cellTexts(const QStringList &cells)
{
    QList<AttributedText> texts;
    texts.reserve(cells.size());
    for (const QString &cell : cells)
        texts.append(withLineBreaks(InlineMarkdown::parse(cell)));
    return texts;
}

ListItem itemOf(QStringView words, std::optional<int> number)
{
    const auto task = LineGrammar::task(words);
    return {.text = InlineMarkdown::parse(task ? task->text : words),
            .number = number,
            .task = !task        ? ListItem::Task::none
                    : task->done ? ListItem::Task::done
                                 : ListItem::Task::open};
}

bool isNumbered(const QList<ListItem> &items)
{
    return items.first().number.has_value();
}

constexpr auto dollars = "$$"_L1;
constexpr auto bracket = "\\["_L1;

QLatin1StringView closingOf(QStringView opening)
{
    return opening == dollars ? dollars : "\\]"_L1;
}

Code formulaOf(QStringView words)
{
    return {words.trimmed().toString(), u"latex"_s};
}

} // namespace

template <typename Kind>
Kind &TextBlockReader::open(Blocks &ended)
{
    if (auto *same = std::get_if<Kind>(&m_open))
        return *same;
    flush(ended);
    return m_open.emplace<Kind>();
}

void TextBlockReader::addLine(QStringView line, Blocks &ended)
{
    const QStringView words = LineGrammar::trimmed(line);
    if (continuesFormula(line, ended))
        return;
    const int indent = LineGrammar::indentation(line);
    if (const auto item = LineGrammar::bulletItem(words)) {
        addItem(indent, itemOf(*item, {}), ended);
        return;
    }
    if (const auto step = LineGrammar::numberedItem(words)) {
        addItem(indent, itemOf(step->text, step->number), ended);
        return;
    }
    if (!words.isEmpty())
        staysInItem(indent);
    if (const auto heading = LineGrammar::heading(words)) {
        flush(ended);
        ended.emplaceBack(Heading{heading->level, InlineMarkdown::parse(heading->text)});
    } else if (LineGrammar::isDivider(words)) {
        flush(ended);
        ended.emplaceBack(Divider{});
    } else if (const auto quoted = LineGrammar::quote(words)) {
        const bool continues = std::holds_alternative<OpenQuote>(m_open);
        QString &lines = open<OpenQuote>(ended).lines;
        if (continues)
            lines += u'\n';
        lines += *quoted;
    } else if (words.isEmpty()) {
        flush(ended);
    } else if (!continuesTable(words) && !beginsTable(words, ended) && !beginsFormula(line, ended)) {
        addWords(line, ended);
    }
}

bool TextBlockReader::continuesTable(QStringView trimmed)
{
    auto *open = std::get_if<OpenTable>(&m_open);
    if (!open || !(open->framed ? LineGrammar::isTableRow(trimmed) : trimmed.contains(u'|')))
        return false;
    const QStringList written = LineGrammar::tableCells(trimmed);
    const qsizetype width = open->table.headers.size();
    open->length += trimmed.size();
    open->padding += std::max<qsizetype>(0, width - written.size());
    if (open->padding > freePadding + mostPaddingPerCharacter * open->length)
        return false;
    QList<AttributedText> cells = cellTexts(written);
    cells.resize(width);
    open->table.rows.append(std::move(cells));
    return true;
}

// A row of headers is known by the separator under it, when it is the last line of a paragraph already.
// Without
// "|" at the ends a separator may also be words, unless it has a part for each header.
bool TextBlockReader::beginsTable(QStringView trimmed, Blocks &ended)
{
    auto *paragraph = std::get_if<OpenParagraph>(&m_open);
    if (!paragraph)
        return false;
    const qsizetype start = paragraph->lastLineStart;
    const QStringView headers = LineGrammar::trimmed(QStringView(paragraph->lines).sliced(start));
    const bool framed = LineGrammar::isSeparatorRow(trimmed) && LineGrammar::isTableRow(headers);
    if (!framed && !LineGrammar::isOpenSeparatorRow(trimmed))
        return false;
    const QStringList cells = LineGrammar::tableCells(headers);
    if (!framed && cells.size() != LineGrammar::tableCells(trimmed).size())
        return false;
    paragraph->lines.truncate(start);
    auto &table = open<OpenTable>(ended);
    table.table.headers = cellTexts(cells);
    table.framed = framed;
    return true;
}

// A line that is a formula, or the first one of one.
bool TextBlockReader::beginsFormula(QStringView line, Blocks &ended)
{
    const QStringView words = LineGrammar::trimmed(line);
    if (!words.startsWith(dollars) && !words.startsWith(bracket))
        return false;
    const QString opening = words.first(2).toString();
    const auto closing = closingOf(opening);
    const QStringView rest = words.sliced(2);
    const qsizetype end = rest.indexOf(closing);
    if (end >= 0) {
        const QStringView formula = rest.first(end);
        const bool isWhole = end + closing.size() == rest.size() &&
                             (opening == bracket || SpanMask::looksLikeFormula(formula));
        if (!isWhole || formula.trimmed().isEmpty())
            return false;
        flush(ended);
        ended.emplaceBack(formulaOf(formula));
        return true;
    }
    if (!rest.isEmpty() && rest[0] != u'\\' && !(opening == bracket && rest[0].isSpace()))
        return false;
    flush(ended);
    m_open = OpenFormula{opening, words.toString(), LineGrammar::indentation(line)};
    return true;
}

// Anything but an empty line, on to the mark that closes it.
bool TextBlockReader::continuesFormula(QStringView line, Blocks &ended)
{
    auto *formula = std::get_if<OpenFormula>(&m_open);
    if (!formula)
        return false;
    const QStringView words = LineGrammar::trimmed(line);
    if (words.isEmpty())
        return false;
    formula->lines += u'\n';
    formula->lines += LineGrammar::withoutIndentation(line, formula->indent);
    if (words.endsWith(closingOf(formula->opening))) {
        const QStringView inner = LineGrammar::trimmed(formula->lines).sliced(2).chopped(2);
        if (inner.trimmed().isEmpty())
            ended.emplaceBack(Paragraph{AttributedText{formula->lines, {}}});
        else
            ended.emplaceBack(formulaOf(inner));
        m_open = std::monostate{};
    }
    return true;
}

bool TextBlockReader::staysInItem(int indent)
{
    while (!m_indents.isEmpty() && indent < m_indents.last() + leastNesting)
        m_indents.removeLast();
    return !m_indents.isEmpty();
}

TextBlockReader::Count TextBlockReader::next(const std::optional<Count> &before, int written)
{
    const bool isLazy = before && (before->isLazy || before->written == written);
    return {written, isLazy ? before->shown + 1 : written, isLazy};
}

// Stands under the last item that is indented less by what a nested mark needs. At the margin another kind of
// mark begins another list.
void TextBlockReader::addItem(int indent, ListItem item, Blocks &ended)
{
    const auto *last = std::get_if<OpenList>(&m_open);
    staysInItem(indent);
    item.depth = static_cast<int>(m_indents.size());
    if (last && item.depth == 0 && isNumbered(last->items) != item.number.has_value())
        flush(ended);
    auto &list = open<OpenList>(ended);
    list.counts.resize(item.depth + 1);
    std::optional<Count> &count = list.counts.last();
    count = item.number ? std::optional(next(count, *item.number)) : std::nullopt;
    if (count)
        item.number = count->shown;
    list.items.append(std::move(item));
    if (m_indents.size() < ListItem::deepest)
        m_indents.append(indent);
}

void TextBlockReader::addWords(QStringView line, Blocks &ended)
{
    auto &paragraph = open<OpenParagraph>(ended);
    if (!paragraph.lines.isEmpty())
        paragraph.lines += u'\n';
    paragraph.lastLineStart = paragraph.lines.size();
    paragraph.lines += line;
}

void TextBlockReader::flush(Blocks &ended)
{
    if (const auto *paragraph = std::get_if<OpenParagraph>(&m_open)) {
        const QStringView words = QStringView(paragraph->lines).trimmed();
        if (!words.isEmpty())
            ended.emplaceBack(Paragraph{InlineMarkdown::parse(words)});
    } else if (const auto *quote = std::get_if<OpenQuote>(&m_open)) {
        ended.emplaceBack(Quote{InlineMarkdown::parse(quote->lines)});
    } else if (auto *list = std::get_if<OpenList>(&m_open)) {
        if (isNumbered(list->items))
            ended.emplaceBack(NumberedList{std::move(list->items)});
        else
            ended.emplaceBack(BulletList{std::move(list->items)});
    } else if (auto *open = std::get_if<OpenTable>(&m_open)) {
        ended.emplaceBack(std::move(open->table));
    } else if (const auto *formula = std::get_if<OpenFormula>(&m_open)) {
        // One that was never closed shows all that was written; a mark alone was none.
        if (formula->lines == formula->opening)
            ended.emplaceBack(Paragraph{AttributedText{formula->lines, {}}});
        else
            ended.emplaceBack(formulaOf(formula->lines));
    }
    m_open = std::monostate{};
}

} // namespace morvane
