#include "views/TableFace.h"

#include "views/TableDocument.h"

#include <QQmlContext>
#include <QQmlProperty>
#include <QQuickWindow>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString firstLink(const AttributedText &words)
{
    const auto link = std::ranges::find_if(words.runs, [](const auto &run) { return !run.link.isEmpty(); });
    return link == words.runs.end() ? QString() : link->link;
}

// What a row and a cell have in common: no object stands behind them.
class PartFace : public QAccessibleInterface {
public:
    PartFace(const TableFace &table, int row)
        : m_table(table)
        , m_row(row)
    {}

    [[nodiscard]] bool isValid() const override { return m_table.isValid() && m_row < m_table.rowCount(); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return m_table.window(); }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        state.readOnly = true;
        state.invisible = m_table.state().invisible;
        return state;
    }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override
    {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i)->rect().contains(x, y))
                return child(i);
        }
        return nullptr;
    }

protected:
    [[nodiscard]] const TableFace &whole() const { return m_table; }
    [[nodiscard]] int row() const { return m_row; }

private:
    const TableFace &m_table; // has made this, and ends it
    int m_row;
};

class RowFace final : public PartFace {
public:
    RowFace(const TableFace &table, int row, int)
        : PartFace(table, row)
    {}

    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Row; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        QStringList cells;
        for (int i = 0; kind == QAccessible::Name && i < childCount(); ++i)
            cells += child(i)->text(kind);
        return cells.join(u", "_s);
    }
    [[nodiscard]] QRect rect() const override
    {
        QRect whole;
        for (int i = 0; i < childCount(); ++i)
            whole |= child(i)->rect();
        return whole;
    }
    [[nodiscard]] QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(whole().item());
    }
    [[nodiscard]] QAccessibleInterface *child(int index) const override
    {
        return whole().cellFace(row(), index);
    }
    [[nodiscard]] int childCount() const override { return whole().columnCount(); }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override
    {
        int index = childCount() - 1;
        while (index >= 0 && whole().cellFace(row(), index) != child)
            --index;
        return index;
    }
};

class CellFace final : public PartFace,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface {
public:
    CellFace(const TableFace &table, int row, int column)
        : PartFace(table, row)
        , m_column(column)
    {}

    [[nodiscard]] bool isValid() const override
    {
        return PartFace::isValid() && m_column < whole().columnCount();
    }
    [[nodiscard]] QAccessible::Role role() const override
    {
        return row() == 0 ? QAccessible::ColumnHeader : QAccessible::Cell;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (kind == QAccessible::Name)
            return words().text;
        return kind == QAccessible::Description && row() > 0 ? whole().columnDescription(m_column)
                                                             : QString();
    }
    [[nodiscard]] QRect rect() const override
    {
        return isValid() ? whole().onScreen(whole().document()->placeOf(row(), m_column)) : QRect();
    }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = PartFace::state();
        state.linked = !link().isEmpty();
        return state;
    }
    [[nodiscard]] QAccessibleInterface *parent() const override { return whole().rowFace(row()); }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    [[nodiscard]] void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TableCellInterface)
            return static_cast<QAccessibleTableCellInterface *>(this);
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface *>(this);
        return nullptr;
    }

    [[nodiscard]] bool isSelected() const override { return false; }
    [[nodiscard]] QList<QAccessibleInterface *> columnHeaderCells() const override
    {
        return row() == 0 ? QList<QAccessibleInterface *>() : QList{whole().cellFace(0, m_column)};
    }
    [[nodiscard]] QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    [[nodiscard]] int columnIndex() const override { return m_column; }
    [[nodiscard]] int rowIndex() const override { return row(); }
    [[nodiscard]] int columnExtent() const override { return 1; }
    [[nodiscard]] int rowExtent() const override { return 1; }
    [[nodiscard]] QAccessibleInterface *table() const override { return parent()->parent(); }

    [[nodiscard]] QStringList actionNames() const override
    {
        return link().isEmpty() ? QStringList() : QStringList{pressAction()};
    }
    void doAction(const QString &action) override
    {
        if (actionNames().contains(action))
            QMetaObject::invokeMethod(whole().item(), "linkActivated", Q_ARG(QString, link()));
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    [[nodiscard]] const AttributedText &words() const { return whole().document()->cell(row(), m_column); }
    [[nodiscard]] QString link() const { return isValid() ? firstLink(words()) : QString(); }

    int m_column;
};

