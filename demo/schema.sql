-- The demo accounting database: tables and the views the analyses read.
-- Loaded in one go by the owner role (no superuser rights, no extensions).
-- The views take their period from the single row of data_list.
-- No data here: demo/data.sql fills the tables (demo_generate).

set client_min_messages = warning;

-- ---------------------------------------------------------------- session

create table emitent (
    emitent           varchar(100) primary key,
    den_emitent       text,
    operator_parola   text not null default '',
    loc               varchar(25),
    companie_emitenta text,
    cod_fiscal        varchar(20)
);

create table menuquarv (
    aplicatie      varchar(50) not null,
    menuquarv      varchar(50) not null,
    aplicatie_sup  varchar(50),
    menuquarv_sup  varchar(50),
    scv            integer not null default 0,
    den_menuquarv  text,
    primary key (aplicatie, menuquarv)
);

create table emitent_menuquarv (
    emitent    varchar(100) not null,
    aplicatie  varchar(50) not null,
    menuquarv  varchar(50) not null,
    primary key (emitent, aplicatie, menuquarv)
);

-- One shared row: the reporting period the views read.
create table data_list (
    data_incep        date not null,
    data_sf           date,
    data_incep_f      date,
    data_sf_f         date,
    data_incep_bal    date,
    data_sf_bal       date,
    moneda_raportare  varchar(3),
    curs_raportare    double precision
);

create table grid_style (
    grid_name          varchar(30) not null,
    style_name         varchar(50) not null,
    data_creare        date,
    emitent            varchar(100),
    grid_style_string  text,
    discontinued       boolean not null default false,
    grid_style_bytea   bytea,
    grid_Style_lo      oid,
    primary key (grid_name, style_name)
);

-- ---------------------------------------------------------------- chart of accounts

create table capitol_bugetar (
    capitol_bugetar      varchar(20) primary key,
    den_capitol_bugetar  text not null
);

create table conts (
    conts         varchar(7) primary key,
    den_conts     varchar(100) not null,
    discontinued  boolean not null default false,
    tip_cont      varchar(1) not null default 'B'   -- A activ, P pasiv, B bifunctional
);

create table conta (
    conts            varchar(7) not null references conts,
    conta            varchar(25) not null,
    moneda           varchar(3) not null default 'RON',
    den_conta        varchar(100) not null,
    discontinued     boolean not null default false,
    capitol_bugetar  varchar(20) references capitol_bugetar,
    primary key (conts, conta)
);

create table conta_lang (
    conts           varchar(7) not null,
    conta           varchar(25) not null,
    lang            varchar(20) not null,
    den_conta_lang  text not null,
    primary key (conts, conta, lang),
    foreign key (conts, conta) references conta
);

-- Opening balances at the start of the books, per analytic account.
create table conta_sold_initial (
    conts        varchar(7) not null,
    conta        varchar(25) not null,
    data_sold    date not null,
    sold_db      double precision not null default 0,
    sold_cr      double precision not null default 0,
    sold_db_lei  double precision not null default 0,
    sold_cr_lei  double precision not null default 0,
    primary key (conts, conta),
    foreign key (conts, conta) references conta
);

create table curs_valutar (
    data_curs  date not null,
    moneda     varchar(3) not null,
    curs       double precision not null,
    primary key (data_curs, moneda)
);

-- ---------------------------------------------------------------- nomenclatures

create table tip_doc (
    tip_doc      varchar(7) primary key,
    den_tip_doc  text not null,
    jurnal       text,
    aplicatie    text
);

create table partener (
    partener                 varchar(100) primary key,
    cod_fiscal               varchar(20),
    tara                     varchar(3) not null default 'ROU',
    oras                     text,
    da_nu_persoana_juridica  boolean not null default true
);

create table canal_vanzare (
    canal_vanzare     text primary key,
    gr_canal_vanzare  text
);

create table articol (
    articol                 varchar(50) primary key,
    grupa_articol           varchar(30),
    um                      varchar(10),
    proc_tva_articol        double precision,
    proc_comision_articol   double precision,
    da_nu_servicii_turism   boolean not null default false,
    gr_chelt_ven_postc      varchar(25)
);

