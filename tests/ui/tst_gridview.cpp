// The grid's widgets, offscreen: header clicks and drags, the group-by box,
// the filter row, the navigator, the header popup menu, the keyboard, in-place
// editing of check boxes and text, the accessible table, the painted rows.

#include "db/u_memtable.h"
#include "ui/u_grid.h"
#include "ui/u_gridstrips.h"
#include "ui/u_messages.h"

#include <QAccessible>
#include <functional>
#include <QApplication>
#include <QKeyEvent>
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

using namespace grid;
using namespace ui;

namespace {

// cont, explicatie, data, valoare, inactiv
std::unique_ptr<db::MemTable> makeTable()
{
    auto t = std::make_unique<db::MemTable>();
    t->setFieldDefs({{QStringLiteral("cont"), db::FieldType::String, 20},
                     {QStringLiteral("explicatie"), db::FieldType::Text},
                     {QStringLiteral("data"), db::FieldType::Date},
                     {QStringLiteral("valoare"), db::FieldType::Float},
                     {QStringLiteral("inactiv"), db::FieldType::Bool}});
    t->open();
    const QDate d(2024, 3, 1);
    t->appendRow({QStringLiteral("401"), QStringLiteral("plată furnizor"), d, 100.0, false});
    t->appendRow({QStringLiteral("4111"), QStringLiteral("încasare"), d.addDays(1), 250.5, true});
    t->appendRow({QStringLiteral("401"), QStringLiteral("Taxă şcolară"), d.addDays(2), -40.0, false});
    t->appendRow({QStringLiteral("5121"), QStringLiteral("comision"), d.addDays(3), 7.25, false});
    t->appendRow({QStringLiteral("4111"), QStringLiteral("Școala de vară"), d.addDays(4), 1000.0, true});
    t->first();
    return t;
}

struct Fixture {
    std::unique_ptr<db::MemTable> table = makeTable();
    Grid grid;
    GridTableView *view = grid.view();
    GridModel *m = view->model();

