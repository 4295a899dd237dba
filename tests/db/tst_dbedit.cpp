// Editable queries over one table: posting by key or by original values,
// conflicts and deferred blobs. The refusing hooks are tried where the style
// manager uses them (tst_frame).
#include "db/u_connection.h"
#include "db/u_query.h"
#include "tests/support/u_pgtestserver.h"

#include <QTest>

using db::Connection;
using db::Query;

class TstDbEdit : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void keyedTableEditInsertDelete();
    void keylessTableByOriginalValues();
    void changedOrDeletedMeanwhile();
    void deferredBlobs();
    void periodRow();
    void failedReconnectSurfaces();

private:
    PgTestServer &srv() { return PgTestServer::instance(); }
    Connection m_conn;
};

void TstDbEdit::initTestCase()
{
    srv().configure(m_conn);
    m_conn.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    srv().exec(QStringLiteral(
        "create table te_key (id serial primary key, name varchar(20) not null, amount numeric(12,2), "
        "day date, flag bool default true);"
        "create table te_nokey (a text, b int, at timestamp, blob bytea);"
        "create table te_style (grid_name varchar(100), style_name varchar(100), data_creare date, "
        "emitent varchar(20), grid_style_bytea bytea, grid_style_lo oid, primary key (grid_name, style_name));"));
}

void TstDbEdit::keyedTableEditInsertDelete()
{
    srv().exec(QStringLiteral("insert into te_key (name, amount, day) values ('Țuică', 10.5, '2024-01-31'), ('b', 2, null)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select id, name as nume, amount, day, flag, amount * 2 as twice from te_key order by id"));
    q.setUpdateTable(QStringLiteral("te_key"));
    q.open();
    QCOMPARE(q.rowCount(), 2);
    q.edit();
    q.setFieldValue(QStringLiteral("nume"), QStringLiteral("Șold ăî"));
    q.setFieldValue(QStringLiteral("day"), QDate(2024, 2, 29));
    q.post();
    QCOMPARE(srv().scalar(QStringLiteral("select name || '|' || day from te_key where id = 1")).toString(),
             QStringLiteral("Șold ăî|2024-02-29"));
    QCOMPARE(srv().scalar(QStringLiteral("select name from te_key where id = 2")).toString(), QStringLiteral("b"));

    // A new row takes the server's defaults back (serial key, flag).
    q.append();
    q.setFieldValue(QStringLiteral("nume"), QStringLiteral("nou"));
    q.setFieldValue(QStringLiteral("amount"), 1.0 / 4);
    q.post();
    QCOMPARE(q.rowCount(), 3);
    QCOMPARE(q.fieldValue(QStringLiteral("id")).toInt(), 3);
    QCOMPARE(q.fieldValue(QStringLiteral("flag")).toBool(), true);
    QCOMPARE(srv().scalar(QStringLiteral("select amount from te_key where id = 3")).toString(), QStringLiteral("0.25"));

    // A server refusal (not null) keeps the edit.
    q.edit();
    q.setFieldValue(QStringLiteral("nume"), QVariant());
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.post());
    QVERIFY(q.isEditing());
    q.cancel();

    q.first();
    q.deleteCurrent();
    QCOMPARE(q.rowCount(), 2);
    QCOMPARE(srv().scalar(QStringLiteral("select string_agg(id::text, ',' order by id) from te_key")).toString(),
             QStringLiteral("2,3"));

    // The period row: an empty result starts a new row on edit.
    srv().exec(QStringLiteral("delete from te_key"));
    q.refresh();
    QCOMPARE(q.rowCount(), 0);
    q.edit();
    QCOMPARE(q.state(), db::DataSet::State::Insert);
    q.setFieldValue(QStringLiteral("nume"), QStringLiteral("singur"));
    q.post();
    QCOMPARE(srv().scalar(QStringLiteral("select count(*) from te_key")).toInt(), 1);
}

