// The grid as an accessible table: screen readers and desktop automation read
// the rows the operator sees (display rows, visible columns in display order:
// data rows, group rows, group footers), the column captions as header cells,
// and each cell's text as shown, the row being inserted last. After the cells
// come the in-place editor while a cell is edited (the focused text, named by
// its column), the filter row (its editors are ordinary widgets) and the
// footer, a row of cells holding the grand summaries as displayed.

#include "ui/u_grid.h"
#include "ui/u_gridstrips.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>

namespace ui {

namespace {

class GridAccessibleTable;

class GridAccessibleCell : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    GridAccessibleCell(GridTableView *view, const GridAccessibleTable *table, int row, int visCol)
        : m_view(view), m_table(table), m_row(row), m_col(visCol)
    {
    }

    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return m_row < 0 ? QAccessible::ColumnHeader : QAccessible::Cell; }
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType t) override
    {
        return t == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface *>(this) : nullptr;
    }

    bool isSelected() const override;
    QList<QAccessibleInterface *> columnHeaderCells() const override;
    QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return m_col; }
    int rowIndex() const override { return m_row; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface *table() const override;

private:
    int modelColumn() const
    {
        const QList<int> vis = m_view->model()->visibleColumns();
        return m_col >= 0 && m_col < vis.size() ? vis[m_col] : -1;
    }

    QPointer<GridTableView> m_view;
    const GridAccessibleTable *m_table;
    int m_row; // display row; -1 for the header cells
    int m_col; // index among the visible columns
};

class GridAccessibleTable : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit GridAccessibleTable(GridTableView *view) : QAccessibleWidget(view, QAccessible::Table), m_view(view)
    {
        auto drop = [this] { clearCells(); };
        m_conns << QObject::connect(view->model(), &grid::GridModel::rowsChanged, view, drop);
        m_conns << QObject::connect(view->model(), &grid::GridModel::columnsChanged, view, drop);
    }
    ~GridAccessibleTable() override
    {
        for (const auto &c : std::as_const(m_conns))
            QObject::disconnect(c);
        clearCells();
    }

    GridTableView *view() const { return m_view; }

    void *interface_cast(QAccessible::InterfaceType t) override
    {
        if (t == QAccessible::TableInterface)
            return static_cast<QAccessibleTableInterface *>(this);
        return QAccessibleWidget::interface_cast(t);
    }

    QString text(QAccessible::Text t) const override
    {
        if (t == QAccessible::Name) {
            const QString n = m_view->accessibleName();
            return n.isEmpty() ? m_view->objectName() : n;
        }
        return QAccessibleWidget::text(t);
    }

    // Children: the header cells, then the cells row by row, then the
    // widgets that are shown (the cell editor, the filter row, the footer).
    int cellCount() const { return (rowCount() + 1) * columnCount(); }
    QList<QWidget *> strips() const
    {
        QList<QWidget *> out;
        for (QWidget *w : {static_cast<QWidget *>(m_view->cellEditor()), static_cast<QWidget *>(m_view->filterRow()),
                           static_cast<QWidget *>(m_view->footer())})
            if (w && !w->isHidden())
                out << w;
        return out;
    }
    int childCount() const override { return cellCount() + int(strips().size()); }
    QAccessibleInterface *child(int index) const override
    {
        const int cols = columnCount();
        if (index < 0 || index >= childCount())
            return nullptr;
        if (index >= cellCount())
            return QAccessible::queryAccessibleInterface(strips().value(index - cellCount()));
        return cols == 0 ? nullptr : cell(index / cols - 1, index % cols);
    }
    int indexOfChild(const QAccessibleInterface *iface) const override
    {
        if (!iface || iface->role() == QAccessible::Table)
            return -1;
        if (QObject *o = iface->object()) {
            const int i = int(strips().indexOf(qobject_cast<QWidget *>(o)));
            return i < 0 ? -1 : cellCount() + i;
        }
        auto *c = const_cast<QAccessibleInterface *>(iface)->tableCellInterface();
        if (!c)
            return -1;
        return (iface->role() == QAccessible::ColumnHeader ? 0 : c->rowIndex() + 1) * columnCount() + c->columnIndex();
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        for (QWidget *w : strips())
            if (QRect(w->mapToGlobal(QPoint(0, 0)), w->size()).contains(x, y))
                return QAccessible::queryAccessibleInterface(w);
        const QPoint vp = m_view->viewport()->mapFromGlobal(QPoint(x, y));
        const GridHit h = m_view->hitTest(vp);
        if (h.row < 0 || h.column < 0)
            return nullptr;
        return cell(int(h.row), int(m_view->model()->visibleColumns().indexOf(h.column)));
    }

    QAccessibleInterface *caption() const override { return nullptr; }
    QAccessibleInterface *summary() const override { return nullptr; }
    QAccessibleInterface *cellAt(int row, int column) const override
    {
        if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount())
            return nullptr;
        return cell(row, column);
    }
    int selectedCellCount() const override { return selectedRowCount() * columnCount(); }
    QList<QAccessibleInterface *> selectedCells() const override
    {
        QList<QAccessibleInterface *> out;
        const qsizetype r = m_view->currentRow();
        if (r >= 0)
            for (int c = 0; c < columnCount(); ++c)
                out << cell(int(r), c);
        return out;
    }
    QString columnDescription(int column) const override
    {
        const QList<int> vis = m_view->model()->visibleColumns();
        return column >= 0 && column < vis.size() ? m_view->model()->column(vis[column]).headerText() : QString();
    }
    QString rowDescription(int) const override { return {}; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return m_view->currentRow() >= 0 ? 1 : 0; }
    int columnCount() const override { return int(m_view->model()->visibleColumns().size()); }
    // No rows while they are rebuilt: a reader asking meanwhile finds none.
    int rowCount() const override { return m_view->model()->isRebuilding() ? 0 : int(m_view->totalRows()); }
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override
    {
        const qsizetype r = m_view->currentRow();
        return r >= 0 ? QList<int>{int(r)} : QList<int>{};
    }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override { return row >= 0 && row == m_view->currentRow(); }
    bool selectRow(int row) override { return m_view->moveFocusTo(row); }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *) override { clearCells(); }

