// The report machinery against a real server: a small report built from a
// description, its run steps, its five exports, the style manager over
// grid_style (two reports, ownership, retiring, damaged layouts) and the
// account pickers.

#include "session/u_dmQuarv.h"
#include "reports/common/u_frmConta_select.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/common/u_frmGridStyle.h"
#include "reports/common/u_reportform.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testfiles.h"
#include "tests/support/u_testsession.h"
#include "grid/u_gridlayout.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_gridstrips.h"
#include "ui/u_messages.h"
#include "ui/u_progress.h"
#include "analyses/u_platform.h"

#include <QFile>
#include <cmath>
#include <functional>
#include <QCalendarWidget>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

const QString kNoPeriod = QStringLiteral("Alegeti Perioada Dorita!");
const QString kOtherMonth =
    QStringLiteral("Pentru a obtine situatii coerente alegeti o perioada care sa apartina aceleiasi luni calendaristice");
const QString kNoEdit = QStringLiteral("Nu puteti modifica o inregistare creata de alt emitent!");
const QString kNoDelete = QStringLiteral("Nu puteti sterge o inregistare creata de alt emitent!");

rep::ReportDesc testDesc(const QString &name, const QString &key)
{
    rep::ReportDesc d;
    d.formName = name;
    d.title = QStringLiteral("Raport de proba");
    d.editors = {{rep::EditorKind::Date, QStringLiteral("cxDateEdit1"), QStringLiteral("Perioada de la :")},
                 {rep::EditorKind::Date, QStringLiteral("cxDateEdit2"), QStringLiteral("Pana la :")}};
    d.queryName = QStringLiteral("dsProba");
    d.sql = QStringLiteral("select cod, den, suma, zi\nfrom frame_fix\nwhere zi between :pDataIncep and :pDataSf\n"
                           "order by cod\n;");
    d.params = {{QStringLiteral("pDataIncep"), QStringLiteral("cxDateEdit1"), rep::DateConv::MonthStart},
                {QStringLiteral("pDataSf"), QStringLiteral("cxDateEdit2"), rep::DateConv::MonthEnd}};
    d.columns = {{QStringLiteral("cod"), QStringLiteral("Cod"), 60},
                 {QStringLiteral("den"), QStringLiteral("Denumire"), 150},
                 {QStringLiteral("suma"), QStringLiteral("Suma"), 80, true, QStringLiteral("0.00")},
                 {QStringLiteral("zi"), QStringLiteral("Zi"), 80}};
    d.footerSummaries = {{QStringLiteral("suma"), grid::SummaryKind::Sum, QStringLiteral("0.00")}};
    d.groupSummaries = d.footerSummaries;
    d.styleKey = key;
    d.steps = {rep::RunStep::checkPeriodFilled(kNoPeriod), rep::RunStep::closeQuery(), rep::RunStep::setParams(),
               rep::RunStep::openQuery()};
    d.exports = {rep::exportGridCsv(QStringLiteral("cxButton2"), QStringLiteral("\\Proba.csv")),
                 rep::exportAllData(QStringLiteral("cxButton3"), QStringLiteral("\\Proba.csv")),
                 rep::exportText(QStringLiteral("cxButton4"), QStringLiteral("\\Proba.csv")),
                 rep::exportExcel(QStringLiteral("cxButton5"), QStringLiteral("\\Proba.xlsx")),
                 rep::exportCsvToStatus(QStringLiteral("cxButton6"), QStringLiteral("\\Fisa.csv"))};
    d.statusBar = true;
    return d;
}


class Form : public TReportForm {
public:
    using TReportForm::TReportForm;
    int customRuns = 0;

protected:
    void runCustomStep(const QString &name) override
    {
        ++customRuns;
        if (name == QLatin1String("fail"))
            throw QuarvError(QStringLiteral("pas esuat"));
    }
};

} // namespace

class TestFrame : public QObject {
    Q_OBJECT
    std::unique_ptr<TestSession> m_session;
    TfrmGridStyle *m_styles = nullptr; // the one style manager the style buttons reach
    ui::RecordingMessages *m_msg = nullptr;
    QString docs() const { return m_session->docs.path(); }
    PgTestServer *m_pg = nullptr;

private slots:
    void initTestCase()
    {
        m_pg = &PgTestServer::instance();
        m_session = std::make_unique<TestSession>(QStringLiteral("E1"));
        m_msg = &m_session->messages;
        m_pg->exec(QStringLiteral(
            "create table frame_fix (cod varchar(10), den varchar(50), suma double precision, zi date);"
            "insert into frame_fix values ('A1', 'Alfa', 10.5, '2024-01-20'), ('B2', 'Beta \"b\"', 20, '2024-02-01'),"
            " ('C3', 'Gama', 30, '2024-03-31'), ('D4', 'Delta', 40, '2024-04-01');"));
        m_styles = new TfrmGridStyle(*m_session->dm);
        m_session->dm->styleManager = [this](const QString &key, grid::GridModel *target) {
            m_styles->showFor(key, target);
        };
    }

    void cleanupTestCase()
    {
        delete m_styles;
        m_session.reset();
    }

    void init() { m_msg->clear(); }

