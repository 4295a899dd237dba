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


// ===================================================================== view

GridTableView::GridTableView(QWidget *parent) : QAbstractScrollArea(parent), m_model(new grid::GridModel(this))
{
    installGridAccessibility();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setFocusProxy(this);
    viewport()->setAccessibleName(QStringLiteral("Randuri"));

    m_groupBox = new GridGroupByBox(this);
    m_header = new GridHeader(this);
    m_filterRow = new GridFilterRow(this);
    m_footer = new GridFooter(this);

    // A child of the view (the accessible table), not of its viewport, so a
    // screen reader finds the focused editor inside the table it edits;
    // placeEditor keeps it over its cell.
    m_editor = new QLineEdit(this);
    m_editor->setObjectName(QStringLiteral("cellEditor"));
    m_editor->setFrame(false);
    // The text stays where the cell showed it (the line edit keeps 2 pixels of its own).
    m_editor->setTextMargins(kCellPadding - 2, 0, kCellPadding - 2, 0);
    m_editor->hide();
    m_editor->installEventFilter(this);
    // The vertical scroll bar stands beside the rows only, not beside the
    // strips above and below them: it is put back there whenever the scroll
    // area lays it out.
    if (QWidget *c = verticalScrollBar()->parentWidget(); c && c != this)
        c->installEventFilter(this);

    connect(m_model, &grid::GridModel::columnsChanged, this, &GridTableView::onColumnsChanged);
    connect(m_model, &grid::GridModel::rowsChanged, this, &GridTableView::onRowsChanged);
    connect(m_model, &grid::GridModel::summariesChanged, this, [this] {
        updateGeometries();
        m_footer->update();
        viewport()->update();
    });
    connect(m_model, &grid::GridModel::focusChanged, this, &GridTableView::onFocusChanged);
    connect(m_model, &grid::GridModel::optionsChanged, this, [this] { updateGeometries(); });

    updateRowHeight();
    onColumnsChanged();
}

GridTableView::~GridTableView() = default;

void GridTableView::setDataSet(db::DataSet *ds)
{
    cancelEdit();
    m_model->setDataSet(ds);
    if (ds) {
        // The edit buffer is painted for the row being edited.
        connect(ds, &db::DataSet::editValueChanged, viewport(), qOverload<>(&QWidget::update), Qt::UniqueConnection);
        connect(ds, &db::DataSet::stateChanged, this, &GridTableView::onDataSetState, Qt::UniqueConnection);
    }
}

db::DataSet *GridTableView::dataSet() const { return m_model->dataSet(); }

bool GridTableView::insertRowShown() const
{
    const db::DataSet *ds = dataSet();
    return ds && ds->state() == db::DataSet::State::Insert;
}

qsizetype GridTableView::insertRow() const { return insertRowShown() ? m_model->rowCount() : -1; }
qsizetype GridTableView::totalRows() const { return m_model->rowCount() + (insertRowShown() ? 1 : 0); }
qsizetype GridTableView::currentRow() const { return insertRowShown() ? m_model->rowCount() : m_model->focusedRow(); }

bool GridTableView::isDataRow(qsizetype row) const
{
    if (row >= 0 && row == insertRow())
        return true;
    return row >= 0 && row < m_model->rowCount() && m_model->rowKind(row) == grid::RowKind::Data;
}

void GridTableView::onDataSetState()
{
    if (isEditing() && m_editRow >= totalRows())
        cancelEdit();
    updateScrollBars();
    const bool inserting = insertRowShown();
    if (inserting) {
        scrollToRow(insertRow());
        if (!m_wasInserting) {
            // A new row starts on its first cell the operator can type into.
            int col = -1;
            for (int c : std::as_const(m_visible))
                if (isColumnEditable(c) && m_model->columnKind(c) != grid::ColumnKind::Bool) {
                    col = c;
                    break;
                }
            if (col < 0 && !m_visible.isEmpty())
                col = m_visible.first();
            if (col >= 0)
                setFocusedColumn(col);
        } else if (m_focusColumn < 0 && !m_visible.isEmpty()) {
            m_focusColumn = m_visible.first();
        }
    }
    if (inserting != m_wasInserting && QAccessible::isActive()) {
        // The row being inserted is the accessible table's last row.
        QAccessibleTableModelChangeEvent ev(this, inserting ? QAccessibleTableModelChangeEvent::RowsInserted
                                                            : QAccessibleTableModelChangeEvent::RowsRemoved);
        ev.setFirstRow(int(m_model->rowCount()));
        ev.setLastRow(int(m_model->rowCount()));
        QAccessible::updateAccessibility(&ev);
    }
    m_wasInserting = inserting;
    viewport()->update();
}