    Fixture()
    {
        grid.setObjectName(QStringLiteral("cxGrid1"));
        view->setObjectName(QStringLiteral("cxGrid1DBTableView1"));
        view->setDataSet(table.get());
        m->createDefaultColumns();
        for (int c = 0; c < m->columnCount(); ++c)
            m->setColumnWidth(c, 90);
        m->setFooterSummaries({{QStringLiteral("valoare"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")}});
        m->setGroupSummaries({{QStringLiteral("valoare"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")}});
        m->setLocale(QLocale::c());
        grid.resize(700, 420);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
    }
    QPoint headerCenter(const QString &field) const
    {
        return view->header()->sectionRect(m->columnIndex(field)).center();
    }
    QPoint cellCenter(qsizetype row, const QString &field) const
    {
        return view->cellRect(row, m->columnIndex(field)).center();
    }
    QString cellAt(qsizetype row, const QString &field) const { return m->cellText(row, m->columnIndex(field)); }
};

// Types text key by key, letters outside Latin-1 included.
void typeText(QWidget *w, const QString &text)
{
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(w, &press);
        QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(w, &release);
    }
}

} // namespace

class TstGridView : public QObject {
    Q_OBJECT
private slots:
    void headerClicksSortAndShiftAdds();
    void headerDragsGroupReorderAndResize();
    void groupRowsAndFootersArePainted();
    void filterRowTypingAndClearButton();
    void navigatorTextAndButtons();
    void popupMenuActions();
    void keyboardNavigation();
    void accessibleTableReadsCells();
    void editingPostsWhenLeavingTheRow();
    void newRowAndDelete();
    void refreshKeepsTheLayout();
    void edgesScrollBarAndGroupCaption();
    void numbersKeepClearOfTheNextColumn();
};

void TstGridView::headerClicksSortAndShiftAdds()
{
    Fixture f;
    const int cont = f.m->columnIndex(QStringLiteral("cont"));
    const int val = f.m->columnIndex(QStringLiteral("valoare"));
    QTest::mouseClick(f.view->header(), Qt::LeftButton, {}, f.headerCenter(QStringLiteral("valoare")));
    QCOMPARE(f.m->column(val).sortOrder, SortOrder::Ascending);
    QTest::mouseClick(f.view->header(), Qt::LeftButton, {}, f.headerCenter(QStringLiteral("valoare")));
    QCOMPARE(f.m->column(val).sortOrder, SortOrder::Descending);

    // A plain click on another column replaces the key; Shift adds one.
    QTest::mouseClick(f.view->header(), Qt::LeftButton, {}, f.headerCenter(QStringLiteral("cont")));
    QCOMPARE(f.m->sortColumns(), QList<int>{cont});
    QTest::mouseClick(f.view->header(), Qt::LeftButton, Qt::ShiftModifier, f.headerCenter(QStringLiteral("valoare")));
    QCOMPARE(f.m->sortColumns(), (QList<int>{cont, val}));
}

void TstGridView::headerDragsGroupReorderAndResize()
{
    Fixture f;
    GridHeader *h = f.view->header();
    GridGroupByBox *box = f.view->groupByBox();
    QVERIFY(box->isVisible());
    const int cont = f.m->columnIndex(QStringLiteral("cont"));

    // Drag the caption "cont" into the group-by box.
    const QPoint from = f.headerCenter(QStringLiteral("cont"));
    const QPoint to = h->mapFrom(f.view, box->geometry().center());
    QTest::mousePress(h, Qt::LeftButton, {}, from);
    QTest::mouseMove(h, from + QPoint(20, 0));
    QTest::mouseMove(h, to);
    QCOMPARE(box->dropHint(), 0); // shown where it would go
    QTest::mouseRelease(h, Qt::LeftButton, {}, to);
    QCOMPARE(box->dropHint(), -1);
    QCOMPARE(f.m->groupColumns(), QList<int>{cont});
    QCOMPARE(f.m->rowKind(0), RowKind::Group);
    // Dropped at the box's start, a second level goes in front.
    const QPoint from2 = f.headerCenter(QStringLiteral("inactiv"));
    const QPoint front = h->mapFrom(f.view, box->geometry().topLeft() + QPoint(2, 8));
    QTest::mousePress(h, Qt::LeftButton, {}, from2);
    QTest::mouseMove(h, from2 + QPoint(-20, 0));
    QTest::mouseMove(h, front);
    QTest::mouseRelease(h, Qt::LeftButton, {}, front);
    QCOMPARE(f.m->groupColumns(), (QList<int>{f.m->columnIndex(QStringLiteral("inactiv")), cont}));
    f.m->ungroupColumn(f.m->columnIndex(QStringLiteral("inactiv")));

    // Dragged out of the box it ungroups.
    const QPoint item = box->itemRect(0).center();
    QTest::mousePress(box, Qt::LeftButton, {}, item);
    QTest::mouseMove(box, item + QPoint(0, 20));
    QTest::mouseMove(box, QPoint(item.x(), box->height() + 80));
    QTest::mouseRelease(box, Qt::LeftButton, {}, QPoint(item.x(), box->height() + 80));
    QVERIFY(f.m->groupColumns().isEmpty());

    // Drag "valoare" before "cont": the columns reorder.
    const QList<int> sortedBefore = f.m->sortColumns();
    const QPoint v = f.headerCenter(QStringLiteral("valoare"));
    const QPoint c = f.view->header()->sectionRect(f.m->columnIndex(QStringLiteral("cont"))).topLeft() + QPoint(5, 5);
    QTest::mousePress(h, Qt::LeftButton, {}, v);
    QTest::mouseMove(h, v - QPoint(20, 0));
    QTest::mouseMove(h, c);
    QTest::mouseRelease(h, Qt::LeftButton, {}, c);
    QCOMPARE(f.m->column(0).fieldName, QStringLiteral("valoare"));
    QCOMPARE(f.m->column(1).fieldName, QStringLiteral("cont"));
    QCOMPARE(f.m->sortColumns().size(), sortedBefore.size()); // a drag is no click

    // The edge resizes; a double click on it fits the widest text.
    const int col = f.m->columnIndex(QStringLiteral("explicatie"));
    const QRect sr = h->sectionRect(col);
    const QPoint edge(sr.right() + 1, sr.center().y());
    QTest::mousePress(h, Qt::LeftButton, {}, edge);
    QTest::mouseMove(h, edge + QPoint(40, 0));
    QTest::mouseRelease(h, Qt::LeftButton, {}, edge + QPoint(40, 0));
    QCOMPARE(f.m->column(col).width, 130);
    const QPoint edge2(h->sectionRect(col).right() + 1, sr.center().y());
    QTest::mouseDClick(h, Qt::LeftButton, {}, edge2);
    const int fit = f.m->column(col).width;
    const QFontMetrics fm(*f.view->resolvedStyle(GridElement::Content).font);
    QVERIFY(fit >= fm.horizontalAdvance(QStringLiteral("plată furnizor")));
    QVERIFY(fit < 130);
}

void TstGridView::groupRowsAndFootersArePainted()
{
    Fixture f;
    GridStyleSheet sheet;
    sheet.set(GridElement::Group, {QColor(0xF1, 0xEF, 0xE2), {}, {}});
    sheet.set(GridElement::Footer, {QColor(0xFF, 0xFF, 0xE1), {}, QColor(0, 0, 0x80)});
    sheet.set(GridElement::Content, {QColor(0xD9, 0xEA, 0xF7), {}, Qt::black});
    f.view->setGridStyleSheet(sheet);
    f.m->groupByColumn(f.m->columnIndex(QStringLiteral("cont")));
    f.m->collapseAll();
    // Collapsed: one group row and one group footer per account.
    QCOMPARE(f.m->rowCount(), 6);
    QCOMPARE(f.m->rowKind(0), RowKind::Group);
    QCOMPARE(f.m->rowKind(1), RowKind::GroupFooter);
    QCOMPARE(f.view->accessibleCellText(0, f.m->columnIndex(QStringLiteral("cont"))), QStringLiteral("cont: 401 (2)"));

    QImage img(f.view->viewport()->size(), QImage::Format_RGB32);
    f.view->viewport()->render(&img);
    const int rh = f.view->rowHeight();
    const int xVal = f.view->columnLeft(f.m->columnIndex(QStringLiteral("valoare")));
    // group row background right of the caption text, footer background in the sum's cell margin
    // (row 0 holds the focus; rows 2 and 3 are the second group and its footer)
    QCOMPARE(QColor(img.pixel(img.width() - 5, 2 * rh + rh / 2)), QColor(0xF1, 0xEF, 0xE2));
    QCOMPARE(QColor(img.pixel(xVal + 3, 3 * rh + rh / 2)), QColor(0xFF, 0xFF, 0xE1));
    // the footer strip shows the grand total under its column
    QVERIFY(f.view->footer()->isVisible());
    QImage fimg(f.view->footer()->size(), QImage::Format_RGB32);
    f.view->footer()->render(&fimg);
    QCOMPARE(QColor(fimg.pixel(fimg.width() - 3, fimg.height() / 2)), QColor(0xFF, 0xFF, 0xE1));

    // Expanding one group shows its data rows with the content colour.
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {},
                      QPoint(f.view->indicatorWidth() + 9, rh / 2)); // its [+]
    QCOMPARE(f.m->rowCount(), 8);
    QCOMPARE(f.m->rowKind(1), RowKind::Data);
    img = QImage(f.view->viewport()->size(), QImage::Format_RGB32);
    f.view->clearFocus();
    f.m->setFocusedRow(0);
    f.view->viewport()->render(&img);
    QCOMPARE(QColor(img.pixel(xVal + 3, 2 * rh + rh / 2)), QColor(0xD9, 0xEA, 0xF7));
}

void TstGridView::filterRowTypingAndClearButton()
{
    Fixture f;
    GridFilterRow *fr = f.view->filterRow();
    QVERIFY(fr->isVisible());
    auto *le = qobject_cast<QLineEdit *>(fr->editor(f.m->columnIndex(QStringLiteral("explicatie"))));
    QVERIFY(le);
    QCOMPARE(le->objectName(), QStringLiteral("filter_explicatie"));
    // "ș" (comma below) finds "ş" (cedilla) and the capital "Ș" alike.
    typeText(le, QStringLiteral("ș"));
    QTRY_COMPARE(f.m->recordCount(), 2);
    QCOMPARE(f.grid.navigator()->infoText(), QStringLiteral("Inregistrarea 1 din 2"));
    QTest::keyClicks(le, QStringLiteral("col"));
    QTRY_COMPARE(f.m->recordCount(), 1);
    QCOMPARE(f.cellAt(0, QStringLiteral("explicatie")), QStringLiteral("Taxă şcolară"));

    // a number comparison in another editor, combined
    le->selectAll();
    QTest::keyClick(le, Qt::Key_Backspace);
    auto *val = qobject_cast<QLineEdit *>(fr->editor(f.m->columnIndex(QStringLiteral("valoare"))));
    QTest::keyClicks(val, QStringLiteral(">100"));
    fr->applyPending();
    QCOMPARE(f.m->recordCount(), 2); // 250.5 and 1000

    // the tri-state check of a boolean column
    auto *cb = qobject_cast<QCheckBox *>(fr->editor(f.m->columnIndex(QStringLiteral("inactiv"))));
    QVERIFY(cb);
    QCOMPARE(cb->checkState(), Qt::PartiallyChecked);
    cb->setCheckState(Qt::Unchecked);
    QCOMPARE(f.m->recordCount(), 0);
    cb->setCheckState(Qt::Checked);
    QCOMPARE(f.m->recordCount(), 2);

    // the clear button empties every editor and shows every row
    QVERIFY(!fr->clearButton()->accessibleName().isEmpty());
    QTest::mouseClick(fr->clearButton(), Qt::LeftButton);
    QCOMPARE(f.m->recordCount(), 5);
    QVERIFY(val->text().isEmpty());
    QCOMPARE(cb->checkState(), Qt::PartiallyChecked);

    // an unreadable comparison lets nothing through and is shown in red
    QTest::keyClicks(val, QStringLiteral(">abc"));
    fr->applyPending();
    QCOMPARE(f.m->recordCount(), 0);
    QCOMPARE(val->palette().color(QPalette::Text), QColor(Qt::red));
}

void TstGridView::navigatorTextAndButtons()
{
    Fixture f;
    GridNavigator *nav = f.grid.navigator();
    auto *info = f.grid.findChild<QLabel *>(QStringLiteral("infoPanel"));
    QVERIFY(info);
    f.m->firstRecord();
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 1 din 5"));
    QVERIFY(!nav->button(GridNavigator::First)->isEnabled());
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnNext")), Qt::LeftButton);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 2 din 5"));
    QCOMPARE(f.table->currentRow(), 1);
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnLast")), Qt::LeftButton);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 5 din 5"));
    QVERIFY(!nav->button(GridNavigator::Next)->isEnabled());
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnPrior")), Qt::LeftButton);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 4 din 5"));
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnFirst")), Qt::LeftButton);
    QCOMPARE(f.m->recordNumber(), 1);
    // records are counted through collapsed groups
    f.m->groupByColumn(f.m->columnIndex(QStringLiteral("cont")));
    f.m->collapseAll();
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnLast")), Qt::LeftButton);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 5 din 5"));
    QCOMPARE(f.m->rowKind(f.m->focusedRow()), RowKind::Data);
    for (QToolButton *b : f.grid.findChildren<QToolButton *>())
        QVERIFY2(!b->accessibleName().isEmpty(), qPrintable(b->objectName()));

    // On a group row or its footer: the group's first record, never 0.
    f.m->expandAll(); // 401: records 1-2, 4111: 3-4, 5121: 5
    QCOMPARE(f.m->rowKind(4), RowKind::Group);
    f.m->setFocusedRow(4);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 3 din 5"));
    QCOMPARE(f.m->rowKind(7), RowKind::GroupFooter);
    f.m->setFocusedRow(7);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 3 din 5"));
    f.m->setFocusedRow(0);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 1 din 5"));
    QVERIFY(nav->button(GridNavigator::First)->isEnabled()); // into the group's first record
    QTest::mouseClick(f.grid.findChild<QToolButton *>(QStringLiteral("btnNext")), Qt::LeftButton);
    QCOMPARE(f.m->focusedRow(), 1);
    QCOMPARE(info->text(), QStringLiteral("Inregistrarea 1 din 5"));
    // Screen readers read the position itself.
    QAccessibleInterface *ia = QAccessible::queryAccessibleInterface(info);
    QVERIFY(ia);
    QCOMPARE(ia->text(QAccessible::Name), QStringLiteral("Inregistrarea 1 din 5"));
    f.m->lastRecord();
    QCOMPARE(ia->text(QAccessible::Name), QStringLiteral("Inregistrarea 5 din 5"));
}

