#include "db/u_connection.h"

#include <QTimeZone>

#include <libpq-fe.h>

#include <vector>

namespace db {

namespace {

QString connMessage(PGconn *c, const char *fallback)
{
    QString text = c ? QString::fromUtf8(PQerrorMessage(c)).trimmed() : QString();
    if (text.isEmpty())
        text = QString::fromUtf8(fallback);
    return text;
}

} // namespace

Connection::Connection(QObject *parent) : QObject(parent) {}

Connection::~Connection()
{
    if (m_conn)
        PQfinish(m_conn);
}

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

void Connection::open()
{
    if (m_conn)
        return;
    // Keywords and values stay alive until the call returns.
    const QByteArray host = m_host.toUtf8();
    const QByteArray port = QByteArray::number(m_port);
    const QByteArray dbname = m_database.toUtf8();
    const QByteArray user = m_user.toUtf8();
    const QByteArray password = m_password.toUtf8();
    const QByteArray timeout = QByteArray::number(m_connectTimeout > 0 ? m_connectTimeout : 10);
    std::vector<const char *> keys;
    std::vector<const char *> values;
    auto add = [&](const char *k, const QByteArray &v) {
        if (v.isEmpty())
            return;
        keys.push_back(k);
        values.push_back(v.constData());
    };
    add("host", host);
    if (m_port > 0)
        add("port", port);
    add("dbname", dbname);
    add("user", user);
    add("password", password);
    add("connect_timeout", timeout);
    keys.push_back("client_encoding");
    values.push_back("UTF8");
    // Dates travel as ISO text whatever the server's own setting is.
    keys.push_back("options");
    values.push_back("-c DateStyle=ISO,YMD -c IntervalStyle=postgres -c extra_float_digits=3");
    keys.push_back("application_name");
    values.push_back("tkQuarv");
    keys.push_back(nullptr);
    values.push_back(nullptr);

    PGconn *c = PQconnectdbParams(keys.data(), values.data(), 0);
    if (!c)
        throw QuarvError(QStringLiteral("Memorie insuficienta pentru conectare"));
    if (PQstatus(c) != CONNECTION_OK) {
        const QString text = connMessage(c, "Conectarea la server a esuat");
        PQfinish(c);
        throw QuarvError(text, QStringLiteral("08001"));
    }
    m_conn = c;
    setupSession();
    emit opened();
}

void Connection::close()
{
    if (!m_conn)
        return;
    PQfinish(m_conn);
    m_conn = nullptr;
    emit closed();
}

bool Connection::isOpen() const
{
    return m_conn != nullptr;
}

bool Connection::connectionLost() const
{
    return m_conn && PQstatus(m_conn) == CONNECTION_BAD;
}

void Connection::reconnect()
{
    if (!m_conn) {
        open();
        return;
    }
    PQreset(m_conn);
    if (PQstatus(m_conn) != CONNECTION_OK) {
        const QString text = connMessage(m_conn, "Reconectarea la server a esuat");
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
    const char *values[1] = {zone.constData()};
    PQclear(PQexecParams(m_conn, "select set_config('TimeZone', $1, false)", 1, nullptr, values, nullptr, nullptr, 0));
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
        const char *detail = PQresultErrorField(r, PG_DIAG_MESSAGE_DETAIL);
        if (!text.isEmpty() && detail && *detail)
            text += u'\r' + QString::fromUtf8(detail);
        state = QString::fromLatin1(PQresultErrorField(r, PG_DIAG_SQLSTATE));
        if (text.isEmpty())
            text = QString::fromUtf8(PQresultErrorMessage(r)).trimmed();
    }
    if (text.isEmpty())
        text = connMessage(m_conn, "Eroare la executia comenzii");
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
    for (int attempt = 0;; ++attempt) {
        PGresult *r = PQexec(m_conn, text.constData());
        const ExecStatusType st = PQresultStatus(r);
        if (r && (st == PGRES_COMMAND_OK || st == PGRES_TUPLES_OK || st == PGRES_EMPTY_QUERY)) {
            PQclear(r);
            return;
        }
        QuarvError err = resultError(r);
        PQclear(r);
        if (attempt == 0 && recoverLost())
            continue;
        throw err;
    }
}

} // namespace db
