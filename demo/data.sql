-- Demo data for the schema of demo/schema.sql: the books of a small bakery
-- with a travel desk, from January 2025 to November 2026.
--
--   select demo_generate(1);     -- small demo (about 14,000 postings)
--   select demo_generate(110);   -- large demo (over 1,000,000 postings)
--
-- Everything is produced inside the server with set-based statements and is
-- deterministic: the same scale always gives the same rows. The previous
-- content of the data tables is replaced (grid_style is left alone).

-- A deterministic pseudo-random integer in [0, n) for key k and salt s.
create or replace function demo_rnd(k bigint, s integer, n integer) returns integer
language sql immutable parallel safe as
$$ select ((hashint8(k * 7919 + s)::bigint + 2147483648) % n)::integer $$;

create or replace function demo_generate(scale integer default 1) returns bigint
language plpgsql as
$body$
declare
    n_doc    bigint := greatest(scale, 1)::bigint * 2400;
    d_first  constant date := date '2025-01-01';
    d_last   constant date := date '2026-11-30';
    n_days   constant integer := date '2026-11-30' - date '2025-01-01' + 1;
    n_post   bigint;
    -- cost of the own products sold, as a share of their selling price
    cost_ratio constant numeric := 0.62;
begin
    set local client_min_messages = warning;
    drop table if exists g_doc, g_poz, g_dest, g_tr, g_bp;
    truncate reg_jurnal, doc_contare, doc_poz, doc, conta_sold_initial, conta_lang, conta, conts,
             capitol_bugetar, curs_valutar, tip_doc, partener, canal_vanzare, articol, comanda,
             obiect_urm_chelt, emitent_menuquarv, menuquarv, emitent, data_list
             restart identity;

    -- ------------------------------------------------------------ session
    insert into emitent (emitent, den_emitent, operator_parola, loc, companie_emitenta, cod_fiscal) values
        ('DEMO',  'Operator demonstrativ', 'demo',  '01.01', 'Brutăria Quarv Demo SRL', 'RO1234567'),
        ('QUARV', 'Administrator meniu',   'quarv', '01.01', 'Brutăria Quarv Demo SRL', 'RO1234567'),
        ('ANA',   'Ana Mureșan',           'ana',   '02.01', 'Brutăria Quarv Demo SRL', 'RO1234567');

    insert into menuquarv (aplicatie, menuquarv, aplicatie_sup, menuquarv_sup, scv, den_menuquarv) values
        ('POS', 'ANALIZE',        null,  null,      1, 'Analize'),
        ('POS', 'FISA_CONT',      'POS', 'ANALIZE', 1, 'Fisa De Cont Analitic'),
        ('POS', 'PROFITABILITATE','POS', 'ANALIZE', 2, 'Analiza Profitabilitate'),
        ('POS', 'REG_JURNAL',     'POS', 'ANALIZE', 3, 'Analiza Registru Jurnal'),
        ('POS', 'CONTARE_DOC',    'POS', 'ANALIZE', 4, 'Contare Documente'),
        ('POS', 'CHELT_VEN_CMD',  'POS', 'ANALIZE', 5, 'Chelt/Ven Pe Comenzi(fara regii repartizate)'),
        ('POS', 'CONTAB_DET',     'POS', 'ANALIZE', 6, 'Analiza Contabila Detaliata'),
        ('POS', 'DECONT_TURISM',  'POS', 'ANALIZE', 7, 'Verificare Decont Turism'),
        ('POS', 'POSTCALCUL',     'POS', 'ANALIZE', 8, 'Analiza Postcalcul');
    insert into emitent_menuquarv (emitent, aplicatie, menuquarv)
    select e.emitent, m.aplicatie, m.menuquarv
    from menuquarv m cross join (values ('QUARV'), ('DEMO')) as e(emitent);

    insert into data_list (data_incep, data_sf, data_incep_f, data_sf_f, data_incep_bal, data_sf_bal,
                           moneda_raportare, curs_raportare)
    values (d_first, d_last, date '2026-01-01', d_last, d_first, date '2025-12-31', 'RON', 1);

    -- ------------------------------------------------------------ chart of accounts
    insert into capitol_bugetar values
        ('10.01', 'Cheltuieli salariale în bani'),
        ('20.01', 'Bunuri și servicii'),
        ('20.05', 'Bunuri de natura obiectelor de inventar'),
        ('30.10', 'Venituri din prestări de servicii'),
        ('33.10', 'Venituri din vânzarea de bunuri');

    insert into conts (conts, den_conts, discontinued, tip_cont) values
        ('1012', 'Capital subscris vărsat', false, 'P'),
        ('117',  'Rezultatul reportat', false, 'B'),
        ('2131', 'Echipamente tehnologice', false, 'A'),
        ('301',  'Materii prime', false, 'A'),
        ('302',  'Materiale consumabile', false, 'A'),
        ('345',  'Produse finite', false, 'A'),
        ('371',  'Mărfuri', false, 'A'),
        ('401',  'Furnizori', false, 'P'),
        ('4111', 'Clienți', false, 'A'),
        ('421',  'Personal - salarii datorate', false, 'P'),
        ('4426', 'TVA deductibilă', false, 'A'),
        ('4427', 'TVA colectată', false, 'P'),
        ('462',  'Creditori diverși', true, 'P'),
        ('5121', 'Conturi la bănci în lei', false, 'A'),
        ('5124', 'Conturi la bănci în valută', false, 'A'),
        ('5311', 'Casa în lei', false, 'A'),
        ('601',  'Cheltuieli cu materiile prime', false, 'A'),
        ('602',  'Cheltuieli cu materialele consumabile', false, 'A'),
        ('605',  'Cheltuieli privind energia și apa', false, 'A'),
        ('627',  'Cheltuieli cu serviciile bancare și asimilate', false, 'A'),
        ('628',  'Alte cheltuieli cu serviciile executate de terți', false, 'A'),
        ('641',  'Cheltuieli cu salariile personalului', false, 'A'),
        ('704',  'Venituri din servicii prestate', false, 'P'),
        ('707',  'Venituri din vânzarea mărfurilor', false, 'P'),
        ('711',  'Venituri aferente costurilor stocurilor de produse', false, 'B');

    insert into conta (conts, conta, moneda, den_conta, discontinued, capitol_bugetar) values
        ('1012', '1012',    'RON', 'Capital subscris vărsat', false, null),
        ('117',  '117',     'RON', 'Rezultatul reportat', false, null),
        ('2131', '2131',    'RON', 'Cuptoare și utilaje de panificație', false, null),
        -- flour and packaging stocks are kept on budget chapters too, so their
        -- consumption carries a chapter on both sides (yeast on one side only)
        ('301',  '301.01',  'RON', 'Făină', false, '20.01'),
        ('301',  '301.02',  'RON', 'Drojdie și aditivi', false, null),
        ('302',  '302.01',  'RON', 'Ambalaje', false, '20.05'),
        ('345',  '345.01',  'RON', 'Produse finite în magazin', false, null),
        ('371',  '371.01',  'RON', 'Mărfuri în magazin', false, null),
        ('401',  '401.01',  'RON', 'Furnizori interni', false, null),
        ('401',  '401.02',  'EUR', 'Furnizori externi în euro', false, null),
        ('4111', '4111.01', 'RON', 'Clienți interni', false, null),
        ('4111', '4111.02', 'EUR', 'Clienți externi în euro', false, null),
        ('421',  '421',     'RON', 'Salarii datorate', false, null),
        ('4426', '4426',    'RON', 'TVA deductibilă', false, null),
        ('4427', '4427',    'RON', 'TVA colectată', false, null),
        ('462',  '462',     'RON', 'Creditori diverși', true, null),
        ('5121', '5121.01', 'RON', 'Cont curent în lei', false, null),
        ('5124', '5124.01', 'EUR', 'Cont curent în euro', false, null),
        ('5311', '5311.01', 'RON', 'Casa sediu', false, null),
        ('601',  '601.01',  'RON', 'Consum făină', false, '20.01'),
        ('602',  '602.01',  'RON', 'Consum ambalaje', false, '20.05'),
        ('605',  '605.01',  'RON', 'Energie electrică și gaze', false, '20.01'),
        ('627',  '627.01',  'RON', 'Comisioane bancare', false, '20.01'),
        ('628',  '628.01',  'RON', 'Servicii de transport', false, '20.01'),
        ('628',  '628.02',  'RON', 'Servicii turistice de la terți', false, '20.01'),
        ('641',  '641.01',  'RON', 'Salarii personal', false, '10.01'),
        ('704',  '704.01',  'RON', 'Servicii de livrare', false, '30.10'),
        ('704',  '704.02',  'RON', 'Servicii turistice', false, '30.10'),
        ('707',  '707.01',  'RON', 'Vânzări mărfuri în țară', false, '33.10'),
        ('707',  '707.02',  'RON', 'Vânzări mărfuri la export', false, '33.10'),
        ('711',  '711.01',  'RON', 'Variația stocurilor de produse finite', false, '33.10');

    -- English names for most accounts (not for 117, 462, 628.02, 704.02).
    insert into conta_lang (conts, conta, lang, den_conta_lang) values
        ('1012', '1012',    'engleza', 'Subscribed paid-in capital'),
        ('2131', '2131',    'engleza', 'Bakery equipment'),
        ('301',  '301.01',  'engleza', 'Flour'),
        ('301',  '301.02',  'engleza', 'Yeast and additives'),
        ('302',  '302.01',  'engleza', 'Packaging'),
        ('345',  '345.01',  'engleza', 'Finished goods in shop'),
        ('371',  '371.01',  'engleza', 'Goods in shop'),
        ('401',  '401.01',  'engleza', 'Domestic suppliers'),
        ('401',  '401.02',  'engleza', 'Foreign suppliers (EUR)'),
        ('4111', '4111.01', 'engleza', 'Domestic customers'),
        ('4111', '4111.02', 'engleza', 'Foreign customers (EUR)'),
        ('421',  '421',     'engleza', 'Salaries payable'),
        ('4426', '4426',    'engleza', 'Deductible VAT'),
        ('4427', '4427',    'engleza', 'Output VAT'),
        ('5121', '5121.01', 'engleza', 'Current account (RON)'),
        ('5124', '5124.01', 'engleza', 'Current account (EUR)'),
        ('5311', '5311.01', 'engleza', 'Cash desk'),
        ('601',  '601.01',  'engleza', 'Flour consumption'),
        ('602',  '602.01',  'engleza', 'Packaging consumption'),
        ('605',  '605.01',  'engleza', 'Electricity and gas'),
        ('627',  '627.01',  'engleza', 'Bank charges'),
        ('628',  '628.01',  'engleza', 'Transport services'),
        ('641',  '641.01',  'engleza', 'Staff salaries'),
        ('704',  '704.01',  'engleza', 'Delivery services'),
        ('707',  '707.01',  'engleza', 'Domestic sales of goods'),
        ('707',  '707.02',  'engleza', 'Export sales of goods'),
        ('711',  '711.01',  'engleza', 'Change in finished goods');

    -- Exchange rates of the euro and of the forint (hotels in Hungary), one per day.
    insert into curs_valutar (data_curs, moneda, curs)
    select d::date, m.moneda,
           case m.moneda when 'EUR' then round((4.97 + 0.03 * sin(k / 17.0) + 0.02 * cos(k / 53.0))::numeric, 4)
                         else round((0.0127 + 0.0002 * sin(k / 23.0))::numeric, 6) end::double precision
    from generate_series(d_first - 1, d_last, interval '1 day') with ordinality as g(d, k)
    cross join (values ('EUR'), ('HUF')) as m(moneda);

    -- ------------------------------------------------------------ nomenclatures
    insert into tip_doc (tip_doc, den_tip_doc, jurnal, aplicatie) values
        ('FactCI', 'Factură client intern',   'Jurnal vânzări',     'Facturare'),
        ('FactCE', 'Factură client extern',   'Jurnal vânzări',     'Facturare'),
        ('FactF',  'Factură furnizor',        'Jurnal cumpărări',   'Aprovizionare'),
        ('ExtrB',  'Extras de cont',          'Jurnal bancă',       'Trezorerie'),
        ('ChitI',  'Chitanță încasare',       'Jurnal casă',        'Trezorerie'),
        ('BonC',   'Bon de consum',           'Jurnal stocuri',     'Gestiune'),
        ('BonP',   'Bon de predare produse',  'Jurnal stocuri',     'Gestiune'),
        ('NotaC',  'Notă contabilă',          null,                 'Contabilitate'),
        ('DecT',   'Decont turism',           'Jurnal turism',      'Turism');

    insert into partener (partener, cod_fiscal, tara, oras, da_nu_persoana_juridica) values
        ('Fabrica de Pâine Brașov SRL',    'RO1100001', 'ROU', 'Brașov', true),
        ('Țesătoria Argeș SA',             'RO1100002', 'ROU', 'Pitești', true),
        ('Mobila Sălaj SRL',               'RO1100003', 'ROU', 'Zalău', true),
        ('Lactate Bistrița SRL',           'RO1100004', 'ROU', 'Bistrița', true),
        ('Construcții Iași SA',            'RO1100005', 'ROU', 'Iași', true),
        ('Transporturi Timișoara SRL',     'RO1100006', 'ROU', 'Timișoara', true),
        ('Vinăria Drăgășani SRL',          'RO1100007', 'ROU', 'Drăgășani', true),
        ('Librăria Ștefan cel Mare SRL',   'RO1100008', 'ROU', 'Suceava', true),
        ('Morăritul Câmpina SA',           'RO1100009', 'ROU', 'Câmpina', true),
        ('Ambalaje Târgu Mureș SRL',       'RO1100010', 'ROU', 'Târgu Mureș', true),
        ('Energie Oltenia Furnizare SA',   'RO1100011', 'ROU', 'Craiova', true),
        ('Hotel Bâlea Lac SRL',            'RO1100012', 'ROU', 'Cârțișoara', true),
        ('Zbor Aerian Românesc SA',        'RO1100013', 'ROU', 'Otopeni', true),
        ('Müller Bäckerei Handel GmbH',    'DE2200001', 'DEU', 'München', true),
        ('Alpenbrot Österreich GmbH',      'AT2200002', 'AUT', 'Salzburg', true),
        ('Hotel Balaton Kft',              'HU2200003', 'HUN', 'Siófok', true),
        ('Hotel Caraiman Sinaia SRL',      'RO1100014', 'ROU', 'Sinaia', true),
        ('Alpenhof Salzburg GmbH',         'AT2200004', 'AUT', 'Salzburg', true),
        ('Antalya Resort Turizm AŞ',       'TR2200005', 'TUR', 'Antalya', true),
        ('Autocare Carpați SRL',           'RO1100015', 'ROU', 'Brașov', true),
        ('Ghizi Montani Făgăraș SRL',      'RO1100016', 'ROU', 'Făgăraș', true),
        ('Balaton Tours Kft',              'HU2200006', 'HUN', 'Siófok', true),
        ('Popescu Ioana',                  null,        'ROU', 'Brașov', false),
        ('Ionescu Mădălina',               null,        'ROU', 'Sibiu', false),
        ('Dumitrescu Ștefan',              null,        'ROU', 'Făgăraș', false);

    insert into canal_vanzare values
        ('Magazin propriu', 'Retail'),
        ('Comenzi online',  'Retail'),
        ('Distribuitori',   'En-gros'),
        ('Export',          'Extern');

    insert into articol (articol, grupa_articol, um, proc_tva_articol, proc_comision_articol,
                         da_nu_servicii_turism, gr_chelt_ven_postc) values
        ('Pâine albă 500g',         'Panificație', 'buc', 9,  null, false, 'Venituri produse'),
        ('Pâine integrală 400g',    'Panificație', 'buc', 9,  null, false, 'Venituri produse'),
        ('Cozonac cu nucă',         'Patiserie',   'buc', 9,  null, false, 'Venituri produse'),
        ('Covrigi cu susan',        'Patiserie',   'buc', 9,  null, false, 'Venituri produse'),
        ('Servicii de livrare',     'Servicii',    'cursa', 19, null, false, 'Venituri servicii'),
        ('Făină albă 000',          'Materii prime', 'kg', 9, null, false, 'Materii prime'),
        ('Drojdie proaspătă',       'Materii prime', 'kg', 9, null, false, 'Materii prime'),
        ('Ambalaje carton',         'Ambalaje',    'buc', 19, null, false, 'Ambalaje'),
        ('Energie electrică',       'Utilități',   'kWh', 19, null, false, 'Utilități'),
        ('Transport marfă',         'Servicii',    'cursa', 19, null, false, 'Transport'),
        ('Marfă pentru revânzare',  'Mărfuri',     'buc', 19, null, false, 'Mărfuri'),
        ('Salarii',                 'Personal',    'lună', 0, null, false, 'Personal'),
        ('Pachet turistic',         'Turism',      'pachet', 19, 7, true, 'Venituri turism'),
        ('Cazare hotel',            'Turism',      'noapte', 9, 0, true, 'Costuri turism'),
        ('Bilet avion',             'Turism',      'bilet', 0, 0, true, 'Costuri turism'),
        ('Excursie opțională',      'Turism',      'persoană', 5, 10, true, 'Costuri turism'),
        ('Transfer autocar',        'Turism',      'cursa', 19, null, true, 'Costuri turism');

    insert into comanda (com_int, den_comanda, com_int_sup, gr_com_int, emitent_com_int, moneda_com_int,
                         val_comanda, data_incep_comanda, data_sf_comanda, data_sf_initiala, data_inchid_comanda) values
        ('PRODUCTIE',     'Producție',                 null,        'Productie', 'DEMO', 'RON', null,   d_first, null, null, null),
        ('CMD-PAINE',     'Producție pâine',           'PRODUCTIE', 'Productie', 'DEMO', 'RON', 900000, d_first, null, null, null),
        ('CMD-COZONAC',   'Producție cozonac',         'PRODUCTIE', 'Productie', 'DEMO', 'RON', 450000, d_first, null, null, null),
        ('CMD-PATISERIE', 'Producție patiserie',       'PRODUCTIE', 'Productie', 'ANA',  'RON', 300000, d_first, null, null, null),
        ('CMD-SEZON-2025','Comandă sezonieră Crăciun', 'PRODUCTIE', 'Productie', 'DEMO', 'RON', 120000,
                          date '2025-11-01', date '2025-12-31', date '2025-12-24', date '2026-01-15'),
        ('REGIE',         'Cheltuieli generale',       null,        'Regie',     'DEMO', 'RON', null,   d_first, null, null, null),
        ('TURISM',        'Agenția de turism',         null,        'Turism',    'DEMO', 'RON', null,   d_first, null, null, null);

    insert into obiect_urm_chelt (nr_obiect, den_obiect, tip_obiect_urm_chelt, tip_obiect_urm_chelt_grupa,
                                  tip_obiect_urm_chelt_subgrupa, partener, magazie)
    select 'OB-' || a || '-' || b,
           (array['Cuptor', 'Linie ambalare', 'Autoutilitară', 'Contract'])[1 + a % 4] || ' ' || a || '/' || b,
           (array['Cuptor', 'Linie ambalare', 'Autoutilitara', 'Contract client'])[1 + a % 4],
           (array['Productie', 'Productie', 'Logistica', 'Vanzari'])[1 + a % 4],
           (array['Coacere', 'Ambalare', 'Livrare', 'Distributie'])[1 + a % 4],
           case when a % 4 = 3 then (array['Fabrica de Pâine Brașov SRL', 'Lactate Bistrița SRL',
                                           'Mobila Sălaj SRL'])[b] end,
           case when a % 4 = 2 then 'M02' else 'M01' end
    from generate_series(1, 12) a, generate_series(1, 3) b;
    -- The delivery vans go by their plate numbers, the framework contracts by
    -- one number each (one per customer, in the order of the customers below).
    insert into obiect_urm_chelt (nr_obiect, den_obiect, tip_obiect_urm_chelt, tip_obiect_urm_chelt_grupa,
                                  tip_obiect_urm_chelt_subgrupa, partener, magazie)
    select v, 'Autoutilitară ' || v, 'Autoutilitara', 'Logistica', 'Livrare', null, null
    from unnest(array['BV07QRV', 'BV12QRV', 'BV21QRV']) as v
    union all
    select 'CTR-' || (100 + n), 'Contract cadru ' || p, 'Contract client', 'Vanzari', 'Contracte cadru', p, null
    from unnest(array['Fabrica de Pâine Brașov SRL', 'Țesătoria Argeș SA', 'Mobila Sălaj SRL',
                      'Lactate Bistrița SRL', 'Construcții Iași SA', 'Librăria Ștefan cel Mare SRL',
                      'Vinăria Drăgășani SRL', 'Popescu Ioana']) with ordinality as c(p, n);

    -- ------------------------------------------------------------ documents
    -- One row per document: its date, type and partner. dest is a
    -- settlement's destination (g_dest); the first one of each month flies
    -- abroad, so that every month has lines in euro and an exempt flight.
    create temp table g_doc on commit drop as
    select i, data_doc, tip_doc, r2, r3, nevalidat,
           case when tip_doc = 'DecT' and row_number() over (partition by tip_doc, date_trunc('month', data_doc)
                                                              order by i) = 1
                then (array[2, 4])[1 + r3 % 2] else r3 % 5 end as dest
    from (select i,
                 d_first + ((i - 1) * n_days / n_doc)::integer as data_doc,
                 case when r < 28 then 'FactCI' when r < 33 then 'FactCE' when r < 53 then 'FactF'
                      when r < 65 then 'ExtrB'  when r < 72 then 'ChitI'  when r < 82 then 'BonC'
                      when r < 87 then 'NotaC'  else 'DecT' end::varchar(7) as tip_doc,
                 demo_rnd(i, 2, 1000) as r2,
                 demo_rnd(i, 3, 1000) as r3,
                 (demo_rnd(i, 9, 200) = 0) as nevalidat
          from (select i, demo_rnd(i, 1, 100) as r from generate_series(1::bigint, n_doc) as i) as s) as s;

    insert into doc (data_doc, tip_doc, nr_doc, partener, emitent, jurnal, magazie_sursa, moneda, curs,
                     da_nu_validat_contabil, eu_punct_lucru, doc_id_ext, data_ins, data_crono)
    select g.data_doc, g.tip_doc, g.i::text,
           case g.tip_doc
               when 'FactCI' then (array['Fabrica de Pâine Brașov SRL', 'Țesătoria Argeș SA', 'Mobila Sălaj SRL',
                                         'Lactate Bistrița SRL', 'Construcții Iași SA', 'Librăria Ștefan cel Mare SRL',
                                         'Vinăria Drăgășani SRL', 'Popescu Ioana'])[1 + g.r2 % 8]
               when 'FactCE' then (array['Müller Bäckerei Handel GmbH', 'Alpenbrot Österreich GmbH'])[1 + g.r2 % 2]
               when 'FactF'  then case when g.r3 % 10 = 0 then 'Müller Bäckerei Handel GmbH'
                                       else (array['Morăritul Câmpina SA', 'Ambalaje Târgu Mureș SRL',
                                                   'Energie Oltenia Furnizare SA', 'Transporturi Timișoara SRL'])[1 + g.r2 % 4] end
               when 'ChitI'  then (array['Popescu Ioana', 'Ionescu Mădălina', 'Dumitrescu Ștefan'])[1 + g.r2 % 3]
               when 'DecT'   then (array['Popescu Ioana', 'Ionescu Mădălina', 'Dumitrescu Ștefan',
                                         'Construcții Iași SA', 'Țesătoria Argeș SA'])[1 + g.r2 % 5]
           end,
           case when g.r3 % 3 = 0 then 'ANA' else 'DEMO' end,
           case when g.tip_doc = 'FactCI' and g.r2 % 7 = 0 then 'Jurnal vânzări online' end,
           case when g.tip_doc in ('FactCI', 'BonC') then 'M01' when g.tip_doc = 'FactF' then 'M02' end,
           case when g.tip_doc = 'FactCE' or (g.tip_doc = 'FactF' and g.r3 % 10 = 0) then 'EUR' else 'RON' end,
           case when g.tip_doc = 'FactCE' or (g.tip_doc = 'FactF' and g.r3 % 10 = 0) then cv.curs else 1 end,
           not g.nevalidat,
           case when g.r3 % 3 = 0 then 'Punct de lucru Sibiu' else 'Sediu Brașov' end,
           -- settlements abroad come from the tour operators' booking platform,
           -- whose 64-bit ids lie beyond what a double holds exactly
           case when g.tip_doc = 'DecT' and g.dest >= 2 then 9007199254740993 + 2 * g.i
                else 100000 + g.i end,
           g.data_doc,
           g.data_doc + make_interval(mins => (g.r2 % 600)::integer + 420, secs => demo_rnd(g.i, 10, 60000) / 1000.0)
    from g_doc g
    join curs_valutar cv on cv.data_curs = g.data_doc and cv.moneda = 'EUR';

    -- Travel destinations: the hotel, the local guide where the travellers go
    -- by coach instead of flying, and the currency both are paid in (null: lei).
    create temp table g_dest on commit drop as
    select * from (values
        (0, 'România', 'Sinaia',    false, 'Hotel Caraiman Sinaia SRL', 'Ghizi Montani Făgăraș SRL', null),
        (1, 'România', 'Bâlea Lac', false, 'Hotel Bâlea Lac SRL',       'Ghizi Montani Făgăraș SRL', null),
        (2, 'Austria', 'Salzburg',  true,  'Alpenhof Salzburg GmbH',    null,                        'EUR'),
        (3, 'Ungaria', 'Siófok',    true,  'Hotel Balaton Kft',         'Balaton Tours Kft',         'HUF'),
        (4, 'Turcia',  'Antalya',   false, 'Antalya Resort Turizm AŞ',  null,                        'EUR')
    ) as t(d, tara, oras, ue, hotel, ghid, mon);

    -- The tourism settlements: one internal order per travel settlement.
    insert into comanda (com_int, den_comanda, com_int_sup, gr_com_int, emitent_com_int, moneda_com_int, val_comanda,
                         data_incep_comanda, data_sf_comanda, data_sf_initiala, data_inchid_comanda,
                         data_confirmare_decont, tara_plecare, oras_plecare, tara_destinatie, oras_destinatie, da_nu_ue,
                         proc_comision_la_vinzare_romania, proc_comision_la_vinzare_extern)
    select 'DT-' || g.i, 'Decont ' || t.oras, 'TURISM',
           case when t.d >= 2 then 'Turism extern' else 'Turism intern' end,
           case when g.r3 % 3 = 0 then 'ANA' else 'DEMO' end,
           case when t.d >= 2 then 'EUR' else 'RON' end,
           null, g.data_doc, g.data_doc + 7, g.data_doc + 6, g.data_doc + 10,
           g.data_doc + make_interval(hours => 30 + (g.r2 % 48)::integer, secs => demo_rnd(g.i, 11, 3600000) / 1000.0),
           'România', 'Brașov', t.tara, t.oras, t.ue,
           (array[3, 5, 5, 7])[1 + g.r2 % 4], 6 + (g.r2 / 4) % 5
    from g_doc g
    join g_dest t on t.d = g.dest
    where g.tip_doc = 'DecT';

    -- Document lines. a_* is the line's own account, c_* the other side;
    -- amounts: v_mon in the line's currency mon where that is not the leu
    -- (at the rate curs), v_lei always.
    create temp table g_poz on commit drop as
    select g.i, g.data_doc, g.tip_doc, l.scv, l.articol, l.a_conts, l.a_conta, l.c_conts, l.c_conta,
           l.deb_cred, cv.curs, d.moneda as moneda_doc, d.partener, d.emitent, d.jurnal, d.magazie_sursa,
           d.eu_punct_lucru, g.nevalidat, d.doc_id_ext,
           l.v_eur as v_mon, case when l.v_eur is not null then 'EUR' end::varchar(3) as mon,
           coalesce(round((l.v_eur * cv.curs)::numeric, 2), l.v_lei)::double precision as v_lei,
           l.proc_tva, l.canal, l.tara, l.com_int, l.nr_obiect, l.chelt_ven, l.cant,
           l.regie, cast(null as text) as furnizor
    from g_doc g
    join doc d on d.data_doc = g.data_doc and d.tip_doc = g.tip_doc and d.nr_doc = g.i::text
    join curs_valutar cv on cv.data_curs = g.data_doc and cv.moneda = 'EUR'
    cross join lateral generate_series(1, case g.tip_doc
            when 'FactCI' then 1 + g.r2 % 5   when 'FactCE' then 1 + g.r2 % 3
            when 'FactF'  then 1 + g.r2 % 5   when 'ExtrB'  then 2 + g.r3 % 5
            when 'ChitI'  then 1              when 'BonC'   then 1 + g.r3 % 5
            when 'NotaC'  then 2              else 3 end) as s(scv)
    cross join lateral (select demo_rnd(g.i * 8 + s.scv, 4, 1000000) as q) as q
    cross join lateral (
        select s.scv,
               k.articol, k.a_conts, k.a_conta, k.c_conts, k.c_conta, k.deb_cred,
               k.v_eur, k.v_lei, k.proc_tva, k.canal, k.tara, k.com_int,
               -- vans for deliveries, the customer's contract for some sales
               case when not k.obiect then null
                    when k.articol in ('Servicii de livrare', 'Transport marfă')
                    then (array['BV07QRV', 'BV12QRV', 'BV21QRV'])[1 + q.q % 3]
                    when g.tip_doc = 'FactCI' and (q.q / 7) % 3 = 0 then 'CTR-' || (101 + g.r2 % 8)
                    else 'OB-' || (1 + q.q % 12) || '-' || (1 + (q.q / 12) % 3) end as nr_obiect,
               k.chelt_ven, k.cant, k.regie
        from (
            select case g.tip_doc
                     when 'FactCI' then (array['Pâine albă 500g', 'Pâine integrală 400g', 'Cozonac cu nucă',
                                               'Covrigi cu susan', 'Servicii de livrare'])[1 + q.q % 5]
                     when 'FactCE' then 'Cozonac cu nucă'
                     when 'FactF'  then (array['Făină albă 000', 'Drojdie proaspătă', 'Ambalaje carton',
                                               'Energie electrică', 'Transport marfă', 'Marfă pentru revânzare'])[1 + q.q % 6]
                     when 'BonC'   then (array['Făină albă 000', 'Drojdie proaspătă', 'Ambalaje carton'])[1 + q.q % 3]
                     when 'NotaC'  then 'Salarii'
                     when 'DecT'   then case s.scv when 1 then 'Pachet turistic' when 2 then 'Cazare hotel'
                                       when 3 then case when g.dest in (2, 4) then 'Bilet avion' else 'Excursie opțională' end end
                   end::varchar(50) as articol,
                   -- the last line of a statement: the bank's charges
                   (g.tip_doc = 'ExtrB' and s.scv = 2 + g.r3 % 5) as comision,
                   q.q
        ) as a
        cross join lateral (
            select a.articol,
                   -- own account
                   case when g.tip_doc = 'FactCI' then case when a.articol = 'Servicii de livrare' then '704' else '707' end
                        when g.tip_doc = 'FactCE' then '707'
                        when g.tip_doc = 'FactF' then case a.articol when 'Făină albă 000' then '301'
                             when 'Drojdie proaspătă' then '301' when 'Ambalaje carton' then '302'
                             when 'Energie electrică' then '605' when 'Transport marfă' then '628' else '371' end
                        when g.tip_doc = 'ExtrB' then case when a.comision then '627'
                                                           when q.q % 10 in (7, 8) then '5124' else '5121' end
                        when g.tip_doc = 'ChitI' then '5311'
                        when g.tip_doc = 'BonC' then case when a.articol = 'Ambalaje carton' then '602' else '601' end
                        when g.tip_doc = 'NotaC' then case when s.scv = 1 then '641' else '421' end
                        else case when s.scv = 1 then '704' else '628' end
                   end::varchar(7) as a_conts,
                   case when g.tip_doc = 'FactCI' then case when a.articol = 'Servicii de livrare' then '704.01' else '707.01' end
                        when g.tip_doc = 'FactCE' then '707.02'
                        when g.tip_doc = 'FactF' then case a.articol when 'Făină albă 000' then '301.01'
                             when 'Drojdie proaspătă' then '301.02' when 'Ambalaje carton' then '302.01'
                             when 'Energie electrică' then '605.01' when 'Transport marfă' then '628.01' else '371.01' end
                        when g.tip_doc = 'ExtrB' then case when a.comision then '627.01'
                                                           when q.q % 10 in (7, 8) then '5124.01' else '5121.01' end
                        when g.tip_doc = 'ChitI' then '5311.01'
                        when g.tip_doc = 'BonC' then case when a.articol = 'Ambalaje carton' then '602.01' else '601.01' end
                        when g.tip_doc = 'NotaC' then case when s.scv = 1 then '641.01' else '421' end
                        else case when s.scv = 1 then '704.02' else '628.02' end
                   end::varchar(25) as a_conta,
                   -- the other side
                   case when g.tip_doc in ('FactCI', 'FactCE', 'ChitI') then '4111'
                        when g.tip_doc = 'FactF' then '401'
                        when g.tip_doc = 'ExtrB' then case when a.comision then '5121'
                                                           when q.q % 10 in (4, 5, 6, 8) then '401' else '4111' end
                        when g.tip_doc = 'BonC' then case when a.articol = 'Ambalaje carton' then '302' else '301' end
                        when g.tip_doc = 'NotaC' then case when s.scv = 1 then '421' else '5121' end
                        else case when s.scv = 1 then '4111' else '401' end
                   end::varchar(7) as c_conts,
                   case when g.tip_doc in ('FactCI', 'ChitI') then '4111.01'
                        when g.tip_doc = 'FactCE' then '4111.02'
                        when g.tip_doc = 'FactF' then case when g.r3 % 10 = 0 then '401.02' else '401.01' end
                        when g.tip_doc = 'ExtrB' then case when a.comision then '5121.01'
                                                           when q.q % 10 in (4, 5, 6) then '401.01'
                                                           when q.q % 10 = 7 then '4111.02'
                                                           when q.q % 10 = 8 then '401.02' else '4111.01' end
                        when g.tip_doc = 'BonC' then case a.articol when 'Ambalaje carton' then '302.01'
                                                                     when 'Drojdie proaspătă' then '301.02' else '301.01' end
                        when g.tip_doc = 'NotaC' then case when s.scv = 1 then '421' else '5121.01' end
                        else case when s.scv = 1 then '4111.01' else '401.01' end
                   end::varchar(25) as c_conta,
                   case when g.tip_doc in ('FactCI', 'FactCE') then 'C'
                        when g.tip_doc = 'ExtrB' then case when not a.comision and q.q % 10 in (4, 5, 6, 8) then 'C' else 'D' end
                        when g.tip_doc = 'DecT' then case when s.scv = 1 then 'C' else 'D' end
                        else 'D'
                   end::varchar(1) as deb_cred,
                   -- amounts
                   case when g.tip_doc = 'FactCE' or (g.tip_doc = 'FactF' and g.r3 % 10 = 0)
                             or (g.tip_doc = 'ExtrB' and not a.comision and q.q % 10 in (7, 8))
                        then round((40 + q.q * case when g.tip_doc <> 'ExtrB' then 0.003
                                                    when q.q % 10 = 7 then 0.0074 else 0.0032 end)::numeric,
                                   2)::double precision
                   end as v_eur,
                   round((case g.tip_doc
                            when 'NotaC' then 9000 + (g.r2 % 500) * 10
                            when 'ExtrB' then case when a.comision then 2.5 + (q.q % 2750) / 100.0
                                              else 200 + q.q * case when q.q % 10 in (4, 5, 6) then 0.032 else 0.0346 end end
                            when 'FactCI' then 15 + q.q * 0.006
                            when 'BonC'  then 15 + (q.q % 300000) / 100.0
                            when 'DecT'  then 0   -- set below
                            else 15 + (q.q % 400000) / 100.0
                          end)::numeric, 2)::double precision as v_lei,
                   -- the rates change on 1 August 2025: 19 to 21, 9 and 5 to 11;
                   -- flights abroad are exempt
                   case when g.tip_doc in ('FactCI', 'FactF', 'DecT') and not (g.r3 % 10 = 0 and g.tip_doc = 'FactF')
                        then case when a.articol = 'Bilet avion' then 0
                                  when a.articol in ('Pâine albă 500g', 'Pâine integrală 400g', 'Cozonac cu nucă',
                                                     'Covrigi cu susan', 'Făină albă 000', 'Drojdie proaspătă',
                                                     'Cazare hotel')
                                  then case when g.data_doc < date '2025-08-01' then 9 else 11 end
                                  when a.articol = 'Excursie opțională'
                                  then case when g.data_doc < date '2025-08-01' then 5 else 11 end
                                  when g.data_doc < date '2025-08-01' then 19 else 21 end
                   end::double precision as proc_tva,
                   case when g.tip_doc = 'FactCI' then (array['Magazin propriu', 'Comenzi online', 'Distribuitori'])[1 + q.q % 3]
                        when g.tip_doc = 'FactCE' then 'Export' end as canal,
                   case when g.tip_doc = 'FactCI' then 'ROU'
                        when g.tip_doc = 'FactCE' then (array['DEU', 'AUT'])[1 + g.r2 % 2] end::varchar(3) as tara,
                   case when g.tip_doc = 'DecT' then 'DT-' || g.i
                        when g.tip_doc in ('FactCI', 'FactCE', 'BonC') or (g.tip_doc = 'FactF' and a.articol <> 'Marfă pentru revânzare')
                        then case when g.data_doc between date '2025-11-01' and date '2025-12-31' and q.q % 5 = 0
                                  then 'CMD-SEZON-2025'
                                  when a.articol in ('Energie electrică', 'Transport marfă') and q.q % 3 = 0 then 'REGIE'
                                  else (array['CMD-PAINE', 'CMD-COZONAC', 'CMD-PATISERIE'])[1 + q.q % 3] end
                        when g.tip_doc = 'NotaC' and s.scv = 1 then 'REGIE'
                   end::varchar(25) as com_int,
                   (g.tip_doc in ('FactCI', 'BonC', 'FactF') and q.q % 7 <> 0) as obiect,
                   case when g.tip_doc in ('FactCI', 'FactCE') or (g.tip_doc = 'DecT' and s.scv = 1) then 'Venituri'
                        when g.tip_doc in ('BonC', 'FactF', 'NotaC', 'DecT') or a.comision then 'Cheltuieli'
                   end::varchar(15) as chelt_ven,
                   case when g.tip_doc in ('FactCI', 'FactCE', 'FactF', 'BonC') then (1 + q.q % 250)::double precision
                        when g.tip_doc = 'DecT' then (1 + g.r2 % 4)::double precision end as cant,
                   coalesce(a.articol in ('Energie electrică', 'Transport marfă') and q.q % 3 = 0, false)
                     or (g.tip_doc = 'NotaC' and s.scv = 1) or a.comision as regie
        ) as k
    ) as l;
    -- the updates below join these temporary tables: they need statistics
    analyze g_doc, g_poz;

    -- Tourism: the cost lines are the supplier prices, in the destination's
    -- currency (flights in euro), so a settlement's costs share one currency.
    update g_poz p set mon = c.mon, curs = coalesce(c.curs, p.curs), v_mon = c.v_mon,
                       v_lei = coalesce(round((c.v_mon * c.curs)::numeric, 2)::double precision, c.v_lei),
                       furnizor = c.furnizor
    from (
        select g.i, g.scv, m.mon, m.furnizor, cv.curs,
               case m.mon when 'EUR' then round((60 + demo_rnd(g.i * 8 + g.scv, 5, 90000) / 100.0)::numeric, 2)
                          when 'HUF' then (25000 + demo_rnd(g.i * 8 + g.scv, 5, 300000))::numeric
               end::double precision as v_mon,
               round((150 + demo_rnd(g.i * 8 + g.scv, 5, 300000) / 100.0)::numeric, 2)::double precision as v_lei
        from g_poz g
        join g_doc d on d.i = g.i
        join g_dest t on t.d = d.dest
        cross join lateral (
            select case when g.articol = 'Bilet avion' then 'EUR' else t.mon end::varchar(3) as mon,
                   case g.articol when 'Cazare hotel' then t.hotel when 'Bilet avion' then 'Zbor Aerian Românesc SA'
                                  else t.ghid end as furnizor
        ) as m
        left join curs_valutar cv on cv.data_curs = g.data_doc and cv.moneda = m.mon
        where g.tip_doc = 'DecT' and g.scv > 1
    ) as c
    where p.i = c.i and p.scv = c.scv;

    -- The coach company bills the transfers of the month's settlements two at
    -- a time: one invoice, one line per settlement (an odd last one alone).
    create temp table g_tr on commit drop as
    select n_doc + min(i) over w as i, max(data_doc) over w as data_doc,
           row_number() over (w order by i)::integer as scv, i as i_decont, r2
    from (select i, data_doc, r2, date_trunc('month', data_doc) as luna,
                 (row_number() over (partition by date_trunc('month', data_doc) order by i) + 1) / 2 as pereche
          from g_doc where tip_doc = 'DecT') as s
    window w as (partition by luna, pereche);

    insert into doc (data_doc, tip_doc, nr_doc, partener, emitent, jurnal, magazie_sursa, moneda, curs,
                     da_nu_validat_contabil, eu_punct_lucru, doc_id_ext, data_ins, data_crono)
    select data_doc, 'FactF', i::text, 'Autocare Carpați SRL', 'DEMO', null, null, 'RON', 1, true,
           'Sediu Brașov', 100000 + i, data_doc,
           data_doc + make_interval(hours => 16, secs => demo_rnd(i, 10, 3600000) / 1000.0)
    from g_tr where scv = 1;

    insert into g_poz (i, data_doc, tip_doc, scv, articol, a_conts, a_conta, c_conts, c_conta, deb_cred, curs,
                       moneda_doc, partener, emitent, jurnal, magazie_sursa, eu_punct_lucru, nevalidat, doc_id_ext,
                       v_mon, mon, v_lei, proc_tva, canal, tara, com_int, nr_obiect, chelt_ven, cant, regie, furnizor)
    select i, data_doc, 'FactF', scv, 'Transfer autocar', '628', '628.02', '401', '401.01', 'D', 1,
           'RON', 'Autocare Carpați SRL', 'DEMO', null, null, 'Sediu Brașov', false, 100000 + i,
           null, null, round((180 + demo_rnd(i_decont, 12, 60000) / 100.0)::numeric, 2)::double precision,
           case when data_doc < date '2025-08-01' then 19 else 21 end,
           null, null, 'DT-' || i_decont, null, 'Cheltuieli', (1 + r2 % 4)::double precision, false,
           'Autocare Carpați SRL'
    from g_tr;

    -- The package is sold at a 15 % mark-up over all the settlement's supplier
    -- prices, in the settlement's currency, with VAT included in the margin.
    update g_poz p set mon = s.mon, curs = coalesce(s.curs, p.curs), v_mon = s.v_mon,
                       v_lei = coalesce(round((s.v_mon * s.curs)::numeric, 2)::double precision, s.price)
    from (
        select c.com_int, cv.moneda as mon, cv.curs,
               round((c.cost * 1.15)::numeric, 2)::double precision as price,
               round((c.cost * 1.15 / cv.curs)::numeric, 2)::double precision as v_mon
        from (select com_int, sum(v_lei) as cost from g_poz
              where com_int like 'DT-%' and chelt_ven = 'Cheltuieli' group by com_int) as c
        join comanda k on k.com_int = c.com_int
        left join curs_valutar cv on cv.data_curs = k.data_incep_comanda and cv.moneda = k.moneda_com_int
    ) as s
    where p.tip_doc = 'DecT' and p.scv = 1 and p.com_int = s.com_int;

    -- Each month the first euro statement is held back from the books: the
    -- bank converted its euro lines at its own rate, not the official one.
    update g_poz p set nevalidat = true,
                       v_lei = case when p.mon = 'EUR'
                                    then round((p.v_mon * round((p.curs * 1.01)::numeric, 4))::numeric, 2)::double precision
                                    else p.v_lei end
    from (select min(i) as i from g_poz where tip_doc = 'ExtrB' and mon = 'EUR'
          group by date_trunc('month', data_doc)) as h
    where p.i = h.i;
    update doc d set da_nu_validat_contabil = false
    from (select distinct data_doc, tip_doc, i from g_poz where nevalidat) as h
    where d.data_doc = h.data_doc and d.tip_doc = h.tip_doc and d.nr_doc = h.i::text and d.da_nu_validat_contabil;

    -- Each day the bakery hands its production over to the shop at cost, per
    -- order and product: about what the day's sales took out of the stock.
    create temp table g_bp on commit drop as
    select 2 * n_doc + (data_doc - d_first) + 1 as i, data_doc,
           row_number() over (partition by data_doc order by com_int, articol)::integer as scv,
           com_int, articol, cant, cost
    from (select g.data_doc, g.com_int, g.articol, sum(g.cant) as cant,
                 sum(round((g.v_lei * cost_ratio)::numeric, 2)) as cost
          from g_poz g
          join articol a on a.articol = g.articol and a.grupa_articol in ('Panificație', 'Patiserie')
          where g.tip_doc in ('FactCI', 'FactCE')
          group by g.data_doc, g.com_int, g.articol) as s;

    insert into doc (data_doc, tip_doc, nr_doc, partener, emitent, jurnal, magazie_sursa, moneda, curs,
                     da_nu_validat_contabil, eu_punct_lucru, doc_id_ext, data_ins, data_crono)
    select distinct data_doc, 'BonP', i::text, null, 'DEMO', null, 'M01', 'RON', 1, true,
           'Sediu Brașov', 100000 + i, data_doc,
           data_doc + make_interval(hours => 5, secs => demo_rnd(i, 10, 3600000) / 1000.0)
    from g_bp;

    insert into g_poz (i, data_doc, tip_doc, scv, articol, a_conts, a_conta, c_conts, c_conta, deb_cred, curs,
                       moneda_doc, partener, emitent, jurnal, magazie_sursa, eu_punct_lucru, nevalidat, doc_id_ext,
                       v_mon, mon, v_lei, proc_tva, canal, tara, com_int, nr_obiect, chelt_ven, cant, regie, furnizor)
    select i, data_doc, 'BonP', scv, articol, '711', '711.01', '345', '345.01', 'C', 1,
           'RON', null, 'DEMO', null, 'M01', 'Sediu Brașov', false, 100000 + i,
           null, null, round((cost * (0.97 + demo_rnd(i * 32 + scv, 13, 7) / 100.0))::numeric, 2)::double precision,
           null, null, null, com_int, null, 'Variatie stoc', cant, false, null
    from g_bp;

    insert into doc_poz (data_doc, tip_doc, nr_doc, scv, articol, detaliu_articol, cant, pret, moneda, curs,
                         valoare, valoare_lei, proc_tva, valoare_tva_lei, canal_vanzare, tara_vanzare, com_int,
                         nr_obiect, loc, activitate, lot, chelt_ven, furnizor, mon_furn, val_furn_previz,
                         cod_rezervare_furn, nr_bilet, da_nu_voucher, data_confirmare, doc_poz_id_ext)
    select p.data_doc, p.tip_doc, p.i::text, p.scv, p.articol,
           case when p.tip_doc = 'DecT' then (array['Sejur', 'Circuit', 'City break'])[1 + p.i % 3]
                when p.articol like 'Pâine%' then 'Lot zilnic' end,
           p.cant,
           case when p.cant > 0 then round((p.v_lei / p.cant)::numeric, 4)::double precision end,
           coalesce(p.mon, 'RON'),
           case when p.mon is not null then p.curs else 1 end,
           coalesce(p.v_mon, p.v_lei), p.v_lei, p.proc_tva,
           t.tva,
           p.canal, p.tara, p.com_int, p.nr_obiect,
           case when p.eu_punct_lucru = 'Punct de lucru Sibiu' then '02.01' else '01.01' end,
           case when p.com_int like 'DT-%' then 'Turism'
                when p.tip_doc in ('FactCI', 'FactCE', 'BonC', 'BonP') then 'Panificație' end,
           case when p.tip_doc in ('FactCI', 'BonC', 'BonP') then 'L' || to_char(p.data_doc, 'YYMMDD') end,
           p.chelt_ven,
           p.furnizor,
           case when p.furnizor is not null then coalesce(p.mon, 'RON') end,
           case when p.furnizor is not null then round((p.v_lei * 0.98)::numeric, 2)::double precision end,
           case when p.furnizor is not null then 'RZ' || (p.i * 10 + p.scv) end,
           case when p.articol = 'Bilet avion' then 'BL' || (p.i * 10 + p.scv) end,
           case when p.tip_doc = 'DecT' then p.scv = 1 end,
           case when p.tip_doc = 'DecT' and p.scv = 1 then p.data_doc + 2 end,
           -- the platform's line ids follow its document ids, beyond 2^53 too
           case when p.doc_id_ext > 9007199254740992 then 9007199254740993 + 2 * (p.i * 10 + p.scv)
                else p.i * 10 + p.scv end
    from g_poz p
    cross join lateral (
        select case when p.tip_doc = 'DecT' and p.scv = 1 then
                    -- VAT included in the margin over the supplier prices
                    round(((p.v_lei - p.v_lei / 1.15) * p.proc_tva / (100 + p.proc_tva))::numeric, 2)
                    -- what is bought for a settlement carries its VAT in the price
                    when p.proc_tva > 0 and coalesce(p.com_int, '') not like 'DT-%'
                    then round((p.v_lei * p.proc_tva / 100)::numeric, 2)
               end::double precision as tva
    ) as t;

    -- Postings: the line itself, its VAT where there is any, and for the own
    -- products sold their discharge from the stock at cost.
    insert into doc_contare (data_doc, tip_doc, nr_doc, scv, scv_contare, aplicatie, jurnal, explicatie,
                             conts, conta, conts_coresp, conta_coresp, moneda, moneda_coresp,
                             valoare, valoare_lei, valoare_coresp, curs, deb_cred, articol, detaliu_articol,
                             partener, emitent_doc, imp_taxa, activitate, lot, magazie_sursa, da_nu_contare,
                             da_nu_in_postcalcul, da_nu_regie, com_int, loc, gr_chelt_ven_postc, nr_obiect, cant,
                             casa, banca_eu, cont_banca_eu, reprezentind, eu_punct_lucru, eu_punct_lucru_coresp,
                             partener_punct_lucru, data_contare, eu_punct_lucru_procesare)
    select x.data_doc, x.tip_doc, x.nr_doc, x.scv, v.scv_contare, t.aplicatie,
           coalesce(g.jurnal, t.jurnal, 'Jurnal diverse'),
           left(v.explicatie, 100),
           v.conts, v.conta, v.conts_coresp, v.conta_coresp, ma.moneda, mc.moneda,
           case when ma.moneda = 'EUR' then v.v_mon else v.v_lei end,
           v.v_lei,
           case when mc.moneda = 'EUR' then v.v_mon else v.v_lei end,
           x.curs, v.deb_cred, x.articol, x.detaliu_articol, g.partener, g.emitent,
           case when v.scv_contare = 2 then 'TVA ' || x.proc_tva || '%' end,
           x.activitate, x.lot, g.magazie_sursa,
           not g.nevalidat,
           v.scv_contare <> 2 and (v.conts like '6%' or v.conts like '7%'),
           g.regie,
           case when v.scv_contare <> 2 then x.com_int end,
           x.loc,
           case when v.conts = '711' then 'Variatie stoc produse'
                when v.scv_contare <> 2 then a.gr_chelt_ven_postc end,
           case when v.scv_contare <> 2 then x.nr_obiect end,
           x.cant,
           case when x.tip_doc = 'ChitI' then 'Casa lei sediu' end,
           case when x.tip_doc = 'ExtrB' then 'Banca Comercială Demo' end,
           case when x.tip_doc = 'ExtrB' then case when v.conts = '5124' then 'RO49DEMO0000000000000EUR'
                                                   else 'RO49DEMO0000000000000RON' end end,
           case when v.scv_contare = 2 then 'TVA'
                when v.scv_contare = 3 then 'Descărcare gestiune'
                when v.conts = '627' then 'Comision bancar'
                when x.tip_doc in ('ExtrB', 'ChitI') then 'Decontare'
                else coalesce(g.chelt_ven, 'Operațiune') end,
           g.eu_punct_lucru, g.eu_punct_lucru,
           case when g.partener is not null then 'Sediu ' || coalesce(pa.oras, '') end,
           case when x.tip_doc = 'NotaC' then (date_trunc('month', x.data_doc) + interval '1 month - 1 day')::date
                else x.data_doc end,
           g.eu_punct_lucru
    from doc_poz x
    join g_poz g on g.data_doc = x.data_doc and g.tip_doc = x.tip_doc and g.i::text = x.nr_doc and g.scv = x.scv
    join tip_doc t on t.tip_doc = x.tip_doc
    left join articol a on a.articol = x.articol
    left join partener pa on pa.partener = g.partener
    cross join lateral (
        -- a package sold with VAT in its price: the revenue is the price less that VAT
        select 1 as scv_contare, g.a_conts as conts, g.a_conta as conta, g.c_conts as conts_coresp,
               g.c_conta as conta_coresp, g.deb_cred, g.v_mon,
               case when x.tip_doc = 'DecT' and x.scv = 1
                    then round((g.v_lei - coalesce(x.valoare_tva_lei, 0))::numeric, 2)::double precision
                    else g.v_lei end as v_lei,
               -- the bank's charges come in with the statement, without any text
               case when g.a_conts <> '627'
                    then coalesce(x.articol || ' ', '') || coalesce(g.partener, t.den_tip_doc) end as explicatie
        union all
        select 2, case when g.deb_cred = 'C' then '4427' else '4426' end,
               case when g.deb_cred = 'C' then '4427' else '4426' end,
               g.c_conts, g.c_conta, g.deb_cred,
               case when g.v_mon is not null then round((x.valoare_tva_lei / x.curs)::numeric, 2)::double precision end,
               x.valoare_tva_lei,
               'TVA ' || coalesce(g.partener, '')
        where x.valoare_tva_lei > 0
        union all
        select 3, '711', '711.01', '345', '345.01', 'D', null,
               round((g.v_lei * cost_ratio)::numeric, 2)::double precision,
               'Descărcare gestiune ' || x.articol
        where x.tip_doc in ('FactCI', 'FactCE') and a.grupa_articol in ('Panificație', 'Patiserie')
    ) as v
    join conta ma on ma.conts = v.conts and ma.conta = v.conta
    join conta mc on mc.conts = v.conts_coresp and mc.conta = v.conta_coresp;

    -- The register: every posting carried to the books, as debit = credit.
    insert into reg_jurnal (data_reg_jurnal, data_nota_contabila, data_doc, tip_doc, nr_doc, scv,
                            conts_db, conta_db, moneda_db, val_mon_db, valoare_lei,
                            conts_cr, conta_cr, moneda_cr, val_mon_cr, curs, explicatie, com_int,
                            eu_punct_lucru, eu_punct_lucru_coresp)
    select c.data_contare,
           case when c.tip_doc = 'NotaC' then c.data_contare end,
           c.data_doc, c.tip_doc, c.nr_doc, c.scv,
           case when c.deb_cred = 'D' then c.conts else c.conts_coresp end,
           case when c.deb_cred = 'D' then c.conta else c.conta_coresp end,
           case when c.deb_cred = 'D' then c.moneda else c.moneda_coresp end,
           case when c.deb_cred = 'D' then c.valoare else c.valoare_coresp end,
           c.valoare_lei,
           case when c.deb_cred = 'D' then c.conts_coresp else c.conts end,
           case when c.deb_cred = 'D' then c.conta_coresp else c.conta end,
           case when c.deb_cred = 'D' then c.moneda_coresp else c.moneda end,
           case when c.deb_cred = 'D' then c.valoare_coresp else c.valoare end,
           c.curs, c.explicatie, c.com_int, c.eu_punct_lucru, c.eu_punct_lucru_coresp
    from doc_contare c
    where c.da_nu_contare
    order by c.data_contare, c.data_doc, c.tip_doc, c.nr_doc, c.scv, c.scv_contare;

    -- Opening balances at the start of the books; 117 balances them.
    insert into conta_sold_initial (conts, conta, data_sold, sold_db, sold_cr, sold_db_lei, sold_cr_lei)
    select b.conts, b.conta, d_first,
           case when b.side = 'D' then b.amount else 0 end,
           case when b.side = 'C' then b.amount else 0 end,
           case when b.side = 'D' then b.lei else 0 end,
           case when b.side = 'C' then b.lei else 0 end
    from (
        select v.conts, v.conta, v.side, v.amount,
               case when a.moneda = 'EUR' then round((v.amount * cv.curs)::numeric, 2)::double precision
                    else v.amount end as lei
        from (values ('2131', '2131', 'D', 310000.00::double precision),
                     ('301',  '301.01', 'D', 42000.00),
                     ('301',  '301.02', 'D', 6150.40),
                     ('302',  '302.01', 'D', 8500.00),
                     ('345',  '345.01', 'D', 18600.00),
                     ('371',  '371.01', 'D', 23000.00),
                     ('4111', '4111.01', 'D', 96400.00),
                     ('4111', '4111.02', 'D', 8000.00),
                     ('5121', '5121.01', 'D', 184500.00),
                     ('5124', '5124.01', 'D', 12000.00),
                     ('5311', '5311.01', 'D', 6500.00),
                     ('401',  '401.01', 'C', 74300.00),
                     ('401',  '401.02', 'C', 5000.00),
                     ('421',  '421', 'C', 21400.00),
                     ('1012', '1012', 'C', 200000.00)) as v(conts, conta, side, amount)
        join conta a on a.conts = v.conts and a.conta = v.conta
        join curs_valutar cv on cv.data_curs = d_first - 1 and cv.moneda = 'EUR'
    ) as b;
    insert into conta_sold_initial (conts, conta, data_sold, sold_db, sold_cr, sold_db_lei, sold_cr_lei)
    select '117', '117', d_first,
           greatest(-s, 0), greatest(s, 0), greatest(-s, 0), greatest(s, 0)
    from (select round(sum(sold_db_lei - sold_cr_lei)::numeric, 2)::double precision as s
          from conta_sold_initial) as t;

    select count(*) into n_post from doc_contare;
    return n_post;
end
$body$;
