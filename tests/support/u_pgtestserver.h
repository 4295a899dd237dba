#pragma once
// A private PostgreSQL server for the tests. Under CTest one server is started
// for the whole run (the pgtest_start fixture) and found through
// QUARV_TEST_PGDIR; a test binary run by hand starts its own and stops it at
// exit. Each test binary gets a fresh database cloned from a template that
// holds the demo schema (no demo data): tests insert the fixtures they check.

#include <QString>
#include <QStringList>
#include <QVariant>

namespace db { class Connection; }

class PgTestServer {
public:
    static PgTestServer &instance();

    QString host() const { return QStringLiteral("127.0.0.1"); }
    int port() const { return m_port; }
    QString database() const { return m_database; }
    static QString user() { return QStringLiteral("quarv"); }
    static QString password() { return QStringLiteral("kadrim"); }
    // A port on loopback where no server listens.
    static int deadPort();

    // Points a connection at the test database with the fixed account.
    void configure(db::Connection &c) const;

    // SQL on the test database, as the role quarv / as the superuser. Both
    // throw QuarvError with the server's message.
    void exec(const QString &sql) const;
    void execAdmin(const QString &sql) const;
    // First column of every row, as text (null as an invalid QVariant).
    QVariantList column(const QString &sql) const;
    QVariant scalar(const QString &sql) const;

    // Ends every other session on the test database (a dropped connection).
    int terminateOthers() const;
    // The server's main process (to stop and resume it).
    qint64 postmasterPid() const;
    // Drops and recreates the test database from the template.
    void recreateDatabase();

    // Cluster control, used by the fixture tool and by a standalone run.
    static void startCluster(const QString &dir);
    static void stopCluster(const QString &dir);

private:
    PgTestServer();
    ~PgTestServer();
    QString m_dir;
    int m_port = 0;
    QString m_database;
    bool m_own = false;
};
