// The journal register and the analytic account sheet as the operator uses
// them: editors, checks and their messages, the period on its way to the
// server, the footers and the picker.

#include "session/u_dmQuarv.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testsession.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
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
insert into conts (conts, den_conts) values ('4111', 'Clienti'), ('5121', 'Banca'), ('9999', 'Retras');
update conts set discontinued = true where conts = '9999';
insert into conta (conts, conta, moneda, den_conta) values
  ('4111', 'A', 'RON', 'Client A'), ('5121', 'B', 'RON', 'Banca B');
insert into conta_lang values ('4111', 'A', 'engleza', 'Customers'), ('5121', 'B', 'engleza', 'Bank');
insert into doc (data_doc, tip_doc, nr_doc, partener, emitent) values ('2024-01-15', 'FACT', '1', 'ACME', 'ION');
insert into reg_jurnal (data_reg_jurnal, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db,
                        val_mon_db, valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie) values
  ('2023-12-31', '2023-12-31', 'OP', '0', '4111', 'A', 'RON', 1000, 1000, '5121', 'B', 'RON', 1000, 'anterior'),
  ('2024-01-01', '2024-01-15', 'FACT', '1', '4111', 'A', 'RON', 100, 100, '5121', 'B', 'RON', 100, 'ian'),
  ('2024-02-29', '2024-02-29', 'OP', '2', '5121', 'B', 'RON', 40, 40, '4111', 'A', 'RON', 40, 'feb'),
  ('2024-03-31', '2024-03-31', 'OP', '3', '5121', 'B', 'RON', 2.5, 2.5, '4111', 'A', 'RON', 2.5, 'mar'),
  ('2024-04-01', '2024-04-01', 'OP', '4', '5121', 'B', 'RON', 7, 7, '4111', 'A', 'RON', 7, 'apr');
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
        const int lei = g->columnIndex(QStringLiteral("valoare_lei"));
        QCOMPARE(g->footerValue(2).toDouble(), 142.5);
        QVERIFY(g->footerTextForColumn(lei).contains(QStringLiteral("142")));
        QVERIFY(!g->footerTextForColumn(g->columnIndex(QStringLiteral("val_mon_db"))).isEmpty());
        QVERIFY(!g->footerTextForColumn(g->columnIndex(QStringLiteral("val_mon_cr"))).isEmpty());
        QVERIFY(g->footerTextForColumn(g->columnIndex(QStringLiteral("conts_db"))).isEmpty());

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

    void sheetEditorsAndChecks()
    {
        TfrmFisaDeContAnalitica *f = frmFisaDeContAnalitica;
        auto *conts = f->buttonEdit(QStringLiteral("cxButtonEdit1"));
        auto *from = f->dateEdit(QStringLiteral("cxDateEdit1"));
        auto *to = f->dateEdit(QStringLiteral("cxDateEdit2"));
        QVERIFY(conts && from && to && conts->text().isEmpty() && from->isEmpty() && to->isEmpty());

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

        QVERIFY(m_msg->all.isEmpty());
    }

    void sheetPicker()
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
    }
};

QTEST_MAIN(TestRegisterSheetForms)
#include "tst_registersheet_forms.moc"
