// The six analyses over the ledger views as the operator uses them, on rows
// inserted for each case: the order of their checks and the message each case
// gets, where the period goes (the form's own period row or the session's,
// as chosen or as whole months), re-run versus open-only, the footers, the
// computed columns, exactness of large identifiers and milliseconds, and the
// exports read back.

#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaPostcalcul.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmVerifDecontTurism.h"
#include "session/u_dmQuarv.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testsession.h"
#include "tests/support/u_testfiles.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"
#include "analyses/u_platform.h"

#include <QFile>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kChoose = QStringLiteral("Alegeti Perioada Dorita!");
const QString kSelect = QStringLiteral("Selectati perioada dorita!");

// The text of the error a run raised; empty when it raised none.
QString errorOf(TReportForm *f)
{
    try {
        f->Cauta();
    } catch (const QuarvError &e) {
        return e.text();
    }
    return {};
}

} // namespace

class TestAnalysisForms : public QObject {
    Q_OBJECT
    std::unique_ptr<TestSession> m_session;
    ui::RecordingMessages *m_msg = nullptr;
    QString docs() const { return m_session->docs.path(); }
    QString docsFile(const QString &name) const { return m_session->docs.filePath(name); }
    PgTestServer *m_pg = nullptr;

    QString period() const
    {
        return m_pg->scalar(QStringLiteral("select data_incep || ' ' || coalesce(data_sf::text, '-') from data_list"))
            .toString();
    }
    void setStoredPeriod(const char *a, const char *b) const
    {
        m_pg->exec(QStringLiteral("delete from data_list; insert into data_list (data_incep, data_sf, moneda_raportare) "
                                  "values ('%1', '%2', 'EUR')")
                       .arg(QString::fromLatin1(a), QString::fromLatin1(b)));
    }
    static QString cell(TReportForm *f, qsizetype row, const char *field)
    {
        grid::GridModel *m = f->gridModel();
        return m->cellText(row, m->columnIndex(QString::fromLatin1(field)));
    }
    static QString footer(TReportForm *f, const char *field)
    {
        grid::GridModel *m = f->gridModel();
        return m->footerTextForColumn(m->columnIndex(QString::fromLatin1(field)));
    }

private slots:
    void initTestCase()
    {
        m_pg = &PgTestServer::instance();
        m_session = std::make_unique<TestSession>();
        m_msg = &m_session->messages;

        // Postings for the ledger views: March and April 2024, one line of
        // another type, budget chapters on one side only, a value holding a
        // tab, a quote and a line break.
        m_pg->exec(QStringLiteral(R"(
insert into tip_doc (tip_doc, den_tip_doc) values ('FactCI', 'Factura'), ('NIR', 'Receptie'), ('DecT', 'Decont');
insert into capitol_bugetar values ('C10', 'Venituri din vanzari'), ('C20', 'Stocuri');
insert into conts (conts, den_conts) values ('4111', 'Clienti'), ('707', 'Venituri'), ('371', 'Marfuri'), ('401', 'Furnizori');
insert into conta (conts, conta, den_conta, capitol_bugetar) values
  ('4111', 'A', 'Client A', null), ('707', 'V', 'Vanzari', 'C10'), ('371', 'M', 'Marfa', 'C20'), ('401', 'F', 'Furnizor', null);
insert into conta_lang values ('4111', 'A', 'engleza', 'Customers'), ('707', 'V', 'engleza', 'Sales');
insert into canal_vanzare values ('Online', 'Digital');
insert into doc (data_doc, tip_doc, nr_doc, partener, da_nu_validat_contabil) values
  ('2024-03-05', 'FactCI', '1', 'ACME', true), ('2024-03-20', 'NIR', '7', 'Furn', false),
  ('2024-04-02', 'FactCI', '2', 'ACME', false);
insert into doc_poz (data_doc, tip_doc, nr_doc, scv, articol, canal_vanzare, tara_vanzare) values
  ('2024-03-05', 'FactCI', '1', 1, 'Paine', 'Online', 'ROU'), ('2024-03-20', 'NIR', '7', 1, 'Faina', 'Online', 'ROU'),
  ('2024-04-02', 'FactCI', '2', 1, 'Paine', null, null);
insert into doc_contare (data_doc, tip_doc, nr_doc, scv, scv_contare, conts, conta, conts_coresp, conta_coresp, moneda,
                         moneda_coresp, valoare, valoare_lei, valoare_coresp, deb_cred, data_contare, explicatie, partener,
                         reprezentind) values
  ('2024-03-05', 'FactCI', '1', 1, 1, '4111', 'A', '707', 'V', 'RON', 'RON', 1000, 1000, 1000, 'D', '2024-03-05',
   'vanzare', 'ACME', E'vanzare\t"paine"\nsi cozonac'),
  ('2024-03-05', 'FactCI', '1', 1, 2, '707', 'V', '4111', 'A', 'RON', 'RON', 1000, 1000, 1000, 'C', '2024-03-05', 'vanzare', 'ACME', null),
  ('2024-03-20', 'NIR', '7', 1, 1, '371', 'M', '401', 'F', 'RON', 'RON', 234.5, 234.5, 234.5, 'D', '2024-03-20', 'receptie', 'Furn', null),
  ('2024-04-02', 'FactCI', '2', 1, 1, '4111', 'A', '707', 'V', 'RON', 'RON', 50, 50, 50, 'D', '2024-04-02', 'aprilie', 'ACME', null);
)"));
        // The post-calculation family over a ledger whose kinds and values the
        // tests choose (the view reads its period from data_list as the real one).
        m_pg->exec(QStringLiteral(R"(
create table postc_fix as select * from view_postc_rulaj_det where false;
alter table postc_fix drop column data_incep, drop column data_sf;
drop view view_postc_rulaj_det;
create view view_postc_rulaj_det as
  select p.*, per.data_incep, per.data_sf
  from postc_fix p cross join (select data_incep, data_sf from data_list limit 1) per
  where p.data_doc between per.data_incep and per.data_sf;
insert into emitent (emitent, loc) values ('E1', '09.01');
insert into obiect_urm_chelt (nr_obiect, tip_obiect_urm_chelt, tip_obiect_urm_chelt_grupa, tip_obiect_urm_chelt_subgrupa, partener)
  values ('A-B-C', 'Utilaj', 'Productie', 'Cuptoare', null), ('OB1', 'Client', 'Vanzari', 'Retail', 'ACME');
insert into postc_fix (data_doc, tip_doc, nr_doc, scv, com_int, loc, nr_obiect, tip_obiect_urm_chelt, articol,
                       detaliu_articol, explicatie, chelt_ven, valoare_lei, emitent_doc, cant) values
  ('2024-01-20', 'NIR', '1', 1, 'CMD1', '01.02', 'A-B-C', 'Utilaj', 'Faina', 'alba', 'e1', 'Alte Cheltuieli', 100, 'E1', 2),
  ('2024-03-02', 'FACT', '2', 1, 'CMD1', null, 'OB1', 'Client', 'Paine', null, 'Fara detaliu', 'Venituri', 40, 'E1', null),
  ('2024-04-02', 'FACT', '6', 1, 'CMD1', null, null, null, null, null, E'tab\t"ghilimele"\nrand', 'Venituri', 1, 'E1', null),
  ('2024-03-05', 'NIR', '3', 1, 'CMD2', '01.02', null, null, null, null, null, 'cheltuieli mici', 7, 'E1', null),
  ('2024-03-06', 'NIR', '4', 1, 'CMD2', '01.02', 'OB1', 'Client', 'Sare', 'fina', 'e4', 'Neutru', 5, 'E1', null),
  ('2024-03-07', 'NIR', '5', 1, 'CMD2', '01.02', 'OB1', 'Client', 'Apa', 'plata', 'e5', 'Cheltuieli', null, 'E1', null);
)"));
    }

    void cleanupTestCase()
    {
        m_session.reset();
    }

    void init()
    {
        m_msg->clear();
        // Each report shows whether it opens the session's period row.
        m_session->dm->dsDataList->close();
    }

    // The detailed analysis: snapping on exit, its own period row written as
    // the editors hold it, the view re-run, closing empties the grid.
    void detailedAnalysis()
    {
        TfrmAnalizaContabilaDetaliata f(*m_session->dm);
        f.show();
        const QDate t = QDate::currentDate();
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit1")), QDate(t.year(), t.month(), 1));
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit2")), QDate(t.year(), t.month(), t.daysInMonth()));

        ui::DateEdit *from = f.dateEdit(QStringLiteral("cxDateEdit1"));
        ui::DateEdit *to = f.dateEdit(QStringLiteral("cxDateEdit2"));
        from->setDate(isoDate("2024-03-17"));
        emit from->exited();
        to->setDate(isoDate("2024-02-05"));
        emit to->exited();
        QCOMPARE(from->date(), isoDate("2024-03-01"));
        QCOMPARE(to->date(), isoDate("2024-02-29"));
        to->clearDate();
        emit to->exited();
        QVERIFY(to->isEmpty());

        setStoredPeriod("2000-01-01", "2000-01-31");
        QCOMPARE(errorOf(&f), kSelect);
        QCOMPARE(period(), QStringLiteral("2000-01-01 2000-01-31"));

        // A start after the end is written as it stands; the view finds nothing.
        setPeriod(&f, isoDate("2024-04-30"), isoDate("2024-04-01"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-04-30 2024-04-01"));
        QCOMPARE(f.gridModel()->recordCount(), 0);
        QCOMPARE(footer(&f, "valoare_lei"), QStringLiteral("0"));
        // The form's own period row, closed again; the other columns kept; the session's untouched.
        QVERIFY(f.ownDataList() && !f.ownDataList()->isActive());
        QVERIFY(!m_session->dm->dsDataList->isActive());
        QCOMPARE(m_pg->scalar(QStringLiteral("select moneda_raportare from data_list")).toString(), QStringLiteral("EUR"));

        setPeriod(&f, isoDate("2024-03-01"), isoDate("2024-03-31"));
        f.Cauta();
        QCOMPARE(f.gridModel()->recordCount(), 3);
        QCOMPARE(footer(&f, "valoare_lei"), QStringLiteral("2234.5"));
        QCOMPARE(f.gridModel()->footerValue(0), QVariant()); // val_mon_cr: no such field
        QVERIFY(!QGuiApplication::overrideCursor());

        // A second run re-reads the view.
        setPeriod(&f, isoDate("2024-04-01"), isoDate("2024-04-30"));
        f.Cauta();
        QCOMPARE(f.gridModel()->recordCount(), 1);
        QCOMPARE(cell(&f, 0, "explicatie"), QStringLiteral("aprilie"));

        // An empty data_list gets its row.
        m_pg->exec(QStringLiteral("delete from data_list"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-04-01 2024-04-30"));

        // A view that fails: its message, the cursor back, the period already written.
        m_pg->exec(QStringLiteral("alter view view_contab_det rename to view_contab_det_x"));
        setPeriod(&f, isoDate("2024-03-01"), isoDate("2024-03-31"));
        QVERIFY_THROWS_EXCEPTION(QuarvError, f.Cauta());
        m_pg->exec(QStringLiteral("alter view view_contab_det_x rename to view_contab_det"));
        QVERIFY(!QGuiApplication::overrideCursor());
        QCOMPARE(period(), QStringLiteral("2024-03-01 2024-03-31"));

        // Closing the form closes the query: the next showing starts empty.
        f.close();
        QVERIFY(!f.query()->isActive());
        QCOMPARE(f.gridModel()->recordCount(), 0);
    }

    // Accounting of documents: the month test first as a plain box, the month
    // through the session's period row, the query only opened.
    void documentPostings()
    {
        TfrmContareDocumente f(*m_session->dm);
        f.show();
        QVERIFY(f.dateEdit(QStringLiteral("cxDateEdit1"))->isEmpty());
        QVERIFY(!f.findChild<QWidget *>(QStringLiteral("lblConta"))->isVisibleTo(&f));
        setStoredPeriod("2000-01-01", "2000-01-31");

        // One empty editor, other months, other years: the box, a silent stop.
        f.dateEdit(QStringLiteral("cxDateEdit2"))->setDate(isoDate("2024-05-03"));
        f.Cauta();
        setPeriod(&f, isoDate("2024-05-31"), isoDate("2024-06-01"));
        f.Cauta();
        setPeriod(&f, isoDate("2023-05-10"), isoDate("2024-05-20"));
        f.Cauta();
        QCOMPARE(m_msg->informations, QStringList(3, rep::sameMonthText()));
        QVERIFY(m_msg->errors.isEmpty());
        // Both empty pass the month test and meet the empty one.
        setPeriod(&f, {}, {});
        QCOMPARE(errorOf(&f), kChoose);
        QCOMPARE(period(), QStringLiteral("2000-01-01 2000-01-31"));

        setPeriod(&f, isoDate("2024-03-03"), isoDate("2024-03-28"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-03-01 2024-03-31"));
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit1")), isoDate("2024-03-03"));
        QVERIFY(m_session->dm->dsDataList->isActive()); // the session's row, left open
        QCOMPARE(f.gridModel()->recordCount(), 3);

        // Ordered by account pair; channel and chapter columns.
        QCOMPARE(cell(&f, 0, "conts"), QStringLiteral("371"));
        QCOMPARE(f.gridModel()->column(0).headerText(), QStringLiteral("conts_db"));
        const qsizetype fact = 1; // 4111/A against 707/V
        QCOMPARE(cell(&f, fact, "canal_vanzare"), QStringLiteral("Online"));
        QCOMPARE(cell(&f, fact, "gr_canal_vanzare"), QStringLiteral("Digital"));
        QCOMPARE(cell(&f, fact, "capitol_bugetar"), QStringLiteral("C10")); // the corresponding account's
        QCOMPARE(cell(&f, fact, "cont_db_ext"), QString());
        QCOMPARE(cell(&f, fact, "traducere_engleza"), QStringLiteral("Customers=Sales -FactCI 1/2024-03-05 ACME"));
        QCOMPARE(cell(&f, 0, "canal_vanzare"), QString()); // a 'NIR' line has no channel
        QCOMPARE(footer(&f, "valoare_lei"), QStringLiteral("2,234.50"));
        QCOMPARE(footer(&f, "valoare_coresp"), QStringLiteral("2,234.50"));

        // A second run with another month writes the period but keeps the rows, also after closing.
        f.close();
        f.show();
        setPeriod(&f, isoDate("2024-04-01"), isoDate("2024-04-30"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-04-01 2024-04-30"));
        QCOMPARE(f.gridModel()->recordCount(), 3);

        // Tab text with a tab, a quote and a line break inside a value; the workbook typed.
        ui::ScopedQueuedFileDialog dlg;
        const QString c = docsFile(QStringLiteral("c.csv")), x = docsFile(QStringLiteral("d.xlsx"));
        dlg.answers << c << x;
        f.exportButton(rep::ExportKind::GridText)->click();
        f.exportButton(rep::ExportKind::GridXlsx)->click();
        QCOMPARE(dlg.askedNames, QStringList({docs() + QStringLiteral("/ContareDocumente.csv"),
                                              docs() + QStringLiteral("/ContareDocumente.xlsx")}));
        QCOMPARE(dlg.askedFilters, QStringList({QStringLiteral("*.csv"), QStringLiteral("*.xlsx")}));
        const QString text = readTextFile(c);
        QVERIFY2(text.startsWith(QStringLiteral("\"conts_db\"\t\"conta_db\"\t\"conts_cr\"")), qPrintable(text.left(80)));
        // Inside its quotes the value keeps its tab and line break; its quotes are doubled.
        QVERIFY(text.contains(QStringLiteral("\t\"vanzare\t\"\"paine\"\"\nsi cozonac\"\t")));
        QVERIFY(m_msg->errors.isEmpty());
        const Unzipped z(x);
        const QByteArray sheet = z.entry("xl/worksheets/sheet1.xml");
        QVERIFY(sheet.contains("<v>1000</v>")); // valoare_lei typed
        QVERIFY(z.entry("xl/styles.xml").contains("dd.mm.yyyy")); // dates typed, with their format
    }

    // Expenses and revenues by order: the month test as an error, then the
    // empty test; the month as a whole; the object number in parts.
    void ordersExpensesRevenues()
    {
        TfrmCheltVenPeComenziFaraRegii o(*m_session->dm);
        setStoredPeriod("2000-01-01", "2000-01-31");
        o.dateEdit(QStringLiteral("cxDateEdit2"))->setDate(isoDate("2024-03-20"));
        QCOMPARE(errorOf(&o), rep::sameMonthText());
        setPeriod(&o, {}, {});
        QCOMPARE(errorOf(&o), kChoose);
        setPeriod(&o, isoDate("2024-01-31"), isoDate("2024-02-01"));
        QCOMPARE(errorOf(&o), rep::sameMonthText());
        setPeriod(&o, isoDate("2024-03-01"), isoDate("2025-03-01"));
        QCOMPARE(errorOf(&o), rep::sameMonthText());
        QVERIFY(m_msg->informations.isEmpty());
        QCOMPARE(period(), QStringLiteral("2000-01-01 2000-01-31"));

        // The days picked do not narrow the month.
        setPeriod(&o, isoDate("2024-03-15"), isoDate("2024-03-20"));
        o.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-03-01 2024-03-31"));
        QCOMPARE(o.gridModel()->recordCount(), 4);
        QVERIFY(m_session->dm->dsDataList->isActive());
        QVERIFY(!QGuiApplication::overrideCursor());
        QCOMPARE(cell(&o, 0, "nr_obiect_1"), QStringLiteral("OB1"));
        QCOMPARE(cell(&o, 0, "nr_obiect_2"), QString());
        QCOMPARE(footer(&o, "valoare_lei"), QStringLiteral("52.00"));
        QCOMPARE(o.gridModel()->footerValue(0), QVariant()); // valoare: not a field of the query

        // January's line: three parts, the third left out; a month without rows.
        setPeriod(&o, isoDate("2024-01-01"), isoDate("2024-01-31"));
        o.Cauta();
        QCOMPARE(cell(&o, 0, "nr_obiect_1"), QStringLiteral("A"));
        QCOMPARE(cell(&o, 0, "nr_obiect_2"), QStringLiteral("B"));
        setPeriod(&o, isoDate("2024-02-01"), isoDate("2024-02-29"));
        o.Cauta();
        QCOMPARE(o.gridModel()->recordCount(), 0);
        QCOMPARE(footer(&o, "valoare_lei"), QStringLiteral("0.00"));

        // A failing view: the cursor back, the query closed, the grid empty.
        m_pg->exec(QStringLiteral("alter view view_postc_rulaj_det rename to v_x"));
        setPeriod(&o, isoDate("2024-03-01"), isoDate("2024-03-31"));
        QVERIFY(!errorOf(&o).isEmpty());
        m_pg->exec(QStringLiteral("alter view v_x rename to view_postc_rulaj_det"));
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(!o.query()->isActive());

    }

    // Profitability: whole months over a span, no month test, the query only opened.
    void profitability()
    {
        TfrmAnaliza_Profitabilitate p(*m_session->dm);
        p.dateEdit(QStringLiteral("cxDateEdit1"))->setDate(isoDate("2024-01-15"));
        QCOMPARE(errorOf(&p), kChoose);
        setPeriod(&p, isoDate("2024-01-15"), isoDate("2024-03-10"));
        m_session->dm->dsDataList->close();
        p.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-01-01 2024-03-31"));
        QVERIFY(m_session->dm->dsDataList->isActive());
        QCOMPARE(p.gridModel()->recordCount(), 5);
        QCOMPARE(footer(&p, "valoare_lei"), QStringLiteral("152"));
        setPeriod(&p, isoDate("2024-02-10"), isoDate("2024-02-05"));
        p.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-02-01 2024-02-29"));
        QCOMPARE(p.gridModel()->recordCount(), 5); // the grid keeps the first result
    }

    // Post-calculation, built by hand (the program never creates it): the
    // object, article and place shown, expenses told from revenues.
    void postCalculation()
    {
        QCOMPARE(frmAnalizaPostcalcul, nullptr);
        TfrmAnalizaPostcalcul a(*m_session->dm);
        m_session->dm->dsDataList->close();
        setPeriod(&a, isoDate("2024-03-01"), isoDate("2024-03-31"));
        a.Cauta();
        QVERIFY(m_session->dm->dsDataList->isActive());
        QCOMPARE(period(), QStringLiteral("2024-03-01 2024-03-31"));
        grid::GridModel *m = a.gridModel();
        QCOMPARE(m->recordCount(), 4);
        // Ordered by object type: the line without object ("-") first.
        QCOMPARE(cell(&a, 0, "nr_obiect"), QStringLiteral("-"));
        QCOMPARE(cell(&a, 0, "tip_obiect_urm_chelt"), QStringLiteral("-"));
        QCOMPARE(cell(&a, 0, "tip_obiect_urm_chelt_grupa"), QString());
        QCOMPARE(m->cellValue(0, m->columnIndex(QStringLiteral("da_nu_propriu"))), QVariant(true));
        QCOMPARE(cell(&a, 0, "articol"), QStringLiteral("-fara art/explic"));
        QCOMPARE(cell(&a, 0, "loc"), QStringLiteral("01.02"));
        // "cheltuieli mici": lower case is not "Cheltuieli", so revenue in the profit only.
        auto money = [&](qsizetype row) {
            return QStringList{cell(&a, row, "val_cheltuiala"), cell(&a, row, "val_venit"), cell(&a, row, "val_profit")};
        };
        QCOMPARE(money(0), QStringList({QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("7")}));
        // The rows of object OB1, by article: Apa (null value), Paine (revenue), Sare (neither word).
        QCOMPARE(cell(&a, 1, "articol"), QStringLiteral("Apa plata"));
        QCOMPARE(money(1), QStringList({QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("0")}));
        QCOMPARE(cell(&a, 2, "articol"), QStringLiteral("Fara detaliu")); // no detail: the explanation
        QCOMPARE(money(2), QStringList({QStringLiteral("0"), QStringLiteral("40"), QStringLiteral("40")}));
        QCOMPARE(money(3), QStringList({QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("5")}));
        QCOMPARE(m->cellValue(2, m->columnIndex(QStringLiteral("da_nu_propriu"))), QVariant(false));
        QCOMPARE(cell(&a, 2, "loc"), QStringLiteral("09.01")); // the issuer's place
        // "Alte Cheltuieli" contains the word not at its start: an expense.
        setPeriod(&a, isoDate("2024-01-01"), isoDate("2024-01-31"));
        a.Cauta();
        QCOMPARE(money(0), QStringList({QStringLiteral("100"), QStringLiteral("0"), QStringLiteral("-100")}));
        QCOMPARE(m->cellValue(0, m->columnIndex(QStringLiteral("da_nu_propriu"))), QVariant(true)); // no partner
        for (int c = 0; c < m->columnCount(); ++c)
            QVERIFY(m->footerTextForColumn(c).isEmpty());
    }

    // Tourism settlements: dates reset when the form becomes visible, the
    // month test first, the dates written exactly, identifiers and
    // milliseconds exact on screen and in the workbook.
    void tourismCheck()
    {
        m_pg->exec(QStringLiteral(R"(
insert into comanda (com_int, gr_com_int, data_confirmare_decont) values
  ('T2', 'Turism extern', '2024-05-02 12:34:56.789'), ('T1', 'Turism intern', null), ('X1', 'Productie', null);
insert into articol (articol, da_nu_servicii_turism, proc_comision_articol) values ('Pachet', true, 7), ('Cazare', true, 0);
insert into doc (data_doc, tip_doc, nr_doc, partener, doc_id_ext, data_crono) values
  ('2024-05-06', 'FactCI', '11', 'Client T', 9007199254740993, '2024-05-06 08:00:00.125'),
  ('2024-05-05', 'NIR', '12', 'Hotel', 12, '2024-05-05 09:00:00'),
  ('2024-05-13', 'FactCI', '13', 'Client T', 13, null),
  ('2024-05-07', 'FactCI', '14', 'Client X', 14, null);
insert into doc_poz (data_doc, tip_doc, nr_doc, scv, articol, com_int, chelt_ven, valoare, valoare_lei, proc_tva,
                     moneda, doc_poz_id_ext) values
  ('2024-05-06', 'FactCI', '11', 1, 'Pachet', 'T2', 'Venituri', 500, 500, 19, 'RON', 9007199254740993),
  ('2024-05-05', 'NIR', '12', 1, 'Cazare', 'T2', 'Cheltuieli', 100, 497, 0, 'EUR', 2),
  ('2024-05-05', 'NIR', '12', 2, 'Cazare', 'T1', 'Cheltuieli', 50, 248.5, 9, 'EUR', 3),
  ('2024-05-13', 'FactCI', '13', 1, 'Pachet', 'T1', 'Venituri', 300, 300, 19, 'RON', 4),
  ('2024-05-07', 'FactCI', '14', 1, 'Pachet', 'X1', 'Venituri', 1, 1, 19, 'RON', 5);
)"));
        TfrmVerifDecontTurism f(*m_session->dm);
        const QDate t = QDate::currentDate();
        const QDate first(t.year(), t.month(), 1), last(t.year(), t.month(), t.daysInMonth());

        // Reset each time it becomes visible, not when only brought to the front.
        f.show();
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit1")), first);
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit2")), last);
        setPeriod(&f, isoDate("2024-05-05"), isoDate("2024-05-12"));
        f.show();
        f.raise();
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit1")), isoDate("2024-05-05"));
        f.close();
        f.show();
        QCOMPARE(f.editorDate(QStringLiteral("cxDateEdit2")), last);

        // The order of the checks and their wording.
        setStoredPeriod("2000-01-01", "2000-01-31");
        f.dateEdit(QStringLiteral("cxDateEdit1"))->clearDate();
        QCOMPARE(errorOf(&f), rep::sameMonthText());
        setPeriod(&f, {}, {});
        QCOMPARE(errorOf(&f), kSelect);
        setPeriod(&f, isoDate("2024-04-28"), isoDate("2024-05-03"));
        QCOMPARE(errorOf(&f), rep::sameMonthText());
        QCOMPARE(period(), QStringLiteral("2000-01-01 2000-01-31"));

        // Exactly the dates chosen; ordered by settlement, type, date, number.
        setPeriod(&f, isoDate("2024-05-05"), isoDate("2024-05-12"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-05-05 2024-05-12"));
        QVERIFY(!f.ownDataList()->isActive());
        QVERIFY(!m_session->dm->dsDataList->isActive()); // its own row, not the session's
        QVERIFY(!QGuiApplication::overrideCursor());
        grid::GridModel *m = f.gridModel();
        QCOMPARE(m->recordCount(), 3);
        QCOMPARE(m->column(0).headerText(), QStringLiteral("decont"));
        QCOMPARE(cell(&f, 0, "com_int"), QStringLiteral("T1"));
        QCOMPARE(cell(&f, 1, "tip_doc"), QStringLiteral("FactCI"));
        QCOMPARE(cell(&f, 2, "tip_doc"), QStringLiteral("NIR"));
        QCOMPARE(cell(&f, 1, "doc_poz_id_ext"), QStringLiteral("9007199254740993"));
        QCOMPARE(cell(&f, 1, "doc_id_ext"), QStringLiteral("9007199254740993"));
        QCOMPARE(cell(&f, 1, "data_crono"), QStringLiteral("06.05.2024 08:00:00.125"));
        QCOMPARE(cell(&f, 1, "data_confirmare_decont"), QStringLiteral("02.05.2024 12:34:56.789"));
        QCOMPARE(cell(&f, 2, "data_crono"), QStringLiteral("05.05.2024 09:00:00"));
        for (qsizetype r = 0; r < 3; ++r)
            QCOMPARE(cell(&f, r, "eroare"), QString());
        QCOMPARE(footer(&f, "valoare_lei"), QStringLiteral("1245.5"));
        QVERIFY(f.statusBar() && f.statusText().isEmpty());

        // The workbook keeps the identifier's digits and the milliseconds.
        ui::ScopedQueuedFileDialog dlg;
        dlg.answers << docsFile(QStringLiteral("t.xlsx"));
        f.exportButton(rep::ExportKind::GridXlsx)->click();
        QCOMPARE(dlg.askedNames, QStringList{docs() + QStringLiteral("/VerifDecontTurism.xlsx")});
        const Unzipped z(docsFile(QStringLiteral("t.xlsx")));
        const QByteArray cells = z.entry("xl/worksheets/sheet1.xml") + z.entry("xl/sharedStrings.xml");
        QVERIFY(cells.contains("9007199254740993"));
        QVERIFY(!cells.contains("9007199254740992"));
        const QByteArray styles = z.entry("xl/styles.xml");
        QVERIFY(styles.contains("formatCode=\"dd.mm.yyyy hh:mm:ss.000\"")); // 08:00:00.125
        QVERIFY(styles.contains("formatCode=\"dd.mm.yyyy hh:mm:ss\""));     // 09:00:00
        QVERIFY(f.statusText().isEmpty());

        // Start after end inside the month: written reversed, nothing found, a zero footer.
        setPeriod(&f, isoDate("2024-05-12"), isoDate("2024-05-05"));
        f.Cauta();
        QCOMPARE(period(), QStringLiteral("2024-05-12 2024-05-05"));
        QCOMPARE(m->recordCount(), 0);
        QCOMPARE(footer(&f, "valoare_lei"), QStringLiteral("0"));
        QCOMPARE(f.gridModel()->footerValue(0), QVariant());

        // An open result is re-run.
        setPeriod(&f, isoDate("2024-05-01"), isoDate("2024-05-31"));
        f.Cauta();
        QCOMPARE(m->recordCount(), 4);
    }
};

QTEST_MAIN(TestAnalysisForms)
#include "tst_analysisforms.moc"
