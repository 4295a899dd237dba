// The demo books: the generator loads, the register balances, balances
// carry from one period to the next through the views, the analyses' SQL
// runs on them, and every month gives the one-month analyses rows of every
// kind they tell apart.

#include "db/u_error.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/support/u_pgtestserver.h"

#include <QFile>
#include <QtTest>

namespace {

QString readSource(const char *rel)
{
    QFile f(QStringLiteral(QUARV_SOURCE_DIR "/") + QLatin1String(rel));
    if (!f.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", rel);
    return QString::fromUtf8(f.readAll());
}

PgTestServer &pg() { return PgTestServer::instance(); }

void setPeriod(const char *from, const char *to)
{
    pg().exec(QStringLiteral("update data_list set data_incep = date '%1', data_sf = date '%2'")
                  .arg(QLatin1String(from), QLatin1String(to)));
}

int count(const QString &sql) { return pg().scalar(sql).toInt(); }

// Signed closing balance (debit positive) per analytic account for the
// period in data_list: opening balance plus the period's turnover.
const char *const kClosing =
    "select conts, conta,"
    "       round(sum(net)::numeric, 2) as net, round(sum(net_lei)::numeric, 2) as net_lei"
    " from (select conts, conta, sold_db - sold_cr as net, sold_db_lei - sold_cr_lei as net_lei"
    "       from view_conta_sold_per_incep"
    "       union all"
    "       select conts, conta, coalesce(valoare_db, 0) - coalesce(valoare_cr, 0),"
    "              coalesce(valoare_db_lei, 0) - coalesce(valoare_cr_lei, 0)"
    "       from view_contab_rulaj_reg_per) as m"
    " group by conts, conta";

// The months of the demo period for which monthsSql (one column: the first
// day of each month that has what is looked for) gives nothing, as
// "YYYY-MM YYYY-MM ..."; empty when every month has it.
QString monthsWithout(const QString &monthsSql)
{
    setPeriod("2025-01-01", "2026-11-30");
    return pg().scalar(QStringLiteral(
                           "select coalesce(string_agg(to_char(m, 'YYYY-MM'), ' ' order by m), '')"
                           " from generate_series(date '2025-01-01', date '2026-11-01', interval '1 month') as m"
                           " where m::date not in (select d::date from (%1) as s(d))")
                           .arg(monthsSql))
        .toString();
}

const char *const kOpening =
    "select conts, conta, round((sold_db - sold_cr)::numeric, 2) as net,"
    "       round((sold_db_lei - sold_cr_lei)::numeric, 2) as net_lei"
    " from view_conta_sold_per_incep";

} // namespace

class TestDemoData : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void registerBalances();
    void balancesCarryOver();
    void accountSheetRuns();
    void journalRegisterRuns();
    // Every month of the demo feeds the analyses that work on one month.
    void documentAccountingEveryMonth();
    void postCalculationEveryMonth();
    void tourismSettlementsEveryMonth();
    void generationIsDeterministic();
};

