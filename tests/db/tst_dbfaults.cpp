// The link under faults: a reply to COMMIT that never arrives, a server that
// stops answering, the one recovery every statement goes through, and a
// statement the operator stopped.
#include "db/u_busy.h"
#include "db/u_connection.h"
#include "db/u_query.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_tcprelay.h"

#include <QElapsedTimer>
#include <QThread>
#include <QTest>

#include <csignal>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using db::Connection;
using db::Query;

Q_DECLARE_METATYPE(TcpRelay::OnCommit)

class TstDbFaults : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void lostCommitReply_data();
    void lostCommitReply();
    void commitOutcomeUnknown();
    void recoveryPaths_data();
    void recoveryPaths();
    void silentServer();
    void stoppedFetch();

private:
    PgTestServer &srv() { return PgTestServer::instance(); }
    int count(const QString &where) { return srv().scalar(u"select count(*) from tf_key where "_s + where).toInt(); }
    std::unique_ptr<TcpRelay> m_relay;
    Connection m_conn; // through the relay
};

void TstDbFaults::initTestCase()
{
    m_relay = std::make_unique<TcpRelay>(srv().port());
    srv().configure(m_conn);
    m_conn.setPort(m_relay->port());
    m_conn.setDeadPeerTimeout(6);
    m_conn.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    srv().exec(u"create table tf_key (id serial primary key, name text not null unique)"_s);
}

void TstDbFaults::lostCommitReply_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<TcpRelay::OnCommit>("fault");
    for (const char *change : {"insert", "update by key", "period row", "delete"}) {
        // The server committed, the reply was lost: saved once, reported saved.
        QTest::newRow(qPrintable(QString::fromLatin1(change) + u", reply lost"_s))
            << QString::fromLatin1(change) << TcpRelay::OnCommit::DropReply;
        // The server never got the COMMIT: rolled back, so run once more.
        QTest::newRow(qPrintable(QString::fromLatin1(change) + u", commit lost"_s))
            << QString::fromLatin1(change) << TcpRelay::OnCommit::Swallow;
    }
}

void TstDbFaults::lostCommitReply()
{
    QFETCH(QString, change);
    QFETCH(TcpRelay::OnCommit, fault);
    srv().exec(u"delete from tf_key; insert into tf_key (name) values ('a'), ('b');"
               "delete from data_list; insert into data_list values "
               "('2024-01-01', '2024-01-31', null, null, null, null, 'EUR', 4.9765)"_s);
    Query q;
    q.setConnection(&m_conn);
    const bool period = change == u"period row"_s;
    q.setSql(period ? u"select * from data_list"_s : u"select * from tf_key order by id"_s);
    q.setUpdateTable(period ? u"data_list"_s : u"tf_key"_s);
    q.open();
    m_relay->resetFired();
    m_relay->arm(fault);
    if (change == u"insert"_s) {
        q.append();
        q.setFieldValue(u"name"_s, u"c"_s);
        q.post();
        QCOMPARE(q.rowCount(), 3);
        QVERIFY(q.fieldValue(u"id"_s).toInt() > 0); // what the server stored
    } else if (change == u"update by key"_s) {
        q.setFieldValue(u"name"_s, u"c"_s);
        q.post();
    } else if (period) {
        q.setFieldValue(u"data_incep"_s, QDate(2024, 2, 1));
        q.setFieldValue(u"data_sf"_s, QDate(2024, 2, 29));
        q.post();
    } else {
        q.deleteCurrent();
        QCOMPARE(q.rowCount(), 1);
    }
    QVERIFY(m_relay->fired());
    QCOMPARE(q.state(), db::DataSet::State::Browse);
    if (period) {
        QCOMPARE(srv().scalar(u"select data_incep || ' ' || data_sf || ' ' || count(*) over () from data_list"_s).toString(),
                 u"2024-02-01 2024-02-29 1"_s);
    } else {
        const int expected = change == u"insert"_s ? 3 : change == u"delete"_s ? 1 : 2;
        QCOMPARE(count(u"true"_s), expected);
        QCOMPARE(count(u"name = 'c'"_s), change == u"delete"_s ? 0 : 1);
    }
    // The link serves the next statement.
    q.refresh();
    QCOMPARE(q.rowCount(), period ? 1 : (change == u"insert"_s ? 3 : change == u"delete"_s ? 1 : 2));
}