void TstGridView::popupMenuActions()
{
    Fixture f;
    const int cont = f.m->columnIndex(QStringLiteral("cont"));
    auto act = [](QMenu *m, const char *name) {
        QAction *a = m->findChild<QAction *>(QLatin1String(name));
        if (!a)
            qFatal("no action %s", name);
        return a;
    };
    std::unique_ptr<QMenu> menu(f.view->createHeaderMenu(cont));
    act(menu.get(), "actSortDesc")->trigger();
    QCOMPARE(f.m->column(cont).sortOrder, SortOrder::Descending);
    act(menu.get(), "actGroupBy")->trigger();
    QCOMPARE(f.m->groupColumns(), QList<int>{cont});
    act(menu.get(), "actFooter")->trigger();
    QVERIFY(!f.m->footerVisible());
    QVERIFY(f.view->footer()->isHidden());
    act(menu.get(), "actGroupByBox")->trigger();
    QVERIFY(f.view->groupByBox()->isHidden());

    menu.reset(f.view->createHeaderMenu(cont));
    QVERIFY(act(menu.get(), "actGroupBy")->isChecked());
    QVERIFY(!act(menu.get(), "actFooter")->isChecked());
    act(menu.get(), "actClearSort")->trigger();
    QCOMPARE(f.m->column(cont).sortOrder, SortOrder::None);
    act(menu.get(), "actRemoveColumn")->trigger();
    QVERIFY(!f.m->column(cont).visible);
    QVERIFY(!f.m->visibleColumns().contains(cont));
    QVERIFY(f.m->groupColumns().isEmpty()); // a removed column does not keep grouping

    // The field chooser lists the removed column and brings it back.
    const int val = f.m->columnIndex(QStringLiteral("valoare"));
    menu.reset(f.view->createHeaderMenu(val));
    QAction *show = menu->findChild<QAction *>(QStringLiteral("actShow_cont"));
    QVERIFY(show);
    show->trigger();
    QVERIFY(f.m->column(cont).visible);
    // ... and a field the view has no column for
    f.m->removeColumn(f.m->columnIndex(QStringLiteral("data")));
    menu.reset(f.view->createHeaderMenu(val));
    menu->findChild<QAction *>(QStringLiteral("actShow_data"))->trigger();
    QVERIFY(f.m->columnIndex(QStringLiteral("data")) >= 0);

    f.m->setColumnWidth(val, 10);
    menu.reset(f.view->createHeaderMenu(val));
    act(menu.get(), "actBestFit")->trigger();
    QVERIFY(f.m->column(val).width > 40);
}