void TestDemoData::initTestCase()
{
    try {
        pg().exec(readSource("demo/data.sql"));
        QVERIFY(pg().scalar(QStringLiteral("select demo_generate(1)")).toInt() > 5000);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::registerBalances()
{
    // One balanced entry per posting carried to the books.
    const int entries = count(QStringLiteral("select count(*) from reg_jurnal"));
    QVERIFY(entries > 5000);
    QCOMPARE(count(QStringLiteral("select count(*) from doc_contare where da_nu_contare")), entries);
    QVERIFY(count(QStringLiteral("select count(*) from doc_contare where not da_nu_contare")) > 0);

    // Each side's currency amount is the lei value (lei accounts) or converts
    // to it at the entry's rate (euro accounts).
    QCOMPARE(count(QStringLiteral(
                 "select count(*) from reg_jurnal where not ("
                 " valoare_lei > 0"
                 " and case when moneda_db = 'RON' then val_mon_db = valoare_lei"
                 "          else abs(val_mon_db * curs - valoare_lei) <= 0.01 end"
                 " and case when moneda_cr = 'RON' then val_mon_cr = valoare_lei"
                 "          else abs(val_mon_cr * curs - valoare_lei) <= 0.01 end)")),
             0);
    QVERIFY(count(QStringLiteral("select count(*) from reg_jurnal where moneda_db = 'EUR' or moneda_cr = 'EUR'")) > 50);
    // Every account used exists, with the currency the entry carries.
    QCOMPARE(count(QStringLiteral(
                 "select count(*) from reg_jurnal r where not exists (select 1 from conta a"
                 " where a.conts = r.conts_db and a.conta = r.conta_db and a.moneda = r.moneda_db)"
                 " or not exists (select 1 from conta a"
                 " where a.conts = r.conts_cr and a.conta = r.conta_cr and a.moneda = r.moneda_cr)")),
             0);

    // The opening balances balance, and so does the trial balance in lei.
    QCOMPARE(pg().scalar(QStringLiteral(
                 "select round(sum(sold_db_lei - sold_cr_lei)::numeric, 2) from conta_sold_initial")).toString(),
             QStringLiteral("0.00"));
    setPeriod("2025-01-01", "2026-11-30");
    QCOMPARE(pg().scalar(QStringLiteral("select sum(net_lei) from (%1) as c").arg(QLatin1String(kClosing))).toString(),
             QStringLiteral("0.00"));
}

void TestDemoData::balancesCarryOver()
{
    try {
        // Closing of the first half of 2025 = opening of the second half.
        setPeriod("2025-01-01", "2025-06-30");
        pg().exec(QStringLiteral("create table t_closing as %1")
                      .arg(QLatin1String(kClosing)));
        QVERIFY(count(QStringLiteral("select count(*) from t_closing where net_lei <> 0")) >= 15);
        QVERIFY(count(QStringLiteral("select count(*) from t_closing where conta = '4111.02' and net <> net_lei")) == 1);

        setPeriod("2025-07-01", "2025-12-31");
        QCOMPARE(pg().column(QStringLiteral("select distinct data_incep || ' ' || data_sf from view_conta_sold_per_incep")),
                 QVariantList{QStringLiteral("2025-07-01 2025-12-31")});
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from t_closing c full join (%1) as o using (conts, conta)"
                     " where coalesce(c.net, 0) <> coalesce(o.net, 0) or coalesce(c.net_lei, 0) <> coalesce(o.net_lei, 0)")
                           .arg(QLatin1String(kOpening))),
                 0);

        // The register views keep to the period in data_list.
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from view_contab_rulaj_reg_per"
                     " where data_reg_jurnal not between date '2025-07-01' and date '2025-12-31'")),
                 0);
        QCOMPARE(count(QStringLiteral("select count(*) from view_contab_rulaj_reg_per")),
                 2 * count(QStringLiteral("select count(*) from reg_jurnal"
                                          " where data_reg_jurnal between date '2025-07-01' and date '2025-12-31'")));
        QCOMPARE(count(QStringLiteral("select count(*) from view_contab_det")),
                 count(QStringLiteral("select count(*) from doc_contare"
                                      " where data_doc between date '2025-07-01' and date '2025-12-31'")));
        QVERIFY(count(QStringLiteral("select count(*) from view_postc_rulaj_det")) > 0);
        QVERIFY(count(QStringLiteral("select count(*) from view_verif_tva_inclus")) > 0);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::accountSheetRuns()
{
    try {
        setPeriod("2026-04-01", "2026-06-30");
        pg().exec(QStringLiteral("create table t_next as %1").arg(QLatin1String(kOpening)));
        setPeriod("2026-01-01", "2026-03-31");
        QString sql = rep::FisaDeContAnalitica::sql();
        sql.replace(QStringLiteral(":pConts"), QStringLiteral("'4111'"));
        pg().exec(QStringLiteral("create table t_fisa as ") + sql);

        QVERIFY(count(QStringLiteral("select count(*) from t_fisa")) > 100);
        QCOMPARE(pg().column(QStringLiteral("select distinct conts from t_fisa")), QVariantList{QStringLiteral("4111")});
        // Every analytic account opens with its balance, in lei and in euro.
        QCOMPARE(pg().column(QStringLiteral("select conta || ' ' || moneda from t_fisa where nr_doc = 'Sold Initial' order by conta")),
                 (QVariantList{QStringLiteral("4111.01 RON"), QStringLiteral("4111.02 EUR")}));
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from t_fisa f where nr_crt = (select min(nr_crt) from t_fisa g where g.conta = f.conta)"
                     " and nr_doc <> 'Sold Initial'")),
                 0);
        QVERIFY(count(QStringLiteral("select count(*) from t_fisa where partener like '%ș%' or partener like '%ț%'")) > 0);
        // The last running balance of each account is what the next period opens with.
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from t_fisa f join t_next n using (conts, conta)"
                     " where nr_crt = (select max(nr_crt) from t_fisa g where g.conta = f.conta)"
                     " and (round((coalesce(sold_db_lei_incremental, 0) - coalesce(sold_cr_lei_incremental, 0))::numeric, 2) <> n.net_lei"
                     "   or round((coalesce(sold_db_incremental, 0) - coalesce(sold_cr_incremental, 0))::numeric, 2) <> n.net)")),
                 0);
        QCOMPARE(count(QStringLiteral("select count(distinct conta) from t_fisa")), 2);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::journalRegisterRuns()
{
    try {
        QString sql = rep::AnalizaRegistruJurnal::sql();
        sql.replace(QStringLiteral(":pDataIncep"), QStringLiteral("date '2025-11-01'"));
        sql.replace(QStringLiteral(":pDataSf"), QStringLiteral("date '2025-12-31'"));
        pg().exec(QStringLiteral("create table t_reg as ") + sql);

        // One row per register entry of the two months, never one per posting line.
        const int rows = count(QStringLiteral("select count(*) from t_reg"));
        QVERIFY(rows > 500);
        QCOMPARE(rows, count(QStringLiteral("select count(*) from reg_jurnal"
                                            " where data_reg_jurnal between date '2025-11-01' and date '2025-12-31'")));
        QCOMPARE(count(QStringLiteral("select count(*) from t_reg where jurnal is null")), 0);
        QVERIFY(count(QStringLiteral("select count(*) from t_reg where tip_doc = 'FactCI'")) > 0);
        // Most accounts have an English name, some do not.
        QVERIFY(count(QStringLiteral("select count(*) from t_reg where traducere_engleza like '=%'")) > 0);
        QVERIFY(count(QStringLiteral("select count(*) from t_reg where traducere_engleza like 'Domestic customers=%'")) > 0);
        // Salary notes are registered under their note date (month end), other documents under their own date.
        QVERIFY(count(QStringLiteral("select count(*) from t_reg where tip_doc = 'NotaC'"
                                     " and data_inregistrare = data_reg_jurnal and data_inregistrare <> data_doc")) > 0);
        QCOMPARE(count(QStringLiteral("select count(*) from t_reg where tip_doc <> 'NotaC' and data_inregistrare <> data_doc")), 0);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::documentAccountingEveryMonth()
{
    try {
        // Sales channels on invoice lines, budget chapters on both sides and on
        // one side, each of the three error texts, validated and held-back documents.
        QCOMPARE(monthsWithout(QStringLiteral(
                     "select date_trunc('month', v.data_doc) from view_contab_det v"
                     " join conta a on a.conts = v.conts and a.conta = v.conta"
                     " join conta b on b.conts = v.conts_coresp and b.conta = v.conta_coresp"
                     " join doc d on d.data_doc = v.data_doc and d.tip_doc = v.tip_doc and d.nr_doc = v.nr_doc"
                     " left join doc_poz p on p.data_doc = v.data_doc and p.tip_doc = v.tip_doc"
                     "  and p.nr_doc = v.nr_doc and p.scv = v.scv and p.tip_doc = 'FactCI'"
                     " left join canal_vanzare k on k.canal_vanzare = p.canal_vanzare"
                     " group by 1"
                     " having bool_or(k.gr_canal_vanzare is not null and p.tara_vanzare is not null)"
                     "  and bool_or(a.capitol_bugetar is not null and b.capitol_bugetar is not null)"
                     "  and bool_or((a.capitol_bugetar is null) <> (b.capitol_bugetar is null))"
                     "  and bool_or(v.eroare1 is not null) and bool_or(v.eroare2 is not null)"
                     "  and bool_or(v.eroare3 is not null)"
                     "  and bool_or(d.da_nu_validat_contabil) and bool_or(not d.da_nu_validat_contabil)")),
                 QString());
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::postCalculationEveryMonth()
{
    try {
        // Expenses, revenues and a third kind; own, partners' and no objects,
        // object numbers with no, one and two hyphens; lines with and without
        // article detail and with neither article nor explanation.
        QCOMPARE(monthsWithout(QStringLiteral(
                     "select date_trunc('month', v.data_doc) from view_postc_rulaj_det v"
                     " left join obiect_urm_chelt o on o.nr_obiect = v.nr_obiect"
                     " group by 1"
                     " having bool_or(v.chelt_ven like '%Cheltuieli%') and bool_or(v.chelt_ven like '%Venituri%')"
                     "  and bool_or(v.chelt_ven not like '%Cheltuieli%' and v.chelt_ven not like '%Venituri%')"
                     "  and bool_or(v.nr_obiect is null) and bool_or(o.partener is not null)"
                     "  and bool_or(v.nr_obiect is not null and o.partener is null)"
                     "  and bool_or(strpos(v.nr_obiect, '-') = 0)"
                     "  and bool_or(v.nr_obiect like '%-%' and v.nr_obiect not like '%-%-%')"
                     "  and bool_or(v.nr_obiect like '%-%-%')"
                     "  and bool_or(v.detaliu_articol is not null) and bool_or(v.articol is not null and v.detaliu_articol is null)"
                     "  and bool_or(v.articol is null and v.explicatie is null)"
                     "  and bool_or(v.com_int_sup is not null)")),
                 QString());
        // An expense counts as a cost, a revenue as a revenue, any other kind
        // (a change in stocks) in the profit only.
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from view_postc_rulaj_det where not ("
                     " cheltuieli_lei = case when chelt_ven = 'Cheltuieli' then valoare_lei else 0 end"
                     " and venituri_lei = case when chelt_ven = 'Venituri' then valoare_lei else 0 end"
                     " and profit_lei = case when chelt_ven = 'Cheltuieli' then -valoare_lei else valoare_lei end"
                     " and da_nu_chelt_postc = (chelt_ven = 'Cheltuieli'))")),
                 0);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::tourismSettlementsEveryMonth()
{
    try {
        // Several settlements, VAT included at two rates at least and an
        // exempt line, currency lines with their rate, commissions, ids that a
        // double cannot hold and timestamps with fractions of a second.
        QCOMPARE(monthsWithout(QStringLiteral(
                     "select date_trunc('month', data_doc) from view_verif_tva_inclus"
                     " group by 1"
                     " having count(distinct com_int) >= 2"
                     "  and count(distinct proc_tva_inclus) filter (where da_nu_servicii_turism) >= 2"
                     "  and bool_or(proc_tva = 0 and da_nu_servicii_turism)"
                     "  and bool_or(moneda <> 'RON' and curs <> 1) and bool_or(comision_calculat > 0)"
                     "  and bool_or(doc_poz_id_ext::float8::bigint <> doc_poz_id_ext)"
                     "  and bool_or(doc_id_ext::float8::bigint <> doc_id_ext)"
                     "  and bool_or(date_trunc('second', data_crono) <> data_crono)"
                     "  and bool_or(date_trunc('second', data_confirmare_decont) <> data_confirmare_decont)")),
                 QString());
        // Each month a supplier document is split over two settlements...
        QCOMPARE(monthsWithout(QStringLiteral(
                     "select date_trunc('month', data_doc) from view_verif_tva_inclus"
                     " where urm_plata and venituri_doc = 0"
                     " group by data_doc, tip_doc, nr_doc having count(distinct com_int) >= 2")),
                 QString());
        // ... and every settlement has its revenue and a separate supplier document.
        QCOMPARE(count(QStringLiteral(
                     "select count(*) from (select com_int from view_verif_tva_inclus group by com_int"
                     " having not bool_or(venituri > 0) or not bool_or(cheltuieli > 0 and venituri_doc = 0)) as s")),
                 0);
    } catch (const QuarvError &e) {
        QFAIL(qPrintable(e.text()));
    }
}

void TestDemoData::generationIsDeterministic()
{
    const QString digest = QStringLiteral(
        "select md5(string_agg(concat_ws('|', data_reg_jurnal, tip_doc, nr_doc, conts_db, conta_db, val_mon_db,"
        " valoare_lei, conts_cr, conta_cr, val_mon_cr), ',' order by id_reg_jurnal)) from reg_jurnal");
    const QVariant before = pg().scalar(digest);
    QVERIFY(pg().scalar(QStringLiteral("select demo_generate(1)")).toInt() > 0);
    QCOMPARE(pg().scalar(digest), before);
}

QTEST_GUILESS_MAIN(TestDemoData)
#include "tst_demodata.moc"
