#include "reports/u_frmFisaDeContAnalitica.h"

#include <QLabel>

TfrmFisaDeContAnalitica *frmFisaDeContAnalitica = nullptr;

namespace {

// The "--  and conta = :pConta" line is a filter kept switched off: a comment,
// so pConts is the only parameter.
const char *const kSql = R"SQL(select d.*,

       case when sold_db_incremental is null
       then sold_cr_incremental
       else sold_db_incremental
       end as sold_final,

       case when sold_db_incremental is null
       then 'CR'
       else 'DB'
       end as tip_sold_final,

       case when sold_db_lei_incremental is null
       then sold_cr_lei_incremental
       else sold_db_lei_incremental
       end as sold_final_lei,
       
       doc.partener,
       doc.emitent
from
(
select conts,
       conta,
       moneda,
       data_doc,
       tip_doc,
       nr_doc,
       valoare_db,
       valoare_cr,
       curs,
       valoare_db_lei,
       valoare_cr_lei,
       conts_coresp,
       conta_coresp,
       explicatie,
       sold_db,
       sold_cr,
       sold_db_lei,
       sold_cr_lei,
       case when sold_incremental >= 0 then  sold_incremental else cast(null as double precision) end as sold_db_incremental,
       case when sold_incremental < 0  then -sold_incremental else cast(null as double precision) end as sold_cr_incremental,
       case when sold_lei_incremental >= 0 then  sold_lei_incremental else cast(null as double precision) end as sold_db_lei_incremental,
       case when sold_lei_incremental < 0  then -sold_lei_incremental else cast(null as double precision) end as sold_cr_lei_incremental,
       rulaj_db_incremental,
       rulaj_cr_incremental,
       rulaj_db_lei_incremental,
       rulaj_cr_lei_incremental,

       data_incep,
       data_sf,
       nr_crt
from
(
select *,
       cast(cast(sum(coalesce(sold_db, 0) - coalesce(sold_cr, 0) + coalesce(valoare_db, 0) - coalesce(valoare_cr, 0)) over w as numeric(24, 4)) as double precision) as sold_incremental,
       cast(cast(sum(coalesce(sold_db_lei, 0) - coalesce(sold_cr_lei, 0) + coalesce(valoare_db_lei, 0) - coalesce(valoare_cr_lei, 0)) over w as numeric(24, 4)) as double precision) as sold_lei_incremental,
       cast(cast(sum(                                              coalesce(valoare_db, 0))                           over w as numeric(24, 4)) as double precision) as rulaj_db_incremental,
       cast(cast(sum(                                              coalesce(valoare_cr, 0))                           over w as numeric(24, 4)) as double precision) as rulaj_cr_incremental,
       cast(cast(sum(                                              coalesce(valoare_db_lei, 0))                       over w as numeric(24, 4)) as double precision) as rulaj_db_lei_incremental,
       cast(cast(sum(                                              coalesce(valoare_cr_lei, 0))                       over w as numeric(24, 4)) as double precision) as rulaj_cr_lei_incremental
from
(
select *,
       row_number() over w as nr_crt
from
(
select data_sf as data_reg_jurnal,
       cast(null as date)        as data_doc,
       cast(null as varchar(7))  as tip_doc,
       cast('Sold Initial' as varchar(15)) as nr_doc,
       conts,
       conta,
       moneda,
       cast(null as double precision) as valoare_db,
       cast(null as double precision) as valoare_cr,
       cast(null as double precision) as curs,
       cast(null as double precision) as valoare_db_lei,
       cast(null as double precision) as valoare_cr_lei,
       cast('DB' as varchar(2))   as dbcr,
       cast(null as varchar(7))   as conts_coresp,
       cast(null as varchar(25))  as conta_coresp,
       cast(null as varchar(100)) as explicatie,
       data_incep,
       data_sf,
       sold_db,
       sold_cr,
       sold_db_lei,
       sold_cr_lei
from view_conta_sold_per_incep

union all

select data_reg_jurnal,
       data_doc,
       tip_doc,
       nr_doc,
       conts,
       conta,
       moneda,
       valoare_db,
       valoare_cr,
       curs,
       valoare_db_lei,
       valoare_cr_lei,
       dbcr,
       conts_coresp,
       conta_coresp,
       explicatie,
       data_incep,
       data_sf,
       cast(null as double precision) as sold_db,
       cast(null as double precision) as sold_cr,
       cast(null as double precision) as sold_db_lei,
       cast(null as double precision) as sold_cr_lei
from view_contab_rulaj_reg_per

) as a
window w  as (order by conts,
                       conta,
                       data_doc nulls first,
                       tip_doc,
                       nr_doc
             )
) as b
window w  as (partition by conts,
                           conta
                  order by conts,
                           conta,
                           nr_crt
             )
) as c
) as d left outer join doc on d.data_doc = doc.data_doc
                          and d.tip_doc  = doc.tip_doc
                          and d.nr_doc   = doc.nr_doc
where conts = :pConts
--  and conta = :pConta
order by conts,
         conta,
         data_doc nulls first,
         tip_doc,
         nr_doc,
         nr_crt

;)SQL";

} // namespace

QString TfrmFisaDeContAnalitica::sqlFisaContAnalitic()
{
    return QString::fromUtf8(kSql);
}

TfrmFisaDeContAnalitica::TfrmFisaDeContAnalitica(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmFisaDeContAnalitica"));
    setWindowTitle(QStringLiteral("frmFisaDeContAnalitica"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Fisa De Cont Analitic"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
}