void GridTableView::setColumnEditable(const QString &fieldName, bool editable)
{
    if (editable)
        m_editable.insert(fieldName.toLower());
    else
        m_editable.remove(fieldName.toLower());
}

bool GridTableView::isColumnEditable(int col) const
{
    if (col < 0 || col >= m_model->columnCount() || m_model->columnField(col) < 0)
        return false;
    return m_editable.contains(m_model->column(col).fieldName.toLower());
}

void GridTableView::setGridStyleSheet(const GridStyleSheet &sheet)
{
    m_sheet = sheet;
    m_styleCache.clear();
    updateRowHeight();
    updateGeometries();
    m_header->update();
    m_groupBox->update();
    m_filterRow->update();
    m_footer->update();
    viewport()->update();
}

CellStyle GridTableView::resolvedStyle(GridElement e) const
{
    const auto it = m_styleCache.constFind(int(e));
    if (it != m_styleCache.cend())
        return *it;
    CellStyle s = m_sheet.style(e);
    const QPalette &pal = palette();
    // Rows take the content's font and text colour unless they name their own.
    if (e == GridElement::ContentEven || e == GridElement::ContentOdd || e == GridElement::Selection
        || e == GridElement::Inactive || e == GridElement::Group || e == GridElement::Footer) {
        const CellStyle c = m_sheet.style(GridElement::Content);
        if (!s.font)
            s.font = c.font;
        const bool evenOdd = e == GridElement::ContentEven || e == GridElement::ContentOdd;
        // Group rows and footers are written in the data rows' text colour,
        // a selection too when it has a background of its own. Only a
        // selection drawn in the system's highlight takes the highlight's.
        const bool systemHighlight = (e == GridElement::Selection || e == GridElement::Inactive) && !s.color;
        if (!s.textColor && evenOdd)
            s.textColor = c.textColor;
        else if (!s.textColor && !systemHighlight)
            s.textColor = dataRowStyle(0).textColor;
        if (!s.color && evenOdd)
            s.color = c.color;
    }
    if (!s.font)
        s.font = font();
    switch (e) {
    case GridElement::Selection:
        if (!s.color)
            s.color = pal.color(QPalette::Active, QPalette::Highlight);
        if (!s.textColor)
            s.textColor = pal.color(QPalette::Active, QPalette::HighlightedText);
        break;
    case GridElement::Inactive:
        if (!s.color)
            s.color = pal.color(QPalette::Inactive, QPalette::Highlight).lighter(130);
        if (!s.textColor)
            s.textColor = pal.color(QPalette::Inactive, QPalette::HighlightedText);
        break;
    case GridElement::Header:
    case GridElement::Indicator:
        if (!s.color)
            s.color = pal.color(QPalette::Button);
        break;
    case GridElement::Group:
    case GridElement::Footer:
    case GridElement::GroupByBox:
        if (!s.color)
            s.color = pal.color(QPalette::Button).lighter(105);
        break;
    case GridElement::IncSearch:
        if (!s.color)
            s.color = QColor(0xFE, 0xD5, 0x47);
        break;
    case GridElement::Background:
        if (!s.color)
            s.color = pal.color(QPalette::Base).darker(104);
        break;
    default:
        if (!s.color)
            s.color = pal.color(QPalette::Base);
        break;
    }
    if (!s.textColor)
        s.textColor = (e == GridElement::Header || e == GridElement::GroupByBox) ? pal.color(QPalette::ButtonText)
                                                                                  : pal.color(QPalette::Text);
    m_styleCache.insert(int(e), s);
    return s;
}

CellStyle GridTableView::dataRowStyle(qsizetype row) const
{
    if (!m_sheet.has(GridElement::ContentEven) && !m_sheet.has(GridElement::ContentOdd))
        return resolvedStyle(GridElement::Content);
    return resolvedStyle((row % 2) ? GridElement::ContentOdd : GridElement::ContentEven);
}

CellStyle GridTableView::focusedRowStyle(const CellStyle &ordinary) const
{
    const GridElement e = hasFocus() ? GridElement::Selection : GridElement::Inactive;
    CellStyle s = resolvedStyle(e);
    // A selection with a background of its own and no text colour keeps the
    // text colour of the row it marks (a group row's, a footer's).
    const CellStyle given = m_sheet.style(e);
    if (given.color && !given.textColor)
        s.textColor = ordinary.textColor;
    return s;
}

