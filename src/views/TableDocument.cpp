#include "views/TableDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QTextDocument>

#include <algorithm>

namespace morvane {

namespace {

constexpr qsizetype mostRows = 200;
constexpr qsizetype mostColumns = 30;
constexpr qsizetype mostLettersOfANumber = 3; // a unit, such as "km" or "USD"
constexpr double cellPadding = 8;

bool looksNumeric(const QString &text)
{
    const auto isDigit = [](QChar c) { return c.isDigit(); };
    const auto isLetter = [](QChar c) { return c.isLetter(); };
    return std::any_of(text.begin(), text.end(), isDigit) &&
           std::count_if(text.begin(), text.end(), isLetter) <= mostLettersOfANumber;
}

} // namespace

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
    return static_cast<int>(std::min(m_table.rows.size(), mostRows));
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
        if (!looksNumeric(text))
            return false;
        any = true;
    }
    return any;
}

void TableDocument::showAll()
{
    QTextDocument *document = textDocument();
    document->clear();
    const qsizetype columns = std::min(m_table.headers.size(), mostColumns);
    if (columns == 0)
        return;
    QTextTableFormat format;
    format.setBorder(0);
    format.setCellSpacing(0);
    format.setCellPadding(cellPadding);
    format.setMargin(0);
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
    measure();
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
