#include "analyses/u_reports.h"

namespace {

// Sent as it stands: the empty line and the trailing blanks are part of it.
const char *const kSql = R"SQL(select  view_contab_det.*,
        doc_poz.canal_vanzare,
        doc_poz.tara_vanzare,
        gr_canal_vanzare,
        da_nu_validat_contabil,
        coalesce(conta.capitol_bugetar,conta1.capitol_bugetar) as capitol_bugetar,
        capitol_bugetar.den_capitol_bugetar, 
        conta.capitol_bugetar as cont_db_ext,
        cp1.den_capitol_bugetar as den_cont_db_ext,
        conta1.capitol_bugetar as cont_cr_ext,
        cp2.den_capitol_bugetar as den_cont_cr_ext,
        coalesce(conta_lang.den_conta_lang,'') ||'='||coalesce(conta_lang1.den_conta_lang,'')||' -'||view_contab_det.tip_doc||' '||view_contab_det.nr_doc||'/'||view_contab_det.data_doc
                            ||' '||coalesce(view_contab_det.partener,'') as traducere_engleza
from view_contab_det
left join (select * from conta_lang where lang = 'engleza' )as conta_lang on view_contab_det.conts = conta_lang.conts 
                    and view_contab_det.conta = conta_lang.conta 
left join (select * from conta_lang where lang = 'engleza' )as conta_lang1 on view_contab_det.conts_coresp = conta_lang1.conts 
                                    and view_contab_det.conta_coresp = conta_lang1.conta 
left join conta on view_contab_det.conts = conta.conts 
               and view_contab_det.conta = conta.conta 
left join conta as conta1 on view_contab_det.conts_coresp = conta1.conts 
                          and view_contab_det.conta_coresp = conta1.conta 
left join capitol_bugetar on coalesce(conta.capitol_bugetar,conta1.capitol_bugetar) = capitol_bugetar.capitol_bugetar
left join capitol_bugetar as cp1 on conta.capitol_bugetar = cp1.capitol_bugetar
left join capitol_bugetar as cp2 on conta1.capitol_bugetar = cp2.capitol_bugetar
left join doc_poz on doc_poz.data_doc = view_contab_det.data_doc
                and doc_poz.tip_doc   = view_contab_det.tip_doc
                and doc_poz.nr_doc    = view_contab_det.nr_doc
                and doc_poz.scv       = view_contab_det.scv 
                and doc_poz.tip_doc   = 'FactCI'
left join doc on    doc.data_doc = view_contab_det.data_doc
                and doc.tip_doc   = view_contab_det.tip_doc
                and doc.nr_doc    = view_contab_det.nr_doc

left join canal_vanzare on doc_poz.canal_vanzare = canal_vanzare.canal_vanzare
order by conts, conta, conts_coresp, conta_coresp, data_doc, tip_doc, nr_doc, scv)SQL";

} // namespace

namespace rep::ContareDocumente {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmContareDocumente");
    d.title = QStringLiteral("Contare Documente");
    d.editors = rep::periodEditors();
    d.hiddenLabels = {{QStringLiteral("lblConta"), QStringLiteral("Conta :")}};

    d.queryName = QStringLiteral("dsView_Contab_Det");
    d.sql = sql();
    // The month test first, as a plain information box; one empty editor fails it.
    d.steps = {rep::RunStep::checkSameMonth(true), rep::RunStep::checkPeriodFilled(rep::choosePeriodText()),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Session, rep::DateConv::MonthStart,
                                           rep::DateConv::MonthEnd),
               rep::RunStep::openQuery()};

    // explicatie, eu_punct_lucru_coresp, partener_punct_lucru and
    // eu_punct_lucru_procesare are fetched but have no column.
    d.columns = {column("conts", 0, QStringLiteral("conts_db")), column("conta", 0, QStringLiteral("conta_db")),
                 column("conts_coresp", 0, QStringLiteral("conts_cr")),
                 column("conta_coresp", 0, QStringLiteral("conta_cr")), column("valoare_lei"),
                 column("reprezentind"), column("data_doc"), column("tip_doc"), column("nr_doc"),
                 column("com_int"), column("loc"), column("jurnal"), column("moneda"), column("valoare"),
                 column("moneda_coresp"), column("valoare_coresp"), column("aplicatie"), column("scv"),
                 column("articol"), column("detaliu_articol"), column("partener"), column("imp_taxa"),
                 column("activitate"), column("lot"), column("magazie_sursa"), column("da_nu_contare"),
                 column("da_nu_in_postcalcul"), column("gr_chelt_ven_postc"), column("nr_obiect"),
                 column("casa"), column("banca_eu"), column("cont_banca_eu"), column("deb_cred"),
                 column("eu_punct_lucru"), column("eroare1"), column("eroare2"), column("eroare3"),
                 column("data_contare"), column("data_incep"), column("data_sf"), column("capitol_bugetar"),
                 column("traducere_engleza"), column("den_capitol_bugetar"), column("cont_db_ext"),
                 column("den_cont_db_ext"), column("cont_cr_ext"), column("den_cont_cr_ext"),
                 column("canal_vanzare"), column("tara_vanzare"), column("gr_canal_vanzare"),
                 column("da_nu_validat_contabil")};
    d.footerSummaries = rep::sums({"valoare", "valoare_coresp", "valoare_lei"}, rep::moneyFormat());
    d.groupSummaries = rep::sums({"valoare_lei", "valoare_coresp", "valoare"}, rep::moneyFormat());

    d.styleKey = QStringLiteral("QUARV ContareDocumente");
    d.exports = {rep::exportText(QStringLiteral("cxButton2"), QStringLiteral("\\ContareDocumente.csv")),
                 rep::exportExcel(QStringLiteral("cxButton3"), QStringLiteral("\\ContareDocumente.xlsx"))};
    return d;
}

} // namespace rep::ContareDocumente
