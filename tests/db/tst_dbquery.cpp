// Connection and read-only queries against the private test server.
#include "db/u_connection.h"
#include "db/u_pgvalue.h"
#include "db/u_query.h"
#include "tests/support/u_pgtestserver.h"

#include <QSignalSpy>
#include <QTest>

using db::Connection;
using db::FieldType;
using db::Query;

class TstDbQuery : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void paramParser();
    void settingsReopenOnlyOnChange();
    void deadServerFailsWithLibpqText();
    void typedFieldsNullsAndDiacritics();
    void boundParameterTypes();
    void absurdDatesAndUnsendableParameters();
    void emptyResultsAndErrors();
    void refreshKeepsRow();
    void droppedConnectionIsSilent();
    void manyRowsAgreeWithServer();

private:
    PgTestServer &srv() { return PgTestServer::instance(); }
    Connection m_conn;
};

void TstDbQuery::initTestCase()
{
    PgTestServer::instance().configure(m_conn);
    m_conn.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    m_conn.open();
    QVERIFY(m_conn.isOpen());
}

void TstDbQuery::paramParser()
{
    QStringList names;
    const QString sql = QStringLiteral(
        "select :a, ':lit', E'it\\'s :esc', \"col:quoted\", x::date, $q$ :dollar $q$, $$ :d2 $$\n"
        "-- :comment\n"
        "/* :block /* :nested */ :still */ from t where b = :B and c = :a and d = :c_2 and e[1:2] = $1");
    const QByteArray out = Query::translateParams(sql, &names);
    QCOMPARE(names, (QStringList{QStringLiteral("a"), QStringLiteral("B"), QStringLiteral("c_2")}));
    QCOMPARE(out, QStringLiteral(
        "select $1, ':lit', E'it\\'s :esc', \"col:quoted\", x::date, $q$ :dollar $q$, $$ :d2 $$\n"
        "-- :comment\n"
        "/* :block /* :nested */ :still */ from t where b = $2 and c = $1 and d = $3 and e[1:2] = $1").toUtf8());

    // An unterminated literal swallows the rest instead of inventing parameters.
    Query::translateParams(QStringLiteral("select 'abc :x"), &names);
    QVERIFY(names.isEmpty());

    Query q;
    q.setSql(QStringLiteral("select :pDataIncep::date"));
    QCOMPARE(q.paramNames(), QStringList{QStringLiteral("pDataIncep")});
    q.setParam(QStringLiteral("pdataincep"), QDate(2024, 2, 29));
    QCOMPARE(q.param(QStringLiteral("PDATAINCEP")).toDate(), QDate(2024, 2, 29));
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.setParam(QStringLiteral("nope"), 1));
}

