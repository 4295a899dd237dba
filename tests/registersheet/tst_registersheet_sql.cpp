// The two analyses' queries against fixture books: the journal register's
// period, journal and English description, and the account sheet's running
// balances, sides, rounding and order.

#include "db/u_connection.h"
#include "db/u_query.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/support/u_pgtestserver.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QDate d(const char *iso) { return QDate::fromString(QString::fromLatin1(iso), Qt::ISODate); }

} // namespace

class TestRegisterSheetSql : public QObject {
    Q_OBJECT
    db::Connection m_conn;

    db::Query *registru(QDate from, QDate to)
    {
        auto *q = new db::Query(this);
        q->setConnection(&m_conn);
        q->setSql(rep::AnalizaRegistruJurnal::sql());
        q->setParam(QStringLiteral("pDataIncep"), from);
        q->setParam(QStringLiteral("pDataSf"), to);
        q->open();
        return q;
    }
    db::Query *fisa(const QString &conts)
    {
        auto *q = new db::Query(this);
        q->setConnection(&m_conn);
        q->setSql(rep::FisaDeContAnalitica::sql());
        q->setParam(QStringLiteral("pConts"), conts);
        q->open();
        return q;
    }
    static QVariant v(db::Query *q, qsizetype row, const char *field)
    {
        const int f = q->fieldIndex(QString::fromLatin1(field));
        if (f < 0)
            qFatal("no field %s", field);
        return q->value(row, f);
    }

private slots:
    void initTestCase()
    {
        auto &pg = PgTestServer::instance();
        pg.configure(m_conn);
        m_conn.open();
        pg.exec(QStringLiteral(R"(
insert into tip_doc (tip_doc, den_tip_doc, jurnal) values
  ('FACT', 'Factura', 'J_TIP'), ('NIR', 'Receptie', 'J_NIR'), ('OP', 'Ordin', 'J_OP');
insert into conts (conts, den_conts) values
  ('401', 'Furnizori'), ('371', 'Marfuri'), ('5311', 'Casa'),
  ('4111', 'Clienti'), ('5124', 'Banca valuta'), ('4''1:x', 'Cont ciudat');
insert into conta (conts, conta, moneda, den_conta) values
  ('401', 'F1', 'RON', 'Furnizor 1'), ('371', 'M1', 'RON', 'Marfa 1'), ('5311', 'C1', 'RON', 'Casa 1'),
  ('4111', 'A', 'EUR', 'Client A'), ('4111', 'B', 'RON', 'Client B'), ('5124', 'E', 'EUR', 'Banca E'),
  ('4''1:x', 'Q', 'RON', 'Q');
insert into conta_lang values
  ('401', 'F1', 'engleza', 'Suppliers'), ('371', 'M1', 'engleza', 'Goods'), ('371', 'M1', 'franceza', 'Marchandises');
)"));
    }

    // Period bounds, order, one row per entry, journal fallback, description.
    void journalRegister()
    {
        auto &pg = PgTestServer::instance();
        pg.exec(QStringLiteral(R"(
insert into doc (data_doc, tip_doc, nr_doc, partener, jurnal, magazie_sursa) values
  ('2024-01-20', 'FACT', '1', 'ACME', 'J_DOC', 'M01'),
  ('2024-02-10', 'NIR', '2', 'Beta SRL', null, null),
  ('2024-03-05', 'FACT', '3', null, null, null);
insert into doc_contare (data_doc, tip_doc, nr_doc, scv, scv_contare, jurnal, conts, conta, conts_coresp,
                         conta_coresp, moneda, moneda_coresp, valoare, valoare_lei, valoare_coresp, deb_cred, data_contare) values
  ('2024-01-20', 'FACT', '1', 1, 1, 'J_0', '371', 'M1', '401', 'F1', 'RON', 'RON', 100, 100, 100, 'D', '2024-01-20'),
  ('2024-02-10', 'NIR', '2', 1, 1, 'J_B', '371', 'M1', '401', 'F1', 'RON', 'RON', 120, 120, 120, 'D', '2024-02-10'),
  ('2024-02-10', 'NIR', '2', 2, 1, 'J_A', '371', 'M1', '401', 'F1', 'RON', 'RON', 80, 80, 80, 'D', '2024-02-10'),
  ('2024-02-10', 'NIR', '2', 3, 1, null, '371', 'M1', '401', 'F1', 'RON', 'RON', 0, 0, 0, 'D', '2024-02-10');
insert into reg_jurnal (data_reg_jurnal, data_nota_contabila, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db,
                        val_mon_db, valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie, com_int) values
  ('2023-12-31', null, '2023-12-31', 'OP', '0', '5311', 'C1', 'RON', 1, 1, '5311', 'C1', 'RON', 1, 'inainte', null),
  ('2024-03-31', null, '2024-03-05', 'FACT', '3', '5311', 'C1', 'RON', 30, 30, '401', 'F1', 'RON', 30, 'fara nume', null),
  ('2024-03-31', '2024-03-01', '2024-03-31', 'OP', '4', '5311', 'C1', 'RON', 40, 40, '5311', 'C1', 'RON', 40, 'nicio traducere', null),
  ('2024-02-15', '2024-02-11', '2024-02-10', 'NIR', '2', '371', 'M1', 'RON', 200, 200, '401', 'F1', 'RON', 200, 'receptie', 'CMD7'),
  ('2024-01-01', null, '2024-01-20', 'FACT', '1', '371', 'M1', 'EUR', 20, 100.5, '401', 'F1', 'RON', 100.5, 'factura', null),
  ('2024-04-01', null, '2024-04-01', 'OP', '5', '5311', 'C1', 'RON', 1, 1, '5311', 'C1', 'RON', 1, 'dupa', null);
)"));
        db::Query *q = registru(d("2024-01-01"), d("2024-03-31"));
        // Both ends inclusive; one row per entry although NIR 2 has three posting lines.
        QCOMPARE(q->rowCount(), 4);
        QStringList docs;
        for (qsizetype r = 0; r < q->rowCount(); ++r)
            docs << v(q, r, "tip_doc").toString() + u' ' + v(q, r, "nr_doc").toString();
        // Same register date: the note date (01.03) goes before the document date (05.03).
        QCOMPARE(docs, QStringList({QStringLiteral("FACT 1"), QStringLiteral("NIR 2"), QStringLiteral("OP 4"),
                                    QStringLiteral("FACT 3")}));
        QCOMPARE(v(q, 0, "data_inregistrare").toDate(), d("2024-01-20"));
        QCOMPARE(v(q, 1, "data_inregistrare").toDate(), d("2024-02-11"));
        QCOMPARE(v(q, 2, "data_inregistrare").toDate(), d("2024-03-01"));

        // Journal: the document's own, else the smallest of its postings, else the type's.
        QCOMPARE(v(q, 0, "jurnal").toString(), QStringLiteral("J_DOC"));
        QCOMPARE(v(q, 1, "jurnal").toString(), QStringLiteral("J_A"));
        QCOMPARE(v(q, 3, "jurnal").toString(), QStringLiteral("J_TIP"));
        QCOMPARE(v(q, 2, "jurnal").toString(), QStringLiteral("J_OP")); // no document row at all

        QCOMPARE(v(q, 0, "traducere_engleza").toString(), QStringLiteral("Goods=Suppliers FACT 1/2024-01-20 ACME"));
        QCOMPARE(v(q, 1, "traducere_engleza").toString(), QStringLiteral("Goods=Suppliers NIR 2/2024-02-10 Beta SRL"));
        QCOMPARE(v(q, 3, "traducere_engleza").toString(), QStringLiteral("=Suppliers FACT 3/2024-03-05 "));
        QCOMPARE(v(q, 2, "traducere_engleza").toString(), QStringLiteral("= OP 4/2024-03-31 "));

        QCOMPARE(v(q, 0, "moneda_db").toString(), QStringLiteral("EUR"));
        QCOMPARE(v(q, 0, "val_mon_db").toDouble(), 20.0);
        QCOMPARE(v(q, 0, "valoare_lei").toDouble(), 100.5);
        QCOMPARE(v(q, 0, "magazie_sursa").toString(), QStringLiteral("M01"));
        QCOMPARE(v(q, 1, "com_int").toString(), QStringLiteral("CMD7"));
        QVERIFY(!v(q, 3, "partener").isValid());

        // A start month after the end month: nothing, and no error.
        q = registru(d("2024-03-01"), d("2024-01-31"));
        QCOMPARE(q->rowCount(), 0);
    }

    // Opening row first, running balances, the side taken from the currency
    // balance, four decimals at every row, the document's partner and issuer.
    void accountSheet()
    {
        auto &pg = PgTestServer::instance();
        pg.exec(QStringLiteral(R"(
delete from data_list;
insert into data_list (data_incep, data_sf) values ('2024-03-01', '2024-03-31');
insert into conta_sold_initial (conts, conta, data_sold, sold_db, sold_cr, sold_db_lei, sold_cr_lei) values
  ('4111', 'A', '2024-01-01', 100, 0, 500, 0),
  ('4''1:x', 'Q', '2024-01-01', 0, 7, 0, 7);
insert into doc (data_doc, tip_doc, nr_doc, partener, emitent) values ('2024-03-10', 'FACT', '10', 'ACME', 'ION');
insert into reg_jurnal (data_reg_jurnal, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db,
                        val_mon_db, valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie) values
  ('2024-03-10', '2024-03-10', 'FACT', '10', '5124', 'E', 'EUR', 150, 450, '4111', 'A', 'EUR', 150, 'incasare'),
  ('2024-03-13', '2024-03-13', 'FACT', '12', '4111', 'B', 'RON', 0.12344, 0.12344, '5124', 'E', 'EUR', 0.1, 'b2'),
  ('2024-03-12', '2024-03-12', 'FACT', '11', '4111', 'B', 'RON', 0.12344, 0.12344, '5124', 'E', 'EUR', 0.1, 'b1'),
  ('2024-04-02', '2024-04-02', 'FACT', '13', '4111', 'A', 'EUR', 999, 999, '5124', 'E', 'EUR', 999, 'dupa');
)"));
        db::Query *q = fisa(QStringLiteral("4111"));
        QCOMPARE(q->rowCount(), 5);
        auto row = [&](qsizetype r) {
            return QStringList({v(q, r, "conta").toString(), v(q, r, "nr_doc").toString(),
                                QString::number(v(q, r, "sold_final").toDouble()), v(q, r, "tip_sold_final").toString(),
                                QString::number(v(q, r, "sold_final_lei").toDouble())});
        };
        // 100 DB opening, credit 150: 50 CR; in lei 500 - 450 = 50 on the debit
        // side, yet shown under the currency balance's "CR".
        QCOMPARE(row(0), QStringList({u"A"_s, u"Sold Initial"_s, u"100"_s, u"DB"_s, u"500"_s}));
        QCOMPARE(row(1), QStringList({u"A"_s, u"10"_s, u"50"_s, u"CR"_s, u"50"_s}));
        QVERIFY(!v(q, 1, "sold_db_incremental").isValid());
        QCOMPARE(v(q, 1, "sold_cr_incremental").toDouble(), 50.0);
        QCOMPARE(v(q, 1, "sold_db_lei_incremental").toDouble(), 50.0);
        QVERIFY(!v(q, 1, "sold_cr_lei_incremental").isValid());
        QCOMPARE(v(q, 1, "rulaj_cr_incremental").toDouble(), 150.0);
        QCOMPARE(v(q, 1, "partener").toString(), QStringLiteral("ACME"));
        QCOMPARE(v(q, 1, "emitent").toString(), QStringLiteral("ION"));
        QCOMPARE(v(q, 1, "conts_coresp").toString(), QStringLiteral("5124"));
        // An account without balance or history opens at zero on the debit side;
        // the running sum is rounded as it grows (0.24688 -> 0.2469, not 2 x 0.1234).
        QCOMPARE(row(2), QStringList({u"B"_s, u"Sold Initial"_s, u"0"_s, u"DB"_s, u"0"_s}));
        QCOMPARE(row(3), QStringList({u"B"_s, u"11"_s, u"0.1234"_s, u"DB"_s, u"0.1234"_s}));
        QCOMPARE(row(4), QStringList({u"B"_s, u"12"_s, u"0.2469"_s, u"DB"_s, u"0.2469"_s}));
        QVERIFY(!v(q, 3, "partener").isValid());
        qlonglong lastNr = 0;
        for (qsizetype r = 0; r < q->rowCount(); ++r) {
            QCOMPARE(v(q, r, "conts").toString(), QStringLiteral("4111"));
            QCOMPARE(v(q, r, "data_incep").toDate(), d("2024-03-01"));
            QCOMPARE(v(q, r, "data_sf").toDate(), d("2024-03-31"));
            QVERIFY(v(q, r, "nr_crt").toLongLong() > lastNr);
            lastNr = v(q, r, "nr_crt").toLongLong();
            // The opening row leads its account, with no document date.
            const bool leads = r == 0 || v(q, r, "conta") != v(q, r - 1, "conta");
            QCOMPARE(v(q, r, "nr_doc").toString() == QStringLiteral("Sold Initial"), leads);
            QCOMPARE(v(q, r, "data_doc").isValid(), !leads);
        }

        // A code with a quote and a colon travels as a value.
        q = fisa(QStringLiteral("4'1:x"));
        QCOMPARE(q->rowCount(), 1);
        QCOMPARE(v(q, 0, "sold_final").toDouble(), 7.0);
        QCOMPARE(v(q, 0, "tip_sold_final").toString(), QStringLiteral("CR"));
        // An unknown account and an empty one: an empty result, no error.
        QCOMPARE(fisa(QStringLiteral("9999"))->rowCount(), 0);
        QCOMPARE(fisa(QString())->rowCount(), 0);

        // The views read the period row: a later period moves the opening balance.
        pg.exec(QStringLiteral("update data_list set data_incep = '2024-04-01', data_sf = '2024-04-30'"));
        q = fisa(QStringLiteral("4111"));
        QCOMPARE(row(0), QStringList({u"A"_s, u"Sold Initial"_s, u"50"_s, u"CR"_s, u"50"_s}));
        QCOMPARE(row(1), QStringList({u"A"_s, u"13"_s, u"949"_s, u"DB"_s, u"1049"_s}));
    }
};

QTEST_GUILESS_MAIN(TestRegisterSheetSql)
#include "tst_registersheet_sql.moc"
