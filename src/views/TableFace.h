#pragma once

#include <QAccessibleObject>
#include <QHash>
#include <QPointer>
#include <QQuickItem>

namespace morvane {

class TableDocument;

// A table as assistive technology sees it: rows of cells that know their headers, where one text draws them
// all. A cell with a link opens the first one when it is pressed. Stands for a TextEdit with a TableDocument.
class TableFace final : public QAccessibleObject,
                        public QAccessibleTableInterface,
                        public QAccessibleActionInterface {
public:
    // From now on such texts have such faces. Again is no harm.
    static void install();

    TableFace(QQuickItem &text, TableDocument &document);
    ~TableFace() override;

    [[nodiscard]] QAccessibleInterface *cellFace(int row, int column) const;
    [[nodiscard]] QAccessibleInterface *rowFace(int row) const;
    [[nodiscard]] const TableDocument *document() const { return m_document; }
    [[nodiscard]] QQuickItem *item() const { return static_cast<QQuickItem *>(object()); }
    // Of a part of the text, on the screen.
    [[nodiscard]] QRect onScreen(const QRectF &part) const;

    [[nodiscard]] QWindow *window() const override;
    [[nodiscard]] QRect rect() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Table; }
    [[nodiscard]] QAccessible::State state() const override;
    [[nodiscard]] QAccessibleInterface *parent() const override;
    [[nodiscard]] QAccessibleInterface *child(int index) const override { return rowFace(index); }
    [[nodiscard]] int childCount() const override { return rowCount(); }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QAccessibleInterface *caption() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *summary() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *cellAt(int row, int column) const override
    {
        return cellFace(row, column);
    }
    [[nodiscard]] int selectedCellCount() const override { return 0; }
    [[nodiscard]] QList<QAccessibleInterface *> selectedCells() const override { return {}; }
    [[nodiscard]] QString columnDescription(int column) const override;
    [[nodiscard]] QString rowDescription(int) const override { return {}; }
    [[nodiscard]] int selectedColumnCount() const override { return 0; }
    [[nodiscard]] int selectedRowCount() const override { return 0; }
    [[nodiscard]] int columnCount() const override;
    [[nodiscard]] int rowCount() const override;
    [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
    [[nodiscard]] QList<int> selectedRows() const override { return {}; }
    [[nodiscard]] bool isColumnSelected(int) const override { return false; }
    [[nodiscard]] bool isRowSelected(int) const override { return false; }
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *) override {}

    [[nodiscard]] QStringList actionNames() const override { return {setFocusAction()}; }
    void doAction(const QString &action) override;
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    template <typename Face>
    QAccessibleInterface *kept(int row, int column) const;
    void forget();

    QPointer<TableDocument> m_document;
    mutable QHash<std::pair<int, int>, QAccessible::Id> m_faces; // of cells; of rows in column -1
    QMetaObject::Connection m_follows;
};

} // namespace morvane