private:
    QAccessibleInterface *cell(int row, int col) const
    {
        const quint64 key = (quint64(quint32(row + 1)) << 32) | quint32(col);
        const auto it = m_cells.constFind(key);
        if (it != m_cells.cend())
            if (QAccessibleInterface *iface = QAccessible::accessibleInterface(*it))
                return iface;
        auto *iface = new GridAccessibleCell(m_view, this, row, col);
        m_cells.insert(key, QAccessible::registerAccessibleInterface(iface));
        return iface;
    }
    void clearCells()
    {
        for (QAccessible::Id id : std::as_const(m_cells))
            QAccessible::deleteAccessibleInterface(id);
        m_cells.clear();
    }

    GridTableView *m_view;
    mutable QHash<quint64, QAccessible::Id> m_cells;
    QList<QMetaObject::Connection> m_conns;
};

bool GridAccessibleCell::isValid() const
{
    if (!m_view)
        return false;
    const grid::GridModel *m = m_view->model();
    // No cell while the rows are rebuilt (a reader served by long work).
    return !m->isRebuilding() && m_col >= 0 && m_col < m->visibleColumns().size() && m_row < m_view->totalRows();
}

QAccessibleInterface *GridAccessibleCell::parent() const { return const_cast<GridAccessibleTable *>(m_table); }
QAccessibleInterface *GridAccessibleCell::table() const { return parent(); }

QString GridAccessibleCell::text(QAccessible::Text t) const
{
    if (!isValid() || (t != QAccessible::Name && t != QAccessible::Value))
        return {};
    const int col = modelColumn();
    if (m_row < 0)
        return m_view->model()->column(col).headerText();
    return m_view->accessibleCellText(m_row, col);
}

QRect GridAccessibleCell::rect() const
{
    if (!isValid())
        return {};
    const int col = modelColumn();
    if (m_row < 0) {
        const QWidget *h = m_view->header();
        const QRect r(m_view->columnLeft(col), 0, m_view->columnWidth(col), h->height());
        return QRect(h->mapToGlobal(r.topLeft()), r.size());
    }
    const QRect r = m_view->cellRect(m_row, col);
    return QRect(m_view->viewport()->mapToGlobal(r.topLeft()), r.size());
}

QAccessible::State GridAccessibleCell::state() const
{
    QAccessible::State s;
    if (!isValid())
        return s;
    s.selectable = m_row >= 0;
    s.selected = isSelected();
    const qsizetype top = m_view->topRow();
    s.invisible = m_row >= 0 && (m_row < top || m_row >= top + m_view->visibleRowCount());
    s.offscreen = s.invisible;
    s.focusable = m_row >= 0;
    s.focused = s.selected && m_view->hasFocus() && m_view->focusedColumn() == modelColumn();
    return s;
}

bool GridAccessibleCell::isSelected() const
{
    return m_view && m_row >= 0 && m_row == m_view->currentRow();
}

