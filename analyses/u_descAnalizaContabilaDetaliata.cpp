#include "analyses/u_reports.h"

namespace {

// Ten lines and a last line of ten blanks, sent as they stand.
const char *const kSql = R"SQL(select *
from view_contab_det
order by data_doc,
         tip_doc,
         nr_doc,
         scv,
         conts,
         conta,
         conts_coresp,
         conta_coresp
          )SQL";

} // namespace

namespace rep::AnalizaContabilaDetaliata {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmAnalizaContabilaDetaliata");
    d.title = QStringLiteral("Analiza Contabila Detaliata");
    d.paramGroupTitle = QStringLiteral("Alegeti perioada de analiza");
    d.editors = rep::periodEditors(rep::PeriodSnap::MonthOnExit, rep::PeriodOnShow::CurrentMonth);

    d.queryName = QStringLiteral("dsViewContabDet");
    d.sql = sql();
    d.ownDataListSql = rep::dataListSql();
    // The period row first, then the hourglass over the view; an open view is re-run.
    d.steps = {rep::RunStep::checkPeriodFilled(rep::selectPeriodText()),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Own, rep::DateConv::AsIs, rep::DateConv::AsIs, true),
               rep::RunStep::busyCursor(), rep::RunStep::openOrRefresh()};
    d.closeQueryOnClose = true;

    d.columns = {column("aplicatie"), column("jurnal"), column("explicatie"), column("conts"), column("conta"),
                 column("conts_coresp", 83), column("conta_coresp", 84), column("moneda", 55),
                 column("moneda_coresp", 58), column("data_doc"), column("tip_doc", 53), column("nr_doc"),
                 column("scv"), column("articol"), column("detaliu_articol", 96), column("partener", 167),
                 column("valoare", 59), column("valoare_lei", 70), column("valoare_coresp", 95),
                 column("imp_taxa", 73), column("activitate", 93), column("lot", 70),
                 column("magazie_sursa", 94), column("da_nu_contare", 96), column("da_nu_in_postcalcul", 129),
                 column("com_int"), column("loc"), column("gr_chelt_ven_postc", 119), column("nr_obiect", 77),
                 column("casa", 85), column("banca_eu", 74), column("cont_banca_eu", 98),
                 column("deb_cred", 70), column("reprezentind", 86), column("eu_punct_lucru", 121),
                 column("eu_punct_lucru_coresp", 145), column("partener_punct_lucru", 129), column("eroare1"),
                 column("eroare2"), column("eroare3"), column("data_contare", 83),
                 column("eu_punct_lucru_procesare", 157), column("data_incep"), column("data_sf")};
    // The view has no val_mon_cr / val_mon_db: their sums stay empty by design.
    d.footerSummaries = rep::sums({"val_mon_cr", "val_mon_db", "valoare_lei"});
    d.groupSummaries = rep::sums({"valoare_lei", "val_mon_cr", "val_mon_db"});
    d.absentSumFields = {QStringLiteral("val_mon_cr"), QStringLiteral("val_mon_db")};

    d.styleKey = QStringLiteral("QUARV AnalizaContabilaDetaliata");
    d.exports = {rep::exportGridCsv(QStringLiteral("cxButton2"), QStringLiteral("\\AnalizaContabilaDetaliata.csv")),
                 rep::exportAllData(QStringLiteral("cxButton3"), QStringLiteral("\\AnalizaContabilaDetaliata.csv"))};
    d.exportsBesideParams = true;
    d.statusBar = true;
    return d;
}

} // namespace rep::AnalizaContabilaDetaliata
