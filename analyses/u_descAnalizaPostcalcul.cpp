#include "analyses/u_reports.h"

namespace {

// Sent as it stands: trailing blanks and the empty line before ";" included.
const char *const kSql = R"SQL(select coalesce(view_postc_rulaj_det.loc,emitent.loc) as loc,
           view_postc_rulaj_det.com_int,
           view_postc_rulaj_det.detaliu_articol,
           view_postc_rulaj_det.gr_chelt_ven_postc,
           coalesce(view_postc_rulaj_det.nr_obiect,'-') as nr_obiect,
           coalesce(view_postc_rulaj_det.tip_obiect_urm_chelt,'-') as tip_obiect_urm_chelt, 
           obiect_urm_chelt.tip_obiect_urm_chelt_grupa,
           obiect_urm_chelt.tip_obiect_urm_chelt_subgrupa,
           cast(
           case when obiect_urm_chelt.partener is null
                   then true
                   else false
                end as boolean )as da_nu_propriu,  
           coalesce(articol||' '||detaliu_articol,explicatie,'-fara art/explic') as articol, 
           view_postc_rulaj_det.articol as articol_doc,
           coalesce(cant,0) as cant,
     case when chelt_ven like '%Cheltuieli%'
           then coalesce(valoare_lei,0)
           else 0                      
          end as val_cheltuiala,            
     case when chelt_ven like '%Venituri%'   
           then coalesce(valoare_lei,0)
           else 0                        
          end as val_venit,
     case when chelt_ven like '%Cheltuieli%'
           then coalesce(valoare_lei,0)*(-1)
           else coalesce(valoare_lei,0)                      
          end as val_profit,                              
     data_doc,tip_doc,nr_doc,scv,
     view_postc_rulaj_det.partener as partener_doc,
     magazie_sursa,
     obiect_urm_chelt.magazie,
     conts,
     conta,
     da_nu_regie,
     obiect_urm_chelt.partener as partener_ob,
     view_postc_rulaj_det.eu_punct_lucru,
     view_postc_rulaj_det.emitent_doc,
     view_postc_rulaj_det.activitate,
     lot,
     split_part(view_postc_rulaj_det.nr_obiect, chr(45), 1) as nr_obiect_1,
     split_part(view_postc_rulaj_det.nr_obiect, chr(45), 2) as nr_obiect_2,
     data_incep,
     data_sf                                       
from view_postc_rulaj_det 
 left join obiect_urm_chelt on view_postc_rulaj_det.nr_obiect=obiect_urm_chelt.nr_obiect
 left join emitent on emitent_doc = emitent.emitent
order by tip_obiect_urm_chelt,
         nr_obiect,
         articol,
         data_doc,
         tip_doc,
         nr_doc

;)SQL";

} // namespace

namespace rep::AnalizaPostcalcul {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmAnalizaPostcalcul");
    d.title = QStringLiteral("ANALIZA POSTCALCUL");
    d.editors = rep::periodEditors();
    d.runButtonName = QStringLiteral("cxButton1");
    d.runButtonBold = true;

    d.queryName = QStringLiteral("dsViewPostcRulDet");
    d.sql = sql();
    // The period rule of the orders report over the same ledger: one whole
    // month, written through the session's period row before the query opens.
    const ReportDesc orders = CheltVenPeComenziFaraRegii::description();
    d.steps = orders.steps;

    d.columns = {column("loc", 86), column("com_int", 90), column("detaliu_articol", 139),
                 column("gr_chelt_ven_postc", 122), column("nr_obiect"), column("tip_obiect_urm_chelt"),
                 column("tip_obiect_urm_chelt_grupa"), column("tip_obiect_urm_chelt_subgrupa"),
                 column("da_nu_propriu"), column("articol"), column("articol_doc", 107), column("cant"),
                 column("val_cheltuiala"), column("val_venit"), column("val_profit"), column("data_doc"),
                 column("tip_doc"), column("nr_doc"), column("scv"), column("partener_doc"),
                 column("magazie_sursa"), column("magazie"), column("conts"), column("conta"),
                 column("da_nu_regie"), column("partener_ob", 104), column("eu_punct_lucru", 122),
                 column("emitent_doc"), column("activitate", 113), column("lot", 82), column("nr_obiect_1"),
                 column("nr_obiect_2"), column("data_incep"), column("data_sf")};
    // None of the summed names is a field of this query: every sum stays empty by design.
    d.footerSummaries = orders.footerSummaries;
    d.groupSummaries = orders.groupSummaries;
    d.absentSumFields = {QStringLiteral("valoare"), QStringLiteral("valoare_coresp"), QStringLiteral("valoare_lei")};

    d.styleKey = QStringLiteral("QUARV AnalizaPostcalcul");
    d.styleButtonName = QStringLiteral("cxButton2");
    d.exports = {rep::exportText(QStringLiteral("cxButton3"), QStringLiteral("\\AnalizaPostcalcul.csv")),
                 rep::exportExcel(QStringLiteral("cxButton4"), QStringLiteral("\\AnalizaPostcalcul.xlsx"))};
    return d;
}

} // namespace rep::AnalizaPostcalcul