    // Every element of both session sheets that carries text is readable on
    // its background, the focused row in a focused grid and in one that is
    // not (after "Cauta", after a navigator click) included.
    void sheetsAreReadable()
    {
        auto luminance = [](QColor c) {
            auto lin = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
            return 0.2126 * lin(c.redF()) + 0.7152 * lin(c.greenF()) + 0.0722 * lin(c.blueF());
        };
        auto contrast = [&](QColor a, QColor b) {
            const double x = luminance(a), y = luminance(b);
            return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
        };
        using ui::GridElement;
        for (const ui::GridStyleSheet *sheet : {&m_session->dm->GridTableViewStyleSheetReport(), &m_session->dm->StandardQUARV()}) {
            ui::GridTableView view;
            view.setGridStyleSheet(*sheet);
            const ui::CellStyle even = view.resolvedStyle(GridElement::ContentEven);
            const ui::CellStyle group = view.resolvedStyle(GridElement::Group);
            const ui::CellStyle footer = view.resolvedStyle(GridElement::Footer);
            QList<std::pair<QString, ui::CellStyle>> drawn;
            for (auto [name, e] : {std::pair{"content", GridElement::ContentEven}, {"odd rows", GridElement::ContentOdd},
                                   {"group row", GridElement::Group}, {"footer", GridElement::Footer},
                                   {"header", GridElement::Header}, {"filter box", GridElement::FilterBox},
                                   {"group box", GridElement::GroupByBox}, {"search", GridElement::IncSearch},
                                   {"preview", GridElement::Preview}, {"focused row", GridElement::Selection}})
                drawn.append({QString::fromLatin1(name), view.resolvedStyle(e)});
            view.clearFocus();
            QVERIFY(!view.hasFocus());
            drawn.append({QStringLiteral("unfocused row"), view.focusedRowStyle(even)});
            drawn.append({QStringLiteral("unfocused group"), view.focusedRowStyle(group)});
            drawn.append({QStringLiteral("unfocused footer"), view.focusedRowStyle(footer)});
            for (const auto &[name, st] : drawn) {
                const double ratio = contrast(*st.color, *st.textColor);
                QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("%1, %2: %3 on %4 is %5:1")
                                                      .arg(sheet->name(), name, st.textColor->name(), st.color->name())
                                                      .arg(ratio, 0, 'f', 1)));
            }
        }
    }

    // The form as built from its description, and the common run.
    void runSteps()
    {
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        auto *run = f.findChild<QPushButton *>(QStringLiteral("btnCauta"));
        QVERIFY(run);
        f.dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2024, 1, 15));
        run->click(); // one editor empty
        QCOMPARE(m_msg->errors, QStringList{kNoPeriod});
        QVERIFY(!f.query()->isActive());

        // Whole months bound, the editors keep what was typed.
        setPeriod(&f, QDate(2024, 1, 15), QDate(2024, 3, 10));
        run->click();
        QCOMPARE(m_msg->errors.size(), 1);
        QCOMPARE(f.query()->param(QStringLiteral("pDataIncep")).toDate(), QDate(2024, 1, 1));
        QCOMPARE(f.query()->param(QStringLiteral("pDataSf")).toDate(), QDate(2024, 3, 31));
        QCOMPARE(f.dateEdit(QStringLiteral("cxDateEdit1"))->date(), QDate(2024, 1, 15));
        QCOMPARE(f.gridModel()->recordCount(), 3);
        QCOMPARE(f.gridModel()->footerValue(0).toDouble(), 60.5);

        // A re-run keeps the layout the operator left.
        f.gridModel()->setColumnWidth(1, 222);
        f.gridModel()->groupByColumn(0);
        setPeriod(&f, QDate(2024, 1, 1), QDate(2024, 4, 30));
        f.Cauta();
        QCOMPARE(f.gridModel()->recordCount(), 4);
        QCOMPARE(f.gridModel()->column(1).width, 222);
        QCOMPARE(f.gridModel()->groupColumns(), QList<int>{0});

        // A failed check leaves the last result.
        f.dateEdit(QStringLiteral("cxDateEdit2"))->clearDate();
        QVERIFY_THROWS_EXCEPTION(QuarvError, f.Cauta());
        QCOMPARE(f.gridModel()->recordCount(), 4);
    }

    // Period through the session's period row, same-month check as a box, busy cursor.
    void periodRowSteps()
    {
        m_pg->exec(QStringLiteral("delete from data_list"));
        rep::ReportDesc d = testDesc(QStringLiteral("frmProba2"), {});
        d.sql = QStringLiteral("select cod, den, suma, zi from frame_fix, data_list where zi between data_incep and data_sf\n;");
        d.params.clear();
        d.steps = {rep::RunStep::checkSameMonth(true), rep::RunStep::checkPeriodFilled(kNoPeriod),
                   rep::RunStep::busyCursor(),
                   rep::RunStep::postPeriodRow(rep::PeriodSource::Session, rep::DateConv::MonthStart,
                                               rep::DateConv::MonthEnd),
                   rep::RunStep::openQuery()};
        Form f(d, *m_session->dm);
        QVERIFY(!f.styleButton());

        setPeriod(&f, QDate(2024, 2, 3), QDate(2024, 3, 3));
        f.Cauta(); // an information box, then a silent stop
        QCOMPARE(m_msg->informations, QStringList{kOtherMonth});
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from data_list")).toInt(), 0);

        f.dateEdit(QStringLiteral("cxDateEdit1"))->clearDate();
        f.dateEdit(QStringLiteral("cxDateEdit2"))->clearDate();
        QVERIFY_THROWS_EXCEPTION(QuarvError, f.Cauta()); // both empty: same month passes

        setPeriod(&f, QDate(2024, 2, 10), QDate(2024, 2, 5));
        f.Cauta(); // an empty data_list gets its row
        QCOMPARE(m_pg->scalar(QStringLiteral("select data_incep || ' ' || data_sf from data_list")).toString(),
                 QStringLiteral("2024-02-01 2024-02-29"));
        QCOMPARE(f.gridModel()->recordCount(), 1);
        QVERIFY(!QGuiApplication::overrideCursor());

        // Only opened: a second run writes the period but keeps the rows.
        setPeriod(&f, QDate(2024, 3, 1), QDate(2024, 3, 2));
        f.Cauta();
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from data_list")).toInt(), 1);
        QCOMPARE(m_pg->scalar(QStringLiteral("select data_sf from data_list")).toString(), QStringLiteral("2024-03-31"));
        QCOMPARE(f.gridModel()->recordCount(), 1);

        // The hourglass goes away when a later step fails.
        rep::ReportDesc d2 = d;
        d2.steps = {rep::RunStep::busyCursor(), rep::RunStep::custom(QStringLiteral("fail")), rep::RunStep::openQuery()};
        d2.customSteps = {QStringLiteral("fail")};
        Form g(d2, *m_session->dm);
        QVERIFY_THROWS_EXCEPTION(QuarvError, g.Cauta());
        QCOMPARE(g.customRuns, 1);
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(!g.query()->isActive());
    }

    void exports()
    {
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        ui::ScopedQueuedFileDialog dlg;
        const QString dir = docs();

        // Before any run: all data refused, no dialog.
        f.exportButton(rep::ExportKind::AllDataCsv)->click();
        QCOMPARE(m_msg->errors, QStringList{TReportForm::notRunText()});
        QVERIFY(dlg.askedNames.isEmpty());
        m_msg->clear();

        setPeriod(&f, QDate(2024, 1, 1), QDate(2024, 4, 30));
        f.Cauta();
        grid::GridModel *v = f.gridModel();
        // A desktop that lists with ";" writes decimal commas: both CSVs follow it.
        v->setLocale(QLocale(QLocale::Romanian, QLocale::Romania));
        v->setFilterText(v->columnIndex(QStringLiteral("suma")), QStringLiteral(">15"));
        v->setColumnVisible(v->columnIndex(QStringLiteral("zi")), false);
        v->moveColumn(v->columnIndex(QStringLiteral("suma")), 0);

        // A: the grid as shown, ';', status bar and "ok".
        dlg.answers << dir + QStringLiteral("/a.csv");
        f.exportButton(rep::ExportKind::GridCsv)->click();
        QCOMPARE(dlg.askedFilters.last(), QStringLiteral("*.csv"));
        QCOMPARE(dlg.askedNames.last(), dir + QStringLiteral("/Proba.csv"));
        QStringList a = readLines(dir + QStringLiteral("/a.csv"));
        QCOMPARE(a.value(0), QStringLiteral("Suma;Cod;Denumire"));
        QCOMPARE(a.value(1), QStringLiteral("20,00;B2;\"Beta \"\"b\"\"\""));
        QCOMPARE(a.size(), 5); // header, three rows, footer
        QCOMPARE(a.value(4), QStringLiteral("90,00;;"));
        QCOMPARE(f.statusText(), dir + QStringLiteral("/a.csv"));
        QCOMPARE(m_msg->informations, QStringList{QStringLiteral("ok")});

        // B: every row and field of the query, field names, quoted text.
        dlg.answers << dir + QStringLiteral("/b.csv");
        f.exportButton(rep::ExportKind::AllDataCsv)->click();
        const QStringList b = readLines(dir + QStringLiteral("/b.csv"));
        QCOMPARE(b.size(), 5);
        QVERIFY2(b.value(0).remove(QLatin1Char('"')) == QStringLiteral("cod;den;suma;zi"), qPrintable(b.value(0)));
        QCOMPARE(b.value(1), QStringLiteral("\"A1\";\"Alfa\";10,5;2024-01-20"));
        QFile bf(dir + QStringLiteral("/b.csv"));
        QVERIFY(bf.open(QIODevice::ReadOnly));
        QCOMPARE(bf.read(3), QByteArray("\xEF\xBB\xBF"));
        bf.close();
        QCOMPARE(f.statusText(), dir + QStringLiteral("/b.csv"));
        QCOMPARE(m_msg->informations.size(), 2);

        // C: tabs and quotes, silent.
        f.setStatusText(QStringLiteral("inainte"));
        dlg.answers << dir + QStringLiteral("/c.csv");
        f.exportButton(rep::ExportKind::GridText)->click();
        QCOMPARE(readLines(dir + QStringLiteral("/c.csv")).value(0), QStringLiteral("\"Suma\"\t\"Cod\"\t\"Denumire\""));
        QCOMPARE(f.statusText(), QStringLiteral("inainte"));
        QCOMPARE(m_msg->informations.size(), 2);

        // D: a workbook, its own filter.
        dlg.answers << dir + QStringLiteral("/d.xlsx");
        f.exportButton(rep::ExportKind::GridXlsx)->click();
        QCOMPARE(dlg.askedFilters.last(), QStringLiteral("*.xlsx"));
        QCOMPARE(dlg.askedNames.last(), dir + QStringLiteral("/Proba.xlsx"));
        QFile x(dir + QStringLiteral("/d.xlsx"));
        QVERIFY(x.open(QIODevice::ReadOnly));
        QCOMPARE(x.read(2), QByteArray("PK"));

        // E: the status text names the file, no box.
        dlg.answers << dir + QStringLiteral("/e.csv");
        f.exportButton(rep::ExportKind::GridCsvStatus)->click();
        QCOMPARE(f.statusText(), QStringLiteral("fisier exportat: ") + dir + QStringLiteral("/e.csv"));
        QCOMPARE(readLines(dir + QStringLiteral("/e.csv")), a);
        QCOMPARE(m_msg->informations.size(), 2);
        QVERIFY(m_msg->errors.isEmpty());
    }

    // Names typed without an extension get the variant's; the status bar
    // names the file written; an extension of the operator's own stays.
    void exportNames_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("written");
        QTest::addColumn<bool>("inStatus");
        QTest::newRow("grid csv") << int(rep::ExportKind::GridCsv) << QStringLiteral("/fara")
                                  << QStringLiteral("/fara.csv") << true;
        QTest::newRow("all data") << int(rep::ExportKind::AllDataCsv) << QStringLiteral("/toate")
                                  << QStringLiteral("/toate.csv") << true;
        QTest::newRow("text, trailing dot") << int(rep::ExportKind::GridText) << QStringLiteral("/text.")
                                            << QStringLiteral("/text.csv") << false;
        QTest::newRow("workbook") << int(rep::ExportKind::GridXlsx) << QStringLiteral("/registru")
                                  << QStringLiteral("/registru.xlsx") << false;
        QTest::newRow("csv to status") << int(rep::ExportKind::GridCsvStatus) << QStringLiteral("/fisa")
                                       << QStringLiteral("/fisa.csv") << true;
        QTest::newRow("own extension") << int(rep::ExportKind::GridCsv) << QStringLiteral("/ales.txt")
                                       << QStringLiteral("/ales.txt") << true;
    }
    void exportNames()
    {
        QFETCH(int, kind);
        QFETCH(QString, typed);
        QFETCH(QString, written);
        QFETCH(bool, inStatus);
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        setPeriod(&f, QDate(2024, 1, 1), QDate(2024, 4, 30));
        f.Cauta();
        QTemporaryDir out;
        ui::ScopedQueuedFileDialog dlg;
        dlg.answers << out.path() + typed;
        f.exportButton(rep::ExportKind(kind))->click();
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(QDir(out.path()).entryList(QDir::Files | QDir::Hidden), QStringList{written.mid(1)});
        if (inStatus)
            QVERIFY2(f.statusText().endsWith(out.path() + written), qPrintable(f.statusText()));
    }

    // Cancelled: nothing at all; a file that cannot be written: the error,
    // the cleared status, no "ok"; with no Documents folder the backslash
    // of the proposed name still leads.
    void exportCancelledOrRefused()
    {
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        setPeriod(&f, QDate(2024, 1, 1), QDate(2024, 4, 30));
        f.Cauta();
        ui::ScopedQueuedFileDialog dlg;
        f.setStatusText(QStringLiteral("inainte"));
        f.exportButton(rep::ExportKind::GridCsv)->click(); // the queue is empty: a cancel
        QCOMPARE(f.statusText(), QStringLiteral("inainte"));
        QVERIFY(m_msg->all.isEmpty());

        dlg.answers << QStringLiteral("/nu/exista/a.csv");
        f.exportButton(rep::ExportKind::GridCsv)->click();
        QCOMPARE(m_msg->errors.size(), 1);
        QVERIFY(f.statusText().isEmpty());
        QVERIFY(m_msg->informations.isEmpty());

        const QString dir = docs();
        m_session->dm->caleDocumente.clear();
        f.exportButton(rep::ExportKind::GridText)->click();
        QCOMPARE(dlg.askedNames.last(), QStringLiteral("/Proba.csv"));
        m_session->dm->caleDocumente = dir;
        QCOMPARE(platform::documentsFile(QStringLiteral("X:"), QStringLiteral("\\a.csv")), QStringLiteral("X:/a.csv"));
    }

    // Layouts through grid_style: two reports, restore, retarget, un-retire.
    void gridStyles()
    {
        m_pg->exec(QStringLiteral("delete from grid_style"));
        Form f1(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        Form f2(testDesc(QStringLiteral("frmProba2"), QStringLiteral("QUARV Proba2")), *m_session->dm);
        setPeriod(&f1, QDate(2024, 1, 1), QDate(2024, 4, 30));
        f1.Cauta();
        grid::GridModel *v1 = f1.gridModel();
        v1->moveColumn(3, 0);
        v1->setColumnWidth(1, 133);
        v1->groupByColumn(v1->columnIndex(QStringLiteral("den")));
        v1->setSortOrder(v1->columnIndex(QStringLiteral("cod")), grid::SortOrder::Descending);
        v1->setFilterText(v1->columnIndex(QStringLiteral("cod")), QStringLiteral("a"));
        v1->setFooterSummaries({{QStringLiteral("suma"), grid::SummaryKind::Count}});
        const QByteArray saved = grid::saveGridLayout(*v1);

        f1.styleButton()->click();
        TfrmGridStyle *gs = m_styles;
        QVERIFY(gs->isVisible());
        QCOMPARE(gs->lblGridName->text(), QStringLiteral("QUARV Proba1"));
        QCOMPARE(gs->targetModel.data(), v1);
        QCOMPARE(gs->ds_style->rowCount(), 0);
        QCOMPARE(gs->stylesModel()->column(gs->stylesModel()->columnIndex(QStringLiteral("discontinued"))).caption,
                 QStringLiteral("inactiv"));
        QVERIFY(!gs->navigator()->button(ui::GridNavigator::Post)->isVisible());

        // A name typed and posted: today, the issuer, no layout yet.
        gs->ds_style->append();
        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("Vedere 1"));
        gs->ds_style->post();
        QCOMPARE(m_pg->scalar(QStringLiteral("select grid_name || '|' || emitent || '|' || (data_creare = current_date)"
                                             " || '|' || (grid_style_bytea is null) from grid_style")).toString(),
                 QStringLiteral("QUARV Proba1|E1|true|true"));
        gs->btnSalveaza->click();
        QVERIFY2(m_msg->errors.isEmpty(), qPrintable(m_msg->errors.join(u'|')));
        QCOMPARE(m_pg->scalar(QStringLiteral("select grid_style_string from grid_style")).toString(), QStringLiteral(" "));
        QVERIFY(QFile::exists(docs() + QStringLiteral("/grid.ini")));

        // Messed up, then restored: order, widths, grouping, sorting, filter, summaries.
        v1->clearGrouping();
        v1->clearSorting();
        v1->clearAllFilters();
        v1->moveColumn(0, 3);
        v1->setColumnWidth(0, 10);
        v1->setFooterSummaries({});
        gs->btnRestaureaza->click();
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(grid::saveGridLayout(*v1), saved);
        QVERIFY(!QGuiApplication::overrideCursor());

        // Retargeted while open: the other key, the other list.
        f2.styleButton()->click();
        QCOMPARE(gs->lblGridName->text(), QStringLiteral("QUARV Proba2"));
        QCOMPARE(gs->targetModel.data(), f2.gridModel());
        QCOMPARE(gs->ds_style->rowCount(), 0);
        // Saving into an empty list without a name: the server's own refusal, nothing written.
        gs->btnSalveaza->click();
        QCOMPARE(m_msg->errors.size(), 1);
        QVERIFY2(m_msg->errors.value(0).contains(QStringLiteral("style_name")), qPrintable(m_msg->errors.value(0)));
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from grid_style")).toInt(), 1);
        QVERIFY(!QGuiApplication::overrideCursor());
        m_msg->errors.clear();
        gs->ds_style->cancel();
        // A name of blanks is a name as the database takes it.
        gs->ds_style->append();
        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("   "));
        gs->ds_style->post();
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from grid_style where style_name = '   '")).toInt(), 1);
        gs->ds_style->append();
        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("Vedere 1"));
        gs->btnSalveaza->click();
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from grid_style")).toInt(), 3);
        const QByteArray plain = grid::saveGridLayout(*f2.gridModel());

        // Saving into a retired style makes it active again.
        m_pg->exec(QStringLiteral("update grid_style set discontinued = true"));
        f1.styleButton()->click();
        QCOMPARE(gs->ds_style->rowCount(), 1);
        gs->btnSalveaza->click();
        QCOMPARE(m_pg->scalar(QStringLiteral("select discontinued from grid_style where grid_name = 'QUARV Proba1'"))
                     .toString(), QStringLiteral("f"));

        // "Filtru": on the list's display, all rows stay loaded.
        m_pg->exec(QStringLiteral("insert into grid_style (grid_name, style_name, emitent, discontinued) values"
                                  " ('QUARV Proba1', 'Veche', 'E1', true), ('QUARV Proba1', 'Zeta', 'E1', false)"));
        gs->FormShow();
        QCOMPARE(gs->filterIndex(), 2);
        gs->setFilterIndex(0);
        QCOMPARE(gs->stylesModel()->recordCount(), 2);
        gs->setFilterIndex(1);
        QCOMPARE(gs->stylesModel()->recordCount(), 1);
        QCOMPARE(gs->ds_style->rowCount(), 3);
        gs->setFilterIndex(2);
        QCOMPARE(gs->stylesModel()->recordCount(), 3);

        // The other report's layout never came here.
        QCOMPARE(grid::saveGridLayout(*f2.gridModel()), plain);
        gs->close();
        QVERIFY(!gs->ds_style->isActive());
    }

    // The window's end (Esc, or its close box) drops what was not posted; "-"
    // deletes an own style once answered "Da" (the new row and the question
    // themselves are the grid's, checked with the grid view).
    void styleListEditing()
    {
        m_pg->exec(QStringLiteral("delete from grid_style;"
                                  "insert into grid_style (grid_name, style_name, emitent, data_creare) values"
                                  " ('QUARV Proba1', 'Alfa', 'E1', '2024-01-01'), ('QUARV Proba1', 'Beta', 'E1', '2024-02-01')"));
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        f.styleButton()->click();
        TfrmGridStyle *gs = m_styles;
        QTest::mouseClick(gs->navigator()->button(ui::GridNavigator::Insert), Qt::LeftButton);
        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("Gama"));
        QTest::keyClick(gs, Qt::Key_Escape);
        QVERIFY(!gs->isVisible());
        QVERIFY(!gs->ds_style->isActive());
        QCOMPARE(m_pg->scalar(QStringLiteral("select string_agg(style_name, ',' order by style_name) from grid_style"))
                     .toString(), QStringLiteral("Alfa,Beta"));

        f.styleButton()->click();
        gs->ds_style->first();
        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("Alfa schimbat"));
        gs->close();
        QVERIFY(!gs->ds_style->isActive());
        QCOMPARE(m_pg->scalar(QStringLiteral("select count(*) from grid_style where style_name = 'Alfa'")).toInt(), 1);

        f.styleButton()->click();
        m_msg->clear();
        gs->stylesModel()->setFocusedRow(0);
        m_msg->answers << true;
        gs->navigator()->button(ui::GridNavigator::Delete)->click();
        QCOMPARE(m_msg->questions.size(), 1);
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(m_pg->scalar(QStringLiteral("select string_agg(style_name, ',') from grid_style")).toString(),
                 QStringLiteral("Beta"));
        gs->close();
    }

    // Styles of another issuer: listed and restorable, never changed.
    void ownershipAndDamage()
    {
        m_pg->exec(QStringLiteral("delete from grid_style"));
        Form f(testDesc(QStringLiteral("frmProba"), QStringLiteral("QUARV Proba1")), *m_session->dm);
        grid::GridModel *v = f.gridModel();
        grid::GridModel other;
        other.addColumn(QStringLiteral("den"), QStringLiteral("D"), 99);
        other.addColumn(QStringLiteral("cod"), QStringLiteral("C"), 44);
        m_pg->exec(QStringLiteral("insert into grid_style (grid_name, style_name, emitent, data_creare, grid_style_bytea)"
                                  " values ('QUARV Proba1', 'Altul', 'E2', '2024-01-01', decode('%1', 'hex'))")
                       .arg(QString::fromLatin1(grid::saveGridLayout(other).toHex())));
        f.styleButton()->click();
        TfrmGridStyle *gs = m_styles;
        QCOMPARE(gs->ds_style->rowCount(), 1);

        gs->ds_style->setFieldValue(QStringLiteral("style_name"), QStringLiteral("Furat"));
        QVERIFY_THROWS_EXCEPTION(QuarvError, gs->ds_style->post());
        QVERIFY(gs->ds_style->isEditing()); // the typed name stays visible
        gs->ds_style->cancel();
        gs->btnSalveaza->click();
        QCOMPARE(m_msg->errors, QStringList{kNoEdit});
        gs->ds_style->cancel();
        gs->navigator()->button(ui::GridNavigator::Delete)->click(); // asked, answered "Da", refused
        QCOMPARE(m_msg->questions.size(), 1);
        QCOMPARE(m_msg->errors, (QStringList{kNoEdit, kNoDelete}));
        QCOMPARE(m_pg->scalar(QStringLiteral("select style_name || emitent || (grid_style_bytea is not null) from grid_style"))
                     .toString(), QStringLiteral("AltulE2true"));

        m_msg->clear();
        gs->btnRestaureaza->click(); // restorable
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(v->columnCount(), 2);
        QCOMPARE(v->column(0).fieldName, QStringLiteral("den"));
        QCOMPARE(v->column(0).width, 99);

        // Empty keeps the layout; garbage and a cut-off stream say so and change nothing.
        const QByteArray good = grid::saveGridLayout(*v);
        const QByteArray cut = good.left(good.indexOf("Width=") + 6) + "abc";
        for (const QByteArray &bad : {QByteArray(), QByteArray("nu este un format\x01\x02"), cut}) {
            m_msg->clear();
            m_pg->exec(QStringLiteral("update grid_style set grid_style_bytea = decode('%1', 'hex')")
                           .arg(QString::fromLatin1(bad.toHex())));
            gs->FormShow();
            gs->btnRestaureaza->click();
            QCOMPARE(m_msg->errors.size(), bad.isEmpty() ? 0 : 1);
            QCOMPARE(grid::saveGridLayout(*v), good);
            QVERIFY(!QGuiApplication::overrideCursor());
        }

        // The scratch file cannot be written: the error, nothing saved.
        m_pg->exec(QStringLiteral("update grid_style set emitent = 'E1', grid_style_bytea = null"));
        gs->FormShow();
        m_session->dm->caleDocumente = QStringLiteral("/nu/exista");
        m_msg->clear();
        gs->btnSalveaza->click();
        m_session->dm->caleDocumente = docs();
        QCOMPARE(m_msg->errors.size(), 1);
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(m_pg->scalar(QStringLiteral("select grid_style_bytea is null from grid_style")).toBool());
        gs->close();
    }

    // A long run and a long export, as the operator meets them: the progress
    // window after half a second, the other windows refusing input while it
    // is up, "Renunta" (and Esc) stopping the work; a short run shows nothing.
    void longWork()
    {
        rep::ReportDesc d = testDesc(QStringLiteral("frmLung"), QString());
        d.sql = QStringLiteral("select 'C' || g as cod, 'rand ' || g as den, g * 0.01 as suma, date '2024-03-01' as zi\n"
                               "from generate_series(1, 4000000) g where date '2024-03-01' between :pDataIncep and :pDataSf");
        Form f(d, *m_session->dm);
        setPeriod(&f, QDate(2024, 3, 1), QDate(2024, 3, 31));
        f.show();
        QWidget other;
        auto *button = new QPushButton(QStringLiteral("Alt buton"), &other);
        int clicks = 0;
        connect(button, &QPushButton::clicked, [&] { ++clicks; });
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        auto clickOther = [&] { QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, button->geometry().center()); };
        clickOther();
        QCOMPARE(clicks, 1); // the click reaches it while nothing runs

        // While the work runs, a timer looks at what the operator sees and presses `stop`.
        QStringList texts;
        bool sawWindow = false;
        std::function<void(QDialog *)> stop;
        QTimer watch;
        watch.setInterval(30);
        connect(&watch, &QTimer::timeout, [&] {
            QDialog *w = ui::ProgressWatch::window();
            if (!w)
                return;
            sawWindow = true;
            texts << w->findChild<QLabel *>(QStringLiteral("lblProgres"))->text();
            if (texts.size() == 3 && stop) {
                clickOther();
                stop(w);
            }
        });
        watch.start();

        // The fetch, stopped with Esc.
        stop = [](QDialog *w) { QTest::keyClick(w, Qt::Key_Escape); };
        f.Cauta();
        QVERIFY(sawWindow);
        QVERIFY2(texts.value(2).startsWith(QStringLiteral("Se citesc datele... ")) && texts.value(2).endsWith(QStringLiteral(" randuri")),
                 qPrintable(texts.join(QLatin1Char('|'))));
        QCOMPARE(clicks, 1); // held off while the window was up
        QVERIFY(!ui::ProgressWatch::window());
        QCOMPARE(f.statusText(), TReportForm::cancelledText());
        QVERIFY(!f.query()->isActive());
        QCOMPARE(f.gridModel()->recordCount(), qsizetype(0));
        QCOMPARE(f.gridModel()->footerText(0), QString());
        QVERIFY2(m_msg->all.isEmpty(), qPrintable(m_msg->all.join(QLatin1Char('|'))));

        // The next, short run: rows as usual and no window.
        stop = nullptr;
        f.query()->setSql(QString(d.sql).replace(QStringLiteral("4000000"), QStringLiteral("3")));
        texts.clear();
        sawWindow = false;
        f.Cauta();
        QVERIFY(!sawWindow);
        QCOMPARE(f.gridModel()->recordCount(), qsizetype(3));
        QVERIFY(f.statusText().isEmpty()); // no longer says the run was stopped

        // A long export stopped with "Renunta": no file, no temporary file,
        // the file of that name as it was.
        f.query()->setSql(QString(d.sql).replace(QStringLiteral("4000000"), QStringLiteral("400000")));
        f.Cauta();
        QCOMPARE(f.gridModel()->recordCount(), qsizetype(400000));
        QTemporaryDir out;
        const QString file = out.filePath(QStringLiteral("lung.xlsx"));
        QFile old(file);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("vechi");
        old.close();
        ui::ScopedQueuedFileDialog dlg;
        dlg.answers << file;
        texts.clear();
        stop = [](QDialog *w) { w->findChild<QPushButton *>(QStringLiteral("btnRenunta"))->click(); };
        ui::ProgressWatch::setShowDelay(50);
        f.exportButton(rep::ExportKind::GridXlsx)->click();
        ui::ProgressWatch::setShowDelay(500);
        watch.stop();
        QVERIFY2(texts.value(2).startsWith(QStringLiteral("Se scrie fisierul... ")) && texts.value(2).endsWith(u'%'),
                 qPrintable(texts.join(QLatin1Char('|'))));
        QCOMPARE(QDir(out.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("lung.xlsx")});
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("vechi"));
        QVERIFY2(m_msg->all.isEmpty(), qPrintable(m_msg->all.join(QLatin1Char('|'))));
        QCOMPARE(f.gridModel()->recordCount(), qsizetype(400000)); // the grid keeps its rows
    }

    // The pickers: modal protocol, filter kept, list refreshed at every showing.
    void pickers()
    {
        m_pg->exec(QStringLiteral("insert into conts (conts, den_conts) values ('401', 'Furnizori'), ('411', 'Clienti'),"
                                  " ('5121', 'Conturi la banci');"
                                  "insert into conts (conts, den_conts, discontinued) values ('999', 'Vechi', true);"
                                  "insert into conta (conts, conta, den_conta) values ('401', '401.01', 'Furnizor A');"));
        TfrmConts_select p(*m_session->dm);

        // OK on the focused row.
        QTimer::singleShot(0, &p, [&p] {
            p.gridModel()->focusDataRow(1);
            p.btnOK->click();
        });
        QCOMPARE(p.pick(), int(QDialog::Accepted));
        QCOMPARE(p.chosen(QStringLiteral("conts")), QStringLiteral("411"));
        QCOMPARE(p.dsConts->rowCount(), 3);

        // Grouped, the focus on a group row: the record focused last is the choice.
        QTimer::singleShot(0, &p, [&p] {
            grid::GridModel *v = p.gridModel();
            v->groupByColumn(0);
            v->expandAll();
            QVERIFY(v->focusDataRow(1)); // 411
            v->setFocusedRow(0);         // the group row of 401
            p.btnOK->click();
        });
        QCOMPARE(p.pick(), int(QDialog::Accepted));
        QCOMPARE(p.gridModel()->rowKind(p.gridModel()->focusedRow()), grid::RowKind::Group);
        QCOMPARE(p.chosen(QStringLiteral("conts")), QStringLiteral("411"));
        p.gridModel()->clearGrouping();

        // Closed otherwise: no choice.
        QTimer::singleShot(0, &p, [&p] { p.reject(); });
        QCOMPARE(p.pick(), int(QDialog::Rejected));

        // A filter typed (applied without waiting) and a retired account: the
        // next showing keeps the one and drops the other.
        auto *fe = qobject_cast<QLineEdit *>(p.grid()->view()->filterRow()->editor(1));
        QVERIFY(fe);
        QTest::keyClicks(fe, QStringLiteral("ban"));
        QCoreApplication::processEvents();
        QCOMPARE(p.gridModel()->recordCount(), 1);
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(fe, Qt::Key_Backspace);
        QTest::keyClicks(fe, QStringLiteral("i"));
        QCoreApplication::processEvents();
        QCOMPARE(p.gridModel()->recordCount(), 3);
        m_pg->exec(QStringLiteral("update conts set discontinued = true where conts = '411'"));
        QTimer::singleShot(0, &p, [&p] { p.btnOK->click(); });
        QCOMPARE(p.pick(), int(QDialog::Accepted));
        QCOMPARE(p.dsConts->rowCount(), 2);
        QCOMPARE(p.gridModel()->recordCount(), 2); // Furnizori, Conturi la banci
        QCOMPARE(p.gridModel()->column(1).filterText, QStringLiteral("i"));

        // Everything filtered out: OK still, and an empty code.
        p.gridModel()->setFilterText(0, QStringLiteral("nimic"));
        QTimer::singleShot(0, &p, [&p] { p.btnOK->click(); });
        QCOMPARE(p.pick(), int(QDialog::Accepted));
        QCOMPARE(p.chosen(QStringLiteral("conts")), QString());

        TfrmConta_select a(*m_session->dm);
        QTimer::singleShot(0, &a, [&a] { a.btnOK->click(); });
        QCOMPARE(a.pick(), int(QDialog::Accepted));
        QCOMPARE(a.chosen(QStringLiteral("conta")), QStringLiteral("401.01"));
        QCOMPARE(a.gridModel()->column(3).fieldName, QStringLiteral("moneda"));
    }

    void dateEditor()
    {
        ui::DateEdit e;
        QSignalSpy changed(&e, &ui::DateEdit::valueChanged);
        e.setText(QStringLiteral("31.02.2024"));
        e.commitText(); // not a date: the editor stays empty
        QVERIFY(e.isEmpty());
        QVERIFY(e.text().isEmpty());
        e.setText(QStringLiteral("5.3.24"));
        e.commitText();
        QCOMPARE(e.date(), QDate(2024, 3, 5));
        QCOMPARE(e.text(), QStringLiteral("05.03.2024"));
        e.setText(QString());
        e.commitText();
        QVERIFY(e.isEmpty());
        QCOMPARE(changed.size(), 2);

        // Picked from the calendar.
        e.showCalendar();
        QVERIFY(e.calendar()->isVisible());
        emit e.calendar()->clicked(QDate(2025, 12, 24));
        QVERIFY(!e.calendar()->isVisible());
        QCOMPARE(e.text(), QStringLiteral("24.12.2025"));

        // The ellipsis, by mouse or F4.
        ui::ButtonEdit be;
        QSignalSpy asked(&be, &ui::ButtonEdit::buttonClicked);
        be.button()->click();
        QTest::keyClick(&be, Qt::Key_F4);
        QCOMPARE(asked.size(), 2);
    }
};

QTEST_MAIN(TestFrame)
#include "tst_frame.moc"
