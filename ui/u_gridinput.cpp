// The table view's input: the focused row and column, keys, mouse, and
// the incremental search.

#include "ui/u_grid.h"

#include "ui/u_grid_p.h"
#include "ui/u_gridstrips.h"
#include "ui/u_messages.h"

#include <QAccessible>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ui {

// ------------------------------------------------------------------ focus and keys

void GridTableView::setFocusedColumn(int col)
{
    if (col >= 0 && !m_visible.contains(col))
        return;
    if (m_focusColumn == col)
        return;
    commitEdit();
    m_focusColumn = col;
    if (col >= 0) {
        // Bring the column into view.
        const int i = int(m_visible.indexOf(col));
        QScrollBar *hb = horizontalScrollBar();
        const int left = indentWidth() + m_left[i];
        const int avail = viewport()->width() - indicatorWidth();
        if (left < hb->value())
            hb->setValue(left);
        else if (left + columnWidth(col) > hb->value() + avail)
            hb->setValue(std::min(left, left + columnWidth(col) - avail));
    }
    viewport()->update();
}

bool GridTableView::moveFocusTo(qsizetype row)
{
    if (isEditing())
        commitEdit();
    db::DataSet *ds = dataSet();
    if (insertRowShown() && row >= insertRow()) {
        // Leaving the new row downwards posts it; the focus follows the posted row.
        guarded([ds] { ds->post(); });
        return !ds->isEditing();
    }
    const qsizetype rows = m_model->rowCount();
    if (rows == 0)
        return false;
    row = std::clamp<qsizetype>(row, 0, rows - 1);
    if (ds && ds->isEditing() && m_model->dataRow(row) != ds->currentRow()) {
        guarded([ds] { ds->post(); });
        if (ds->isEditing())
            return false; // refused: stay on the row with the changes visible
    }
    m_model->setFocusedRow(row);
    return true;
}

void GridTableView::moveFocusBy(qsizetype delta)
{
    const qsizetype cur = currentRow();
    moveFocusTo(cur < 0 ? 0 : cur + delta);
}

void GridTableView::keyPressEvent(QKeyEvent *e)
{
    const qsizetype row = currentRow();
    const grid::RowKind kind = isDataRow(row) || row < 0 ? grid::RowKind::Data : m_model->rowKind(row);
    const bool onGroup = row >= 0 && kind == grid::RowKind::Group;
    if ((e->modifiers() & Qt::ControlModifier) && e->key() == Qt::Key_P && onPaper()) {
        guarded([this] { printGrid(); });
        return;
    }
    if (moveKey(e, row, onGroup) || clearKey(e) || typingKey(e, row, kind))
        return;
    QAbstractScrollArea::keyPressEvent(e);
}

// Arrows, pages, Home / End; on a group row left / right and + / - fold it.
bool GridTableView::moveKey(QKeyEvent *e, qsizetype row, bool onGroup)
{
    const bool ctrl = e->modifiers() & Qt::ControlModifier;
    const int page = std::max(1, viewport()->height() / m_rowHeight - 1);
    const int vi = int(m_visible.indexOf(m_focusColumn));
    switch (e->key()) {
    case Qt::Key_Up: moveFocusBy(-1); return true;
    case Qt::Key_Down: moveFocusBy(1); return true;
    case Qt::Key_PageUp: moveFocusBy(-page); return true;
    case Qt::Key_PageDown: moveFocusBy(page); return true;
    case Qt::Key_Home:
        if (ctrl || m_visible.isEmpty())
            moveFocusTo(0);
        else
            setFocusedColumn(m_visible.first());
        return true;
    case Qt::Key_End:
        if (ctrl || m_visible.isEmpty())
            moveFocusTo(m_model->rowCount() - 1);
        else
            setFocusedColumn(m_visible.last());
        return true;
    case Qt::Key_Left:
        if (onGroup) {
            if (m_model->isExpanded(row))
                m_model->setExpanded(row, false);
        } else if (!m_visible.isEmpty()) {
            setFocusedColumn(m_visible[std::max(0, vi - 1)]);
        }
        return true;
    case Qt::Key_Right:
        if (onGroup) {
            if (!m_model->isExpanded(row))
                m_model->setExpanded(row, true);
        } else if (!m_visible.isEmpty()) {
            setFocusedColumn(m_visible[vi < 0 ? 0 : std::min(int(m_visible.size()) - 1, vi + 1)]);
        }
        return true;
    case Qt::Key_Plus:
        if (onGroup)
            m_model->setExpanded(row, true);
        return true;
    case Qt::Key_Minus:
        if (onGroup)
            m_model->setExpanded(row, false);
        return true;
    default: return false;
    }
}