void TstGridView::keyboardNavigation()
{
    Fixture f;
    f.view->setFocus();
    f.m->setFocusedRow(0);
    QTest::keyClick(f.view, Qt::Key_Down);
    QCOMPARE(f.m->focusedRow(), 1);
    QCOMPARE(f.table->currentRow(), 1);
    QTest::keyClick(f.view, Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(f.m->focusedRow(), 4);
    QTest::keyClick(f.view, Qt::Key_Up);
    QCOMPARE(f.m->focusedRow(), 3);
    QTest::keyClick(f.view, Qt::Key_Home, Qt::ControlModifier);
    QCOMPARE(f.m->focusedRow(), 0);
    QTest::keyClick(f.view, Qt::Key_PageDown);
    QCOMPARE(f.m->focusedRow(), 4);
    QTest::keyClick(f.view, Qt::Key_PageUp);
    QCOMPARE(f.m->focusedRow(), 0);
    QTest::keyClick(f.view, Qt::Key_Right);
    QTest::keyClick(f.view, Qt::Key_Right);
    QCOMPARE(f.view->focusedColumn(), f.m->visibleColumns().at(1));
    QTest::keyClick(f.view, Qt::Key_End);
    QCOMPARE(f.view->focusedColumn(), f.m->visibleColumns().last());

    // Typing on a read-only column searches it from the focused row on.
    f.view->setFocusedColumn(f.m->columnIndex(QStringLiteral("explicatie")));
    f.m->setFocusedRow(0);
    typeText(f.view, QStringLiteral("șc"));
    QCOMPARE(f.m->focusedRow(), 4); // "Școala de vară"
    QCOMPARE(f.view->incrementalSearchText(), QStringLiteral("șc"));
    typeText(f.view, QStringLiteral("x"));
    QCOMPARE(f.m->focusedRow(), 4); // no match: nothing moves
    QTest::keyClick(f.view, Qt::Key_Escape);
    QVERIFY(f.view->incrementalSearchText().isEmpty());
    typeText(f.view, QStringLiteral("P"));
    QCOMPARE(f.m->focusedRow(), 0); // wraps round to "plată furnizor"

    f.m->groupByColumn(f.m->columnIndex(QStringLiteral("cont")));
    f.m->collapseAll();
    f.m->setFocusedRow(0);
    QTest::keyClick(f.view, Qt::Key_Plus);
    QVERIFY(f.m->isExpanded(0));
    QTest::keyClick(f.view, Qt::Key_Minus);
    QVERIFY(!f.m->isExpanded(0));
    QTest::keyClick(f.view, Qt::Key_Right);
    QVERIFY(f.m->isExpanded(0));
    QCOMPARE(f.m->rowKind(1), RowKind::Data);
    QTest::keyClick(f.view, Qt::Key_Left);
    QVERIFY(!f.m->isExpanded(0));

    // Moving down a long grid scrolls the focused row into view.
    auto big = std::make_unique<db::MemTable>();
    big->setFieldDefs({{QStringLiteral("n"), db::FieldType::Int32}});
    big->open();
    for (int i = 0; i < 500; ++i)
        big->appendRow({i});
    f.view->setDataSet(big.get());
    f.m->createDefaultColumns();
    f.m->setFocusedRow(0);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(f.view, Qt::Key_PageDown);
    const qsizetype row = f.m->focusedRow();
    QVERIFY(row > 30);
    QVERIFY(row >= f.view->topRow() && row < f.view->topRow() + f.view->visibleRowCount());
    f.view->setDataSet(nullptr);
}

void TstGridView::accessibleTableReadsCells()
{
    Fixture f;
    f.m->setColumnVisible(f.m->columnIndex(QStringLiteral("data")), false);
    QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(f.view);
    QVERIFY(iface);
    QCOMPARE(iface->role(), QAccessible::Table);
    QAccessibleTableInterface *t = iface->tableInterface();
    QVERIFY(t);
    QCOMPARE(t->rowCount(), 5);
    QCOMPARE(t->columnCount(), 4);
    QCOMPARE(t->columnDescription(2), QStringLiteral("valoare"));
    QCOMPARE(t->cellAt(1, 1)->text(QAccessible::Name), QStringLiteral("încasare"));
    QCOMPARE(t->cellAt(1, 3)->text(QAccessible::Name), QStringLiteral("True"));
    QAccessibleInterface *head = t->cellAt(1, 2)->tableCellInterface()->columnHeaderCells().value(0);
    QVERIFY(head);
    QCOMPARE(head->text(QAccessible::Name), QStringLiteral("valoare"));
    QCOMPARE(head->role(), QAccessible::ColumnHeader);
    QVERIFY(t->cellAt(5, 0) == nullptr);

    // After the cells: the filter row, its editors named by their column, and
    // the footer, a row of cells holding the sums as shown.
    int cells = (t->rowCount() + 1) * t->columnCount();
    QCOMPARE(iface->childCount(), cells + 2);
    QAccessibleInterface *filter = iface->child(cells);
    QVERIFY(filter);
    QCOMPARE(filter->object(), f.view->filterRow());
    QCOMPARE(iface->indexOfChild(filter), cells);
    std::function<QAccessibleInterface *(QAccessibleInterface *, const QString &)> find =
        [&find](QAccessibleInterface *in, const QString &name) -> QAccessibleInterface * {
        for (int i = 0; i < in->childCount(); ++i) {
            QAccessibleInterface *c = in->child(i);
            if (!c)
                continue;
            if (c->text(QAccessible::Name) == name)
                return c;
            if (QAccessibleInterface *deeper = find(c, name))
                return deeper;
        }
        return nullptr;
    };
    QAccessibleInterface *fe = find(filter, QStringLiteral("Filtru explicatie"));
    QVERIFY(fe);
    QCOMPARE(fe->role(), QAccessible::EditableText);
    QAccessibleInterface *foot = iface->child(cells + 1);
    QVERIFY(foot);
    QCOMPARE(foot->role(), QAccessible::Footer);
    QCOMPARE(foot->parent()->object(), f.view);
    QCOMPARE(foot->childCount(), 4);
    QCOMPARE(foot->child(2)->role(), QAccessible::Cell);
    QCOMPARE(foot->child(2)->text(QAccessible::Name), QStringLiteral("1,317.75"));
    QCOMPARE(foot->child(2)->text(QAccessible::Description), QStringLiteral("valoare"));
    QCOMPARE(foot->child(0)->text(QAccessible::Name), QString());
    QCOMPARE(foot->indexOfChild(foot->child(2)), 2);
    QVERIFY(foot->child(2)->rect().intersects(QRect(f.view->footer()->mapToGlobal(QPoint(0, 0)), f.view->footer()->size())));
    // the filter narrows the sums the footer reads
    f.m->setFilterText(f.m->columnIndex(QStringLiteral("cont")), QStringLiteral("5121"));
    QCOMPARE(foot->child(2)->text(QAccessible::Name), QStringLiteral("7.25"));
    f.m->clearAllFilters();
    f.m->setFooterVisible(false);
    QCOMPARE(iface->childCount(), cells + 1);
    f.m->setFooterVisible(true);

    // after grouping the interface reads the group rows as the operator sees them
    f.m->groupByColumn(f.m->columnIndex(QStringLiteral("cont")));
    f.m->collapseAll();
    QCOMPARE(t->rowCount(), 6);
    QCOMPARE(t->cellAt(2, 0)->text(QAccessible::Name), QStringLiteral("cont: 4111 (2)"));
    QCOMPARE(t->cellAt(3, 2)->text(QAccessible::Name), QStringLiteral("1,250.50")); // a group footer
    QCOMPARE(t->cellAt(3, 0)->text(QAccessible::Name), QString());
    QVERIFY(t->selectRow(2));
    QVERIFY(t->isRowSelected(2));
}

void TstGridView::editingPostsWhenLeavingTheRow()
{
    Fixture f;
    ScopedRecordingMessages msgs;
    f.view->setColumnEditable(QStringLiteral("inactiv"), true);
    f.view->setColumnEditable(QStringLiteral("explicatie"), true);
    const int inactiv = f.m->columnIndex(QStringLiteral("inactiv"));
    // A read-only column ignores clicks and typing.
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {}, f.cellCenter(0, QStringLiteral("cont")));
    QTest::keyClicks(f.view, QStringLiteral("x"));
    QVERIFY(!f.table->isEditing());

    // A click on the check toggles it into the edit buffer; leaving the row posts.
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {}, f.cellCenter(0, QStringLiteral("inactiv")));
    QVERIFY(f.table->isEditing());
    QCOMPARE(f.table->fieldValue(QStringLiteral("inactiv")), QVariant(true));
    QCOMPARE(f.m->cellCheck(0, inactiv), 0); // not posted yet
    QTest::keyClick(f.view, Qt::Key_Down);
    QVERIFY(!f.table->isEditing());
    QCOMPARE(f.table->value(0, 4), QVariant(true));
    QCOMPARE(f.m->cellCheck(0, inactiv), 1);
    QCOMPARE(f.m->focusedRow(), 1);

    // Space toggles the focused check cell too.
    QTest::keyClick(f.view, Qt::Key_Space);
    QCOMPARE(f.table->fieldValue(QStringLiteral("inactiv")), QVariant(false));
    QTest::keyClick(f.view, Qt::Key_Escape);
    QVERIFY(!f.table->isEditing());
    QCOMPARE(f.table->value(1, 4), QVariant(true));

    // Text: F2 opens the editor, Enter commits to the buffer, a refused post keeps the row.
    f.view->setFocusedColumn(f.m->columnIndex(QStringLiteral("explicatie")));
    QTest::keyClick(f.view, Qt::Key_F2);
    QVERIFY(f.view->isEditing());
    QLineEdit *ed = f.view->cellEditor();
    ed->selectAll();
    typeText(ed, QStringLiteral("încasare nouă"));
    QTest::keyClick(ed, Qt::Key_Return);
    QVERIFY(!f.view->isEditing());
    QCOMPARE(f.table->fieldValue(QStringLiteral("explicatie")).toString(), QStringLiteral("încasare nouă"));
    f.table->beforePost = [](db::DataSet &) { throw QuarvError(QStringLiteral("Refuzat")); };
    QTest::keyClick(f.view, Qt::Key_Down);
    QCOMPARE(msgs.errors, QStringList{QStringLiteral("Refuzat")});
    QCOMPARE(f.m->focusedRow(), 1);
    QVERIFY(f.table->isEditing());
    f.table->beforePost = nullptr;
    QTest::keyClick(f.view, Qt::Key_Down);
    QCOMPARE(f.m->focusedRow(), 2);
    QCOMPARE(f.table->value(1, 1).toString(), QStringLiteral("încasare nouă"));
}