void TstDbQuery::settingsReopenOnlyOnChange()
{
    Connection c;
    PgTestServer::instance().configure(c);
    c.open();
    QSignalSpy closed(&c, &Connection::closed);
    PgTestServer::instance().configure(c); // same values: the link stays
    QVERIFY(c.isOpen());
    QCOMPARE(closed.count(), 0);
    c.setDatabase(c.database() + QStringLiteral("_nope"));
    QVERIFY(!c.isOpen());
    QCOMPARE(closed.count(), 1);
    try {
        c.open();
        QFAIL("opened a database that does not exist");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(QStringLiteral("does not exist")), qPrintable(e.text()));
    }
    QVERIFY(!c.isOpen());
    c.setDatabase(PgTestServer::instance().database());
    c.setPassword(QStringLiteral("wrong"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, c.open());
    c.setPassword(PgTestServer::password());
    c.open();
    c.execCommand(QStringLiteral("create temp table t1(a int); insert into t1 values (1); drop table t1"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, c.execCommand(QStringLiteral("select * from no_such_table")));
    QVERIFY(c.isOpen());
    c.close();
    QVERIFY(!c.isOpen());
}

void TstDbQuery::deadServerFailsWithLibpqText()
{
    Connection c;
    c.setHost(QStringLiteral("127.0.0.1"));
    c.setPort(PgTestServer::deadPort());
    c.setDatabase(QStringLiteral("quarv1"));
    c.setUserName(QStringLiteral("quarv"));
    c.setPassword(QStringLiteral("kadrim"));
    c.setConnectTimeout(3);
    try {
        c.open();
        QFAIL("connected to a port where nothing listens");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(QStringLiteral("127.0.0.1")) || e.text().contains(QStringLiteral("refused")),
                 qPrintable(e.text()));
        // The client library's second line, without its indentation.
        QVERIFY2(!e.text().contains(u'\t'), qPrintable(e.text()));
    }
    QVERIFY(!c.isOpen());
    // A query on it reports the same failure rather than hanging.
    Query q;
    q.setConnection(&c);
    q.setSql(QStringLiteral("select 1"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.open());
    QVERIFY(!q.isActive());
}

void TstDbQuery::typedFieldsNullsAndDiacritics()
{
    PgTestServer::instance().exec(QStringLiteral(
        "create table tq_types (id int primary key, s varchar(7), c char(3), t text, n numeric(15,2), f float8, "
        "i8 int8, i2 int2, b bool, d date, ts timestamp, tz timestamptz, by bytea, j json);"
        "insert into tq_types values (1, 'ab', 'x', 'șțăîâ ȘȚĂÎÂ', 12345.67, 0.1, 9007199254740993, -5, true,"
        " '2024-02-29', '2024-02-29 23:59:58.123456', '2024-01-01 10:00:00+00', '\\x00ff10', '{\"a\":1}');"
        "insert into tq_types values (2, '', '', '', null, null, null, null, null, null, null, null, '\\x', null);"
        "insert into tq_types (id) values (3);"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select * from tq_types order by id"));
    q.open();
    QCOMPARE(q.rowCount(), 3);
    QCOMPARE(q.fieldCount(), 14);
    auto def = [&](const char *n) { return q.fieldDef(q.fieldIndex(QString::fromLatin1(n))); };
    QCOMPARE(def("s").type, FieldType::String);
    QCOMPARE(def("s").size, 7);
    QCOMPARE(def("c").size, 3);
    QCOMPARE(def("t").type, FieldType::Text);
    QCOMPARE(def("n").type, FieldType::Float);
    QCOMPARE(def("f").type, FieldType::Float);
    QCOMPARE(def("i8").type, FieldType::Int64);
    QCOMPARE(def("i2").type, FieldType::Int32);
    QCOMPARE(def("b").type, FieldType::Bool);
    QCOMPARE(def("d").type, FieldType::Date);
    QCOMPARE(def("ts").type, FieldType::DateTime);
    QCOMPARE(def("by").type, FieldType::Bytes);
    QCOMPARE(def("j").type, FieldType::Text);

    q.first();
    QCOMPARE(q.fieldValue(QStringLiteral("t")).toString(), QStringLiteral("șțăîâ ȘȚĂÎÂ"));
    QCOMPARE(q.fieldValue(QStringLiteral("n")).toDouble(), 12345.67);
    QCOMPARE(q.fieldValue(QStringLiteral("f")).toDouble(), 0.1);
    QCOMPARE(q.fieldValue(QStringLiteral("i8")).toLongLong(), Q_INT64_C(9007199254740993));
    QCOMPARE(q.fieldValue(QStringLiteral("i2")).toInt(), -5);
    QCOMPARE(q.fieldValue(QStringLiteral("b")).toBool(), true);
    QCOMPARE(q.fieldValue(QStringLiteral("d")).toDate(), QDate(2024, 2, 29));
    QCOMPARE(q.fieldValue(QStringLiteral("ts")).toDateTime(), QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58, 123)));
    QCOMPARE(q.fieldValue(QStringLiteral("by")).toByteArray(), QByteArray("\x00\xff\x10", 3));
    QCOMPARE(q.fieldValue(QStringLiteral("j")).toString(), QStringLiteral("{\"a\":1}"));

    // Row 2: empty text is not null; row 3: every type null.
    q.next();
    for (const char *n : {"s", "t"}) {
        QVERIFY(!q.isFieldNull(QString::fromLatin1(n)));
        QCOMPARE(q.fieldValue(QString::fromLatin1(n)).toString(), QString());
    }
    QVERIFY(!q.isFieldNull(QStringLiteral("by")));
    QVERIFY(q.isFieldNull(QStringLiteral("n")));
    q.next();
    for (int f = 1; f < q.fieldCount(); ++f) {
        QVERIFY2(q.isFieldNull(q.fieldDef(f).name), qPrintable(q.fieldDef(f).name));
        QVERIFY(q.column(f).isNull(2));
    }
    QVERIFY(q.column(q.fieldIndex(QStringLiteral("t"))).isNull(2));
    QVERIFY(!q.column(q.fieldIndex(QStringLiteral("t"))).isNull(1));
}

void TstDbQuery::boundParameterTypes()
{
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select :s::text as s, :d::date as d, :ts::timestamp as ts, :f::float8 as f, "
                            ":i::int4 as i, :l::int8 as l, :b::bool as b, :by::bytea as by, :n::text as n, "
                            ":s || '|' as again -- :ignored\n"));
    QCOMPARE(q.paramNames().size(), 9);
    const QString diacritics = QStringLiteral("Ștefan țărănește' \"; drop table x; --");
    q.setParam(QStringLiteral("s"), diacritics);
    q.setParam(QStringLiteral("d"), QDate(1999, 12, 31));
    q.setParam(QStringLiteral("ts"), QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5, 678)));
    q.setParam(QStringLiteral("f"), 1.0 / 3.0);
    q.setParam(QStringLiteral("i"), -42);
    q.setParam(QStringLiteral("l"), qlonglong(1) << 60);
    q.setParam(QStringLiteral("b"), false);
    q.setParam(QStringLiteral("by"), QByteArray("\x00\x01'\\", 4));
    q.setParam(QStringLiteral("n"), QVariant());
    q.open();
    QCOMPARE(q.rowCount(), 1);
    QCOMPARE(q.fieldValue(QStringLiteral("s")).toString(), diacritics);
    QCOMPARE(q.fieldValue(QStringLiteral("again")).toString(), diacritics + u'|');
    QCOMPARE(q.fieldValue(QStringLiteral("d")).toDate(), QDate(1999, 12, 31));
    QCOMPARE(q.fieldValue(QStringLiteral("ts")).toDateTime(), QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5, 678)));
    QCOMPARE(q.fieldValue(QStringLiteral("f")).toDouble(), 1.0 / 3.0); // full precision both ways
    QCOMPARE(q.fieldValue(QStringLiteral("i")).toInt(), -42);
    QCOMPARE(q.fieldValue(QStringLiteral("l")).toLongLong(), qlonglong(1) << 60);
    QCOMPARE(q.fieldValue(QStringLiteral("b")).toBool(), false);
    QVERIFY(!q.isFieldNull(QStringLiteral("b")));
    QCOMPARE(q.fieldValue(QStringLiteral("by")).toByteArray(), QByteArray("\x00\x01'\\", 4));
    QVERIFY(q.isFieldNull(QStringLiteral("n")));
}