-- Internal orders: cost orders and tourism settlements.
create table comanda (
    com_int                 varchar(25) primary key,
    den_comanda             text,
    com_int_sup             varchar(25),
    gr_com_int              varchar(20),
    emitent_com_int         varchar(100),
    moneda_com_int          varchar(3),
    val_comanda             double precision,
    data_incep_comanda      date,
    data_sf_comanda         date,
    data_sf_initiala        date,
    data_inchid_comanda     date,
    data_confirmare_decont  timestamp,
    tara_plecare            text,
    oras_plecare            text,
    tara_destinatie         text,
    oras_destinatie         text,
    da_nu_ue                boolean,
    proc_comision_la_vinzare_romania  double precision,
    proc_comision_la_vinzare_extern   double precision
);

create table obiect_urm_chelt (
    nr_obiect                      varchar(20) primary key,
    den_obiect                     text,
    tip_obiect_urm_chelt           varchar(20),
    tip_obiect_urm_chelt_grupa     varchar(20),
    tip_obiect_urm_chelt_subgrupa  varchar(20),
    partener                       varchar(100),
    magazie                        varchar(5)
);

-- ---------------------------------------------------------------- documents

create table doc (
    data_doc                date not null,
    tip_doc                 varchar(7) not null references tip_doc,
    nr_doc                  varchar(15) not null,
    partener                varchar(100),
    emitent                 varchar(100),
    jurnal                  text,
    magazie_sursa           varchar(5),
    moneda                  varchar(3) not null default 'RON',
    curs                    double precision not null default 1,
    da_nu_validat_contabil  boolean not null default false,
    eu_punct_lucru          varchar(50),
    doc_id_ext              bigint,
    data_ins                date,
    data_crono              timestamp,
    primary key (data_doc, tip_doc, nr_doc)
);

create table doc_poz (
    data_doc           date not null,
    tip_doc            varchar(7) not null,
    nr_doc             varchar(15) not null,
    scv                integer not null,
    articol            varchar(50),
    detaliu_articol    varchar(50),
    cant               double precision,
    pret               double precision,
    moneda             varchar(3) not null default 'RON',
    curs               double precision not null default 1,
    valoare            double precision,   -- in the line's currency, without VAT
    valoare_lei        double precision,
    proc_tva           double precision,
    valoare_tva_lei    double precision,
    canal_vanzare      text references canal_vanzare,
    tara_vanzare       varchar(3),
    com_int            varchar(25),
    nr_obiect          varchar(20),
    loc                varchar(25),
    activitate         varchar(50),
    lot                varchar(20),
    chelt_ven          varchar(15),
    furnizor           text,
    mon_furn           text,
    val_furn_previz    double precision,
    cod_rezervare_furn text,
    nr_bilet           varchar(20),
    da_nu_voucher      boolean,
    data_confirmare    date,
    doc_poz_id_ext     bigint,
    primary key (data_doc, tip_doc, nr_doc, scv),
    foreign key (data_doc, tip_doc, nr_doc) references doc
);

-- Postings of the document lines. conts/conta is the line's own account,
-- conts_coresp/conta_coresp the other side; deb_cred tells on which side the
-- line's account stands ('D' debit, 'C' credit). Partner and issuer are
-- carried on the line so the ledger view reads one table.
create table doc_contare (
    data_doc                  date not null,
    tip_doc                   varchar(7) not null,
    nr_doc                    varchar(15) not null,
    scv                       integer not null,
    scv_contare               integer not null,
    aplicatie                 text,
    jurnal                    text,
    explicatie                varchar(100),
    conts                     varchar(7) not null,
    conta                     varchar(25) not null,
    conts_coresp              varchar(7) not null,
    conta_coresp              varchar(25) not null,
    moneda                    varchar(3) not null,
    moneda_coresp             varchar(3) not null,
    valoare                   double precision not null,
    valoare_lei               double precision not null,
    valoare_coresp            double precision not null,
    curs                      double precision not null default 1,
    deb_cred                  varchar(1) not null check (deb_cred in ('D', 'C')),
    articol                   varchar(50),
    detaliu_articol           varchar(50),
    partener                  varchar(100),
    emitent_doc               varchar(100),
    imp_taxa                  varchar(50),
    activitate                varchar(50),
    lot                       varchar(20),
    magazie_sursa             varchar(5),
    da_nu_contare             boolean not null default true,
    da_nu_in_postcalcul       boolean not null default false,
    da_nu_regie               boolean not null default false,
    com_int                   varchar(25),
    loc                       varchar(25),
    gr_chelt_ven_postc        varchar(25),
    nr_obiect                 varchar(20),
    cant                      double precision,
    casa                      varchar(50),
    banca_eu                  text,
    cont_banca_eu             text,
    reprezentind              text,
    eu_punct_lucru            varchar(50),
    eu_punct_lucru_coresp     varchar(50),
    partener_punct_lucru      text,
    data_contare              date not null,
    eu_punct_lucru_procesare  varchar(50),
    primary key (data_doc, tip_doc, nr_doc, scv, scv_contare)
);

