#pragma once

#include "view_models/blocks/Prose.h"
#include "views/BlockDocument.h"

#include <QTextTable>
#include <QVariant>

namespace morvane {

// A table in a TextEdit that wraps and is as wide as the table. Columns of numbers stand at the right.
class TableDocument : public morvane::BlockDocument {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant table READ table WRITE setTable NOTIFY tableChanged) // TableWords
    // In logical pixels: that of the words, but where a cell would be too wide to read.
    Q_PROPERTY(double width READ width NOTIFY widthChanged)
    // Where the lines between the rows belong, from the top of the text.
    Q_PROPERTY(QList<double> rules READ rules NOTIFY rulesChanged)
    // Rows at the end that are not drawn.
    Q_PROPERTY(int hiddenRows READ hiddenRows NOTIFY tableChanged)

public:
    explicit TableDocument(QObject *parent = nullptr);

    [[nodiscard]] QVariant table() const { return QVariant::fromValue(m_table); }
    void setTable(const QVariant &value);
    [[nodiscard]] double width() const { return m_width; }
    [[nodiscard]] const QList<double> &rules() const { return m_rules; }
    [[nodiscard]] int hiddenRows() const;
    [[nodiscard]] QString textBetween(int from, int to) const override;

    // Of what is drawn, the headers as row 0.
    [[nodiscard]] int rows() const { return m_grid ? m_grid->rows() : 0; }
    [[nodiscard]] int columns() const { return m_grid ? m_grid->columns() : 0; }
    // Both for a cell that there is.
    [[nodiscard]] const AttributedText &cell(int row, int column) const;
    [[nodiscard]] QRectF placeOf(int row, int column) const;

    // The text layout has changed.
    Q_INVOKABLE void measure();

Q_SIGNALS:
    void tableChanged();
    void widthChanged();
    void rulesChanged();

protected:
    void showAll() override;

private:
    [[nodiscard]] int drawnRows() const;
    [[nodiscard]] bool isNumeric(qsizetype column) const;
    // Of the columns, with their padding.
    [[nodiscard]] QList<double> widths(qsizetype columns) const;
    [[nodiscard]] double widthOf(const AttributedText &cell, bool isHeader) const;
    void fill(int row, const QList<AttributedText> &cells, const QList<bool> &numeric);

    TableWords m_table;
    QPointer<QTextTable> m_grid; // of the document
    QList<double> m_rules;
    double m_width = 0;
};

} // namespace morvane