void GridTableView::updateRowHeight()
{
    int h = QFontMetrics(*resolvedStyle(GridElement::Content).font).height();
    h = std::max(h, QFontMetrics(*resolvedStyle(GridElement::Group).font).height());
    m_rowHeight = h + 5;
    verticalScrollBar()->setSingleStep(1);
}

int GridTableView::indicatorWidth() const { return m_model->indicatorVisible() ? kIndicatorWidth : 0; }
int GridTableView::indentWidth() const { return int(m_model->groupColumns().size()) * kIndentStep; }
int GridTableView::firstColumnX() const { return indicatorWidth() + indentWidth() - horizontalScrollBar()->value(); }

int GridTableView::columnLeft(int col) const
{
    const int i = int(m_visible.indexOf(col));
    return i < 0 ? -1 : firstColumnX() + m_left[i];
}

int GridTableView::columnWidth(int col) const
{
    return col >= 0 && col < m_model->columnCount() ? std::max(1, m_model->column(col).width) : 0;
}

int GridTableView::columnAtX(int x) const
{
    if (x < indicatorWidth())
        return -1;
    const int rel = x - firstColumnX();
    if (rel < 0)
        return -1;
    // m_left is ascending: the last column starting at or before rel.
    auto it = std::upper_bound(m_left.begin(), m_left.end(), rel);
    if (it == m_left.begin())
        return -1;
    const int i = int(it - m_left.begin()) - 1;
    return rel < m_left[i] + columnWidth(m_visible[i]) ? m_visible[i] : -1;
}

qsizetype GridTableView::topRow() const { return verticalScrollBar()->value(); }
int GridTableView::visibleRowCount() const { return (viewport()->height() + m_rowHeight - 1) / m_rowHeight; }

QRect GridTableView::rowRect(qsizetype displayRow) const
{
    const qsizetype d = displayRow - topRow();
    return QRect(0, int(d) * m_rowHeight, viewport()->width(), m_rowHeight);
}

QRect GridTableView::cellRect(qsizetype displayRow, int col) const
{
    const int x = columnLeft(col);
    if (x < 0 && !m_visible.contains(col))
        return {};
    const QRect r = rowRect(displayRow);
    return QRect(x, r.y(), columnWidth(col), r.height());
}

GridHit GridTableView::hitTest(const QPoint &pos) const
{
    GridHit h;
    if (pos.y() < 0)
        return h;
    const qsizetype row = topRow() + pos.y() / m_rowHeight;
    if (row >= totalRows())
        return h;
    h.row = row;
    h.column = columnAtX(pos.x());
    if (row < m_model->rowCount() && m_model->rowKind(row) == grid::RowKind::Group) {
        const int bx = groupBoxX(row);
        h.expandButton = pos.x() >= bx && pos.x() < bx + kIndentStep;
    }
    return h;
}

int GridTableView::groupBoxX(qsizetype row) const
{
    const int gx = indicatorWidth() + m_model->rowLevel(row) * kIndentStep - horizontalScrollBar()->value();
    // Scrolled to the right, the [+] stays at the left edge of the rows with
    // the group's caption after it.
    return std::max(gx, indicatorWidth());
}

QRect GridTableView::groupCaptionRect(qsizetype row) const
{
    if (row < 0 || row >= m_model->rowCount() || m_model->rowKind(row) != grid::RowKind::Group)
        return {};
    const QRect r = rowRect(row);
    // After the [+].
    const int left = groupBoxX(row) + kIndentStep + 2;
    const int right = std::max(firstColumnX() + m_totalWidth, r.right());
    return QRect(left, r.y(), std::max(0, right - left + 1), r.height());
}

void GridTableView::scrollToRow(qsizetype row)
{
    if (row < 0)
        return;
    const int full = std::max(1, viewport()->height() / m_rowHeight);
    QScrollBar *vb = verticalScrollBar();
    if (row < vb->value())
        vb->setValue(int(row));
    else if (row >= vb->value() + full)
        vb->setValue(int(row - full + 1));
}

void GridTableView::updateScrollBars()
{
    const int full = std::max(1, viewport()->height() / m_rowHeight);
    QScrollBar *vb = verticalScrollBar();
    const qsizetype rows = totalRows();
    vb->setRange(0, int(std::max<qsizetype>(0, rows - full)));
    vb->setPageStep(full);
    QScrollBar *hb = horizontalScrollBar();
    const int content = indicatorWidth() + indentWidth() + m_totalWidth;
    hb->setRange(0, std::max(0, content - viewport()->width()));
    hb->setPageStep(std::max(1, viewport()->width() - indicatorWidth()));
    hb->setSingleStep(20);
}

