#include "db/u_connection.h"

#include "db/u_busy.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>
#include <QTimeZone>

#include <libpq-fe.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cerrno>
#include <memory>
#include <thread>

#ifdef _WIN32
#include <winsock2.h>
#else
#include <poll.h>
#endif

namespace db {

namespace {

// The client library indents the second line of its messages ("\n\t");
// an error box shows them as lines of their own.
QString withoutIndentation(QString text)
{
    text.replace(QLatin1String("\n\t"), QLatin1String("\n"));
    return text.trimmed();
}

QString connMessage(PGconn *c, const char *fallback)
{
    QString text = c ? withoutIndentation(QString::fromUtf8(PQerrorMessage(c))) : QString();
    if (text.isEmpty())
        text = QString::fromUtf8(fallback);
    return text;
}

// A server's detail is shown only where it is short readable text: a
// "Failing row contains (...)" with a stored layout in it would put hundreds
// of hexadecimal digits in front of the operator.
bool readableDetail(const QString &detail)
{
    constexpr qsizetype kLongest = 300;
    if (detail.size() > kLongest)
        return false;
    static const QRegularExpression binary(QStringLiteral("\\\\x[0-9a-fA-F]{16}"));
    if (detail.contains(binary))
        return false;
    for (QChar ch : detail)
        if (ch.category() == QChar::Other_Control && ch != u'\n' && ch != u'\t')
            return false;
    return true;
}

// Waits until the socket has something to read: 1 ready, 0 timed out, -1 failed.
// A watched wait serves its watcher at least this often (ms).
constexpr int kWatchedSlice = 20;
// How long a stopped statement may take to end before its link is dropped (ms).
constexpr int kCancelWait = 700;

int waitReadable(int socket, int ms)
{
#ifdef _WIN32
    WSAPOLLFD p{};
    p.fd = SOCKET(socket);
    p.events = POLLRDNORM;
    const int r = WSAPoll(&p, 1, ms);
    return r > 0 ? 1 : r;
#else
    pollfd p{};
    p.fd = socket;
    p.events = POLLIN;
    for (;;) {
        const int r = poll(&p, 1, ms);
        if (r < 0 && errno == EINTR)
            continue;
        return r > 0 ? 1 : r;
    }
#endif
}

} // namespace

// Keywords and values for the client library, alive as long as this is.
struct Connection::Params {
    std::vector<QByteArray> text;
    std::vector<const char *> keys;
    std::vector<const char *> values;