// A new row from the navigator shows under the last one, takes typing, posts
// on leaving; Escape drops it; Delete asks first.
void TstGridView::newRowAndDelete()
{
    Fixture f;
    ScopedRecordingMessages msgs;
    f.view->setColumnEditable(QStringLiteral("inactiv"), true);
    f.view->setColumnEditable(QStringLiteral("explicatie"), true);
    f.view->setFocus();
    f.m->setFocusedRow(2);
    GridNavigator *nav = f.grid.navigator();
    nav->setButtonVisible(GridNavigator::Insert, true);
    f.view->setFocusedColumn(f.m->columnIndex(QStringLiteral("data")));
    nav->button(GridNavigator::Insert)->setFocus();
    QTest::mouseClick(nav->button(GridNavigator::Insert), Qt::LeftButton);
    QVERIFY(f.view->insertRowShown());
    QCOMPARE(f.view->totalRows(), 6);
    QCOMPARE(f.view->currentRow(), 5);
    // the keyboard is in the new row, on its first cell that takes typing
    QCOMPARE(f.grid.focusWidget(), f.view);
    QCOMPARE(f.view->focusedColumn(), f.m->columnIndex(QStringLiteral("explicatie")));
    typeText(f.view, QStringLiteral("n"));
    QVERIFY(f.view->isEditing());
    typeText(f.view->cellEditor(), QStringLiteral("ou"));
    // A screen reader finds the new row in the table, and the editor as the
    // focused text with its value, named by its column.
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(f.view);
    QCOMPARE(table->tableInterface()->rowCount(), 6);
    QVERIFY(table->tableInterface()->isRowSelected(5));
    QAccessibleInterface *edit = QAccessible::queryAccessibleInterface(f.view->cellEditor());
    QCOMPARE(f.grid.focusWidget(), f.view->cellEditor());
    QCOMPARE(edit->role(), QAccessible::EditableText);
    QCOMPARE(edit->text(QAccessible::Name), QStringLiteral("explicatie"));
    QCOMPARE(edit->text(QAccessible::Value), QStringLiteral("nou"));
    QVERIFY(table->indexOfChild(edit) >= 0);
    QCOMPARE(edit->parent()->object(), f.view);
    QCOMPARE(table->child(table->indexOfChild(edit))->object(), f.view->cellEditor());
    // over its cell
    const QRect cell = f.view->cellRect(5, f.m->columnIndex(QStringLiteral("explicatie")))
                           .translated(f.view->viewport()->geometry().topLeft());
    QCOMPARE(f.view->cellEditor()->geometry(), cell.adjusted(0, 0, -1, -1));
    QTest::keyClick(f.view->cellEditor(), Qt::Key_Return);
    QCOMPARE(f.view->accessibleCellText(5, f.m->columnIndex(QStringLiteral("explicatie"))), QStringLiteral("nou"));
    const int explicatieVis = int(f.m->visibleColumns().indexOf(f.m->columnIndex(QStringLiteral("explicatie"))));
    QCOMPARE(table->tableInterface()->cellAt(5, explicatieVis)->text(QAccessible::Name), QStringLiteral("nou"));
    QVERIFY(table->indexOfChild(edit) < 0); // the editor is gone from the table
    // the row that had the focus keeps showing its own values
    QCOMPARE(f.view->accessibleCellText(2, f.m->columnIndex(QStringLiteral("explicatie"))), QStringLiteral("Taxă şcolară"));
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {}, f.cellCenter(5, QStringLiteral("inactiv")));
    QCOMPARE(f.table->fieldValue(QStringLiteral("inactiv")), QVariant(true));
    QTest::keyClick(f.view, Qt::Key_Down);
    QVERIFY(!f.table->isEditing());
    QCOMPARE(f.table->rowCount(), 6);
    QCOMPARE(f.table->value(5, 1).toString(), QStringLiteral("nou"));
    QCOMPARE(f.m->recordCount(), 6);
    QCOMPARE(f.view->totalRows(), 6);
    // Escape drops a new row that is not wanted.
    QTest::mouseClick(nav->button(GridNavigator::Insert), Qt::LeftButton);
    QCOMPARE(f.view->totalRows(), 7);
    QTest::keyClick(f.view, Qt::Key_Escape);
    QCOMPARE(f.view->totalRows(), 6);
    QCOMPARE(f.table->rowCount(), 6);

    // Delete asks first: "Nu" keeps the record, "Da" deletes it.
    nav->setButtonVisible(GridNavigator::Delete, true);
    f.m->setFocusedRow(0);
    msgs.answers << false;
    QTest::mouseClick(nav->button(GridNavigator::Delete), Qt::LeftButton);
    QCOMPARE(msgs.questions, QStringList{QStringLiteral("Stergeti inregistrarea selectata?")});
    QCOMPARE(f.table->rowCount(), 6);
    msgs.answers << true;
    QTest::mouseClick(nav->button(GridNavigator::Delete), Qt::LeftButton);
    QCOMPARE(f.table->rowCount(), 5);
    QCOMPARE(f.m->recordCount(), 5);
}

