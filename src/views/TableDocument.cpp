#include "views/TableDocument.h"

#include "markdown/LineGrammar.h"
#include "views/TableFace.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QTextDocument>

#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr double cellPadding = 8;
constexpr double widestCell = 280; // without its padding

} // namespace

TableDocument::TableDocument(QObject *parent)
    : BlockDocument(parent)
{
    TableFace::install();
}

void TableDocument::setTable(const QVariant &value)
{
    const auto table = value.value<TableWords>();
    if (m_table == table)
        return;
    m_table = table;
    if (textDocument())
        showAll();
    Q_EMIT tableChanged();
}

int TableDocument::drawnRows() const
{
    return static_cast<int>(std::min(m_table.rows.size(), TableWords::mostRows));
}

int TableDocument::hiddenRows() const
{
    return static_cast<int>(m_table.rows.size()) - drawnRows();
}

bool TableDocument::isNumeric(qsizetype column) const
{
    bool any = false;
    for (int row = 0; row < drawnRows(); ++row) {
        const QString &text = m_table.rows[row][column].text;
        if (text.isEmpty())
            continue;
        if (!LineGrammar::looksNumeric(text))
            return false;
        any = true;
    }
    return any;
}

void TableDocument::showAll()
{
    QTextDocument *document = textDocument();
    document->clear();
    const qsizetype columns = std::min(m_table.headers.size(), TableWords::mostColumns);
    if (columns == 0)
        return;
    QTextTableFormat format;
    format.setBorder(0);
    format.setCellSpacing(0);
    format.setCellPadding(cellPadding);
    format.setMargin(0);
    QList<QTextLength> constraints;
    double width = 0;
    for (const double column : widths(columns)) {
        constraints.append(QTextLength(QTextLength::FixedLength, column));
        width += column;
    }
    format.setColumnWidthConstraints(constraints);
    QTextCursor cursor(document);
    cursor.beginEditBlock();
    m_grid = cursor.insertTable(drawnRows() + 1, static_cast<int>(columns), format);
    QList<bool> numeric;
    for (qsizetype column = 0; column < columns; ++column)
        numeric.append(isNumeric(column));
    fill(0, m_table.headers, numeric);
    for (int row = 0; row < drawnRows(); ++row)
        fill(row + 1, m_table.rows[row], numeric);
    cursor.endEditBlock();
    if (width != m_width) {
        m_width = width;
        Q_EMIT widthChanged();
    }
    measure();
}

QList<double> TableDocument::widths(qsizetype columns) const
{
    QList<double> widths;
    for (qsizetype column = 0; column < columns; ++column) {
        double widest = widthOf(m_table.headers[column], true);
        for (int row = 0; row < drawnRows() && widest < widestCell; ++row)
            widest = std::max(widest, widthOf(m_table.rows[row][column], false));
        widths.append(std::min(std::ceil(widest) + 1, widestCell) + 2 * cellPadding);
    }
    return widths;
}

double TableDocument::widthOf(const AttributedText &cell, bool isHeader) const
{
    double widest = 0;
    double line = 0;
    qsizetype at = 0;
    const auto measure = [&](qsizetype end, const QTextCharFormat &format) {
        QFont font = textDocument()->defaultFont();
        font.setBold(isHeader || format.fontWeight() > QFont::Normal);
        font.setItalic(format.fontItalic());
        if (format.hasProperty(QTextFormat::FontFamilies))
            font.setFamilies(format.fontFamilies().toStringList());
        const QFontMetricsF metrics(font);
        const auto pieces = QStringView(cell.text).sliced(at, end - at).split(u'\n');
        for (const QStringView &piece : pieces) {
            line = (&piece == &pieces.first() ? line : 0) + metrics.horizontalAdvance(piece.toString());
            widest = std::max(widest, line);
        }
        at = end;
    };
    for (const AttributedText::Run &run : cell.runs) {
        measure(run.start, {});
        measure(run.start + run.length, format(run));
    }
    measure(cell.text.size(), {});
    return widest;
}

void TableDocument::fill(int row, const QList<AttributedText> &cells, const QList<bool> &numeric)
{
    for (int column = 0; column < numeric.size(); ++column) {
        QTextCursor cursor = m_grid->cellAt(row, column).firstCursorPosition();
        QTextBlockFormat format;
        format.setLineHeight(lineHeight(), QTextBlockFormat::MinimumHeight);
        if (numeric[column])
            format.setAlignment(Qt::AlignRight);
        cursor.setBlockFormat(format);
        AttributedText text = cells[column];
        text.text = harmless(text.text);
        if (row == 0)
            text.runs = {{0, text.text.size(), AttributedText::Bold, {}}};
        insert(cursor, text);
    }
}

// The cells that it touches, apart by tabs, their rows a line each.
QString TableDocument::textBetween(int from, int to) const
{
    QStringList lines;
    for (int row = 0; m_grid && row < m_grid->rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < m_grid->columns(); ++column) {
            const QTextTableCell cell = m_grid->cellAt(row, column);
            QTextCursor cursor = cell.firstCursorPosition();
            const int last = cell.lastCursorPosition().position();
            if (from > last || to < cursor.position() || (to == cursor.position() && to != last))
                continue;
            cursor.setPosition(std::max(from, cursor.position()));
            cursor.setPosition(std::min(to, last), QTextCursor::KeepAnchor);
            cells.append(cursor.selectedText().replace(QChar::LineSeparator, u' '));
        }
        if (!cells.isEmpty())
            lines.append(cells.join(u'\t'));
    }
    return lines.join(u'\n');
}

const AttributedText &TableDocument::cell(int row, int column) const
{
    return row == 0 ? m_table.headers[column] : m_table.rows[row - 1][column];
}

QRectF TableDocument::placeOf(int row, int column) const
{
    const QTextTableCell cell = m_grid->cellAt(row, column);
    const QAbstractTextDocumentLayout *layout = textDocument()->documentLayout();
    const QRectF words = layout->blockBoundingRect(cell.firstCursorPosition().block()) |
                         layout->blockBoundingRect(cell.lastCursorPosition().block());
    return words.adjusted(-cellPadding, -cellPadding, cellPadding, cellPadding);
}

void TableDocument::measure()
{
    QList<double> rules;
    if (m_grid) {
        const QAbstractTextDocumentLayout *layout = textDocument()->documentLayout();
        for (int row = 1; row < m_grid->rows(); ++row) {
            const QTextBlock first = m_grid->cellAt(row, 0).firstCursorPosition().block();
            rules.append(layout->blockBoundingRect(first).top() - cellPadding);
        }
    }
    if (rules == m_rules)
        return;
    m_rules = rules;
    Q_EMIT rulesChanged();
}

} // namespace morvane
