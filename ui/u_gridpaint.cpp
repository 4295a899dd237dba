// The table view's painting: rows, group rows and footers, cells, checks,
// the indicator, the focused row.

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

    if (kind == grid::RowKind::Data)
        paintDataRow(p, row, r, clip, focused);
    else if (kind == grid::RowKind::Group)
        paintGroupRow(p, row, r, level, groupSt, focused);
    else
        paintGroupFooterRow(p, row, r, level, focused);
    p.restore();
}

void GridTableView::paintDataRow(QPainter &p, qsizetype row, const QRect &r, const QRect &clip, bool focused)
{
    const int contentRight = firstColumnX() + m_totalWidth;
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
        paintDataCell(p, row, col, cr, ts, focused);
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
}

// A data cell's content: its check or its text, with the part found by the
// incremental search marked.
void GridTableView::paintDataCell(QPainter &p, qsizetype row, int col, const QRect &cr, const CellStyle &ts,
                                  bool focused)
{
    if (m_model->columnKind(col) == grid::ColumnKind::Bool) {
        int state = row == insertRow() ? -1 : m_model->cellCheck(row, col);
        bool buf = false;
        const QString t = editValueText(row, col, &buf);
        if (buf)
            state = t.isEmpty() ? -1 : (t == QLatin1String("true") || t == QLatin1String("1")) ? 1 : 0;
        paintCheck(p, cr, state);
        return;
    }
    p.setFont(*ts.font);
    const QString text = editValueText(row, col);
    if (!focused || col != m_focusColumn || m_incSearch.isEmpty()) {
        paintCellText(p, cr, text, col, ts);
        return;
    }
    const CellStyle is = resolvedStyle(GridElement::IncSearch);
    const QFontMetrics fm(*ts.font);
    const int w = fm.horizontalAdvance(text.left(m_incSearch.size()));
    const int x = isRightAligned(m_model->columnKind(col)) ? cr.right() - kCellPadding - fm.horizontalAdvance(text)
                                                           : cr.left() + kCellPadding;
    p.fillRect(QRect(x, cr.top() + 2, w, cr.height() - 4), *is.color);
    paintCellText(p, cr, text, col, ts);
    p.setPen(*is.textColor);
    p.drawText(QRect(x, cr.top(), w + 1, cr.height()), Qt::AlignLeft | Qt::AlignVCenter, text.left(m_incSearch.size()));
}

void GridTableView::paintGroupRow(QPainter &p, qsizetype row, const QRect &r, int level, const CellStyle &groupSt,
                                  bool focused)
{
    const int contentRight = firstColumnX() + m_totalWidth;
    const int gx = indicatorWidth() - horizontalScrollBar()->value() + level * kIndentStep;
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
}

void GridTableView::paintGroupFooterRow(QPainter &p, qsizetype row, const QRect &r, int level, bool focused)
{
    const int contentRight = firstColumnX() + m_totalWidth;
    const int fx = indicatorWidth() - horizontalScrollBar()->value() + (level + 1) * kIndentStep;
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

} // namespace ui