void TstDbQuery::absurdDatesAndUnsendableParameters()
{
    namespace pg = db::pg;
    // a year no server value has reads as null, whatever its length
    for (const char *text : {"12345678-01-01", "99999999999999999999999-06-15", "9223372036854775807-01-01 BC"}) {
        const int len = int(qstrlen(text));
        QVERIFY2(!pg::variantFromText(FieldType::Date, text, len).isValid(), text);
        const QByteArray ts = QByteArray(text) + " 10:00:00";
        QVERIFY2(!pg::variantFromText(FieldType::DateTime, ts.constData(), int(ts.size())).isValid(), text);
    }
    QCOMPARE(pg::variantFromText(FieldType::Date, "5874897-12-31", 13).toDate(), QDate(5874897, 12, 31));
    QCOMPARE(pg::variantFromText(FieldType::Date, "4714-11-24 BC", 13).toDate(), QDate::fromJulianDay(0));

    // text the server would get cut or mangled, and dates that are none
    const QString nul = QStringLiteral("ab") + QChar(0) + QStringLiteral("cd");
    const QString half = QStringLiteral("ab") + QChar(0xD800) + QStringLiteral("cd");
    const QList<QPair<QVariant, QString>> refused = {
        {nul, QStringLiteral("NUL")}, {half, QStringLiteral("surogat")},
        {QDate(), QStringLiteral("data valida")}, {QDateTime(), QStringLiteral("data si ora valida")},
    };
    for (const auto &[v, why] : refused) {
        try {
            pg::encode(v, QStringLiteral("Parametrul 'x'"));
            QFAIL(qPrintable(why));
        } catch (const QuarvError &e) {
            QVERIFY2(e.text().startsWith(QStringLiteral("Parametrul 'x' ")) && e.text().contains(why), qPrintable(e.text()));
        }
    }
    QVERIFY_THROWS_EXCEPTION(QuarvError, pg::encodeAs(nul, FieldType::Text));
    QVERIFY_THROWS_EXCEPTION(QuarvError, pg::encodeAs(QByteArray("a\0b", 3), FieldType::String));
    QVERIFY_THROWS_EXCEPTION(QuarvError, pg::encodeAs(half, FieldType::Float));
    QVERIFY_THROWS_EXCEPTION(QuarvError, pg::encodeAs(QDate(), FieldType::Date));
    QCOMPARE(pg::encodeAs(nul, FieldType::Bytes).data, nul.toUtf8()); // bytes travel whole
    QCOMPARE(pg::encode(QByteArray("a\0b", 3)).data.size(), 3);

    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select :t::text as t, :d::date as d"));
    q.setParam(QStringLiteral("d"), QDate(2024, 1, 1));
    for (const auto &[v, why] : refused) {
        q.setParam(QStringLiteral("t"), v);
        try {
            q.open();
            QFAIL(qPrintable(why));
        } catch (const QuarvError &e) {
            QVERIFY2(e.text().startsWith(QStringLiteral("Parametrul 't' ")) && e.sqlState().isEmpty(), qPrintable(e.text()));
        }
        QVERIFY(!q.isActive());
    }
    q.setParam(QStringLiteral("t"), QStringLiteral("ab"));
    q.open();
    QCOMPARE(q.fieldValue(QStringLiteral("t")).toString(), QStringLiteral("ab"));
}