void GridTableView::updateGeometries()
{
    m_visible = m_model->visibleColumns();
    m_left.clear();
    int x = 0;
    for (int c : m_visible) {
        m_left.append(x);
        x += columnWidth(c);
    }
    m_totalWidth = x;

    const int gb = m_model->groupByBoxVisible() ? m_groupBox->preferredHeight() : 0;
    const int hh = m_rowHeight + 4;
    const int fr = m_model->filterRowVisible() ? m_rowHeight + 6 : 0;
    const int ft = m_model->footerVisible() ? m_footer->preferredHeight() : 0;
    setViewportMargins(0, gb + hh + fr, 0, ft);
    const QRect vg = viewport()->geometry();
    // The strips reach the right edge, over the scroll bar's column.
    const int stripW = std::max(vg.width(), contentsRect().right() + 1 - vg.x());
    m_groupBox->setGeometry(vg.x(), vg.y() - gb - hh - fr, stripW, gb);
    m_groupBox->setVisible(gb > 0);
    m_header->setGeometry(vg.x(), vg.y() - hh - fr, stripW, hh);
    m_filterRow->setGeometry(vg.x(), vg.y() - fr, stripW, fr);
    m_filterRow->setVisible(fr > 0);
    m_footer->setGeometry(vg.x(), vg.bottom() + 1, stripW, ft);
    m_footer->setVisible(ft > 0);
    placeVerticalScrollBar();
    updateScrollBars();
    m_filterRow->layoutEditors();
    if (isEditing())
        placeEditor();
    m_groupBox->update();
    m_header->update();
    m_footer->update();
    viewport()->update();
}

void GridTableView::placeVerticalScrollBar()
{
    QWidget *c = verticalScrollBar()->parentWidget();
    if (!c || c == this)
        return;
    const QRect vg = viewport()->geometry();
    const QRect g = c->geometry();
    const QRect want(g.x(), vg.y(), g.width(), std::max(0, vg.height()));
    if (g != want)
        c->setGeometry(want);
}

bool GridTableView::viewportEvent(QEvent *e)
{
    if (e->type() == QEvent::Resize || e->type() == QEvent::Move)
        placeVerticalScrollBar();
    return QAbstractScrollArea::viewportEvent(e);
}

void GridTableView::onColumnsChanged()
{
    if (isEditing() && (m_editColumn >= m_model->columnCount() || !m_model->column(m_editColumn).visible))
        cancelEdit();
    if (m_focusColumn >= m_model->columnCount() || (m_focusColumn >= 0 && !m_model->column(m_focusColumn).visible))
        m_focusColumn = -1;
    m_filterRow->rebuild();
    updateGeometries();
}

void GridTableView::onRowsChanged()
{
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent ev(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&ev);
    }
    if (isEditing())
        cancelEdit();
    updateGeometries();   // the indent follows the grouping levels
    m_filterRow->syncFromModel();
    scrollToRow(m_model->focusedRow());
}

void GridTableView::onFocusChanged(qsizetype row)
{
    if (!m_searching)
        m_incSearch.clear();
    scrollToRow(row);
    viewport()->update();
    if (QAccessible::isActive() && row >= 0 && !m_visible.isEmpty()) {
        // screen readers follow the focused cell (children: header cells, then rows)
        const int vi = std::max(0, int(m_visible.indexOf(m_focusColumn)));
        QAccessibleEvent ev(this, QAccessible::Focus);
        ev.setChild(int((row + 1) * m_visible.size() + vi));
        QAccessible::updateAccessibility(&ev);
    }
}

void GridTableView::resizeEvent(QResizeEvent *e)
{
    QAbstractScrollArea::resizeEvent(e);
    updateGeometries();
}

void GridTableView::scrollContentsBy(int dx, int)
{
    if (dx != 0) {
        m_header->update();
        m_footer->update();
        m_filterRow->layoutEditors();
    }
    if (isEditing())
        placeEditor();
    viewport()->update();
}

void GridTableView::changeEvent(QEvent *e)
{
    QAbstractScrollArea::changeEvent(e);
    if (e->type() == QEvent::FontChange || e->type() == QEvent::PaletteChange) {
        m_styleCache.clear();
        updateRowHeight();
        updateGeometries();
    }
}

} // namespace ui