// Backspace shortens the incremental search; Escape drops it, else the row's changes.
bool GridTableView::clearKey(QKeyEvent *e)
{
    if (e->key() == Qt::Key_Backspace && !m_incSearch.isEmpty()) {
        m_incSearch.chop(1);
        viewport()->update();
        return true;
    }
    if (e->key() != Qt::Key_Escape)
        return false;
    if (!m_incSearch.isEmpty()) {
        m_incSearch.clear();
        viewport()->update();
        return true;
    }
    db::DataSet *ds = dataSet();
    if (ds && ds->isEditing()) {
        guarded([ds] { ds->cancel(); });
        viewport()->update();
        return true;
    }
    return false;
}

// Typing: into the focused cell where it is editable, else the incremental search.
bool GridTableView::typingKey(QKeyEvent *e, qsizetype row, grid::RowKind kind)
{
    const bool ctrl = e->modifiers() & Qt::ControlModifier;
    if (row >= 0 && kind == grid::RowKind::Data && isColumnEditable(m_focusColumn)) {
        const bool isBool = m_model->columnKind(m_focusColumn) == grid::ColumnKind::Bool;
        if (isBool && e->key() == Qt::Key_Space) {
            toggleCheck(m_focusColumn);
            return true;
        }
        if (!isBool) {
            if (e->key() == Qt::Key_F2 || e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter) {
                startEdit();
                return true;
            }
            const QString t = e->text();
            if (!t.isEmpty() && t.at(0).isPrint() && !ctrl) {
                startEdit(t);
                return true;
            }
        }
    } else if (!ctrl && !e->text().isEmpty() && e->text().at(0).isPrint() && !(e->text() == QLatin1String(" ") && m_incSearch.isEmpty())) {
        incrementalSearch(m_incSearch + e->text());
        return true;
    }
    return false;
}

void GridTableView::mousePressEvent(QMouseEvent *e)
{
    setFocus(Qt::MouseFocusReason);
    const GridHit h = hitTest(e->position().toPoint());
    if (h.row < 0 || e->button() != Qt::LeftButton)
        return;
    if (h.row != insertRow() && !moveFocusTo(h.row))
        return;
    if (h.expandButton) {
        m_model->toggleExpanded(h.row);
        return;
    }
    if (h.column >= 0)
        setFocusedColumn(h.column);
    if (isDataRow(currentRow()) && isColumnEditable(h.column)
        && m_model->columnKind(h.column) == grid::ColumnKind::Bool)
        toggleCheck(h.column);
}

void GridTableView::mouseDoubleClickEvent(QMouseEvent *e)
{
    const GridHit h = hitTest(e->position().toPoint());
    if (h.row < 0 || e->button() != Qt::LeftButton)
        return;
    const grid::RowKind kind = isDataRow(h.row) ? grid::RowKind::Data : m_model->rowKind(h.row);
    if (kind == grid::RowKind::Group && !h.expandButton) {
        m_model->toggleExpanded(h.row);
    } else if (kind == grid::RowKind::Data && isColumnEditable(h.column)) {
        if (m_model->columnKind(h.column) == grid::ColumnKind::Bool)
            toggleCheck(h.column); // the second click of the pair
        else
            startEdit();
    }
}

void GridTableView::focusInEvent(QFocusEvent *e)
{
    QAbstractScrollArea::focusInEvent(e);
    viewport()->update();
}

void GridTableView::focusOutEvent(QFocusEvent *e)
{
    QAbstractScrollArea::focusOutEvent(e);
    viewport()->update();
}

// ------------------------------------------------------------------ incremental search

bool GridTableView::incrementalSearch(const QString &text)
{
    const int col = m_focusColumn >= 0 ? m_focusColumn : (m_visible.isEmpty() ? -1 : m_visible.first());
    const qsizetype rows = m_model->rowCount();
    if (col < 0 || rows == 0 || text.isEmpty() || m_model->columnKind(col) == grid::ColumnKind::Bool)
        return false;
    const QString want = text.toCaseFolded();
    const qsizetype start = std::max<qsizetype>(0, m_model->focusedRow());
    for (qsizetype i = 0; i < rows; ++i) {
        const qsizetype r = (start + i) % rows;
        if (m_model->rowKind(r) != grid::RowKind::Data)
            continue;
        const QString cell = m_model->cellText(r, col);
        if (cell.size() < want.size() || !cell.left(want.size()).toCaseFolded().startsWith(want))
            continue;
        m_searching = true;
        const bool moved = moveFocusTo(r);
        m_searching = false;
        if (!moved)
            return false;
        if (m_focusColumn != col)
            setFocusedColumn(col);
        m_incSearch = text;
        viewport()->update();
        return true;
    }
    return false;
}

} // namespace ui
