#include "analyses/u_reports.h"

namespace {

// Four lines, the first two with a trailing blank; no ORDER BY.
const char *const kSql = R"SQL(select * 
from 
view_postc_rulaj_det
;)SQL";

} // namespace

namespace rep::Analiza_Profitabilitate {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmAnaliza_Profitabilitate");
    d.title = QStringLiteral("Analiza Profitabilitate");
    d.editors = rep::periodEditors();
    d.hiddenLabels = {{QStringLiteral("lblConta"), QStringLiteral("Conta :")}};
    d.runButtonBold = true;

    d.queryName = QStringLiteral("dsPostcalculRulaj");
    d.sql = sql();
    d.steps = {rep::RunStep::checkPeriodFilled(rep::choosePeriodText()),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Session, rep::DateConv::MonthStart,
                                           rep::DateConv::MonthEnd),
               rep::RunStep::openQuery()};

    // 35 of the query's 50 fields.
    d.columns = {column("chelt_ven"), column("eu_punct_lucru", 195), column("data_doc"), column("tip_doc"),
                 column("nr_doc"), column("loc", 67), column("com_int", 97), column("nr_obiect", 94),
                 column("valoare_lei"), column("articol"), column("magazie_sursa", 30),
                 column("gr_chelt_ven_postc", 123), column("tip_obiect_urm_chelt", 66), column("conts"),
                 column("conta"), column("explicatie", 405), column("partener"), column("nr_inv"),
                 column("da_nu_in_postcalcul"), column("da_nu_regie"), column("valoare_lei_totala"),
                 column("scv_det"), column("scv"), column("conts_gest"), column("conta_gest"), column("ore"),
                 column("coef_ore"), column("eroare"), column("cant"), column("emitent", 181),
                 column("gr_chelt_ven_postc_sup", 146), column("da_nu_chelt_postc"), column("com_int_sup", 76),
                 column("detaliu_articol", 208), column("data_inchid_comanda", 76)};
    d.footerSummaries = rep::sums({"valoare_lei"});
    d.groupSummaries = rep::sums({"valoare_lei"});

    d.styleKey = QStringLiteral("QUARV AnalizaProfitabilitate");
    d.exports = {rep::exportText(QStringLiteral("cxButton2"), QStringLiteral("\\AnalizaProfitabilitate.csv"))};
    return d;
}

} // namespace rep::Analiza_Profitabilitate
