#include "ui/u_grid.h"

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

namespace {

constexpr int kIndicatorWidth = 18;
constexpr int kIndentStep = 18;
const QColor kGridLine(0xC0, 0xC0, 0xC0);

bool isRightAligned(grid::ColumnKind k) { return k == grid::ColumnKind::Number; }

} // namespace

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

// ------------------------------------------------------------------ painting

void GridTableView::paintEvent(QPaintEvent *e)
{
    QPainter p(viewport());
    const QRect clip = e->rect();
    p.fillRect(clip, *resolvedStyle(GridElement::Background).color);
    // Painted while the rows are rebuilt (long work serving the windows):
    // the rows come with the rebuild's end.
    if (m_model->isRebuilding())
        return;
    const qsizetype rows = totalRows();
    const qsizetype first = topRow() + clip.top() / m_rowHeight;
    const qsizetype last = std::min(rows - 1, topRow() + clip.bottom() / m_rowHeight);
    for (qsizetype r = first; r <= last; ++r)
        paintRow(p, r, rowRect(r), clip);
}

void GridTableView::paintIndicator(QPainter &p, const QRect &r, bool focused) const
{
    const CellStyle st = resolvedStyle(GridElement::Indicator);
    p.fillRect(r, *st.color);
    p.setPen(kGridLine);
    p.drawLine(r.topRight(), r.bottomRight());
    p.drawLine(r.bottomLeft(), r.bottomRight());
    if (!focused)
        return;
    const db::DataSet *ds = dataSet();
    const QPoint c = r.center();
    if (ds && ds->isEditing()) {
        // A square mark: the row holds unposted changes.
        p.fillRect(c.x() - 3, c.y() - 3, 7, 7, *st.textColor);
        return;
    }
    p.save();
    p.setPen(Qt::NoPen);
    p.setBrush(*st.textColor);
    QPainterPath path;
    path.moveTo(c.x() - 2, c.y() - 4);
    path.lineTo(c.x() + 3, c.y());
    path.lineTo(c.x() - 2, c.y() + 4);
    path.closeSubpath();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.drawPath(path);
    p.restore();
}

void GridTableView::paintCheck(QPainter &p, const QRect &r, int state) const
{
    QStyleOptionButton opt;
    opt.initFrom(this);
    const int s = std::min(13, r.height() - 2);
    opt.rect = QRect(r.center().x() - s / 2, r.center().y() - s / 2, s, s);
    opt.state |= state == 1 ? QStyle::State_On : state == 0 ? QStyle::State_Off : QStyle::State_NoChange;
    opt.state |= QStyle::State_Enabled;
    style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &opt, &p, this);
}

