// The journal register and the analytic account sheet as the operator uses
// them: editors, checks and their messages, the period on its way to the
// server, the grid's set-up, the picker, the exports and a dropped link.

#include "session/u_dmQuarv.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testfiles.h"
#include "tests/support/u_testsession.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"
#include "analyses/u_platform.h"

#include <QFile>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class TestRegisterSheetForms : public QObject {
    Q_OBJECT
    std::unique_ptr<TestSession> m_session;
    ui::RecordingMessages *m_msg = nullptr;
    QString docsFile(const QString &name) const { return m_session->docs.filePath(name); }

    static void click(TReportForm *f) { QTest::mouseClick(f->runButton(), Qt::LeftButton); }

private slots:
    void initTestCase()
    {
        m_session = std::make_unique<TestSession>();
        m_msg = &m_session->messages;
        frmConts_select = new TfrmConts_select(*m_session->dm);
        frmAnalizaRegistruJurnal = new TfrmAnalizaRegistruJurnal(*m_session->dm);
        frmFisaDeContAnalitica = new TfrmFisaDeContAnalitica(*m_session->dm);

        PgTestServer::instance().exec(QStringLiteral(R"(
insert into tip_doc (tip_doc, den_tip_doc, jurnal) values ('FACT', 'Factura', 'J_TIP'), ('OP', 'Ordin', null);
insert into conts (conts, den_conts) values ('4111', 'Clienti'), ('5121', 'Banca'), ('4''1:x', 'Ciudat'),
  ('9999', 'Retras');
update conts set discontinued = true where conts = '9999';
insert into conta (conts, conta, moneda, den_conta) values
  ('4111', 'A', 'RON', 'Client A'), ('5121', 'B', 'RON', 'Banca B'), ('4''1:x', 'Q', 'RON', 'Q');
insert into conta_lang values ('4111', 'A', 'engleza', 'Customers'), ('5121', 'B', 'engleza', 'Bank');
insert into doc (data_doc, tip_doc, nr_doc, partener, emitent) values ('2024-01-15', 'FACT', '1', 'ACME', 'ION');
insert into reg_jurnal (data_reg_jurnal, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db,
                        val_mon_db, valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie) values
  ('2023-12-31', '2023-12-31', 'OP', '0', '4111', 'A', 'RON', 1000, 1000, '5121', 'B', 'RON', 1000, 'anterior'),
  ('2024-01-01', '2024-01-15', 'FACT', '1', '4111', 'A', 'RON', 100, 100, '5121', 'B', 'RON', 100, 'ian'),
  ('2024-02-29', '2024-02-29', 'OP', '2', '5121', 'B', 'RON', 40, 40, '4111', 'A', 'RON', 40, 'feb'),
  ('2024-03-31', '2024-03-31', 'OP', '3', '5121', 'B', 'RON', 2.5, 2.5, '4111', 'A', 'RON', 2.5, 'mar'),
  ('2024-04-01', '2024-04-01', 'OP', '4', '5121', 'B', 'RON', 7, 7, '4111', 'A', 'RON', 7, 'apr'),
  ('2024-05-10', '2024-05-10', 'OP', '5', '4''1:x', 'Q', 'RON', 3, 3, '5121', 'B', 'RON', 3, 'ciudat');
)"));
    }

    void cleanupTestCase()
    {
        delete frmFisaDeContAnalitica;
        delete frmAnalizaRegistruJurnal;
        delete frmConts_select;
        m_session.reset();
    }

    void registerRunAndGrid()
    {
        TfrmAnalizaRegistruJurnal *f = frmAnalizaRegistruJurnal;
        auto *from = f->dateEdit(QStringLiteral("cxDateEdit1"));
        auto *to = f->dateEdit(QStringLiteral("cxDateEdit2"));
        QVERIFY(from && to && from->isEmpty() && to->isEmpty());
        QCOMPARE(f->findChild<QPushButton *>(QStringLiteral("btnCauta"))->text(), QStringLiteral("Cauta"));
        QVERIFY(!f->findChild<QWidget *>(QStringLiteral("lblConta"))->isVisibleTo(f));

        // Checks: either editor empty.
        m_msg->clear();
        click(f);
        from->setDate(isoDate("2024-01-15"));
        click(f);
        QCOMPARE(m_msg->errors, QStringList(2, QStringLiteral("Alegeti Perioada Dorita!")));
        QVERIFY(!f->dsAnalizaRegistruJurnal->isActive());

        // 15.01-10.03: whole months on the server, the editors as typed.
        m_msg->clear();
        to->setDate(isoDate("2024-03-10"));
        click(f);
        QVERIFY(m_msg->all.isEmpty());
        QCOMPARE(f->dsAnalizaRegistruJurnal->param(QStringLiteral("pDataIncep")).toDate(), isoDate("2024-01-01"));
        QCOMPARE(f->dsAnalizaRegistruJurnal->param(QStringLiteral("pDataSf")).toDate(), isoDate("2024-03-31"));
        QCOMPARE(f->dsAnalizaRegistruJurnal->rowCount(), 3);
        QCOMPARE(from->date(), isoDate("2024-01-15"));
        QCOMPARE(to->date(), isoDate("2024-03-10"));
        QCOMPARE(to->text(), QStringLiteral("10.03.2024"));

        grid::GridModel *g = f->gridModel();
        QVERIFY(g->filterRowVisible() && g->footerVisible() && g->groupFootersVisible() && g->indicatorVisible());
        const int lei = g->columnIndex(QStringLiteral("valoare_lei"));
        QCOMPARE(g->footerValue(2).toDouble(), 142.5);
        QVERIFY(g->footerTextForColumn(lei).contains(QStringLiteral("142")));
        QVERIFY(!g->footerTextForColumn(g->columnIndex(QStringLiteral("val_mon_db"))).isEmpty());
        QVERIFY(!g->footerTextForColumn(g->columnIndex(QStringLiteral("val_mon_cr"))).isEmpty());
        QVERIFY(g->footerTextForColumn(g->columnIndex(QStringLiteral("conts_db"))).isEmpty());
        QVERIFY(f->styleButton());

        // Grouped by the document type, each group sums its own rows; a re-run keeps the grouping.
        g->groupByColumn(g->columnIndex(QStringLiteral("tip_doc")));
        click(f);
        QCOMPARE(g->groupColumns().size(), 1);
        QStringList groupSums;
        for (qsizetype r = 0; r < g->rowCount(); ++r)
            if (g->rowKind(r) == grid::RowKind::GroupFooter)
                groupSums << g->groupInfo(r).valueText + u'=' + QString::number(g->groupSummaryValue(r, 0).toDouble());
        QCOMPARE(groupSums, QStringList({u"FACT=100"_s, u"OP=42.5"_s}));
        g->clearGrouping();

        // A failed check keeps the previous result.
        from->clearDate();
        click(f);
        QCOMPARE(m_msg->errors, QStringList({QStringLiteral("Alegeti Perioada Dorita!")}));
        QCOMPARE(f->dsAnalizaRegistruJurnal->rowCount(), 3);

        // 20.02-05.02: the whole of February; a start month after the end month: nothing, silently.
        m_msg->clear();
        from->setDate(isoDate("2024-02-20"));
        to->setDate(isoDate("2024-02-05"));
        click(f);
        QCOMPARE(f->dsAnalizaRegistruJurnal->rowCount(), 1);
        from->setDate(isoDate("2024-04-01"));
        to->setDate(isoDate("2024-03-31"));
        click(f);
        QVERIFY(f->dsAnalizaRegistruJurnal->isActive());
        QCOMPARE(f->dsAnalizaRegistruJurnal->rowCount(), 0);
        QCOMPARE(g->rowCount(), 0);
        QVERIFY(m_msg->all.isEmpty());
    }

    void registerExports()
    {
        TfrmAnalizaRegistruJurnal *f = frmAnalizaRegistruJurnal;
        setPeriod(f, isoDate("2024-01-01"), isoDate("2024-03-01"));
        click(f);
        f->gridModel()->setFilterText(f->gridModel()->columnIndex(QStringLiteral("tip_doc")), QStringLiteral("OP"));
        m_msg->clear();
        ui::ScopedQueuedFileDialog dlg;
        const QString grid = docsFile(QStringLiteral("grid.csv"));
        const QString all = docsFile(QStringLiteral("all.csv"));
        dlg.answers << grid << all << QString();
        QTest::mouseClick(f->findChild<QPushButton *>(QStringLiteral("cxButton2")), Qt::LeftButton);
        QCOMPARE(f->statusText(), grid);
        QTest::mouseClick(f->findChild<QPushButton *>(QStringLiteral("cxButton3")), Qt::LeftButton);
        QCOMPARE(f->statusText(), all);
        QCOMPARE(m_msg->informations, QStringList(2, QStringLiteral("ok")));
        QVERIFY(m_msg->errors.isEmpty());
        // Cancelled: nothing changes.
        QTest::mouseClick(f->findChild<QPushButton *>(QStringLiteral("cxButton2")), Qt::LeftButton);
        QCOMPARE(f->statusText(), all);
        QCOMPARE(dlg.askedFilters, QStringList(3, QStringLiteral("*.csv")));
        for (const QString &n : dlg.askedNames)
            QCOMPARE(QFileInfo(n).fileName(), QStringLiteral("AnalizaRegistruJurnal.csv"));

        // The grid as filtered (two OP rows); all data in the query's field order.
        const QString g = readTextFile(grid);
        QVERIFY(g.contains(QStringLiteral("feb")) && g.contains(QStringLiteral("mar")));
        QVERIFY(!g.contains(QStringLiteral("ian")));
        QVERIFY(g.contains(u';'));
        const QString a = readTextFile(all);
        QVERIFY(a.contains(QStringLiteral("ian")) && a.contains(QStringLiteral("feb")));
        QVERIFY(a.section(u'\n', 0, 0).contains(QStringLiteral("data_inregistrare;data_reg_jurnal;data_doc")));
        f->gridModel()->clearAllFilters();
    }

    void sheetEditorsAndChecks()
    {
        TfrmFisaDeContAnalitica *f = frmFisaDeContAnalitica;
        auto *conts = f->buttonEdit(QStringLiteral("cxButtonEdit1"));
        auto *from = f->dateEdit(QStringLiteral("cxDateEdit1"));
        auto *to = f->dateEdit(QStringLiteral("cxDateEdit2"));
        QVERIFY(conts && from && to && conts->text().isEmpty() && from->isEmpty() && to->isEmpty());
        QVERIFY(f->findChild<QWidget *>(QStringLiteral("Shape1")));
        QVERIFY(!f->styleButton());

        // The dates snap as they change; an emptied editor stays empty.
        from->setDate(isoDate("2024-03-15"));
        to->setDate(isoDate("2024-05-10"));
        QCOMPARE(from->date(), isoDate("2024-03-01"));
        QCOMPARE(to->date(), isoDate("2024-05-31"));
        to->setText(QStringLiteral("10.02.2024"));
        to->commitText();
        QCOMPARE(to->date(), isoDate("2024-02-29"));
        to->clearDate();
        QVERIFY(to->isEmpty());
        QVERIFY(to->text().isEmpty());

        // The account first, then the period; nothing reaches data_list.
        auto &pg = PgTestServer::instance();
        pg.exec(QStringLiteral("delete from data_list; insert into data_list (data_incep, data_sf) values ('2020-01-01', '2020-01-31')"));
        from->clearDate();
        m_msg->clear();
        click(f);
        conts->setText(QStringLiteral("4111"));
        click(f);
        from->setDate(isoDate("2024-01-10"));
        click(f);
        QCOMPARE(m_msg->errors, QStringList({QStringLiteral("Alegeti Conts!"), QStringLiteral("Alegeti Perioada Dorita!"),
                                             QStringLiteral("Alegeti Perioada Dorita!")}));
        QCOMPARE(pg.scalar(QStringLiteral("select data_incep::text from data_list")).toString(), QStringLiteral("2020-01-01"));
        QVERIFY(!f->dsFisaContAnalitic->isActive());
    }

    void sheetRun()
    {
        TfrmFisaDeContAnalitica *f = frmFisaDeContAnalitica;
        auto &pg = PgTestServer::instance();
        auto *conts = f->buttonEdit(QStringLiteral("cxButtonEdit1"));
        setPeriod(f, isoDate("2024-01-20"), isoDate("2024-03-05"));
        conts->setText(QStringLiteral("4111"));

        // An empty data_list: the edit of the period row becomes an insert.
        pg.exec(QStringLiteral("delete from data_list"));
        m_msg->clear();
        click(f);
        QVERIFY(m_msg->all.isEmpty());
        QCOMPARE(pg.column(QStringLiteral("select data_incep::text || ' ' || data_sf::text from data_list")),
                 QVariantList({QStringLiteral("2024-01-01 2024-03-31")}));
        // The views saw that row: the opening balance holds December's entry.
        db::Query *q = f->dsFisaContAnalitic;
        QCOMPARE(q->param(QStringLiteral("pConts")).toString(), QStringLiteral("4111"));
        QCOMPARE(q->rowCount(), 4);
        QCOMPARE(q->value(0, q->fieldIndex(QStringLiteral("nr_doc"))).toString(), QStringLiteral("Sold Initial"));
        QCOMPARE(q->value(0, q->fieldIndex(QStringLiteral("sold_final"))).toDouble(), 1000.0);
        QCOMPARE(q->value(3, q->fieldIndex(QStringLiteral("sold_final"))).toDouble(), 1057.5);
        QCOMPARE(q->value(3, q->fieldIndex(QStringLiteral("data_sf"))).toDate(), isoDate("2024-03-31"));

        // The period row already there is edited in place, not duplicated.
        setPeriod(f, isoDate("2024-04-02"), isoDate("2024-04-02"));
        click(f);
        QCOMPARE(pg.column(QStringLiteral("select data_incep::text || ' ' || data_sf::text from data_list")),
                 QVariantList({QStringLiteral("2024-04-01 2024-04-30")}));
        QCOMPARE(q->rowCount(), 2);
        QCOMPARE(q->value(1, q->fieldIndex(QStringLiteral("tip_sold_final"))).toString(), QStringLiteral("DB"));

        // Grid: no filter row, footer or group footers; the issuer column reads "user".
        grid::GridModel *g = f->gridModel();
        QVERIFY(!g->filterRowVisible() && !g->footerVisible() && !g->groupFootersVisible());
        QVERIFY(g->footerSummaries().isEmpty() && g->groupSummaries().isEmpty());
        QCOMPARE(g->column(g->columnIndex(QStringLiteral("emitent"))).headerText(), QStringLiteral("user"));

        // Codes with a quote and a colon are values; an unknown code gives an empty grid.
        conts->setText(QStringLiteral("4'1:x"));
        setPeriod(f, isoDate("2024-05-01"), isoDate("2024-05-01"));
        click(f);
        QCOMPARE(q->rowCount(), 2);
        conts->setText(QStringLiteral("nu exista"));
        click(f);
        QCOMPARE(q->rowCount(), 0);
        QVERIFY(m_msg->all.isEmpty());
    }

    void sheetPickerAndExport()
    {
        TfrmFisaDeContAnalitica *f = frmFisaDeContAnalitica;
        auto *conts = f->buttonEdit(QStringLiteral("cxButtonEdit1"));
        conts->setText(QStringLiteral("x"));
        // Cancelled: the text stays. OK on the row of 5121: its code is put in.
        QTimer::singleShot(0, frmConts_select, [] { frmConts_select->reject(); });
        conts->clickButton();
        QCOMPARE(conts->text(), QStringLiteral("x"));
        QStringList offered;
        QTimer::singleShot(0, frmConts_select, [&offered] {
            db::Query *q = frmConts_select->pickerQuery();
            for (qsizetype r = 0; r < q->rowCount(); ++r)
                offered << q->value(r, q->fieldIndex(QStringLiteral("conts"))).toString();
            q->setCurrentRow(offered.indexOf(QStringLiteral("5121")));
            QTest::mouseClick(frmConts_select->btnOK, Qt::LeftButton);
        });
        conts->clickButton();
        QVERIFY(!offered.contains(QStringLiteral("9999")));
        QCOMPARE(conts->text(), QStringLiteral("5121"));

        // Export: the status bar names the file; no "ok" box; a cancel leaves all as it was.
        setPeriod(f, isoDate("2024-01-01"), isoDate("2024-01-31"));
        click(f);
        m_msg->clear();
        ui::ScopedQueuedFileDialog dlg;
        const QString path = docsFile(QStringLiteral("fisa.csv"));
        dlg.answers << path << QString();
        auto *btn = f->findChild<QPushButton *>(QStringLiteral("cxButton2"));
        QCOMPARE(btn->text(), QStringLiteral("Export csv"));
        QTest::mouseClick(btn, Qt::LeftButton);
        QCOMPARE(f->statusText(), QStringLiteral("fisier exportat: ") + path);
        QTest::mouseClick(btn, Qt::LeftButton);
        QCOMPARE(f->statusText(), QStringLiteral("fisier exportat: ") + path);
        QVERIFY(m_msg->all.isEmpty());
        QCOMPARE(QFileInfo(dlg.askedNames.value(0)).fileName(), QStringLiteral("FisaContAnalitic.csv"));
        const QString text = readTextFile(path);
        QVERIFY(text.contains(QStringLiteral("Sold Initial")) && text.contains(QStringLiteral("ACME")));
    }

    // The server drops the session between two runs: the next run reconnects
    // and succeeds without a word, for both ways the period travels.
    void droppedConnection()
    {
        m_msg->clear();
        QVERIFY(PgTestServer::instance().terminateOthers() >= 1);
        click(frmAnalizaRegistruJurnal);
        QVERIFY(frmAnalizaRegistruJurnal->dsAnalizaRegistruJurnal->isActive());
        PgTestServer::instance().terminateOthers();
        click(frmFisaDeContAnalitica);
        QVERIFY(m_msg->all.isEmpty());
        QVERIFY(frmFisaDeContAnalitica->dsFisaContAnalitic->rowCount() > 0);
    }
};

QTEST_MAIN(TestRegisterSheetForms)
#include "tst_registersheet_forms.moc"