void TstDbFaults::commitOutcomeUnknown()
{
    // The COMMIT never reaches the server, whose session stays open: the
    // transaction is neither committed nor aborted when asked.
    srv().exec(u"delete from tf_key"_s);
    Query q;
    q.setConnection(&m_conn);
    q.setSql(u"select * from tf_key"_s);
    q.setUpdateTable(u"tf_key"_s);
    q.open();
    q.append();
    q.setFieldValue(u"name"_s, u"held"_s);
    m_relay->arm(TcpRelay::OnCommit::Hold);
    try {
        q.post();
        QFAIL("a commit whose outcome is unknown was reported as saved");
    } catch (const QuarvError &e) {
        QCOMPARE(e.sqlState(), u"08007"_s);
        QVERIFY2(e.text().contains(u"nu se stie daca modificarea a fost salvata"_s), qPrintable(e.text()));
    }
    // Nothing was run twice, the row waits in the dataset, the link is closed.
    QCOMPARE(q.state(), db::DataSet::State::Insert);
    QCOMPARE(q.fieldValue(u"name"_s).toString(), u"held"_s);
    QVERIFY(!m_conn.isOpen());
    m_relay->release(); // the server rolls it back
    q.post();
    QCOMPARE(count(u"name = 'held'"_s), 1);
}

void TstDbFaults::recoveryPaths_data()
{
    QTest::addColumn<Connection::LostMode>("mode");
    QTest::addColumn<int>("losses");   // attempts that lose the link
    QTest::addColumn<bool>("failing"); // the statement itself is wrong
    QTest::addColumn<int>("attempts");
    QTest::addColumn<bool>("raised");
    QTest::addColumn<bool>("openAfter");
    QTest::newRow("no fault") << Connection::LostMode::ReconnectExecute << 0 << false << 1 << false << true;
    QTest::newRow("lost once, run again") << Connection::LostMode::ReconnectExecute << 1 << false << 2 << false << true;
    QTest::newRow("lost twice") << Connection::LostMode::ReconnectExecute << 2 << false << 2 << true << false;
    QTest::newRow("a wrong statement is not run again") << Connection::LostMode::ReconnectExecute << 0 << true << 1 << true << true;
    QTest::newRow("reconnect, do not run again") << Connection::LostMode::Reconnect << 1 << false << 1 << true << true;
    QTest::newRow("raise") << Connection::LostMode::Raise << 1 << false << 1 << true << false;
}

void TstDbFaults::recoveryPaths()
{
    QFETCH(Connection::LostMode, mode);
    QFETCH(int, losses);
    QFETCH(bool, failing);
    QFETCH(int, attempts);
    QFETCH(bool, raised);
    QFETCH(bool, openAfter);
    Connection c;
    srv().configure(c);
    c.onConnectionLost = [mode] { return mode; };
    c.open();
    int calls = 0;
    bool threw = false;
    try {
        c.recovering([&](int n) {
            QCOMPARE(n, calls);
            ++calls;
            if (calls <= losses)
                srv().terminateOthers();
            c.exec(failing ? "select no_such_column" : "select 1");
        });
    } catch (const QuarvError &) {
        threw = true;
    }
    QCOMPARE(calls, attempts);
    QCOMPARE(threw, raised);
    // A link that is still there is usable; a lost one is noticed as such.
    QCOMPARE(c.isOpen() && !c.connectionLost(), openAfter);
}

void TstDbFaults::silentServer()
{
    Connection c;
    srv().configure(c);
    c.setDeadPeerTimeout(6);
    c.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    // A statement longer than the dead-peer time, on a server that answers.
    c.execCommand(u"select pg_sleep(8)"_s);

    Query q;
    q.setConnection(&c);
    q.setSql(u"select pg_backend_pid() as pid"_s);
    q.open();
    const pid_t backend = pid_t(q.fieldValue(0).toLongLong());
    const pid_t server = pid_t(srv().postmasterPid());
    QVERIFY(server > 0);
    struct Resume {
        pid_t a, b;
        ~Resume() { ::kill(a, SIGCONT); ::kill(b, SIGCONT); }
    } resume{server, backend};
    QCOMPARE(::kill(server, SIGSTOP), 0);
    QCOMPARE(::kill(backend, SIGSTOP), 0);
    // Watched, as a long run is: a watcher slower than the silence allowed
    // still leaves the wait to the dead-peer check.
    struct Slow : db::busy::Watcher {
        bool slept = false;
        void pulse(const db::busy::Progress &) override
        {
            if (!std::exchange(slept, true))
                QThread::msleep(4500);
        }
        db::busy::WatchScope scope{this};
    } slow;
    try {
        q.refresh();
        QFAIL("a stopped server answered");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().startsWith(u"Serverul nu mai raspunde"_s), qPrintable(e.text()));
    }
    QVERIFY(!c.isOpen());
    ::kill(server, SIGCONT);
    ::kill(backend, SIGCONT);
    // The next search connects again.
    q.open();
    QVERIFY(q.fieldValue(0).toLongLong() != backend);
}