QAccessibleInterface *faceOf(const QString &className, QObject *object)
{
    auto *text = className == "QQuickTextEdit"_L1 ? qobject_cast<QQuickItem *>(object) : nullptr;
    auto *document = text ? text->findChild<TableDocument *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    return document ? new TableFace(*text, *document) : nullptr;
}

} // namespace

void TableFace::install()
{
    QAccessible::installFactory(faceOf);
}

TableFace::TableFace(QQuickItem &text, TableDocument &document)
    : QAccessibleObject(&text)
    , m_document(&document)
    , m_follows(QObject::connect(&document, &TableDocument::tableChanged, [this] { forget(); }))
{}

TableFace::~TableFace()
{
    QObject::disconnect(m_follows);
    for (const QAccessible::Id face : std::as_const(m_faces))
        QAccessible::deleteAccessibleInterface(face);
}

// The rows are others now.
void TableFace::forget()
{
    for (const QAccessible::Id face : std::exchange(m_faces, {}))
        QAccessible::deleteAccessibleInterface(face);
    QAccessibleEvent event(item(), QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

template <typename Face>
QAccessibleInterface *TableFace::kept(int row, int column) const
{
    if (row < 0 || row >= rowCount() || column >= columnCount())
        return nullptr;
    QAccessible::Id &id = m_faces[{row, column}];
    if (id == 0)
        id = QAccessible::registerAccessibleInterface(new Face(*this, row, column));
    return QAccessible::accessibleInterface(id);
}

QAccessibleInterface *TableFace::cellFace(int row, int column) const
{
    return column < 0 ? nullptr : kept<CellFace>(row, column);
}

QAccessibleInterface *TableFace::rowFace(int row) const
{
    return kept<RowFace>(row, -1);
}

QRect TableFace::onScreen(const QRectF &part) const
{
    return {item()->mapToGlobal(part.topLeft()).toPoint(), part.size().toSize()};
}

QWindow *TableFace::window() const
{
    return item()->window();
}

QRect TableFace::rect() const
{
    return onScreen(item()->boundingRect());
}

QString TableFace::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Name)
        return {};
    return QQmlProperty::read(item(), u"Accessible.name"_s, qmlContext(item())).toString();
}

QAccessible::State TableFace::state() const
{
    QAccessible::State state;
    state.focusable = item()->activeFocusOnTab();
    state.focused = item()->hasActiveFocus();
    state.invisible = !item()->isVisible();
    state.readOnly = true;
    return state;
}

QAccessibleInterface *TableFace::parent() const
{
    for (QQuickItem *above = item()->parentItem(); above; above = above->parentItem()) {
        if (QAccessibleInterface *face = QAccessible::queryAccessibleInterface(above))
            return face;
    }
    return QAccessible::queryAccessibleInterface(item()->window());
}

int TableFace::indexOfChild(const QAccessibleInterface *child) const
{
    int index = rowCount() - 1;
    while (index >= 0 && rowFace(index) != child)
        --index;
    return index;
}

void *TableFace::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface *>(this);
    if (type == QAccessible::ActionInterface)
        return static_cast<QAccessibleActionInterface *>(this);
    return nullptr;
}

QString TableFace::columnDescription(int column) const
{
    return column >= 0 && column < columnCount() ? m_document->cell(0, column).text : QString();
}

int TableFace::columnCount() const
{
    return m_document ? m_document->columns() : 0;
}

int TableFace::rowCount() const
{
    return m_document ? m_document->rows() : 0;
}

void TableFace::doAction(const QString &action)
{
    if (action == setFocusAction())
        item()->forceActiveFocus();
}

} // namespace morvane