-- The journal register: one balanced entry (debit account = credit account,
-- one value in lei) per posting that was carried to the books.
create table reg_jurnal (
    id_reg_jurnal          bigint generated always as identity primary key,
    data_reg_jurnal        date not null,
    data_nota_contabila    date,
    data_doc               date not null,
    tip_doc                varchar(7) not null,
    nr_doc                 varchar(15) not null,
    scv                    integer,
    conts_db               varchar(7) not null,
    conta_db               varchar(25) not null,
    moneda_db              varchar(3) not null,
    val_mon_db             double precision not null,
    valoare_lei            double precision not null,
    conts_cr               varchar(7) not null,
    conta_cr               varchar(25) not null,
    moneda_cr              varchar(3) not null,
    val_mon_cr             double precision not null,
    curs                   double precision not null default 1,
    explicatie             varchar(100),
    com_int                varchar(25),
    eu_punct_lucru         varchar(50),
    eu_punct_lucru_coresp  varchar(50)
);

create index doc_contare_data_contare on doc_contare (data_contare);
-- The register analysis takes the smallest journal of every document.
create index doc_contare_jurnal on doc_contare (data_doc, tip_doc, nr_doc, jurnal);
create index reg_jurnal_data on reg_jurnal (data_reg_jurnal);
create index reg_jurnal_doc on reg_jurnal (data_doc, tip_doc, nr_doc);
create index reg_jurnal_db on reg_jurnal (conts_db, conta_db, data_reg_jurnal);
create index reg_jurnal_cr on reg_jurnal (conts_cr, conta_cr, data_reg_jurnal);
create index doc_poz_com_int on doc_poz (com_int);

-- ---------------------------------------------------------------- views

-- Every posting line of the period, one row per doc_contare row.
create view view_contab_det as
with per as (select data_incep, data_sf from data_list limit 1)
select c.aplicatie,
       c.jurnal,
       c.explicatie::text                      as explicatie,
       c.conts::text                           as conts,
       c.conta::text                           as conta,
       c.conts_coresp::text                    as conts_coresp,
       c.conta_coresp::text                    as conta_coresp,
       c.moneda::text                          as moneda,
       c.moneda_coresp::text                   as moneda_coresp,
       c.data_doc,
       c.tip_doc,
       c.nr_doc::text                          as nr_doc,
       c.scv,
       c.articol::text                         as articol,
       c.detaliu_articol::text                 as detaliu_articol,
       c.partener::text                        as partener,
       c.valoare,
       c.valoare_lei,
       c.valoare_coresp,
       c.imp_taxa,
       c.activitate,
       c.lot,
       c.magazie_sursa,
       c.da_nu_contare,
       c.da_nu_in_postcalcul,
       c.com_int::text                         as com_int,
       c.loc::text                             as loc,
       c.gr_chelt_ven_postc::text              as gr_chelt_ven_postc,
       c.nr_obiect,
       c.casa,
       c.banca_eu,
       c.cont_banca_eu,
       c.deb_cred::text                        as deb_cred,
       c.reprezentind,
       c.eu_punct_lucru,
       c.eu_punct_lucru_coresp,
       c.partener_punct_lucru,
       case when not c.da_nu_contare then 'Linie necontata' end                     as eroare1,
       case when c.moneda <> 'RON'
             and abs(c.valoare * c.curs - c.valoare_lei) > 0.05
            then 'Valoare lei diferita de valoare * curs' end                         as eroare2,
       case when c.conts like '6%' and c.com_int is null
            then 'Cheltuiala fara comanda' end                                       as eroare3,
       c.data_contare,
       c.eu_punct_lucru_procesare,
       per.data_incep,
       per.data_sf
from doc_contare c
cross join per
where c.data_doc between per.data_incep and per.data_sf;