void TstDbEdit::keylessTableByOriginalValues()
{
    srv().exec(QStringLiteral("insert into te_nokey values ('x', 1, '2024-05-06 07:08:09.123456', '\\x01'), "
                              "('x', null, null, null), ('dup', 5, null, null), ('dup', 5, null, null)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select a, b, at, blob from te_nokey order by a, b nulls last"));
    q.setUpdateTable(QStringLiteral("te_nokey"));
    q.open();
    QCOMPARE(q.rowCount(), 4);
    // Rows 2 and 3: 'x' with b 1 (microseconds in the timestamp) and 'x' with nulls.
    q.setCurrentRow(2);
    q.setFieldValue(QStringLiteral("a"), QStringLiteral("y"));
    q.post();
    q.setCurrentRow(3);
    q.setFieldValue(QStringLiteral("b"), 9);
    q.post();
    QCOMPARE(srv().column(QStringLiteral("select a || ':' || coalesce(b::text, '-') from te_nokey where a <> 'dup' order by 1")),
             (QVariantList{QStringLiteral("x:9"), QStringLiteral("y:1")}));

    // Two identical rows: the update would touch both, so nothing changes.
    q.first();
    q.setFieldValue(QStringLiteral("b"), 6);
    try {
        q.post();
        QFAIL("updated two rows as one");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(QStringLiteral("2")), qPrintable(e.text()));
    }
    QVERIFY(q.isEditing());
    q.cancel();
    QVERIFY_THROWS_EXCEPTION(QuarvError, q.deleteCurrent());
    QCOMPARE(q.rowCount(), 4);
    QCOMPARE(srv().scalar(QStringLiteral("select count(*) from te_nokey where a = 'dup' and b = 5")).toInt(), 2);
}