void TstGridView::refreshKeepsTheLayout()
{
    Fixture f;
    const int cont = f.m->columnIndex(QStringLiteral("cont"));
    f.m->groupByColumn(cont);
    auto *le = qobject_cast<QLineEdit *>(f.view->filterRow()->editor(f.m->columnIndex(QStringLiteral("explicatie"))));
    QTest::keyClicks(le, QStringLiteral("a"));
    f.view->filterRow()->applyPending();
    const qsizetype records = f.m->recordCount();
    f.m->moveColumn(f.m->columnIndex(QStringLiteral("valoare")), 0);
    f.table->appendRow({QStringLiteral("401"), QStringLiteral("alta"), QDate(2024, 4, 1), 1.0, false});
    f.table->refresh();
    QCOMPARE(f.m->column(0).fieldName, QStringLiteral("valoare"));
    QCOMPARE(f.m->groupColumns(), QList<int>{f.m->columnIndex(QStringLiteral("cont"))});
    QCOMPARE(le->text(), QStringLiteral("a"));
    QCOMPARE(f.m->recordCount(), records + 1);
    // the filter editor follows the moved column
    const int x = f.view->columnLeft(f.m->columnIndex(QStringLiteral("explicatie")));
    QCOMPARE(le->mapTo(f.view->filterRow(), QPoint(0, 0)).x(), x + 1);

    // Narrowed and scrolled sideways, header, filter editors and footer keep to the columns.
    f.grid.resize(260, 300);
    QScrollBar *hb = f.view->horizontalScrollBar();
    QVERIFY(hb->maximum() > 0);
    hb->setValue(hb->maximum());
    const int val = f.m->columnIndex(QStringLiteral("inactiv")); // the last column, now in sight
    const int vx = f.view->columnLeft(val);
    QVERIFY(vx + f.view->columnWidth(val) <= f.view->viewport()->width());
    QCOMPARE(f.view->header()->sectionRect(val).left(), vx);
    auto *ve = f.view->filterRow()->editor(val);
    QCOMPARE(ve->mapTo(f.view->filterRow(), QPoint(0, 0)).x(), vx + 1);
    QCOMPARE(f.view->footer()->geometry().left(), f.view->viewport()->geometry().left());
    QCOMPARE(f.view->footer()->geometry().right(), f.view->width() - 1);
    QCOMPARE(f.view->columnAtX(vx + 5), val);
}

