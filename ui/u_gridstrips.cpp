#include "ui/u_gridstrips.h"

#include "ui/u_grid.h"
#include "ui/u_grid_p.h"
#include "ui/u_messages.h"

#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>

namespace ui {

namespace {

void drawSortMark(QPainter &p, const QRect &r, grid::SortOrder order, const QColor &c)
{
    if (order == grid::SortOrder::None)
        return;
    const int cx = r.right() - 7;
    const int cy = r.center().y();
    QPainterPath path;
    if (order == grid::SortOrder::Ascending) {
        path.moveTo(cx - 4, cy + 2);
        path.lineTo(cx + 4, cy + 2);
        path.lineTo(cx, cy - 3);
    } else {
        path.moveTo(cx - 4, cy - 2);
        path.lineTo(cx + 4, cy - 2);
        path.lineTo(cx, cy + 3);
    }
    path.closeSubpath();
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    p.drawPath(path);
    p.restore();
}

// A header-like button: its caption, its sort mark.
void drawHeaderCell(QPainter &p, const QRect &r, const QString &text, grid::SortOrder order, const CellStyle &st,
                    bool raised)
{
    p.fillRect(r, *st.color);
    p.setPen(kStripLine);
    p.drawLine(r.topRight(), r.bottomRight());
    p.drawLine(r.bottomLeft(), r.bottomRight());
    if (raised) {
        p.setPen(Qt::white);
        p.drawLine(r.topLeft(), r.topRight() - QPoint(1, 0));
        p.drawLine(r.topLeft(), r.bottomLeft() - QPoint(0, 1));
    }
    p.setFont(*st.font);
    p.setPen(*st.textColor);
    const QRect tr = r.adjusted(4, 0, order == grid::SortOrder::None ? -3 : -15, 0);
    p.drawText(tr, Qt::AlignLeft | Qt::AlignVCenter, QFontMetrics(*st.font).elidedText(text, Qt::ElideRight, tr.width()));
    drawSortMark(p, r, order, *st.textColor);
}

} // namespace

// ===================================================================== group-by box

GridGroupByBox::GridGroupByBox(GridTableView *view) : QWidget(view), m_view(view)
{
    setObjectName(QStringLiteral("groupByBox"));
    setAccessibleName(QStringLiteral("Caseta de grupare"));
}

QString GridGroupByBox::emptyText()
{
    return QStringLiteral("Trageti aici antetul unei coloane pentru a grupa dupa acea coloana");
}

int GridGroupByBox::preferredHeight() const
{
    const int item = m_view->rowHeight() + 4;
    const int levels = std::max(1, int(m_view->model()->groupColumns().size()));
    return 8 + item + (levels - 1) * (item / 2) + 4;
}

QRect GridGroupByBox::itemRect(int level) const
{
    const QList<int> groups = m_view->model()->groupColumns();
    if (level < 0 || level >= groups.size())
        return {};
    const QFontMetrics fm(*m_view->resolvedStyle(GridElement::Header).font);
    const int item = m_view->rowHeight() + 4;
    int x = 8;
    for (int i = 0; i < level; ++i)
        x += fm.horizontalAdvance(m_view->model()->column(groups[i]).headerText()) + 26 + 10;
    const int w = fm.horizontalAdvance(m_view->model()->column(groups[level]).headerText()) + 26;
    return QRect(x, 6 + level * (item / 2), w, item);
}

int GridGroupByBox::levelAtX(int x) const
{
    const int n = int(m_view->model()->groupColumns().size());
    for (int i = 0; i < n; ++i)
        if (x < itemRect(i).center().x())
            return i;
    return n;
}

void GridGroupByBox::setDropHint(int level)
{
    if (m_dropHint != level) {
        m_dropHint = level;
        update();
    }
}

void GridGroupByBox::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const CellStyle st = m_view->resolvedStyle(GridElement::GroupByBox);
    p.fillRect(rect(), *st.color);
    p.setPen(kStripLine);
    p.drawLine(rect().bottomLeft(), rect().bottomRight());
    const grid::GridModel *m = m_view->model();
    const QList<int> groups = m->groupColumns();
    if (m_dropHint >= 0) {
        // the place the dragged caption would take
        const int x = m_dropHint < groups.size() ? itemRect(m_dropHint).left() - 4
                      : groups.isEmpty()         ? 6
                                                 : itemRect(int(groups.size()) - 1).right() + 5;
        p.fillRect(QRect(x - 1, 3, 3, height() - 6), Qt::red);
    }
    if (groups.isEmpty()) {
        p.setFont(*st.font);
        p.setPen(*st.textColor);
        p.drawText(rect().adjusted(12, 0, -4, 0), Qt::AlignLeft | Qt::AlignVCenter, emptyText());
        return;
    }
    const CellStyle hs = m_view->resolvedStyle(GridElement::Header);
    for (int i = 0; i < groups.size(); ++i) {
        const QRect r = itemRect(i);
        if (i > 0) {
            // A connector from the previous level.
            const QRect prev = itemRect(i - 1);
            p.setPen(kStripLine);
            p.drawLine(prev.left() + 10, prev.bottom(), prev.left() + 10, r.center().y());
            p.drawLine(prev.left() + 10, r.center().y(), r.left(), r.center().y());
        }
        drawHeaderCell(p, r, m->column(groups[i]).headerText(), m->column(groups[i]).sortOrder, hs, true);
        p.setPen(kStripLine);
        p.drawRect(r.adjusted(0, 0, -1, -1));
    }
}