-- The register of the period seen from each account: every entry once on
-- its debit account and once on its credit account.
create view view_contab_rulaj_reg_per as
with per as (select data_incep, data_sf from data_list limit 1)
select r.data_reg_jurnal,
       r.data_doc,
       r.tip_doc,
       r.nr_doc,
       s.conts,
       s.conta,
       s.moneda,
       s.valoare_db,
       s.valoare_cr,
       r.curs,
       s.valoare_db_lei,
       s.valoare_cr_lei,
       s.dbcr,
       s.conts_coresp,
       s.conta_coresp,
       r.explicatie,
       per.data_incep,
       per.data_sf
from reg_jurnal r
cross join per
cross join lateral (
    select r.conts_db as conts, r.conta_db as conta, r.moneda_db as moneda,
           r.val_mon_db as valoare_db, cast(null as double precision) as valoare_cr,
           r.valoare_lei as valoare_db_lei, cast(null as double precision) as valoare_cr_lei,
           cast('DB' as varchar(2)) as dbcr, r.conts_cr as conts_coresp, r.conta_cr as conta_coresp
    union all
    select r.conts_cr, r.conta_cr, r.moneda_cr,
           cast(null as double precision), r.val_mon_cr,
           cast(null as double precision), r.valoare_lei,
           cast('CR' as varchar(2)), r.conts_db, r.conta_db
) as s
where r.data_reg_jurnal between per.data_incep and per.data_sf;

-- Opening balance of every analytic account at the start of the period:
-- the initial balance plus the register entries dated before the period.
create view view_conta_sold_per_incep as
with per as (select data_incep, data_sf from data_list limit 1),
mv as (
    select r.conts_db as conts, r.conta_db as conta,
           r.val_mon_db as net, r.valoare_lei as net_lei
    from reg_jurnal r, per
    where r.data_reg_jurnal < per.data_incep
    union all
    select r.conts_cr, r.conta_cr, -r.val_mon_cr, -r.valoare_lei
    from reg_jurnal r, per
    where r.data_reg_jurnal < per.data_incep
    union all
    select i.conts, i.conta, i.sold_db - i.sold_cr, i.sold_db_lei - i.sold_cr_lei
    from conta_sold_initial i, per
    where i.data_sold <= per.data_incep
),
tot as (
    select conts, conta,
           round(sum(net)::numeric, 2)::double precision     as net,
           round(sum(net_lei)::numeric, 2)::double precision as net_lei
    from mv
    group by conts, conta
)
select a.conts,
       a.conta,
       a.moneda,
       per.data_incep,
       per.data_sf,
       case when t.net > 0 then t.net else 0 end::double precision          as sold_db,
       case when t.net < 0 then -t.net else 0 end::double precision         as sold_cr,
       case when t.net_lei > 0 then t.net_lei else 0 end::double precision  as sold_db_lei,
       case when t.net_lei < 0 then -t.net_lei else 0 end::double precision as sold_cr_lei
from conta a
cross join per
left join tot t on t.conts = a.conts and t.conta = a.conta;

-- Post-calculation ledger: expense (class 6) and revenue (class 7) lines of
-- the period that enter post-calculation, with their order and object. The
-- production handed to stock and its discharge (711) are a change in stocks,
-- neither an expense nor a revenue: they count in the profit only.
create view view_postc_rulaj_det as
with per as (select data_incep, data_sf from data_list limit 1)
select c.explicatie,
       c.data_doc,
       c.tip_doc,
       c.nr_doc,
       c.articol,
       c.detaliu_articol,
       c.partener::text                                  as partener,
       c.magazie_sursa,
       cast(null as double precision)                    as nr_inv,
       c.com_int,
       c.loc,
       k.data_inchid_comanda,
       c.da_nu_in_postcalcul,
       c.da_nu_regie,
       c.gr_chelt_ven_postc,
       x.valoare_lei,
       c.valoare_lei                                     as valoare_lei_totala,
       c.scv_contare                                     as scv_det,
       c.scv,
       c.nr_obiect,
       case when c.conts_coresp like '3%' then c.conts_coresp end::varchar(7)  as conts_gest,
       case when c.conts_coresp like '3%' then c.conta_coresp end::varchar(25) as conta_gest,
       c.conts::text                                     as conts,
       c.conta::text                                     as conta,
       x.chelt_ven,
       case when x.chelt_ven = 'Cheltuieli' then x.valoare_lei else 0 end::double precision as cheltuieli_lei,
       case when x.chelt_ven = 'Venituri' then x.valoare_lei else 0 end::double precision   as venituri_lei,
       case when x.chelt_ven = 'Cheltuieli' then -x.valoare_lei else x.valoare_lei end::double precision as profit_lei,
       case when c.conts = '641' then round((c.valoare_lei / 45.0)::numeric, 2)::double precision end as ore,
       case when c.conts = '641' then 1.0::double precision end as coef_ore,
       case when c.com_int is null then 'FARACMD' end::varchar(7) as eroare,
       c.cant,
       c.activitate,
       c.lot,
       c.emitent_doc::text                               as emitent_doc,
       k.tara_destinatie,
       k.oras_destinatie,
       c.eu_punct_lucru,
       a.grupa_articol,
       o.tip_obiect_urm_chelt,
       k.emitent_com_int                                 as emitent,
       case x.chelt_ven when 'Cheltuieli' then 'Total cheltuieli'
                        when 'Venituri' then 'Total venituri'
                        else 'Total variatie stoc' end::varchar(25) as gr_chelt_ven_postc_sup,
       (x.chelt_ven = 'Cheltuieli')                      as da_nu_chelt_postc,
       substr(c.loc, 1, 2)::varchar(2)                   as loc1,
       substr(c.loc, 4, 2)::varchar(2)                   as loc2,
       k.com_int_sup,
       k.gr_com_int,
       e.companie_emitenta,
       per.data_incep,
       per.data_sf