namespace {
// Asks to stop once `when` says so; counts the calls.
struct StopWhen : db::busy::Watcher {
    explicit StopWhen(std::function<bool(const db::busy::Progress &)> f) : when(std::move(f)) {}
    void pulse(const db::busy::Progress &p) override
    {
        ++calls;
        maxRows = std::max(maxRows, p.done);
        if (when(p) && p.stoppable)
            throw db::busy::Cancelled{};
    }
    std::function<bool(const db::busy::Progress &)> when;
    int calls = 0;
    qsizetype maxRows = 0;
    db::busy::WatchScope scope{this};
};
} // namespace

void TstDbFaults::stoppedFetch()
{
    Connection c;
    srv().configure(c);
    c.setDeadPeerTimeout(6);
    c.onConnectionLost = [] { return Connection::LostMode::ReconnectExecute; };
    Query pid;
    pid.setConnection(&c);
    pid.setSql(u"select pg_backend_pid()"_s);
    pid.open();
    const qint64 backend = pid.fieldValue(0).toLongLong();
    auto sameLinkServes = [&] {
        pid.refresh();
        QCOMPARE(pid.fieldValue(0).toLongLong(), backend);
        QCOMPARE(srv().scalar(u"select state from pg_stat_activity where pid = "_s + QString::number(backend)).toString(),
                 u"idle"_s);
    };
    Query q;
    q.setConnection(&c);
    QElapsedTimer t;

    // Rows arriving: stopped after 100,000 of five million; nothing kept.
    q.setSql(u"select g, 'rand ' || g as text from generate_series(1, 5000000) g"_s);
    {
        StopWhen stop([](const db::busy::Progress &p) { return p.done >= 100000; });
        QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, q.open());
        QVERIFY(stop.maxRows >= 100000 && stop.maxRows < 5000000);
    }
    QVERIFY(!q.isActive());
    QCOMPARE(q.rowCount(), 0);
    QCOMPARE(q.fieldCount(), 0);
    sameLinkServes();
    // Unwatched, the same query runs to its end.
    q.setSql(u"select g from generate_series(1, 1000) g"_s);
    q.open();
    QCOMPARE(q.rowCount(), 1000);
    q.close();

    // A server still thinking: the stop ends the wait at once, the link stays.
    q.setSql(u"select pg_sleep(20)"_s);
    {
        t.start();
        StopWhen stop([&](const db::busy::Progress &) { return t.elapsed() > 300; });
        QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, q.open());
        QVERIFY(stop.calls > 5); // served all along the wait
    }
    QVERIFY(c.isOpen());
    sameLinkServes();

    // Commands (a period posted, the session's set-up after a reconnect) run
    // to their end even inside work that can stop: the link is never left busy.
    {
        db::busy::Stretch stoppable(db::busy::Phase::Fetching, true);
        StopWhen stop([](const db::busy::Progress &) { return true; });
        c.execCommand(u"select pg_sleep(0.3)"_s);
        QVERIFY(stop.calls > 0);
    }
    sameLinkServes();

    // A server that stopped answering: the stop still ends the wait at once;
    // the link is given up and the next statement opens a fresh one.
    const pid_t server = pid_t(srv().postmasterPid());
    struct Resume {
        pid_t a, b;
        ~Resume() { ::kill(a, SIGCONT); ::kill(b, SIGCONT); }
    } resume{server, pid_t(backend)};
    QCOMPARE(::kill(server, SIGSTOP), 0);
    QCOMPARE(::kill(pid_t(backend), SIGSTOP), 0);
    q.setSql(u"select 1"_s);
    {
        t.start();
        StopWhen stop([&](const db::busy::Progress &) { return t.elapsed() > 300; });
        QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, q.open());
    }
    QVERIFY(!c.isOpen());
    ::kill(server, SIGCONT);
    ::kill(pid_t(backend), SIGCONT);
    q.open();
    QCOMPARE(q.fieldValue(0).toInt(), 1);
}

QTEST_GUILESS_MAIN(TstDbFaults)
#include "tst_dbfaults.moc"