void GridGroupByBox::mousePressEvent(QMouseEvent *e)
{
    m_pressLevel = -1;
    m_dragging = false;
    if (e->button() != Qt::LeftButton)
        return;
    const int n = int(m_view->model()->groupColumns().size());
    for (int i = 0; i < n; ++i)
        if (itemRect(i).contains(e->position().toPoint()))
            m_pressLevel = i;
    m_pressPos = e->position().toPoint();
}

void GridGroupByBox::mouseMoveEvent(QMouseEvent *e)
{
    if (m_pressLevel >= 0 && (e->position().toPoint() - m_pressPos).manhattanLength() >= QApplication::startDragDistance())
        m_dragging = true;
}

void GridGroupByBox::mouseReleaseEvent(QMouseEvent *e)
{
    const int level = m_pressLevel;
    m_pressLevel = -1;
    if (level < 0 || e->button() != Qt::LeftButton)
        return;
    grid::GridModel *m = m_view->model();
    const QList<int> groups = m->groupColumns();
    if (level >= groups.size())
        return;
    const int col = groups[level];
    const QPoint pos = e->position().toPoint();
    guarded([&] {
        if (!m_dragging) {
            m->clickSort(col, e->modifiers() & Qt::ShiftModifier);
        } else if (!rect().contains(pos)) {
            m->ungroupColumn(col);      // dragged out of the box
        } else {
            int to = levelAtX(pos.x());
            if (to > level)
                --to;
            if (to != level)
                m->groupByColumn(col, to);
        }
    });
    m_dragging = false;
}

// ===================================================================== header

GridHeader::GridHeader(GridTableView *view) : QWidget(view), m_view(view)
{
    setObjectName(QStringLiteral("header"));
    setAccessibleName(QStringLiteral("Antet"));
    setMouseTracking(true);
}

QRect GridHeader::sectionRect(int col) const
{
    const int x = m_view->columnLeft(col);
    if (x < 0 && !m_view->model()->visibleColumns().contains(col))
        return {};
    return QRect(x, 0, m_view->columnWidth(col), height());
}

int GridHeader::edgeAt(int x) const
{
    for (int col : m_view->model()->visibleColumns()) {
        const int right = m_view->columnLeft(col) + m_view->columnWidth(col);
        if (std::abs(x - right) <= 3 && x >= m_view->indicatorWidth())
            return col;
    }
    return -1;
}

int GridHeader::dropPositionAtX(int x) const
{
    const grid::GridModel *m = m_view->model();
    for (int col : m->visibleColumns()) {
        const QRect r = sectionRect(col);
        if (x < r.center().x())
            return col;
    }
    return m->columnCount();
}