from doc_contare c
cross join per
cross join lateral (
    select case when c.conts like '6%' then cast('Cheltuieli' as varchar(15))
                when c.conts = '711' then cast('Variatie stoc' as varchar(15))
                else cast('Venituri' as varchar(15)) end as chelt_ven,
           -- expenses count on the debit side, revenues on the credit side
           case when (c.conts like '6%') = (c.deb_cred = 'D') then c.valoare_lei
                else -c.valoare_lei end as valoare_lei
) as x
left join comanda k on k.com_int = c.com_int
left join obiect_urm_chelt o on o.nr_obiect = c.nr_obiect
left join articol a on a.articol = c.articol
left join emitent e on e.emitent = c.emitent_doc
where c.data_doc between per.data_incep and per.data_sf
  and c.da_nu_in_postcalcul
  and (c.conts like '6%' or c.conts like '7%');

-- Tourism settlements: the document lines of internal orders of the tourism
-- groups, with revenue, expense and VAT figures per line and per document.
create view view_verif_TVA_Inclus as
with per as (select data_incep, data_sf from data_list limit 1),
lin as (
    select p.*,
           d.partener                as partener_doc,
           d.emitent                 as emitent_doc,
           d.eu_punct_lucru          as eu_punct_lucru_doc,
           d.doc_id_ext,
           d.data_ins,
           d.data_crono,
           case when p.chelt_ven = 'Venituri' then p.valoare_lei else 0 end   as ven_lei,
           case when p.chelt_ven = 'Cheltuieli' then p.valoare_lei else 0 end as chelt_lei,
           case when p.chelt_ven = 'Venituri' then p.valoare else 0 end       as ven_mon,
           case when p.chelt_ven = 'Cheltuieli' then p.valoare else 0 end     as chelt_mon
    from doc_poz p
    join doc d on d.data_doc = p.data_doc and d.tip_doc = p.tip_doc and d.nr_doc = p.nr_doc
    join comanda k on k.com_int = p.com_int and k.gr_com_int like 'Turism%'
    cross join per
    where p.data_doc between per.data_incep and per.data_sf
),
tot as (
    select data_doc, tip_doc, nr_doc,
           round(sum(ven_lei)::numeric, 2) as ven_lei, round(sum(chelt_lei)::numeric, 2) as chelt_lei,
           round(sum(ven_mon)::numeric, 2) as ven_mon, round(sum(chelt_mon)::numeric, 2) as chelt_mon
    from lin
    group by data_doc, tip_doc, nr_doc
)
select l.com_int,
       l.data_doc,
       l.tip_doc,
       l.nr_doc,
       l.articol::text                                    as articol,
       l.partener_doc                                     as partener,
       l.ven_lei::double precision                        as venituri,
       l.chelt_lei::double precision                      as cheltuieli,
       round((l.ven_lei - l.chelt_lei)::numeric, 2)::double precision as profit,
       l.furnizor,
       l.val_furn_previz,
       t.chelt_mon::double precision                      as cheltuieli_doc_moneda,
       l.activitate,
       c.conts,
       c.conta,
       l.proc_tva,
       case when a.da_nu_servicii_turism then 'marja' else 'normal' end::varchar(10) as tip_tratare_tva,
       coalesce(k.oras_plecare || ' - ', '') || coalesce(k.oras_destinatie, '') as detaliu_text,
       k.data_confirmare_decont,
       l.moneda::varchar(4)                               as moneda,
       k.gr_com_int,
       l.detaliu_articol::text                            as detaliu_articol,
       l.cod_rezervare_furn,
       k.da_nu_ue,
       l.valoare_lei                                      as val_lei,
       l.nr_bilet,
       l.da_nu_voucher,
       l.data_confirmare,
       l.ven_mon::double precision                        as venituri_moneda,
       k.com_int_sup,
       round((l.ven_lei * coalesce(a.proc_comision_articol, 0) / 100)::numeric, 2)::double precision as comision_calculat,
       l.curs,
       l.chelt_mon::double precision                      as cheltuieli_moneda,
       cast(case when l.chelt_ven = 'Venituri' then '7911' else '6330' end as varchar(20)) as cod_cci,
       pa.da_nu_persoana_juridica,
       l.emitent_doc                                      as emitent,
       l.eu_punct_lucru_doc                               as eu_punct_lucru,
       k.data_sf_comanda,
       false                                              as modificat,
       l.scv,
       k.emitent_com_int,
       t.ven_mon::double precision                        as venituri_doc_moneda,
       l.valoare,
       l.valoare_lei,
       l.loc,
       l.nr_obiect,
       cast(null as varchar(20))                          as locatie_magazie,
       cast(null as date)                                 as data_expirare,
       l.doc_poz_id_ext,
       l.doc_id_ext,
       a.gr_chelt_ven_postc,
       a.proc_tva_articol,
       case when a.da_nu_servicii_turism then l.proc_tva else 0 end::double precision as proc_tva_inclus,
       l.proc_tva                                         as proc_tva_poz,
       a.da_nu_servicii_turism,
       l.data_crono,
       k.tara_destinatie,
       (l.chelt_ven = 'Venituri')                         as urm_incasare,
       (l.chelt_ven = 'Cheltuieli')                       as urm_plata,
       case when t.chelt_lei > 0
            then round(((t.ven_lei - t.chelt_lei) / t.chelt_lei * 100)::numeric, 2)::double precision
       end                                                as adaos,
       per.data_incep,
       per.data_sf,
       l.chelt_ven::varchar(20)                           as chelt_ven,
       l.valoare                                          as val,
       cast(case when a.da_nu_servicii_turism then 'TVA inclus in marja'
                 else 'TVA normal' end as varchar(40))    as grup_tip_tva,
       a.grupa_articol,
       t.ven_lei::double precision                        as venituri_doc,
       t.chelt_lei::double precision                      as cheltuieli_doc,
       round((t.ven_lei - t.chelt_lei)::numeric, 2)::double precision as profit_doc,
       l.data_ins,
       l.mon_furn,
       false                                              as da_nu_returnare_piese_inlocuite,
       cast(k.gr_com_int as varchar(50))                  as grup_detaliu,
       k.oras_destinatie,
       cast('Turism' as varchar(50))                      as activitate_superioara,
       k.tara_plecare,
       k.oras_plecare,
       k.data_sf_initiala,
       cast(null as varchar(1000))                        as obs_aproviz,
       k.moneda_com_int,
       k.val_comanda,
       k.proc_comision_la_vinzare_romania,
       k.proc_comision_la_vinzare_extern,
       a.proc_comision_articol,
       substr(l.loc, 1, 2)::varchar(2)                    as loc1,
       substr(l.loc, 4, 2)::varchar(2)                    as loc2
from lin l
cross join per
join tot t on t.data_doc = l.data_doc and t.tip_doc = l.tip_doc and t.nr_doc = l.nr_doc
join comanda k on k.com_int = l.com_int
left join articol a on a.articol = l.articol
left join partener pa on pa.partener = l.partener_doc
left join lateral (
    select dc.conts, dc.conta
    from doc_contare dc
    where dc.data_doc = l.data_doc and dc.tip_doc = l.tip_doc
      and dc.nr_doc = l.nr_doc and dc.scv = l.scv
    order by dc.scv_contare
    limit 1
) as c on true;
