#include "markdown/TextBlockReader.h"

#include "markdown/InlineMarkdown.h"
#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace MarkdownRenderer;

namespace {

// A wide header over many narrow rows would grow far beyond the text it came in: such rows are words. No
// table that is meant to be read comes near.
constexpr qsizetype freePadding = 1000;
constexpr qsizetype mostPaddingPerCharacter = 4;

constexpr int leastNesting = 2; // columns

QList<AttributedText> cellTexts(QStringView row)
{
    QList<AttributedText> texts;
    for (const QStringView cell : LineGrammar::tableCells(row))
        texts.append(InlineMarkdown::parse(cell));
    return texts;
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
    } else if (const auto item = LineGrammar::bulletItem(words)) {
        addItem(LineGrammar::indentation(line), {InlineMarkdown::parse(*item)}, ended);
    } else if (const auto step = LineGrammar::numberedItem(words)) {
        addItem(LineGrammar::indentation(line), {.text = InlineMarkdown::parse(*step), .numbered = true},
                ended);
    } else if (words.isEmpty()) {
        flush(ended);
    } else if (!continuesTable(words) && !beginsTable(words, ended)) {
        addWords(line, ended);
    }
}

bool TextBlockReader::continuesTable(QStringView trimmed)
{
    auto *open = std::get_if<OpenTable>(&m_open);
    if (!open || !LineGrammar::isTableRow(trimmed))
        return false;
    const qsizetype width = open->table.headers.size();
    open->length += trimmed.size();
    open->padding += std::max<qsizetype>(0, width - (trimmed.count(u'|') - 1));
    if (open->padding > freePadding + mostPaddingPerCharacter * open->length)
        return false;
    QList<AttributedText> cells = cellTexts(trimmed);
    cells.resize(width);
    open->table.rows.append(std::move(cells));
    return true;
}

// A row of headers is known by the separator under it, when it is the last line of a paragraph already.
bool TextBlockReader::beginsTable(QStringView trimmed, Blocks &ended)
{
    auto *paragraph = std::get_if<OpenParagraph>(&m_open);
    if (!paragraph || !LineGrammar::isSeparatorRow(trimmed))
        return false;
    const qsizetype start = paragraph->lastLineStart;
    const QString headers = LineGrammar::trimmed(QStringView(paragraph->lines).sliced(start)).toString();
    if (!LineGrammar::isTableRow(headers))
        return false;
    paragraph->lines.truncate(start);
    open<OpenTable>(ended).table.headers = cellTexts(headers);
    return true;
}

// Stands under the last item that is indented less by what a nested mark needs. At the margin another kind of
// mark begins another list.
void TextBlockReader::addItem(int indent, ListItem item, Blocks &ended)
{
    const auto *last = std::get_if<OpenList>(&m_open);
    QList<int> indents = last ? last->indents : QList<int>();
    while (!indents.isEmpty() && indent < indents.last() + leastNesting)
        indents.removeLast();
    item.depth = std::min(static_cast<int>(indents.size()), ListItem::deepest);
    if (last && item.depth == 0 && last->items.first().numbered != item.numbered)
        flush(ended);
    auto &list = open<OpenList>(ended);
    list.items.append(std::move(item));
    if (indents.size() < ListItem::deepest)
        indents.append(indent);
    list.indents = std::move(indents);
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
        if (list->items.first().numbered)
            ended.emplaceBack(NumberedList{std::move(list->items)});
        else
            ended.emplaceBack(BulletList{std::move(list->items)});
    } else if (auto *open = std::get_if<OpenTable>(&m_open)) {
        ended.emplaceBack(std::move(open->table));
    }
    m_open = std::monostate{};
}

} // namespace morvane
