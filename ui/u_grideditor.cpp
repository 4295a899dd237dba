// The table view's in-place editing (the cell editor, checks toggled in
// place) and the text a screen reader hears of each cell.

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

// ------------------------------------------------------------------ editing

bool GridTableView::isEditing() const { return m_editRow >= 0; }

void GridTableView::placeEditor()
{
    // Over the cell, in the view's coordinates, never over the strips or
    // the scroll bars beside the rows.
    const QRect vp = viewport()->geometry();
    const QRect cell = cellRect(m_editRow, m_editColumn).adjusted(0, 0, -1, -1).translated(vp.topLeft());
    m_editor->setGeometry(cell.intersected(vp));
}

bool GridTableView::startEdit(const QString &initialText)
{
    const qsizetype row = currentRow();
    const int col = m_focusColumn;
    if (!isDataRow(row) || !isColumnEditable(col)
        || m_model->columnKind(col) == grid::ColumnKind::Bool)
        return false;
    scrollToRow(row);
    m_editRow = row;
    m_editColumn = col;
    m_editor->setFont(*resolvedStyle(GridElement::Content).font);
    m_editor->setText(initialText.isEmpty() ? editValueText(row, col) : initialText);
    m_editor->setAccessibleName(m_model->column(col).headerText());
    placeEditor();
    m_editor->show();
    m_editor->raise();
    m_editor->setFocus();
    if (initialText.isEmpty())
        m_editor->selectAll();
    return true;
}

void GridTableView::commitEdit()
{
    if (!isEditing())
        return;
    const qsizetype row = m_editRow;
    const int col = m_editColumn;
    const QString text = m_editor->text();
    closeEditor();
    db::DataSet *ds = dataSet();
    const bool inserting = row == insertRow();
    const qsizetype dr = m_model->dataRow(row);
    const int field = m_model->columnField(col);
    if (!ds || (dr < 0 && !inserting) || field < 0)
        return;
    if (text == editValueText(row, col))
        return; // nothing changed: no edit is started
    guarded([&] {
        if (!inserting && ds->currentRow() != dr)
            ds->setCurrentRow(dr);
        ds->setFieldValue(field, text.isEmpty() ? QVariant() : QVariant(text));
    });
    viewport()->update();
}

void GridTableView::cancelEdit()
{
    if (isEditing())
        closeEditor();
}

// The editor hidden, the focus back on the grid where the editor had it.
void GridTableView::closeEditor()
{
    m_editRow = -1;
    m_editColumn = -1;
    const bool hadFocus = m_editor->hasFocus();
    m_editor->hide();
    if (hadFocus)
        setFocus();
}

bool GridTableView::toggleCheck(int col)
{
    const qsizetype row = currentRow();
    db::DataSet *ds = dataSet();
    const bool inserting = row >= 0 && row == insertRow();
    const qsizetype dr = inserting ? -1 : m_model->dataRow(row);
    const int field = m_model->columnField(col);
    if (!ds || (dr < 0 && !inserting) || field < 0 || !isColumnEditable(col) || m_model->columnKind(col) != grid::ColumnKind::Bool)
        return false;
    bool ok = false;
    guarded([&] {
        if (!inserting && ds->currentRow() != dr)
            ds->setCurrentRow(dr);
        const QVariant v = ds->fieldValue(field);
        ds->setFieldValue(field, QVariant(!(v.isValid() && v.toBool())));
        ok = true;
    });
    viewport()->update();
    return ok;
}

bool GridTableView::eventFilter(QObject *o, QEvent *e)
{
    if (o == verticalScrollBar()->parentWidget() && (e->type() == QEvent::Move || e->type() == QEvent::Resize)) {
        placeVerticalScrollBar();
        return false;
    }
    if (o == m_editor) {
        if (e->type() == QEvent::KeyPress) {
            auto *ke = static_cast<QKeyEvent *>(e);
            switch (ke->key()) {
            case Qt::Key_Return:
            case Qt::Key_Enter: commitEdit(); return true;
            case Qt::Key_Escape: cancelEdit(); return true;
            case Qt::Key_Up: commitEdit(); moveFocusBy(-1); return true;
            case Qt::Key_Down: commitEdit(); moveFocusBy(1); return true;
            default: break;
            }
        } else if (e->type() == QEvent::FocusOut && isEditing()) {
            commitEdit();
        }
    }
    return QAbstractScrollArea::eventFilter(o, e);
}

// ------------------------------------------------------------------ accessibility text

QString GridTableView::accessibleCellText(qsizetype row, int col) const
{
    if (row >= 0 && row == insertRow() && col >= 0 && col < m_model->columnCount()) {
        const QString t = editValueText(row, col);
        if (m_model->columnKind(col) == grid::ColumnKind::Bool && !t.isEmpty())
            return t == QLatin1String("true") ? QStringLiteral("True") : QStringLiteral("False");
        return t;
    }
    if (row < 0 || row >= m_model->rowCount() || col < 0 || col >= m_model->columnCount())
        return {};
    switch (m_model->rowKind(row)) {
    case grid::RowKind::Data:
        if (m_model->columnKind(col) == grid::ColumnKind::Bool) {
            const int s = m_model->cellCheck(row, col);
            return s < 0 ? QString() : s ? QStringLiteral("True") : QStringLiteral("False");
        }
        return editValueText(row, col);
    case grid::RowKind::Group:
        return !m_visible.isEmpty() && col == m_visible.first() ? m_model->groupRowText(row) : QString();
    case grid::RowKind::GroupFooter:
        return m_model->groupFooterTextForColumn(row, col);
    }
    return {};
}

// ===================================================================== container

Grid::Grid(QWidget *parent) : QWidget(parent)
{
    auto *lay = new QVBoxLayout(this);
    lay->setContentsMargins(0, 0, 0, 0);
    lay->setSpacing(0);
    m_view = new GridTableView(this);
    m_navigator = new GridNavigator(m_view, this);
    m_navigator->setObjectName(QStringLiteral("navigator"));
    lay->addWidget(m_view, 1);
    lay->addWidget(m_navigator);
    setFocusProxy(m_view);
}

void Grid::setNavigatorVisible(bool v) { m_navigator->setVisible(v); }
bool Grid::navigatorVisible() const { return !m_navigator->isHidden(); }

} // namespace ui
