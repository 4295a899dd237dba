#include "analyses/u_reports.h"

namespace {

// Trailing blanks on some lines are part of the text.
const char *const kSql = R"SQL(select 
      coalesce(data_nota_contabila ,reg_jurnal.data_doc) as data_inregistrare,
         data_reg_jurnal,
        reg_jurnal.data_doc,
         reg_jurnal.tip_doc ,
         reg_jurnal.nr_doc ,
  conts_db ,
  conta_db ,
  moneda_db ,
  val_mon_db ,
  valoare_lei ,
  conts_cr ,
  conta_cr ,
  moneda_cr ,
  val_mon_cr ,
  explicatie ,
  reg_jurnal.com_int ,
  reg_jurnal.eu_punct_lucru ,
  reg_jurnal.eu_punct_lucru_coresp ,
  doc.partener, 
  doc.magazie_sursa,
  coalesce(doc.jurnal,a.jurnal,tip_doc.jurnal) as jurnal,
  coalesce(conta_lang.den_conta_lang,'') ||'='||coalesce(conta_lang1.den_conta_lang,'')||' '||reg_jurnal.tip_doc||' '||reg_jurnal.nr_doc||'/'||reg_jurnal.data_doc
                            ||' '||coalesce(doc.partener,'') as traducere_engleza
 from reg_jurnal
left  join doc
on reg_jurnal.data_doc   = doc.data_doc
  and reg_jurnal.tip_doc = doc.tip_doc 
  and reg_jurnal.nr_doc  = doc.nr_doc
left join (select data_doc,tip_doc,nr_doc,min(jurnal) as jurnal from doc_contare group by data_doc,tip_doc,nr_doc) as a
on reg_jurnal.data_doc   = a.data_doc
  and reg_jurnal.tip_doc = a.tip_doc 
  and reg_jurnal.nr_doc  = a.nr_doc
left join tip_doc on reg_jurnal.tip_doc = tip_doc.tip_doc
left join conta_lang on conts_db = conta_lang.conts 
                    and conta_db = conta_lang.conta 
                    and conta_lang.lang='engleza'
left join conta_lang  as conta_lang1 on conts_cr = conta_lang1.conts 
                                    and conta_cr = conta_lang1.conta 
                                    and conta_lang1.lang='engleza'
where data_reg_jurnal  between :pDataIncep and :pDataSf
order by data_reg_jurnal,
          data_inregistrare)SQL";

} // namespace

namespace rep::AnalizaRegistruJurnal {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmAnalizaRegistruJurnal");
    d.title = QStringLiteral("Analiza Registru Jurnal");

    d.editors = rep::periodEditors();
    d.hiddenLabels = {{QStringLiteral("lblConta"), QStringLiteral("Conta :")}};

    d.queryName = QStringLiteral("dsAnalizaRegistruJurnal");
    d.sql = sql();
    // Whole months on the server; what was typed stays in the editors.
    d.params = {{QStringLiteral("pDataIncep"), rep::kFromEditor, rep::DateConv::MonthStart},
                {QStringLiteral("pDataSf"), rep::kToEditor, rep::DateConv::MonthEnd}};
    d.steps = {rep::RunStep::checkPeriodFilled(rep::choosePeriodText()),
               rep::RunStep::closeQuery(), rep::RunStep::setParams(), rep::RunStep::openQuery()};

    // The headers show the field names.
    d.columns = {column("data_inregistrare", 116), column("data_doc", 76), column("tip_doc", 58), column("nr_doc", 80),
                 column("conts_db", 70), column("conta_db", 80), column("valoare_lei", 96), column("conts_cr", 70),
                 column("conta_cr", 80), column("explicatie", 200), column("moneda_db", 80), column("val_mon_db", 90),
                 column("moneda_cr", 80), column("val_mon_cr", 90), column("partener", 160), column("eu_punct_lucru", 110),
                 column("eu_punct_lucru_coresp", 156), column("com_int", 80), column("magazie_sursa", 104),
                 column("jurnal", 120), column("traducere_engleza", 360), column("data_reg_jurnal", 110)};
    d.footerSummaries = rep::sums({"val_mon_cr", "val_mon_db", "valoare_lei"});
    d.groupSummaries = rep::sums({"valoare_lei", "val_mon_cr", "val_mon_db"});

    d.styleKey = QStringLiteral("QUARV AnalizaRegJurnal");
    d.exports = {rep::exportGridCsv(QStringLiteral("cxButton2"), QStringLiteral("\\AnalizaRegistruJurnal.csv")),
                 rep::exportAllData(QStringLiteral("cxButton3"), QStringLiteral("\\AnalizaRegistruJurnal.csv"))};
    d.statusBar = true;
    return d;
}

} // namespace rep::AnalizaRegistruJurnal
