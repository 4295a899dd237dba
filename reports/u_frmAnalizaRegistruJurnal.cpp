#include "reports/u_frmAnalizaRegistruJurnal.h"

#include <QLabel>

TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal = nullptr;

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

QString TfrmAnalizaRegistruJurnal::sqlAnalizaRegistruJurnal()
{
    return QString::fromUtf8(kSql);
}

TfrmAnalizaRegistruJurnal::TfrmAnalizaRegistruJurnal(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmAnalizaRegistruJurnal"));
    setWindowTitle(QStringLiteral("frmAnalizaRegistruJurnal"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Analiza Registru Jurnal"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
}