    void add(const char *k, const QByteArray &v)
    {
        if (v.isEmpty())
            return;
        text.push_back(v);
        keys.push_back(k);
        values.push_back(nullptr);
    }
    // The pointers are taken once all values are in place.
    void finish()
    {
        for (size_t i = 0; i < text.size(); ++i)
            values[i] = text[i].constData();
        keys.push_back(nullptr);
        values.push_back(nullptr);
    }
};

Connection::Connection(QObject *parent) : QObject(parent) {}

Connection::~Connection() = default;

void Connection::changeSetting(QString &field, const QString &v)
{
    if (field == v)
        return;
    close();
    field = v;
}

void Connection::setHost(const QString &v) { changeSetting(m_host, v); }
void Connection::setDatabase(const QString &v) { changeSetting(m_database, v); }
void Connection::setUserName(const QString &v) { changeSetting(m_user, v); }
void Connection::setPassword(const QString &v) { changeSetting(m_password, v); }

void Connection::setPort(int v)
{
    if (m_port == v)
        return;
    close();
    m_port = v;
}

void Connection::setConnectTimeout(int seconds)
{
    if (m_connectTimeout == seconds)
        return;
    close();
    m_connectTimeout = seconds;
}

void Connection::setDeadPeerTimeout(int seconds)
{
    seconds = std::max(seconds, 6);
    if (m_deadPeerTimeout == seconds)
        return;
    close();
    m_deadPeerTimeout = seconds;
}

int Connection::contactTimeout() const
{
    // The client library counts a connect timeout in whole seconds, at least 2.
    return std::max(2, m_deadPeerTimeout / 3);
}

Connection::Params Connection::connectParams(int timeoutSeconds) const
{
    Params p;
    p.add("host", m_host.toUtf8());
    if (m_port > 0)
        p.add("port", QByteArray::number(m_port));
    p.add("dbname", m_database.toUtf8());
    p.add("user", m_user.toUtf8());
    p.add("password", m_password.toUtf8());
    p.add("connect_timeout", QByteArray::number(timeoutSeconds));
    p.add("client_encoding", "UTF8");
    // Dates travel as ISO text whatever the server's own setting is.
    p.add("options", "-c DateStyle=ISO,YMD -c IntervalStyle=postgres -c extra_float_digits=3");
    p.add("application_name", "tkQuarv");
    // A network link that died while the connection was idle is noticed
    // within the dead-peer time: probes after a third of it, then every
    // sixth, four unanswered ones end it; data left unacknowledged as long
    // ends it too.
    p.add("keepalives", "1");
    p.add("keepalives_idle", QByteArray::number(std::max(1, m_deadPeerTimeout / 3)));
    p.add("keepalives_interval", QByteArray::number(std::max(1, m_deadPeerTimeout / 6)));
    p.add("keepalives_count", "4");
    p.add("tcp_user_timeout", QByteArray::number(qint64(m_deadPeerTimeout) * 1000));
    p.finish();
    return p;
}

void Connection::open()
{
    if (m_conn)
        return;
    const Params p = connectParams(m_connectTimeout > 0 ? m_connectTimeout : 10);
    pg::ConnPtr c(PQconnectdbParams(p.keys.data(), p.values.data(), 0));
    if (!c)
        throw QuarvError(QStringLiteral("Memorie insuficienta pentru conectare"));
    if (PQstatus(c.get()) != CONNECTION_OK)
        throw QuarvError(connMessage(c.get(), "Conectarea la server a esuat"), QStringLiteral("08001"));
    m_conn = std::move(c);
    setupSession();
    emit opened();
}

void Connection::close()
{
    if (!m_conn)
        return;
    // Saying goodbye must not wait on a server that does not read.
    PQsetnonblocking(m_conn.get(), 1);
    m_conn.reset();
    emit closed();
}

bool Connection::isOpen() const
{
    return m_conn != nullptr;
}

bool Connection::connectionLost() const
{
    return m_conn && PQstatus(m_conn.get()) == CONNECTION_BAD;
}

void Connection::reconnect()
{
    if (!m_conn) {
        open();
        return;
    }
    PQreset(m_conn.get());
    if (PQstatus(m_conn.get()) != CONNECTION_OK) {
        const QString text = connMessage(m_conn.get(), "Reconectarea la server a esuat");
        close();
        throw QuarvError(text, QStringLiteral("08001"));
    }
    setupSession();
}

void Connection::setupSession()
{
    // Timestamps with a zone arrive in the workstation's own wall-clock time.
    // A zone the server does not know leaves its default in place.
    const QByteArray zone = QTimeZone::systemTimeZoneId();
    if (zone.isEmpty())
        return;
    pg::Param p;
    p.isNull = false;
    p.data = zone;
    try {
        exec("select set_config('TimeZone', $1, false)", {p});
    } catch (const QuarvError &) {
        // a lost link shows itself on the next statement
    }
}

bool Connection::recoverLost()
{
    if (!connectionLost())
        return false;
    const LostMode mode = onConnectionLost ? onConnectionLost() : LostMode::Raise;
    if (mode == LostMode::Raise)
        return false;
    reconnect();
    return mode == LostMode::ReconnectExecute;
}

QuarvError Connection::resultError(const PGresult *r) const
{
    QString text;
    QString state;
    if (r) {
        text = QString::fromUtf8(PQresultErrorField(r, PG_DIAG_MESSAGE_PRIMARY));
        const QString detail = QString::fromUtf8(PQresultErrorField(r, PG_DIAG_MESSAGE_DETAIL));
        if (!text.isEmpty() && !detail.isEmpty() && readableDetail(detail))
            text += u'\r' + detail;
        state = QString::fromLatin1(PQresultErrorField(r, PG_DIAG_SQLSTATE));
        if (text.isEmpty())
            text = withoutIndentation(QString::fromUtf8(PQresultErrorMessage(r)));
    }
    if (text.isEmpty())
        text = connMessage(m_conn.get(), "Eroare la executia comenzii");
    if (state.isEmpty() && connectionLost())
        state = QStringLiteral("08006");
    return QuarvError(text, state);
}

void Connection::ensureOpen()
{
    if (!m_conn)
        open();
}

void Connection::execCommand(const QString &sql)
{
    ensureOpen();
    const QByteArray text = sql.toUtf8();
    recovering([&](int) { exec(text, {}, Send::Script); });
}

// --- statements ------------------------------------------------------------

void Connection::send(const QByteArray &sql, const std::vector<pg::Param> &params, Send how)
{
    if (!m_conn)
        throw QuarvError(QStringLiteral("Conexiunea la baza de date este inchisa"), QStringLiteral("08003"));
    PGconn *c = m_conn.get();
    int sent;
    if (how == Send::Script) {
        sent = PQsendQuery(c, sql.constData());
    } else {
        std::vector<const char *> values;
        std::vector<int> lengths;
        std::vector<int> formats;
        std::vector<Oid> types;
        for (const pg::Param &p : params) {
            values.push_back(p.isNull ? nullptr : p.data.constData());
            lengths.push_back(int(p.data.size()));
            formats.push_back(p.binary ? 1 : 0);
            types.push_back(p.typeOid);
        }
        sent = PQsendQueryParams(c, sql.constData(), int(params.size()), types.data(), values.data(), lengths.data(),
                                 formats.data(), 0);
    }
    if (!sent)
        throw resultError(nullptr);
    if (how == Send::Rows)
        PQsetSingleRowMode(c);
}

bool Connection::serverAnswers() const
{
    // Anything the server says (even a refusal) means it is alive.
    auto p = std::make_shared<const Params>(connectParams(contactTimeout()));
    if (!busy::watched())
        return PQpingParams(p->keys.data(), p->values.data(), 0) != PQPING_NO_RESPONSE;
    // Watched, the contact (seconds on a dead link) goes on a thread of its
    // own that owns what it uses, so the watcher is served and a stop asked
    // meanwhile ends the wait at once.
    auto answer = std::make_shared<std::atomic<int>>(0); // 1 alive, -1 silent
    std::thread([p, answer] {
        answer->store(PQpingParams(p->keys.data(), p->values.data(), 0) != PQPING_NO_RESPONSE ? 1 : -1);
    }).detach();
    while (answer->load() == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        busy::tick();
    }
    return answer->load() == 1;
}

bool Connection::waitForServer()
{
    const int silence = (m_deadPeerTimeout - contactTimeout()) * 1000;
    // Watched work waits in short slices, the watcher called between them.
    const int slice = busy::watched() ? kWatchedSlice : silence;
    QElapsedTimer quiet;
    quiet.start();
    for (;;) {
        // Read once: a watcher served between two reads may take longer than what was left.
        const qint64 left = silence - quiet.elapsed();
        if (left <= 0) {
            if (!serverAnswers())
                return false;
            quiet.restart();
            continue;
        }
        const int r = waitReadable(PQsocket(m_conn.get()), int(std::min<qint64>(slice, left)));
        if (r != 0)
            return true; // data, or a broken socket the client library will report
        busy::pulseNow();
    }
}

pg::ResultPtr Connection::nextResult()
{
    PGconn *c = m_conn.get();
    if (!c)
        return nullptr;
    while (PQisBusy(c)) {
        if (!waitForServer()) {
            close();
            throw QuarvError(QStringLiteral("Serverul nu mai raspunde: legatura a fost inchisa dupa %1 secunde "
                                            "fara raspuns. La urmatoarea cerere programul se reconecteaza.")
                                 .arg(m_deadPeerTimeout),
                             QStringLiteral("08006"));
        }
        if (!PQconsumeInput(c))
            break; // the link broke: the next result says so
    }
    return pg::ResultPtr(PQgetResult(c));
}

namespace {

// Asks the server to stop the statement under way, waiting at most `ms` for
// it to take the request; false when it did not. The request goes on a
// thread of its own because the client library waits for the server's
// goodbye without a limit, and a server that stopped answering would hold
// the program; that thread owns what it uses and ends whenever it can.
bool requestCancel(PGconn *c, int ms)
{
    pg::CancelPtr cancel(PQgetCancel(c));
    if (!cancel)
        return false;
    auto done = std::make_shared<std::atomic<int>>(0); // 1 taken, -1 refused
    std::thread([cancel = std::move(cancel), done] {
        char buf[256];
        done->store(PQcancel(cancel.get(), buf, sizeof buf) ? 1 : -1);
    }).detach();
    QElapsedTimer t;
    t.start();
    while (done->load() == 0 && t.elapsed() < ms) {
        busy::pulseNow();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return done->load() == 1;
}

} // namespace

void Connection::abandonStatement() noexcept
{
    PGconn *c = m_conn.get();
    if (!c)
        return;
    // Cleaning up after a stop is not stopped again.
    busy::Unstoppable hold;
    try {
        if (!requestCancel(c, kCancelWait)) {
            close(); // the next statement opens a fresh link
            return;
        }
        // The server ends the statement with an error the next results bring;
        // one that takes too long to say so loses the link instead.
        QElapsedTimer t;
        t.start();
        for (;;) {
            while (PQisBusy(c) && t.elapsed() < kCancelWait) {
                waitReadable(PQsocket(c), kWatchedSlice);
                busy::pulseNow();
                if (!PQconsumeInput(c))
                    break;
            }
            if (PQisBusy(c)) {
                close();
                return;
            }
            if (!pg::ResultPtr(PQgetResult(c)))
                return;
        }
    } catch (...) {
        close(); // a watcher that failed: the link is in an unknown state
    }
}

pg::ResultPtr Connection::exec(const QByteArray &sql, const std::vector<pg::Param> &params, Send how)
{
    // Only the rows of a fetch can be stopped: a command, a post or the
    // session's set-up run to their end, or the link would be left busy.
    busy::Unstoppable whole;
    send(sql, params, how);
    pg::ResultPtr last;
    pg::ResultPtr failed;
    while (pg::ResultPtr r = nextResult()) {
        const ExecStatusType st = PQresultStatus(r.get());
        if (st == PGRES_COMMAND_OK || st == PGRES_TUPLES_OK || st == PGRES_EMPTY_QUERY || st == PGRES_SINGLE_TUPLE)
            last = std::move(r);
        else if (!failed)
            failed = std::move(r);
    }
    if (failed || !last)
        throw resultError(failed.get());
    return last;
}

// --- transactions ----------------------------------------------------------

qint64 Connection::begin()
{
    const pg::ResultPtr r = exec("begin; select txid_current()", {}, Send::Script);
    return QByteArray(PQgetvalue(r.get(), 0, 0)).toLongLong();
}

void Connection::rollbackQuietly() noexcept
{
    if (!m_conn || connectionLost())
        return;
    try {
        exec("rollback", {}, Send::Script);
    } catch (...) {
        // the link went: the server rolls back on its own
    }
}

Connection::Outcome Connection::transactionOutcome(qint64 txid) const
{
    const Params p = connectParams(contactTimeout());
    const pg::ConnPtr c(PQconnectdbParams(p.keys.data(), p.values.data(), 0));
    if (!c || PQstatus(c.get()) != CONNECTION_OK)
        return Outcome::Unknown;
    const QByteArray id = QByteArray::number(txid);
    const char *values[1] = {id.constData()};
    // The old session may still be finishing it: ask again for a while.
    const int tries = contactTimeout() * 10;
    for (int i = 0; i < tries; ++i) {
        const pg::ResultPtr r(PQexecParams(c.get(), "select txid_status($1::bigint)", 1, nullptr, values, nullptr, nullptr, 0));
        if (PQresultStatus(r.get()) != PGRES_TUPLES_OK || PQgetisnull(r.get(), 0, 0))
            return Outcome::Unknown;
        const QByteArray status(PQgetvalue(r.get(), 0, 0));
        if (status == "committed")
            return Outcome::Committed;
        if (status == "aborted")
            return Outcome::Aborted;
        QThread::msleep(100);
    }
    return Outcome::Unknown;
}

void Connection::commit(qint64 txid)
{
    try {
        exec("commit", {}, Send::Script);
    } catch (const QuarvError &) {
        const bool lost = connectionLost() || !m_conn;
        if (!lost)
            throw; // the server refused it: nothing was saved
        switch (transactionOutcome(txid)) {
        case Outcome::Committed:
            // Saved. The lost link is renewed now when the policy allows.
            if (connectionLost()) {
                try {
                    recoverLost();
                } catch (const QuarvError &) {
                    // closed: the next statement opens it again
                }
            }
            return;
        case Outcome::Aborted:
            throw;
        case Outcome::Unknown:
            break;
        }
        close();
        throw QuarvError(QStringLiteral("Legatura cu serverul s-a pierdut chiar la salvare si nu se stie daca "
                                        "modificarea a fost salvata. Reincarcati datele si verificati "
                                        "inregistrarea inainte de a o modifica din nou."),
                         QStringLiteral("08007"));
    }
}

} // namespace db