void GridHeader::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const CellStyle st = m_view->resolvedStyle(GridElement::Header);
    p.fillRect(rect(), *m_view->resolvedStyle(GridElement::Background).color);
    const grid::GridModel *m = m_view->model();
    const int indW = m_view->indicatorWidth();
    p.save();
    p.setClipRect(QRect(indW, 0, width() - indW, height()));
    // The indent over the group levels.
    const int indent = m_view->indentWidth();
    if (indent > 0)
        drawHeaderCell(p, QRect(indW - m_view->horizontalScrollBar()->value(), 0, indent, height()), {}, grid::SortOrder::None,
                       st, true);
    const QList<int> vis = m->visibleColumns();
    for (int col : vis) {
        const QRect r = sectionRect(col);
        if (r.right() < 0 || r.left() > width())
            continue;
        const grid::GridColumn &c = m->column(col);
        drawHeaderCell(p, r, c.headerText(), c.sortOrder, st, true);
        if (c.sortOrder != grid::SortOrder::None && m->sortColumns().size() > 1) {
            // The key's position when several columns sort.
            QFont f = *st.font;
            f.setPointSizeF(std::max(5.0, f.pointSizeF() * 0.75));
            p.setFont(f);
            p.drawText(QRect(r.right() - 22, 0, 10, r.height() / 2 + 2), Qt::AlignCenter, QString::number(c.sortIndex + 1));
        }
    }
    if (m_dragging && m_pressCol >= 0) {
        // The dragged caption under the mouse and the place it would go.
        const int pos = dropPositionAtX(m_dragPos.x());
        const int x = pos < m->columnCount() ? m_view->columnLeft(pos)
                                             : m_view->columnLeft(vis.isEmpty() ? -1 : vis.last()) + m_view->columnWidth(vis.last());
        p.setPen(QPen(Qt::red, 2));
        p.drawLine(x, 0, x, height());
        QRect r(0, 0, m_view->columnWidth(m_pressCol), height());
        r.moveCenter(QPoint(m_dragPos.x(), height() / 2));
        p.setOpacity(0.7);
        drawHeaderCell(p, r, m->column(m_pressCol).headerText(), grid::SortOrder::None, st, true);
    }
    p.restore();
    if (indW > 0)
        drawHeaderCell(p, QRect(0, 0, indW, height()), {}, grid::SortOrder::None, m_view->resolvedStyle(GridElement::Indicator), true);
}

void GridHeader::mousePressEvent(QMouseEvent *e)
{
    m_pressCol = -1;
    m_resizeCol = -1;
    m_dragging = false;
    if (e->button() != Qt::LeftButton)
        return;
    const int x = int(e->position().x());
    const int edge = edgeAt(x);
    if (edge >= 0) {
        m_resizeCol = edge;
        m_resizeStartX = x;
        m_resizeStartWidth = m_view->columnWidth(edge);
        return;
    }
    m_pressCol = m_view->columnAtX(x);
    m_pressPos = e->position().toPoint();
}