void TstDbQuery::emptyResultsAndErrors()
{
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select 1::int as a, 'x'::varchar(4) as b where false"));
    q.open();
    QVERIFY(q.isActive());
    QCOMPARE(q.rowCount(), 0);
    QCOMPARE(q.fieldCount(), 2);
    QCOMPARE(q.fieldDef(1).size, 4);
    QCOMPARE(q.currentRow(), -1);
    QVERIFY(q.eof() && q.bof());
    QVERIFY(!q.fieldValue(0).isValid());
    q.close();

    q.setSql(QStringLiteral("select * from no_such_view"));
    try {
        q.open();
        QFAIL("opened a missing relation");
    } catch (const QuarvError &e) {
        QVERIFY(e.text().contains(QStringLiteral("no_such_view")));
        QCOMPARE(e.sqlState(), QStringLiteral("42P01"));
    }
    QVERIFY(!q.isActive());
    // A server's detail is shown where it is short text, never a row of
    // binary values (a saved layout in hexadecimal).
    PgTestServer::instance().exec(QStringLiteral(
        "create table tq_detail (id int primary key, nume varchar(20) not null, layout bytea);"
        "insert into tq_detail values (1, 'a', null)"));
    for (const auto &[sql, shown] :
         {std::pair{"insert into tq_detail values (1, 'b', null)", true},
          std::pair{"insert into tq_detail select 2, null, decode(repeat('5b56696577', 200), 'hex')", false}}) {
        q.setSql(QString::fromLatin1(sql));
        try {
            q.open();
            QFAIL("a refused row was stored");
        } catch (const QuarvError &e) {
            QVERIFY2(e.text().contains(QStringLiteral("Key (id)=(1) already exists")) == shown, qPrintable(e.text()));
            QVERIFY2(!e.text().contains(QStringLiteral("\\x")) && e.text().size() < 400, qPrintable(e.text()));
            QVERIFY2(shown || e.text().contains(QStringLiteral("nume")), qPrintable(e.text()));
        }
    }
    // The connection is still usable after a failed statement.
    q.setSql(QStringLiteral("select 1/0"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.open());
    q.setSql(QStringLiteral("select 7 as x;"));
    q.open();
    QCOMPARE(q.fieldValue(0).toInt(), 7);
}

void TstDbQuery::refreshKeepsRow()
{
    PgTestServer::instance().exec(QStringLiteral("create table tq_refresh (n int); "
                                                 "insert into tq_refresh select generate_series(1, 10)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select n from tq_refresh order by n"));
    q.open();
    q.setCurrentRow(6);
    QSignalSpy reset(&q, &Query::rowsReset);
    PgTestServer::instance().exec(QStringLiteral("insert into tq_refresh values (11)"));
    q.refresh();
    QCOMPARE(reset.count(), 1);
    QCOMPARE(q.rowCount(), 11);
    QCOMPARE(q.currentRow(), 6);
    QCOMPARE(q.fieldValue(0).toInt(), 7);
    PgTestServer::instance().exec(QStringLiteral("delete from tq_refresh where n > 3"));
    q.refresh();
    QCOMPARE(q.currentRow(), 2);
}

void TstDbQuery::droppedConnectionIsSilent()
{
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select pg_backend_pid() as pid"));
    q.open();
    const int before = q.fieldValue(0).toInt();
    QVERIFY(PgTestServer::instance().terminateOthers() >= 1);
    q.refresh(); // re-executed on a new link without a word
    QVERIFY(q.isActive());
    QVERIFY(q.fieldValue(0).toInt() != before);

    // Without a handler the loss surfaces (the other modes: tst_dbfaults' recoveryPaths).
    m_conn.onConnectionLost = nullptr;
    PgTestServer::instance().terminateOthers();
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.refresh());
    QVERIFY(!q.isActive());
    m_conn.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    m_conn.close();
    q.open(); // the query opens the connection again
    QVERIFY(m_conn.isOpen());
}

