#pragma once
// The session's PostgreSQL connection, over libpq. Settings behave like those
// of a design-time component: assigning a value that differs from the current
// one closes an open connection, the same value keeps it.

#include "db/u_error.h"

#include <QObject>
#include <QString>

#include <functional>

struct pg_conn;
typedef struct pg_conn PGconn;
struct pg_result;
typedef struct pg_result PGresult;

namespace db {

class Connection : public QObject {
    Q_OBJECT
public:
    // What to do when a statement failed because the server connection was lost.
    enum class LostMode { Raise, Reconnect, ReconnectExecute };

    explicit Connection(QObject *parent = nullptr);
    ~Connection() override;

    QString host() const { return m_host; }
    int port() const { return m_port; }       // 0: the client library's default
    QString database() const { return m_database; }
    QString userName() const { return m_user; }
    QString password() const { return m_password; }
    int connectTimeout() const { return m_connectTimeout; } // seconds

    void setHost(const QString &v);
    void setPort(int v);
    void setDatabase(const QString &v);
    void setUserName(const QString &v);
    void setPassword(const QString &v);
    void setConnectTimeout(int seconds);

    // Opens with the current settings (UTF-8 client encoding); no-op when open.
    // Throws QuarvError with libpq's own message on failure.
    void open();
    void close();
    bool isOpen() const;

    // Consulted once per lost connection; when unset the error is raised.
    std::function<LostMode()> onConnectionLost;

    // Runs a statement that returns no rows (fixtures, scripts, commands);
    // the SQL may hold several statements when there are no parameters.
    void execCommand(const QString &sql);

    PGconn *handle() const { return m_conn; }

    // For the query classes: true when the failure of the last statement
    // means the link is gone (bad connection status after the error).
    bool connectionLost() const;
    // Re-establishes the link with the current settings; throws on failure
    // (the connection is then closed).
    void reconnect();
    // After a failed statement: applies the lost-connection policy. True when
    // the statement is to be run again on the fresh link; false when the
    // original error is to be raised. Throws libpq's message when
    // reconnecting fails.
    bool recoverLost();
    // The error of a failed result (or of the connection when r is null):
    // the server's message, with its detail on a second line, and SQLSTATE.
    QuarvError resultError(const PGresult *r) const;
    // Opens with the current settings when not open yet.
    void ensureOpen();

signals:
    void opened();
    void closed();

private:
    void setupSession();
    void changeSetting(QString &field, const QString &v);
    QString m_host;
    int m_port = 0;
    QString m_database;
    QString m_user;
    QString m_password;
    int m_connectTimeout = 10;
    PGconn *m_conn = nullptr;
};

} // namespace db