void GridTableView::paintCellText(QPainter &p, const QRect &r, const QString &text, int col,
                                  const CellStyle &st) const
{
    if (text.isEmpty())
        return;
    const QRect tr = r.adjusted(kCellPadding, 0, -kCellPadding - 1, 0); // and the grid line
    const Qt::Alignment a = (isRightAligned(m_model->columnKind(col)) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
    p.setPen(*st.textColor);
    const QFontMetrics fm(*st.font);
    if (fm.horizontalAdvance(text) > tr.width())
        p.drawText(tr, a, fm.elidedText(text, Qt::ElideRight, tr.width()));
    else
        p.drawText(tr, a, text);
}

QString GridTableView::editValueText(qsizetype row, int col, bool *fromBuffer) const
{
    const db::DataSet *ds = dataSet();
    const bool inserting = row >= 0 && row == insertRow();
    const qsizetype dr = inserting ? -1 : m_model->dataRow(row);
    // While a new row is inserted the current row stays where it was: only
    // the new row shows the buffer then.
    const bool editingThis = ds && ds->state() == db::DataSet::State::Edit && dr >= 0 && dr == ds->currentRow()
        && ds->isModified();
    if (ds && (editingThis || inserting)) {
        const int f = m_model->columnField(col);
        if (f >= 0) {
            if (fromBuffer)
                *fromBuffer = true;
            const QVariant v = ds->fieldValue(f);
            if (v.typeId() == QMetaType::QDate)
                return v.toDate().toString(QStringLiteral("dd.MM.yyyy"));
            return v.toString();
        }
        if (inserting)
            return {};
    }
    if (fromBuffer)
        *fromBuffer = false;
    return m_model->cellText(row, col);
}

void GridTableView::paintRow(QPainter &p, qsizetype row, const QRect &r, const QRect &clip)
{
    const bool inserting = row == insertRow();
    const grid::RowKind kind = inserting ? grid::RowKind::Data : m_model->rowKind(row);
    const int level = inserting ? int(m_model->groupColumns().size()) : m_model->rowLevel(row);
    const bool focused = row == currentRow();
    const int indW = indicatorWidth();
    const int hx = horizontalScrollBar()->value();
    const int levels = int(m_model->groupColumns().size());

    if (indW > 0)
        paintIndicator(p, QRect(r.x(), r.y(), indW, r.height()), focused);
    p.save();
    p.setClipRect(QRect(indW, r.y(), r.width() - indW, r.height()).intersected(clip));

    // Indent cells of the enclosing groups.
    const CellStyle groupSt = resolvedStyle(GridElement::Group);
    const int indentCells = kind == grid::RowKind::Data ? levels : kind == grid::RowKind::Group ? level : level + 1;
    for (int i = 0; i < indentCells; ++i) {
        const QRect ir(indW + i * kIndentStep - hx, r.y(), kIndentStep, r.height());
        p.fillRect(ir, *groupSt.color);
    }

    const int x0 = indW - hx;
    const int contentRight = firstColumnX() + m_totalWidth;

    if (kind == grid::RowKind::Data) {
        const CellStyle st = dataRowStyle(row);
        const CellStyle selSt = focusedRowStyle(st);
        p.setFont(*st.font);
        for (int i = 0; i < m_visible.size(); ++i) {
            const int col = m_visible[i];
            const QRect cr(firstColumnX() + m_left[i], r.y(), columnWidth(col), r.height());
            if (cr.right() < clip.left() || cr.left() > clip.right())
                continue;
            const CellStyle &ts = focused ? selSt : st;
            p.fillRect(cr, *ts.color);
            if (m_model->columnKind(col) == grid::ColumnKind::Bool) {
                int state = inserting ? -1 : m_model->cellCheck(row, col);
                bool buf = false;
                const QString t = editValueText(row, col, &buf);
                if (buf)
                    state = t.isEmpty() ? -1 : (t == QLatin1String("true") || t == QLatin1String("1")) ? 1 : 0;
                paintCheck(p, cr, state);
            } else {
                p.setFont(*ts.font);
                const QString text = editValueText(row, col);
                if (focused && col == m_focusColumn && !m_incSearch.isEmpty()) {
                    // the part found by the incremental search
                    const CellStyle is = resolvedStyle(GridElement::IncSearch);
                    const QFontMetrics fm(*ts.font);
                    const int w = fm.horizontalAdvance(text.left(m_incSearch.size()));
                    const int x = isRightAligned(m_model->columnKind(col))
                        ? cr.right() - kCellPadding - fm.horizontalAdvance(text)
                        : cr.left() + kCellPadding;
                    p.fillRect(QRect(x, cr.top() + 2, w, cr.height() - 4), *is.color);
                    paintCellText(p, cr, text, col, ts);
                    p.setPen(*is.textColor);
                    p.drawText(QRect(x, cr.top(), w + 1, cr.height()), Qt::AlignLeft | Qt::AlignVCenter, text.left(m_incSearch.size()));
                } else {
                    paintCellText(p, cr, text, col, ts);
                }
            }
            p.setPen(kGridLine);
            p.drawLine(cr.topRight(), cr.bottomRight());
            p.drawLine(cr.bottomLeft(), cr.bottomRight());
            if (focused && col == m_focusColumn && hasFocus()) {
                // the focused cell inside the selected row
                QPen pen(*ts.textColor, 1, Qt::DotLine);
                p.setPen(pen);
                p.drawRect(cr.adjusted(1, 1, -2, -2));
            }
        }
        if (contentRight < r.right())
            p.fillRect(QRect(contentRight, r.y(), r.right() - contentRight + 1, r.height()),
                       *resolvedStyle(GridElement::Background).color);
    } else if (kind == grid::RowKind::Group) {
        const int gx = x0 + level * kIndentStep;
        const QRect gr(gx, r.y(), std::max(contentRight, r.right()) - gx + 1, r.height());
        const CellStyle st = focused ? focusedRowStyle(groupSt) : groupSt;
        p.fillRect(gr, *st.color);
        // [+] / [-]
        const QRect box(groupBoxX(row) + kIndentStep / 2 - 5, r.center().y() - 4, 9, 9);
        p.fillRect(box, Qt::white);
        p.setPen(QColor(0x60, 0x60, 0x60));
        p.drawRect(box);
        p.setPen(Qt::black);
        p.drawLine(box.left() + 2, box.center().y(), box.right() - 2, box.center().y());
        if (!m_model->isExpanded(row))
            p.drawLine(box.center().x(), box.top() + 2, box.center().x(), box.bottom() - 2);
        p.setFont(*st.font);
        p.setPen(*st.textColor);
        p.drawText(groupCaptionRect(row), Qt::AlignLeft | Qt::AlignVCenter, m_model->groupRowText(row));
        p.setPen(kGridLine);
        p.drawLine(gr.bottomLeft(), gr.bottomRight());
    } else { // group footer
        const int fx = x0 + (level + 1) * kIndentStep;
        const QRect fr(fx, r.y(), std::max(contentRight, r.right()) - fx + 1, r.height());
        CellStyle st = resolvedStyle(GridElement::Footer);
        if (m_sheet.has(GridElement::GroupSummary)) {
            const CellStyle gs = m_sheet.style(GridElement::GroupSummary);
            if (gs.font)
                st.font = gs.font;
            if (gs.textColor)
                st.textColor = gs.textColor;
        }
        const CellStyle ts = focused ? focusedRowStyle(st) : st;
        p.fillRect(fr, *ts.color);
        p.setFont(*st.font);
        for (int i = 0; i < m_visible.size(); ++i) {
            const int col = m_visible[i];
            const QString t = m_model->groupFooterTextForColumn(row, col);
            if (t.isEmpty())
                continue;
            QRect cr(firstColumnX() + m_left[i], r.y(), columnWidth(col), r.height());
            cr.setLeft(std::max(cr.left(), fx));
            p.setPen(kGridLine);
            p.drawRect(cr.adjusted(1, 1, -2, -2));
            paintCellText(p, cr, QString(t).replace(QLatin1Char('\n'), QLatin1String("; ")), col, ts);
        }
        p.setPen(kGridLine);
        p.drawLine(fr.bottomLeft(), fr.bottomRight());
    }
    p.restore();
}

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
    const bool ctrl = e->modifiers() & Qt::ControlModifier;
    const int page = std::max(1, viewport()->height() / m_rowHeight - 1);
    const grid::RowKind kind = isDataRow(row) || row < 0 ? grid::RowKind::Data : m_model->rowKind(row);
    const bool onGroup = row >= 0 && kind == grid::RowKind::Group;
    const int vi = int(m_visible.indexOf(m_focusColumn));
    switch (e->key()) {
    case Qt::Key_Up: moveFocusBy(-1); return;
    case Qt::Key_Down: moveFocusBy(1); return;
    case Qt::Key_PageUp: moveFocusBy(-page); return;
    case Qt::Key_PageDown: moveFocusBy(page); return;
    case Qt::Key_Home:
        if (ctrl || m_visible.isEmpty())
            moveFocusTo(0);
        else
            setFocusedColumn(m_visible.first());
        return;
    case Qt::Key_End:
        if (ctrl || m_visible.isEmpty())
            moveFocusTo(m_model->rowCount() - 1);
        else
            setFocusedColumn(m_visible.last());
        return;
    case Qt::Key_Left:
        if (onGroup) {
            if (m_model->isExpanded(row))
                m_model->setExpanded(row, false);
        } else if (!m_visible.isEmpty()) {
            setFocusedColumn(m_visible[std::max(0, vi - 1)]);
        }
        return;
    case Qt::Key_Right:
        if (onGroup) {
            if (!m_model->isExpanded(row))
                m_model->setExpanded(row, true);
        } else if (!m_visible.isEmpty()) {
            setFocusedColumn(m_visible[vi < 0 ? 0 : std::min(int(m_visible.size()) - 1, vi + 1)]);
        }
        return;
    case Qt::Key_Plus:
        if (onGroup)
            m_model->setExpanded(row, true);
        return;
    case Qt::Key_Minus:
        if (onGroup)
            m_model->setExpanded(row, false);
        return;
    case Qt::Key_Backspace:
        if (!m_incSearch.isEmpty()) {
            m_incSearch.chop(1);
            viewport()->update();
            return;
        }
        break;
    case Qt::Key_Escape: {
        if (!m_incSearch.isEmpty()) {
            m_incSearch.clear();
            viewport()->update();
            return;
        }
        db::DataSet *ds = dataSet();
        if (ds && ds->isEditing()) {
            guarded([ds] { ds->cancel(); });
            viewport()->update();
            return;
        }
        break;
    }
    default: break;
    }
    if (row >= 0 && kind == grid::RowKind::Data && isColumnEditable(m_focusColumn)) {
        const bool isBool = m_model->columnKind(m_focusColumn) == grid::ColumnKind::Bool;
        if (isBool && e->key() == Qt::Key_Space) {
            toggleCheck(m_focusColumn);
            return;
        }
        if (!isBool) {
            if (e->key() == Qt::Key_F2 || e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter) {
                startEdit();
                return;
            }
            const QString t = e->text();
            if (!t.isEmpty() && t.at(0).isPrint() && !ctrl) {
                startEdit(t);
                return;
            }
        }
    } else if (!ctrl && !e->text().isEmpty() && e->text().at(0).isPrint() && !(e->text() == QLatin1String(" ") && m_incSearch.isEmpty())) {
        incrementalSearch(m_incSearch + e->text());
        return;
    }
    QAbstractScrollArea::keyPressEvent(e);
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
    m_editRow = -1;
    m_editColumn = -1;
    const bool hadFocus = m_editor->hasFocus();
    m_editor->hide();
    if (hadFocus)
        setFocus();
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
    if (!isEditing())
        return;
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
