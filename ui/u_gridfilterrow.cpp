// The grid's filter row: one editor per visible column, applied after a
// short pause, kept in step with the columns' widths and the scroll.

#include "ui/u_gridstrips.h"

#include "ui/u_grid.h"
#include "ui/u_grid_p.h"
#include "ui/u_messages.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPainter>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>

namespace ui {

// ===================================================================== filter row

namespace {
// The editors sit in an inner area to the right of the indicator, so those
// scrolled left are clipped rather than drawn over the clear button.
class FilterArea : public QWidget {
public:
    using QWidget::QWidget;
};
} // namespace

GridFilterRow::GridFilterRow(GridTableView *view) : QWidget(view), m_view(view)
{
    setObjectName(QStringLiteral("filterRow"));
    setAccessibleName(QStringLiteral("Rand de filtrare"));
    auto *area = new FilterArea(this);
    area->setObjectName(QStringLiteral("filterArea"));
    m_clear = new QToolButton(this);
    m_clear->setObjectName(QStringLiteral("btnClearFilter"));
    m_clear->setText(QStringLiteral("\u2715"));
    m_clear->setAutoRaise(true);
    m_clear->setAccessibleName(QStringLiteral("Sterge toate filtrele"));
    m_clear->setToolTip(m_clear->accessibleName());
    connect(m_clear, &QToolButton::clicked, this, [this] {
        m_timer.stop();
        m_pending.clear();
        guarded([this] { m_view->model()->clearAllFilters(); });
        syncFromModel();
    });
    m_timer.setSingleShot(true);
    m_timer.setInterval(debounceMs);
    connect(&m_timer, &QTimer::timeout, this, &GridFilterRow::applyPending);
}

QWidget *GridFilterRow::editor(int col) const
{
    const grid::GridModel *m = m_view->model();
    if (col < 0 || col >= m->columnCount())
        return nullptr;
    return m_editors.value(m->column(col).fieldName.toLower());
}

void GridFilterRow::rebuild()
{
    grid::GridModel *m = m_view->model();
    QWidget *area = findChild<QWidget *>(QStringLiteral("filterArea"));
    QHash<QString, QWidget *> old = std::move(m_editors);
    m_editors.clear();
    for (int col : m->visibleColumns()) {
        const QString key = m->column(col).fieldName.toLower();
        const bool isBool = m->columnKind(col) == grid::ColumnKind::Bool;
        QWidget *w = old.take(key);
        if (w && (qobject_cast<QCheckBox *>(w) != nullptr) != isBool) {
            delete w;
            w = nullptr;
        }
        if (!w) {
            const QString field = m->column(col).fieldName;
            if (isBool) {
                auto *cb = new QCheckBox(area);
                cb->setTristate(true);
                cb->setCheckState(Qt::PartiallyChecked);
                connect(cb, &QCheckBox::stateChanged, this, [this, field](int s) {
                    if (m_syncing)
                        return;
                    grid::GridModel *gm = m_view->model();
                    const int c = gm->columnIndex(field);
                    if (c >= 0)
                        guarded([&] {
                            gm->setBoolFilter(c, s == Qt::Checked     ? grid::BoolFilter::True
                                                 : s == Qt::Unchecked ? grid::BoolFilter::False
                                                                      : grid::BoolFilter::Any);
                        });
                });
                w = cb;
            } else {
                auto *le = new QLineEdit(area);
                le->setFrame(false);
                le->setClearButtonEnabled(false);
                connect(le, &QLineEdit::textEdited, this, [this, field](const QString &t) {
                    m_pending.insert(field.toLower(), t);
                    m_timer.start();
                });
                w = le;
            }
            w->setObjectName(QStringLiteral("filter_") + field);
        }
        w->setAccessibleName(QStringLiteral("Filtru ") + m->column(col).headerText());
        w->show();
        m_editors.insert(key, w);
    }
    qDeleteAll(old);
    syncFromModel();
    layoutEditors();
}

void GridFilterRow::layoutEditors()
{
    const int indW = m_view->indicatorWidth();
    QWidget *area = findChild<QWidget *>(QStringLiteral("filterArea"));
    const int btn = std::max(indW, 18);
    if (indW > 0) {
        m_clear->setGeometry(0, 0, btn, height());
        area->setGeometry(indW, 0, std::max(0, width() - indW), height());
    } else {
        // No indicator: the button takes the right end of the row.
        m_clear->setGeometry(width() - btn, 0, btn, height());
        area->setGeometry(0, 0, std::max(0, width() - btn), height());
    }
    const grid::GridModel *m = m_view->model();
    const CellStyle st = m_view->resolvedStyle(GridElement::FilterBox);
    for (auto it = m_editors.cbegin(); it != m_editors.cend(); ++it) {
        const int col = m->columnIndex(it.key());
        if (col < 0)
            continue;
        const int x = m_view->columnLeft(col) - area->x();
        it.value()->setGeometry(x + 1, 2, m_view->columnWidth(col) - 3, height() - 5);
        if (auto *le = qobject_cast<QLineEdit *>(it.value())) {
            le->setFont(*m_view->resolvedStyle(GridElement::Content).font);
            QPalette pal = le->palette();
            pal.setColor(QPalette::Base, *st.color);
            pal.setColor(QPalette::Text, m->filterError(col) ? QColor(Qt::red) : *st.textColor);
            le->setPalette(pal);
        }
    }
    update();
}

void GridFilterRow::syncFromModel()
{
    const grid::GridModel *m = m_view->model();
    m_syncing = true;
    for (auto it = m_editors.cbegin(); it != m_editors.cend(); ++it) {
        const int col = m->columnIndex(it.key());
        if (col < 0 || m_pending.contains(it.key()))
            continue;
        if (auto *le = qobject_cast<QLineEdit *>(it.value())) {
            if (le->text() != m->column(col).filterText)
                le->setText(m->column(col).filterText);
        } else if (auto *cb = qobject_cast<QCheckBox *>(it.value())) {
            const grid::BoolFilter f = m->boolFilter(col);
            cb->setCheckState(f == grid::BoolFilter::True ? Qt::Checked : f == grid::BoolFilter::False ? Qt::Unchecked : Qt::PartiallyChecked);
        }
    }
    m_syncing = false;
    layoutEditors();
}

void GridFilterRow::applyPending()
{
    m_timer.stop();
    const QHash<QString, QString> pending = std::exchange(m_pending, {});
    grid::GridModel *m = m_view->model();
    for (auto it = pending.cbegin(); it != pending.cend(); ++it) {
        const int col = m->columnIndex(it.key());
        if (col >= 0)
            guarded([&] { m->setFilterText(col, it.value()); });
    }
    layoutEditors();
}

void GridFilterRow::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const CellStyle st = m_view->resolvedStyle(GridElement::FilterBox);
    p.fillRect(rect(), *st.color);
    p.setPen(kStripLine);
    p.drawLine(rect().bottomLeft(), rect().bottomRight());
    const grid::GridModel *m = m_view->model();
    for (int col : m->visibleColumns()) {
        const int x = m_view->columnLeft(col) + m_view->columnWidth(col) - 1;
        p.drawLine(x, 0, x, height());
    }
    if (m_view->indicatorWidth() > 0)
        p.fillRect(QRect(0, 0, m_view->indicatorWidth(), height()), *m_view->resolvedStyle(GridElement::Indicator).color);
}

} // namespace ui
