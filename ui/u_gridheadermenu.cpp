// The header's popup menu of a grid table view, and the best fit of columns
// that it offers (a double click on a column's edge asks for it too).

#include "ui/u_grid.h"
#include "ui/u_messages.h"

#include <QMenu>

#include <algorithm>

namespace ui {

int GridTableView::bestFitWidth(int col) const
{
    if (col < 0 || col >= m_model->columnCount())
        return 0;
    const QFontMetrics hfm(*resolvedStyle(GridElement::Header).font);
    int w = hfm.horizontalAdvance(m_model->column(col).headerText()) + 22; // room for the sort mark
    const grid::ColumnKind kind = m_model->columnKind(col);
    if (kind == grid::ColumnKind::Bool)
        return std::max(w, 24);
    const QFontMetrics cfm(*resolvedStyle(GridElement::Content).font);
    const QFontMetrics ffm(*resolvedStyle(GridElement::Footer).font);
    const qsizetype rows = m_model->rowCount();
    // The padding on both sides and the grid line, as the cells are painted.
    const int textRoom = 2 * kCellPadding + 1;
    // Every row of a grid of ordinary size; on a huge grid the rows around the screen.
    constexpr qsizetype kAllRowsLimit = 20000;
    qsizetype from = 0, to = rows;
    if (rows > kAllRowsLimit) {
        from = std::max<qsizetype>(0, topRow() - kAllRowsLimit / 2);
        to = std::min(rows, from + kAllRowsLimit);
    }
    for (qsizetype r = from; r < to; ++r) {
        switch (m_model->rowKind(r)) {
        case grid::RowKind::Data: w = std::max(w, cfm.horizontalAdvance(m_model->cellText(r, col)) + textRoom); break;
        case grid::RowKind::GroupFooter: {
            const QString t = m_model->groupFooterTextForColumn(r, col);
            if (!t.isEmpty())
                w = std::max(w, ffm.horizontalAdvance(QString(t).replace(QLatin1Char('\n'), QLatin1String("; "))) + textRoom);
            break;
        }
        case grid::RowKind::Group: break;
        }
    }
    for (const QString &line : m_model->footerTextForColumn(col).split(QLatin1Char('\n')))
        w = std::max(w, ffm.horizontalAdvance(line) + 10);
    return std::min(w, 1000);
}

void GridTableView::bestFit(int col)
{
    if (col >= 0 && col < m_model->columnCount())
        m_model->setColumnWidth(col, bestFitWidth(col));
}

void GridTableView::bestFitAll()
{
    for (int c : m_model->visibleColumns())
        bestFit(c);
}

QMenu *GridTableView::createHeaderMenu(int col, QWidget *parent)
{
    auto *menu = new QMenu(parent ? parent : this);
    menu->setObjectName(QStringLiteral("cxGridPopupMenu1"));
    const bool hasCol = col >= 0 && col < m_model->columnCount();
    const grid::SortOrder order = hasCol ? m_model->column(col).sortOrder : grid::SortOrder::None;
    const bool grouped = hasCol && m_model->column(col).groupIndex >= 0;

    auto add = [&](QMenu *m, const char *name, const QString &text, bool enabled, auto &&fn) {
        QAction *a = m->addAction(text);
        a->setObjectName(QLatin1String(name));
        a->setEnabled(enabled);
        connect(a, &QAction::triggered, this, [fn](bool checked) { guarded([&] { fn(checked); }); });
        return a;
    };
    QAction *a = add(menu, "actSortAsc", QStringLiteral("Sortare crescatoare"), hasCol,
                     [this, col](bool) { m_model->setSortOrder(col, grid::SortOrder::Ascending, m_model->column(col).sortIndex >= 0); });
    a->setCheckable(true);
    a->setChecked(order == grid::SortOrder::Ascending);
    a = add(menu, "actSortDesc", QStringLiteral("Sortare descrescatoare"), hasCol,
            [this, col](bool) { m_model->setSortOrder(col, grid::SortOrder::Descending, m_model->column(col).sortIndex >= 0); });
    a->setCheckable(true);
    a->setChecked(order == grid::SortOrder::Descending);
    add(menu, "actClearSort", QStringLiteral("Fara sortare"), hasCol && order != grid::SortOrder::None,
        [this, col](bool) { m_model->setSortOrder(col, grid::SortOrder::None, true); });
    menu->addSeparator();
    a = add(menu, "actGroupBy", QStringLiteral("Grupeaza dupa aceasta coloana"), hasCol, [this, col](bool checked) {
        if (checked)
            m_model->groupByColumn(col);
        else
            m_model->ungroupColumn(col);
    });
    a->setCheckable(true);
    a->setChecked(grouped);
    a = add(menu, "actGroupByBox", QStringLiteral("Caseta de grupare"), true,
            [this](bool checked) { m_model->setGroupByBoxVisible(checked); });
    a->setCheckable(true);
    a->setChecked(m_model->groupByBoxVisible());
    a = add(menu, "actFooter", QStringLiteral("Subsol"), true, [this](bool checked) { m_model->setFooterVisible(checked); });
    a->setCheckable(true);
    a->setChecked(m_model->footerVisible());
    menu->addSeparator();
    add(menu, "actRemoveColumn", QStringLiteral("Elimina aceasta coloana"), hasCol && m_model->visibleColumns().size() > 1,
        [this, col](bool) {
            if (m_model->column(col).groupIndex >= 0)
                m_model->ungroupColumn(col);
            m_model->setColumnVisible(col, false);
        });
    // Field chooser: the columns taken off the view and the fields without a column.
    QMenu *chooser = menu->addMenu(QStringLiteral("Alegere coloane"));
    chooser->setObjectName(QStringLiteral("mnuFieldChooser"));
    chooser->menuAction()->setObjectName(QStringLiteral("actFieldChooser"));
    for (int c = 0; c < m_model->columnCount(); ++c) {
        if (m_model->column(c).visible)
            continue;
        const QString field = m_model->column(c).fieldName;
        QAction *ca = add(chooser, "", m_model->column(c).headerText(), true, [this, field](bool) {
            const int i = m_model->columnIndex(field);
            if (i >= 0)
                m_model->setColumnVisible(i, true);
        });
        ca->setObjectName(QStringLiteral("actShow_") + field);
    }
    for (const QString &field : m_model->fieldsWithoutColumn()) {
        QAction *ca = add(chooser, "", field, true, [this, field](bool) { m_model->addColumn(field); });
        ca->setObjectName(QStringLiteral("actShow_") + field);
    }
    if (chooser->isEmpty())
        chooser->addAction(QStringLiteral("(toate coloanele sunt afisate)"))->setEnabled(false);
    menu->addSeparator();
    add(menu, "actBestFit", QStringLiteral("Latime optima"), hasCol, [this, col](bool) { bestFit(col); });
    add(menu, "actBestFitAll", QStringLiteral("Latime optima (toate coloanele)"), true, [this](bool) { bestFitAll(); });
    if (onPaper()) {
        menu->addSeparator();
        a = add(menu, "actPrint", QStringLiteral("Tipareste..."), true, [this](bool) { printGrid(); });
        a->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
        add(menu, "actExportPdf", QStringLiteral("Export PDF..."), true, [this](bool) { exportPdf(); });
    }
    return menu;
}

} // namespace ui
