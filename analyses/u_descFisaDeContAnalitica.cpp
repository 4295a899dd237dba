#include "analyses/u_reports.h"

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

namespace rep::FisaDeContAnalitica {

QString sql()
{
    return QString::fromUtf8(kSql);
}

ReportDesc description()
{
    using rep::column;
    rep::ReportDesc d;
    d.formName = QStringLiteral("frmFisaDeContAnalitica");
    d.title = QStringLiteral("Fisa De Cont Analitic");

    rep::EditorDesc conts;
    conts.kind = rep::EditorKind::ButtonEdit;
    conts.objectName = QStringLiteral("cxButtonEdit1");
    conts.label = QStringLiteral("Conts :");
    conts.width = 90;
    d.editors = {conts};
    d.editors += rep::periodEditors(rep::PeriodSnap::MonthOnChange);

    d.queryName = QStringLiteral("dsFisaContAnalitic");
    d.sql = sql();
    d.params = {{QStringLiteral("pConts"), QStringLiteral("cxButtonEdit1"), rep::DateConv::AsIs}};
    // The period row is posted before the query runs: the views read it.
    d.steps = {rep::RunStep::checkFilled({QStringLiteral("cxButtonEdit1")}, QStringLiteral("Alegeti Conts!")),
               rep::RunStep::checkPeriodFilled(rep::choosePeriodText()),
               rep::RunStep::postPeriodRow(rep::PeriodSource::Session, rep::DateConv::MonthStart,
                                           rep::DateConv::MonthEnd),
               rep::RunStep::closeQuery(), rep::RunStep::setParams(), rep::RunStep::openQuery()};

    d.columns = {column("conts", 54), column("conta", 61), column("data_doc", 76), column("tip_doc", 54),
                 column("explicatie", 305), column("partener", 219), column("nr_doc", 84), column("conts_coresp", 85),
                 column("conta_coresp", 86), column("moneda", 54), column("valoare_db_lei", 91), column("valoare_cr_lei", 90),
                 column("valoare_db", 75), column("valoare_cr", 74), column("sold_final_lei", 83), column("sold_final", 80),
                 column("tip_sold_final", 83), column("data_incep", 72), column("data_sf", 72),
                 column("emitent", 100, QStringLiteral("user"))};
    d.grid.filterRow = false;
    d.grid.footer = false;
    d.grid.groupFooters = false;

    d.exports = {rep::exportCsvToStatus(QStringLiteral("cxButton2"), QStringLiteral("\\FisaContAnalitic.csv"))};
    d.statusBar = true;
    return d;
}

} // namespace rep::FisaDeContAnalitica