void GridHeader::mouseMoveEvent(QMouseEvent *e)
{
    const int x = int(e->position().x());
    if (m_resizeCol >= 0) {
        m_view->model()->setColumnWidth(m_resizeCol, std::max(8, m_resizeStartWidth + x - m_resizeStartX));
        return;
    }
    if (m_pressCol >= 0 && (e->buttons() & Qt::LeftButton)) {
        if ((e->position().toPoint() - m_pressPos).manhattanLength() >= QApplication::startDragDistance())
            m_dragging = true;
        if (m_dragging) {
            m_dragPos = e->position().toPoint();
            GridGroupByBox *box = m_view->groupByBox();
            const QPoint vp = mapTo(m_view, m_dragPos);
            box->setDropHint(box->isVisible() && box->geometry().contains(vp) ? box->levelAtX(box->mapFrom(m_view, vp).x()) : -1);
            update();
        }
        return;
    }
    setCursor(edgeAt(x) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
}

void GridHeader::mouseReleaseEvent(QMouseEvent *e)
{
    const int col = m_pressCol;
    const bool dragging = m_dragging;
    m_pressCol = -1;
    m_dragging = false;
    m_view->groupByBox()->setDropHint(-1);
    if (m_resizeCol >= 0) {
        m_resizeCol = -1;
        return;
    }
    if (col < 0 || e->button() != Qt::LeftButton)
        return;
    grid::GridModel *m = m_view->model();
    const QPoint pos = e->position().toPoint();
    guarded([&] {
        if (!dragging) {
            m->clickSort(col, e->modifiers() & Qt::ShiftModifier);
            return;
        }
        // Where the caption was dropped, in the view's coordinates.
        const QPoint vp = mapTo(m_view, pos);
        GridGroupByBox *box = m_view->groupByBox();
        if (box->isVisible() && box->geometry().contains(vp)) {
            const int level = box->levelAtX(box->mapFrom(m_view, vp).x());
            m->groupByColumn(col, level);
        } else if (rect().adjusted(0, -height(), 0, height()).contains(pos)) {
            int to = dropPositionAtX(pos.x());
            if (to > col)
                --to;
            to = std::clamp(to, 0, m->columnCount() - 1);
            if (to != col)
                m->moveColumn(col, to);
        }
    });
    update();
}

void GridHeader::mouseDoubleClickEvent(QMouseEvent *e)
{
    const int edge = edgeAt(int(e->position().x()));
    if (edge >= 0 && e->button() == Qt::LeftButton) {
        m_resizeCol = -1;
        guarded([&] { m_view->bestFit(edge); });
        return;
    }
    // A double click on a caption counts as two clicks: the second one sorts again.
    mousePressEvent(e);
}

void GridHeader::contextMenuEvent(QContextMenuEvent *e)
{
    QMenu *menu = m_view->createHeaderMenu(m_view->columnAtX(e->pos().x()), this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(e->globalPos());
}

// ===================================================================== footer

GridFooter::GridFooter(GridTableView *view) : QWidget(view), m_view(view)
{
    setObjectName(QStringLiteral("footer"));
    setAccessibleName(QStringLiteral("Subsol"));
}

int GridFooter::preferredHeight() const
{
    const grid::GridModel *m = m_view->model();
    int lines = 1;
    for (int col : m->visibleColumns())
        lines = std::max(lines, int(m->footerTextForColumn(col).count(QLatin1Char('\n'))) + 1);
    const QFontMetrics fm(*m_view->resolvedStyle(GridElement::Footer).font);
    return lines * fm.height() + 8;
}

void GridFooter::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const CellStyle st = m_view->resolvedStyle(GridElement::Footer);
    p.fillRect(rect(), *st.color);
    p.setPen(kStripLine);
    p.drawLine(rect().topLeft(), rect().topRight());
    const grid::GridModel *m = m_view->model();
    if (m->isRebuilding())
        return; // the sums come with the rebuild's end
    const int indW = m_view->indicatorWidth();
    p.setClipRect(QRect(indW, 0, width() - indW, height()));
    p.setFont(*st.font);
    const QFontMetrics fm(*st.font);
    for (int col : m->visibleColumns()) {
        const QString t = m->footerTextForColumn(col);
        if (t.isEmpty())
            continue;
        const QRect r(m_view->columnLeft(col), 0, m_view->columnWidth(col), height());
        if (r.right() < indW || r.left() > width())
            continue;
        p.setPen(kStripLine);
        p.drawRect(r.adjusted(1, 2, -2, -3));
        p.setPen(*st.textColor);
        const Qt::Alignment a = (m->columnKind(col) == grid::ColumnKind::Number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
        p.drawText(r.adjusted(4, 2, -5, -3), a, t);
    }
    p.setClipping(false);
    if (indW > 0)
        p.fillRect(QRect(0, 1, indW, height() - 1), *m_view->resolvedStyle(GridElement::Indicator).color);
}

} // namespace ui