void TstDbEdit::changedOrDeletedMeanwhile()
{
    srv().exec(QStringLiteral("delete from te_nokey; insert into te_nokey values ('p', 1, null, null), ('q', 2, null, null)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select * from te_nokey order by a"));
    q.setUpdateTable(QStringLiteral("te_nokey"));
    q.open();
    q.edit();
    q.setFieldValue(QStringLiteral("b"), 10);
    srv().exec(QStringLiteral("update te_nokey set b = 3 where a = 'p'")); // another user
    try {
        q.post();
        QFAIL("posted over a row changed meanwhile");
    } catch (const QuarvError &e) {
        QCOMPARE(e.text(), QStringLiteral("Inregistrarea a fost modificata sau stearsa de alt utilizator"));
    }
    QVERIFY(q.isEditing());
    QCOMPARE(q.fieldValue(QStringLiteral("b")).toInt(), 10);
    QCOMPARE(srv().scalar(QStringLiteral("select b from te_nokey where a = 'p'")).toInt(), 3);
    q.cancel();

    // By key: the row deleted meanwhile.
    srv().exec(QStringLiteral("insert into te_key (name) values ('k1'), ('k2')"));
    Query k;
    k.setConnection(&m_conn);
    k.setSql(QStringLiteral("select * from te_key where name like 'k%' order by name"));
    k.setUpdateTable(QStringLiteral("te_key"));
    k.open();
    srv().exec(QStringLiteral("delete from te_key where name = 'k1'"));
    k.setFieldValue(QStringLiteral("name"), QStringLiteral("k1b"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, k.post());
    QVERIFY(k.isEditing());
    k.cancel();
    QVERIFY_THROWS_EXCEPTION(QuarvError, k.deleteCurrent());
    QCOMPARE(k.rowCount(), 2);
}

void TstDbEdit::deferredBlobs()
{
    srv().exec(QStringLiteral("insert into te_style values ('D', 's1', '2024-01-01', 'eu', '\\xdeadbeef', null), "
                              "('D', 's2', '2024-01-02', 'eu', null, null)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select grid_name,\n       style_name,\n       grid_style_bytea,\n       grid_Style_lo\n"
                            "from te_style \nwhere grid_name = :pGrid \norder by style_name\n;"));
    q.setParam(QStringLiteral("pGrid"), QStringLiteral("D"));
    q.setUpdateTable(QStringLiteral("te_style"));
    q.setDeferredBlobs(true);
    q.open();
    const int blob = q.fieldIndex(QStringLiteral("grid_style_bytea"));
    QVERIFY(q.column(blob).isNull(0)); // not fetched with the list
    // Someone else rewrites the blob: the value read on touch is the current one.
    srv().exec(QStringLiteral("update te_style set grid_style_bytea = '\\xcafe' where style_name = 's1'"));
    QCOMPARE(q.fieldValue(blob).toByteArray(), QByteArray("\xca\xfe", 2));
    QCOMPARE(q.column(blob).bytes(0).toByteArray(), QByteArray("\xca\xfe", 2));

    q.next();
    q.edit();
    q.setFieldValue(blob, QByteArray("layout\0bytes", 12));
    q.post();
    QCOMPARE(srv().scalar(QStringLiteral("select encode(grid_style_bytea, 'escape') from te_style where style_name = 's2'"))
                 .toString(),
             QStringLiteral("layout\\000bytes"));

    // A new style: its blob is known without a read.
    q.append();
    q.setFieldValue(QStringLiteral("grid_name"), QStringLiteral("D"));
    q.setFieldValue(QStringLiteral("style_name"), QStringLiteral("s3"));
    q.post();
    QVERIFY(!q.fieldValue(blob).isValid());
    q.deleteCurrent();
    QCOMPARE(srv().scalar(QStringLiteral("select count(*) from te_style where grid_name = 'D'")).toInt(), 2);
}

void TstDbEdit::periodRow()
{
    // The period row: no key, a double among the values matched.
    srv().exec(QStringLiteral("delete from data_list; insert into data_list values "
                              "('2024-01-01', '2024-01-31', null, null, null, null, 'EUR', 4.9765)"));
    Query q;
    q.setConnection(&m_conn);
    q.setSql(QStringLiteral("select *\nfrom data_list\n;"));
    q.setUpdateTable(QStringLiteral("data_list"));
    q.open();
    QCOMPARE(q.fieldDef(q.fieldIndex(QStringLiteral("moneda_raportare"))).size, 3);
    for (int month = 2; month <= 3; ++month) {
        q.edit();
        q.setFieldValue(QStringLiteral("data_incep"), QDate(2024, month, 1));
        q.setFieldValue(QStringLiteral("data_sf"), QDate(2024, month, 1).addMonths(1).addDays(-1));
        q.post();
        q.refresh();
    }
    QCOMPARE(srv().scalar(QStringLiteral("select data_incep || ' ' || data_sf || ' ' || curs_raportare from data_list"))
                 .toString(),
             QStringLiteral("2024-03-01 2024-03-31 4.9765"));
    QCOMPARE(q.fieldValue(QStringLiteral("data_sf")).toDate(), QDate(2024, 3, 31));
}

void TstDbEdit::failedReconnectSurfaces()
{
    // A role that may no longer log in: the reconnect fails with the server's words.
    const QString role = QStringLiteral("tq_gone_%1").arg(QCoreApplication::applicationPid());
    srv().execAdmin(QStringLiteral("create role %1 login password 'x'").arg(role));
    Connection c;
    srv().configure(c);
    c.setUserName(role);
    c.setPassword(QStringLiteral("x"));
    c.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    c.open();
    srv().execAdmin(QStringLiteral("alter role %1 nologin").arg(role));
    srv().terminateOthers();
    try {
        c.execCommand(QStringLiteral("select 1"));
        QFAIL("reconnected with a role that may not log in");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(role), qPrintable(e.text()));
    }
    QVERIFY(!c.isOpen());
    srv().execAdmin(QStringLiteral("drop role %1").arg(role));
}

QTEST_GUILESS_MAIN(TstDbEdit)
#include "tst_dbedit.moc"
