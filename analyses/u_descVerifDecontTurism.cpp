#include "analyses/u_reports.h"

namespace {

// eroare is always null: a place for an error text that nothing fills. The
// last line is of blanks.
const char *const kSql = R"SQL(select view_verif_TVA_Inclus.*,
       cast(null as varchar(100)) as eroare 
from view_verif_TVA_Inclus
order by com_int, 
      tip_doc,
      data_doc,
      nr_doc
          )SQL";

} // namespace

namespace rep::VerifDecontTurism {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmVerifDecontTurism");
    d.title = QStringLiteral("Verificare decont turism");
    d.paramGroupTitle = QStringLiteral("Alegeti perioada");
    d.editors = rep::periodEditors(rep::PeriodSnap::None, rep::PeriodOnShow::CurrentMonth, QStringLiteral("De la :"));
    d.runButtonBold = true;

    d.queryName = QStringLiteral("dsViewVerifTvaInclus");
    d.sql = sql();
    d.ownDataListSql = rep::dataListSql() + QStringLiteral("\n          ");
    d.steps = {rep::RunStep::checkSameMonth(), rep::RunStep::checkPeriodFilled(rep::selectPeriodText()),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Own, rep::DateConv::AsIs, rep::DateConv::AsIs, true),
               rep::RunStep::busyCursor(), rep::RunStep::openOrRefresh()};

    d.columns = {column("com_int", 108, QStringLiteral("decont")), column("data_doc"), column("tip_doc", 57),
                 column("nr_doc", 92), column("articol", 179), column("partener", 164), column("venituri"),
                 column("cheltuieli"), column("profit"), column("furnizor"), column("val_furn_previz", 102),
                 column("cheltuieli_doc_moneda", 151), column("activitate", 102), column("conts"),
                 column("conta", 46), column("proc_tva"), column("tip_tratare_tva", 88),
                 column("detaliu_text", 89), column("data_confirmare_decont", 157), column("moneda", 55),
                 column("gr_com_int", 78, QStringLiteral("tip_decont")), column("detaliu_articol", 103),
                 column("cod_rezervare_furn", 120), column("da_nu_ue", 70), column("val_lei"),
                 column("nr_bilet", 107), column("da_nu_voucher", 101, QStringLiteral("voucher")),
                 column("data_confirmare", 0, QStringLiteral("data_confirmare_voucher")),
                 column("venituri_moneda", 103), column("com_int_sup"), column("comision_calculat", 108),
                 column("curs"), column("cheltuieli_moneda", 116), column("cod_cci", 62),
                 column("da_nu_persoana_juridica"), column("emitent", 98), column("eu_punct_lucru", 104),
                 column("data_sf_comanda", 112, QStringLiteral("inchid_decont")), column("modificat"),
                 column("scv", 38), column("emitent_com_int", 109), column("venituri_doc_moneda", 134),
                 column("valoare"), column("valoare_lei", 80), column("loc", 100), column("nr_obiect", 87),
                 column("locatie_magazie", 100), column("data_expirare", 87), column("doc_poz_id_ext", 98),
                 column("doc_id_ext", 83), column("gr_chelt_ven_postc", 122), column("proc_tva_articol", 102),
                 column("proc_tva_inclus", 100), column("proc_tva_poz", 89), column("da_nu_servicii_turism"),
                 column("data_crono"), column("tara_destinatie", 96), column("urm_incasare", 88),
                 column("urm_plata", 70), column("adaos"), column("data_incep", 75), column("data_sf"),
                 column("chelt_ven", 92), column("val"), column("grup_tip_tva", 120),
                 column("grupa_articol", 85), column("venituri_doc", 87), column("cheltuieli_doc", 90),
                 column("profit_doc", 74), column("data_ins"), column("mon_furn"),
                 column("da_nu_returnare_piese_inlocuite"), column("grup_detaliu", 93),
                 column("oras_destinatie", 93), column("activitate_superioara", 207),
                 column("tara_plecare", 87), column("oras_plecare", 101), column("data_sf_initiala", 100),
                 column("obs_aproviz", 140), column("moneda_com_int", 111), column("val_comanda", 87),
                 column("proc_comision_la_vinzare_romania", 211),
                 column("proc_comision_la_vinzare_extern", 151), column("proc_comision_articol", 129),
                 column("loc1", 43), column("loc2", 48), column("eroare", 100)};
    // The view has no val_mon_cr / val_mon_db: their sums stay empty by design.
    d.footerSummaries = rep::sums({"val_mon_cr", "val_mon_db", "valoare_lei"});
    d.groupSummaries = rep::sums({"valoare_lei", "val_mon_cr", "val_mon_db"});
    d.absentSumFields = {QStringLiteral("val_mon_cr"), QStringLiteral("val_mon_db")};

    d.styleKey = QStringLiteral("QUARV VerificareDecontTurism");
    d.exports = {rep::exportExcel(QStringLiteral("cxButton2"), QStringLiteral("\\VerifDecontTurism.xlsx"))};
    d.exportsBesideParams = true;
    d.statusBar = true; // left empty
    return d;
}

} // namespace rep::VerifDecontTurism
