#include "analyses/u_reports.h"

namespace {

// nr_obiect_1/nr_obiect_2: the object number before its first hyphen and
// between the first and the second; no ORDER BY (the view's order).
const char *const kSql = R"SQL(select *, 
       split_part(view_postc_rulaj_det.nr_obiect, chr(45), 1) as nr_obiect_1,
       split_part(view_postc_rulaj_det.nr_obiect, chr(45), 2) as nr_obiect_2
from view_postc_rulaj_det
;)SQL";

} // namespace

namespace rep::CheltVenPeComenziFaraRegii {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmCheltVenPeComenziFaraRegii");
    d.title = QStringLiteral("Cheltuieli/Venituri pe Comenzi");
    d.editors = rep::periodEditors();
    d.runButtonBold = true;

    d.queryName = QStringLiteral("dsPostcalculRulaj");
    d.sql = sql();
    d.steps = {rep::RunStep::checkSameMonth(), rep::RunStep::checkPeriodFilled(rep::choosePeriodText()),
               rep::RunStep::busyCursor(), rep::RunStep::closeQuery(),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Session, rep::DateConv::MonthStart,
                                           rep::DateConv::MonthEnd),
               rep::RunStep::openQuery()};

    d.columns = {column("explicatie", 192), column("data_doc", 73), column("tip_doc", 73), column("nr_doc", 72),
                 column("articol", 275), column("detaliu_articol", 116), column("partener", 217),
                 column("magazie_sursa", 92), column("nr_inv"), column("com_int", 83), column("loc", 66),
                 column("data_inchid_comanda", 132), column("da_nu_in_postcalcul", 127),
                 column("da_nu_regie", 82), column("gr_chelt_ven_postc", 123), column("valoare_lei", 85),
                 column("valoare_lei_totala", 112), column("scv_det"), column("scv"), column("nr_obiect", 97),
                 column("conts_gest", 73), column("conta_gest", 74), column("conts"), column("conta"),
                 column("chelt_ven", 85), column("cheltuieli_lei", 87), column("venituri_lei", 78),
                 column("profit_lei"), column("ore"), column("coef_ore"), column("eroare"), column("cant"),
                 column("activitate", 139), column("lot", 68), column("emitent_doc", 83),
                 column("tara_destinatie", 92), column("oras_destinatie", 95), column("eu_punct_lucru", 190),
                 column("grupa_articol", 119), column("tip_obiect_urm_chelt", 132), column("emitent", 144),
                 column("gr_chelt_ven_postc_sup"), column("da_nu_chelt_postc", 121), column("loc1", 52),
                 column("loc2", 71), column("com_int_sup", 119), column("gr_com_int", 99),
                 column("companie_emitenta", 109), column("nr_obiect_1", 84), column("nr_obiect_2", 89),
                 column("data_incep", 71), column("data_sf", 84)};
    // The query has no valoare / valoare_coresp: their sums stay empty by design.
    d.footerSummaries = rep::sums({"valoare", "valoare_coresp", "valoare_lei"}, rep::moneyFormat());
    d.groupSummaries = rep::sums({"valoare_lei", "valoare_coresp", "valoare"}, rep::moneyFormat());
    d.absentSumFields = {QStringLiteral("valoare"), QStringLiteral("valoare_coresp")};

    // "Comnezi" is the files' own spelling.
    d.exports = {rep::exportText(QStringLiteral("cxButton2"), QStringLiteral("\\CheltVenPeComnezi.csv")),
                 rep::exportExcel(QStringLiteral("cxButton3"), QStringLiteral("\\CheltVenPeComnezi.xlsx"))};
    return d;
}

} // namespace rep::CheltVenPeComenziFaraRegii