void TstGridView::edgesScrollBarAndGroupCaption()
{
    Fixture f;
    GridStyleSheet sheet;
    const QColor groupBg(0xF1, 0xEF, 0xE2);
    sheet.set(GridElement::Group, {groupBg, {}, Qt::black});
    f.view->setGridStyleSheet(sheet);
    f.m->groupByColumn(f.m->columnIndex(QStringLiteral("cont")));
    f.m->expandAll();
    f.grid.resize(300, 200); // rows and columns both overflow
    QScrollBar *vb = f.view->verticalScrollBar();
    QScrollBar *hb = f.view->horizontalScrollBar();

    // The vertical bar stands beside the rows only; the strips above and
    // below reach the right edge over its column.
    auto check = [&] {
        QTRY_VERIFY(vb->isVisible());
        const QRect rows = f.view->viewport()->geometry();
        const QRect bar(vb->mapTo(f.view, QPoint(0, 0)), vb->size());
        QCOMPARE(bar.top(), rows.top());
        QCOMPARE(bar.bottom(), rows.bottom());
        for (QWidget *strip : {static_cast<QWidget *>(f.view->groupByBox()), static_cast<QWidget *>(f.view->header()),
                               static_cast<QWidget *>(f.view->filterRow()), static_cast<QWidget *>(f.view->footer())}) {
            QVERIFY2(!strip->geometry().intersects(bar), qPrintable(strip->objectName()));
            QCOMPARE(strip->geometry().right(), f.view->width() - 1);
        }
    };
    check();
    f.grid.resize(320, 210);
    check();
    f.m->setFooterVisible(false);
    check();
    f.m->setGroupByBoxVisible(false);
    check();

    // Scrolled to the right end, the group rows keep their [+] and caption at
    // the left edge of the rows, and a click on the box still works.
    f.m->setFocusedRow(1);
    QVERIFY(hb->maximum() > 150);
    hb->setValue(hb->maximum());
    const QRect cap = f.view->groupCaptionRect(0);
    QCOMPARE(cap.left(), f.view->indicatorWidth() + 18 + 2);
    QVERIFY(cap.right() >= f.view->viewport()->width() - 1);
    QVERIFY(f.view->groupCaptionRect(1).isNull()); // a data row
    QImage img(f.view->viewport()->size(), QImage::Format_RGB32);
    f.view->viewport()->render(&img);
    int ink = 0;
    const QRect row = f.view->rowRect(0);
    for (int y = row.top() + 2; y < row.bottom() - 1; ++y)
        for (int x = cap.left(); x < cap.left() + 60; ++x)
            ink += QColor(img.pixel(x, y)) != groupBg;
    QVERIFY2(ink > 20, qPrintable(QString::number(ink)));
    const QPoint box(f.view->indicatorWidth() + 9, row.center().y());
    QCOMPARE(QColor(img.pixel(box.x() - 3, box.y() - 3)), QColor(Qt::white)); // the box's inside
    QVERIFY(f.view->hitTest(box).expandButton);
    QVERIFY(f.m->isExpanded(0));
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {}, box);
    QTRY_VERIFY(!f.m->isExpanded(0));
    QTest::mouseClick(f.view->viewport(), Qt::LeftButton, {}, box);
    QTRY_VERIFY(f.m->isExpanded(0));
    // Unscrolled, it sits after the [+] as before.
    hb->setValue(0);
    QCOMPARE(f.view->groupCaptionRect(0).left(), f.view->indicatorWidth() + 18 + 2);
}