void TstDbQuery::manyRowsAgreeWithServer()
{
    // Enough rows to grow every store many times, text both repeated and
    // distinct, checked against what the server computes over the same rows.
    const QString rows = QStringLiteral(
        "select g, 'part' || (g % 37) as rep, 'doc ' || g as uniq, g::float8 / 7 as f, "
        "date '2024-01-01' + g % 400 as d, case when g % 5 = 0 then null else 'ș' || g % 3 end as n "
        "from generate_series(1, 120000) g");
    Query q;
    q.setConnection(&m_conn);
    q.setSql(rows);
    q.open();
    QCOMPARE(q.rowCount(), 120000);
    qint64 sumG = 0, lenRep = 0, lenUniq = 0, nulls = 0, days = 0;
    double sumF = 0;
    for (qsizetype r = 0; r < q.rowCount(); ++r) {
        sumG += q.column(0).asInt64(r);
        lenRep += q.column(1).bytes(r).size();
        lenUniq += q.column(2).bytes(r).size();
        sumF += q.column(3).asDouble(r);
        days += q.column(4).asDate(r).toJulianDay() - QDate(2024, 1, 1).toJulianDay();
        nulls += q.column(5).isNull(r) ? 1 : 0;
    }
    const QStringList server =
        srv().scalar(QStringLiteral("select sum(g) || ' ' || sum(octet_length(rep)) || ' ' || sum(octet_length(uniq)) "
                                    "|| ' ' || sum(d - date '2024-01-01') || ' ' || count(*) filter (where n is null) "
                                    "|| ' ' || sum(f) from (%1) x").arg(rows))
            .toString().split(u' ');
    QCOMPARE(QString::number(sumG), server[0]);
    QCOMPARE(QString::number(lenRep), server[1]);
    QCOMPARE(QString::number(lenUniq), server[2]);
    QCOMPARE(QString::number(days), server[3]);
    QCOMPARE(QString::number(nulls), server[4]);
    QVERIFY(qAbs(sumF - server[5].toDouble()) < 1e-6 * sumF);
    QCOMPARE(q.value(119999, 2).toString(), QStringLiteral("doc 120000"));
    QCOMPARE(q.value(36, 1).toString(), QStringLiteral("part0"));
}

QTEST_GUILESS_MAIN(TstDbQuery)
#include "tst_dbquery.moc"