QList<QAccessibleInterface *> GridAccessibleCell::columnHeaderCells() const
{
    QAccessibleInterface *h = m_row >= 0 ? const_cast<GridAccessibleTable *>(m_table)->child(m_col) : nullptr;
    return h ? QList<QAccessibleInterface *>{h} : QList<QAccessibleInterface *>{};
}

// ----- the footer: one cell per visible column, its summaries as displayed

class GridAccessibleFooter;

class GridAccessibleFooterCell : public QAccessibleInterface {
public:
    GridAccessibleFooterCell(GridTableView *view, const GridAccessibleFooter *footer, int visCol)
        : m_view(view), m_footer(footer), m_col(visCol)
    {
    }
    bool isValid() const override { return m_view && m_col >= 0 && m_col < m_view->model()->visibleColumns().size(); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text t) const override
    {
        if (!isValid())
            return {};
        const int col = m_view->model()->visibleColumns().at(m_col);
        if (t == QAccessible::Name || t == QAccessible::Value)
            return m_view->model()->footerTextForColumn(col).replace(QLatin1Char('\n'), QLatin1String("; "));
        if (t == QAccessible::Description)
            return m_view->model()->column(col).headerText();
        return {};
    }
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override
    {
        if (!isValid())
            return {};
        const int col = m_view->model()->visibleColumns().at(m_col);
        const QWidget *f = m_view->footer();
        const QRect r(m_view->columnLeft(col), 0, m_view->columnWidth(col), f->height());
        return QRect(f->mapToGlobal(r.topLeft()), r.size());
    }
    QAccessible::Role role() const override { return QAccessible::Cell; }
    QAccessible::State state() const override
    {
        QAccessible::State s;
        s.readOnly = true;
        return s;
    }

private:
    QPointer<GridTableView> m_view;
    const GridAccessibleFooter *m_footer;
    int m_col;
};

class GridAccessibleFooter : public QAccessibleWidget {
public:
    explicit GridAccessibleFooter(GridFooter *footer)
        : QAccessibleWidget(footer, QAccessible::Footer), m_view(qobject_cast<GridTableView *>(footer->parentWidget()))
    {
        if (m_view) {
            auto drop = [this] { clearCells(); };
            m_conns << QObject::connect(m_view->model(), &grid::GridModel::columnsChanged, footer, drop);
            m_conns << QObject::connect(m_view->model(), &grid::GridModel::summariesChanged, footer, drop);
        }
    }
    ~GridAccessibleFooter() override
    {
        for (const auto &c : std::as_const(m_conns))
            QObject::disconnect(c);
        clearCells();
    }

    int childCount() const override { return m_view ? int(m_view->model()->visibleColumns().size()) : 0; }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        const auto it = m_cells.constFind(index);
        if (it != m_cells.cend())
            if (QAccessibleInterface *iface = QAccessible::accessibleInterface(*it))
                return iface;
        auto *iface = new GridAccessibleFooterCell(m_view, this, index);
        m_cells.insert(index, QAccessible::registerAccessibleInterface(iface));
        return iface;
    }
    int indexOfChild(const QAccessibleInterface *iface) const override
    {
        for (auto it = m_cells.cbegin(); it != m_cells.cend(); ++it)
            if (QAccessible::accessibleInterface(it.value()) == iface)
                return it.key();
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        for (int i = 0; i < childCount(); ++i)
            if (QAccessibleInterface *c = child(i); c && c->rect().contains(x, y))
                return c;
        return nullptr;
    }

private:
    void clearCells()
    {
        for (QAccessible::Id id : std::as_const(m_cells))
            QAccessible::deleteAccessibleInterface(id);
        m_cells.clear();
    }

    QPointer<GridTableView> m_view;
    mutable QHash<int, QAccessible::Id> m_cells;
    QList<QMetaObject::Connection> m_conns;
};

QAccessibleInterface *GridAccessibleFooterCell::parent() const
{
    return const_cast<GridAccessibleFooter *>(m_footer);
}

QAccessibleInterface *gridFactory(const QString &className, QObject *object)
{
    if (!object || !object->isWidgetType())
        return nullptr;
    if (className == QLatin1String("ui::GridTableView"))
        return new GridAccessibleTable(static_cast<GridTableView *>(object));
    if (className == QLatin1String("ui::GridFooter"))
        return new GridAccessibleFooter(static_cast<GridFooter *>(object));
    return nullptr;
}

} // namespace

void installGridAccessibility()
{
    static const bool installed = [] {
        QAccessible::installFactory(gridFactory);
        return true;
    }();
    Q_UNUSED(installed);
}

} // namespace ui