void TstGridView::numbersKeepClearOfTheNextColumn()
{
    // A right-aligned amount followed by a left-aligned text, both at the
    // width "Latime optima" gives them.
    Fixture f;
    GridStyleSheet sheet;
    sheet.set(GridElement::Content, {Qt::white, {}, Qt::black});
    f.view->setGridStyleSheet(sheet);
    f.m->moveColumn(f.m->columnIndex(QStringLiteral("valoare")), 0);
    const int valoare = f.m->columnIndex(QStringLiteral("valoare"));
    const int cont = f.m->columnIndex(QStringLiteral("cont"));
    f.view->bestFit(valoare);
    f.view->bestFit(cont);
    QImage img(f.view->viewport()->size(), QImage::Format_RGB32);
    f.view->viewport()->render(&img);
    const qsizetype row = 4; // 1000 followed by 4111
    QCOMPARE(f.cellAt(row, QStringLiteral("valoare")), QStringLiteral("1000"));
    const QRect num = f.view->cellRect(row, valoare), txt = f.view->cellRect(row, cont);
    auto ink = [&](int x) {
        for (int y = num.top() + 2; y < num.bottom() - 1; ++y)
            if (qGray(img.pixel(x, y)) < 128)
                return true;
        return false;
    };
    int lastDigit = -1, firstLetter = -1;
    for (int x = num.left(); x < num.right() - 1; ++x) // the grid line excluded
        if (ink(x))
            lastDigit = x;
    for (int x = txt.left() + 1; x < txt.right() && firstLetter < 0; ++x)
        if (ink(x))
            firstLetter = x;
    QVERIFY(lastDigit > num.left() && firstLetter > txt.left());
    QVERIFY2(firstLetter - lastDigit > 2 * GridTableView::kCellPadding,
             qPrintable(QStringLiteral("%1 pixels between 1000 and 4111").arg(firstLetter - lastDigit)));
    // The best fit leaves the whole amount readable, not cut short.
    const QFontMetrics fm(*f.view->resolvedStyle(GridElement::Content).font);
    QVERIFY(num.width() >= fm.horizontalAdvance(QStringLiteral("1000")) + 2 * GridTableView::kCellPadding);
    QVERIFY(lastDigit - num.left() >= fm.horizontalAdvance(QStringLiteral("1000")) - 1);
}

QTEST_MAIN(TstGridView)
#include "tst_gridview.moc"
