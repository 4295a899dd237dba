#pragma once
// The session's PostgreSQL connection, over libpq. Settings behave like those
// of a design-time component: assigning a value that differs from the current
// one closes an open connection, the same value keeps it.
//
// Every statement of db/ goes through send / nextResult (or exec on top of
// them): while the server is silent, the wait asks it now and then whether it
// still answers, so a server that stopped answering ends the wait with a
// clear error instead of freezing the program. TCP keepalives find a dead
// network link on an idle connection.

#include "db/u_error.h"
#include "db/u_pglink.h"

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

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
    // How long a server may stay silent and unreachable before the link is
    // given up (seconds): two thirds of it waiting, then a third for a fresh
    // contact. A long statement on a server that answers is never cut short.
    int deadPeerTimeout() const { return m_deadPeerTimeout; }

    void setHost(const QString &v);
    void setPort(int v);
    void setDatabase(const QString &v);
    void setUserName(const QString &v);
    void setPassword(const QString &v);
    void setConnectTimeout(int seconds);
    void setDeadPeerTimeout(int seconds); // at least 6

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

    PGconn *handle() const { return m_conn.get(); }

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

    // Runs attempt(0); when it throws QuarvError because the link was lost
    // and the policy says so, runs attempt(1) on the fresh link. Any other
    // failure, and the second one, is raised.
    template <class Attempt>
    decltype(auto) recovering(Attempt &&attempt)
    {
        for (int n = 0;; ++n) {
            try {
                return attempt(n);
            } catch (const QuarvError &) {
                if (n > 0 || !recoverLost())
                    throw;
            }
        }
    }

    // --- statements, for the query classes (the link must be open)
    enum class Send {
        Script,    // simple protocol, no parameters, several statements allowed
        Statement, // one statement with bound parameters
        Rows,      // one statement whose rows arrive one result per row
    };
    // Throws the connection's error when the statement cannot be sent.
    void send(const QByteArray &sql, const std::vector<pg::Param> &params = {}, Send how = Send::Statement);
    // The next result of the statement under way, null when it is complete.
    // Throws (and closes the link) when the server stopped answering.
    pg::ResultPtr nextResult();
    // Stops the statement under way and drops its remaining results.
    void abandonStatement() noexcept;
    // Sends and collects: the last result, or the first error raised.
    pg::ResultPtr exec(const QByteArray &sql, const std::vector<pg::Param> &params = {}, Send how = Send::Statement);

    // --- one transaction whose outcome is known even when COMMIT's reply is lost
    // Starts it; returns the server's id of it.
    qint64 begin();
    // Commits it. When the link drops before the reply, asks the server on a
    // fresh contact what became of it: committed returns normally; aborted
    // raises the lost-link error (so the caller's recovery runs it again);
    // still unknown raises an error that says so, and closes the link.
    void commit(qint64 txid);
    // Rolls back the transaction under way, when the link is still there.
    void rollbackQuietly() noexcept;

signals:
    void opened();
    void closed();

private:
    enum class Outcome { Committed, Aborted, Unknown };
    struct Params;
    Params connectParams(int timeoutSeconds) const;
    void setupSession();
    void changeSetting(QString &field, const QString &v);
    bool waitForServer();
    bool serverAnswers() const;
    Outcome transactionOutcome(qint64 txid) const;
    int contactTimeout() const;
    QString m_host;
    int m_port = 0;
    QString m_database;
    QString m_user;
    QString m_password;
    int m_connectTimeout = 10;
    int m_deadPeerTimeout = 30;
    pg::ConnPtr m_conn;
};

} // namespace db
