#include "tests/support/u_pgtestserver.h"

#include "db/u_connection.h"
#include "db/u_error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <libpq-fe.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

const char *kTemplate = "quarv_tmpl";

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "pgtest: %s\n", qPrintable(what));
    std::fflush(stderr);
    std::exit(2);
}

QString pgBinDir()
{
    const QByteArray env = qgetenv("QUARV_PG_BINDIR");
    if (!env.isEmpty())
        return QString::fromLocal8Bit(env);
    QDir base(QStringLiteral("/usr/lib/postgresql"));
    QStringList versions = base.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(versions.begin(), versions.end(), [](const QString &a, const QString &b) { return a.toInt() > b.toInt(); });
    for (const QString &v : versions)
        if (QFileInfo::exists(base.filePath(v + QStringLiteral("/bin/initdb"))))
            return base.filePath(v + QStringLiteral("/bin"));
    fail(QStringLiteral("no PostgreSQL server binaries found (run scripts/setup)"));
}

bool isRoot() { return ::geteuid() == 0; }

// The server refuses to run as root: as root, it runs as the postgres account.
void runPg(const QString &tool, const QStringList &args, const QString &dir)
{
    QProcess p;
    QString program = pgBinDir() + u'/' + tool;
    QStringList a = args;
    if (isRoot()) {
        a.prepend(program);
        a.prepend(QStringLiteral("--"));
        a.prepend(QStringLiteral("postgres"));
        a.prepend(QStringLiteral("-u"));
        program = QStringLiteral("runuser");
    }
    p.setWorkingDirectory(dir);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, a);
    if (!p.waitForFinished(120000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        fail(QStringLiteral("%1 failed: %2").arg(tool, QString::fromLocal8Bit(p.readAll())));
}

void chownToPostgres(const QString &path)
{
    if (!isRoot())
        return;
    const passwd *pw = ::getpwnam("postgres");
    if (!pw)
        fail(QStringLiteral("the postgres account is missing (run scripts/setup)"));
    if (::chown(QFile::encodeName(path).constData(), pw->pw_uid, pw->pw_gid) != 0)
        fail(QStringLiteral("cannot hand %1 to postgres").arg(path));
}

int freePort()
{
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = 0;
    socklen_t len = sizeof addr;
    if (s < 0 || ::bind(s, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0
        || ::getsockname(s, reinterpret_cast<sockaddr *>(&addr), &len) != 0)
        fail(QStringLiteral("no free port on loopback"));
    const int port = ntohs(addr.sin_port);
    ::close(s);
    return port;
}

struct ConnDeleter { void operator()(PGconn *c) const { PQfinish(c); } };
struct ResultDeleter { void operator()(PGresult *r) const { PQclear(r); } };
using ConnPtr = std::unique_ptr<PGconn, ConnDeleter>;
using ResultPtr = std::unique_ptr<PGresult, ResultDeleter>;

ConnPtr connectTo(const QString &dir, int port, const QString &database, bool admin)
{
    // The superuser comes in through the private socket (trust), quarv over
    // TCP with its password, as the program does.
    QString info = admin
        ? QStringLiteral("host='%1' port=%2 dbname='%3' user=postgres").arg(dir).arg(port).arg(database)
        : QStringLiteral("host=127.0.0.1 port=%1 dbname='%2' user=quarv password=kadrim").arg(port).arg(database);
    ConnPtr c(PQconnectdb(info.toUtf8().constData()));
    if (PQstatus(c.get()) != CONNECTION_OK)
        throw QuarvError(QString::fromUtf8(PQerrorMessage(c.get())).trimmed());
    PQsetClientEncoding(c.get(), "UTF8");
    return c;
}

ResultPtr run(PGconn *c, const QString &sql)
{
    ResultPtr r(PQexec(c, sql.toUtf8().constData()));
    const auto st = PQresultStatus(r.get());
    if (st != PGRES_COMMAND_OK && st != PGRES_TUPLES_OK)
        throw QuarvError(QString::fromUtf8(PQresultErrorMessage(r.get())).trimmed(),
                         QString::fromLatin1(PQresultErrorField(r.get(), PG_DIAG_SQLSTATE)));
    return r;
}

QString sourceFile(const char *rel)
{
    return QStringLiteral(QUARV_SOURCE_DIR) + u'/' + QString::fromLatin1(rel);
}

int readPort(const QString &dir)
{
    QFile f(dir + QStringLiteral("/port"));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    return f.readAll().trimmed().toInt();
}

} // namespace

void PgTestServer::startCluster(const QString &dir)
{
    stopCluster(dir);
    QDir().mkpath(dir);
    QDir(dir).removeRecursively();
    QDir().mkpath(dir);
    chownToPostgres(dir);
    const QString data = dir + QStringLiteral("/data");
    runPg(QStringLiteral("initdb"),
          {QStringLiteral("-D"), data, QStringLiteral("-U"), QStringLiteral("postgres"), QStringLiteral("-E"),
           QStringLiteral("UTF8"), QStringLiteral("--locale=C.UTF-8"), QStringLiteral("--auth-local=trust"),
           QStringLiteral("--auth-host=scram-sha-256"), QStringLiteral("--no-sync")},
          dir);
    const int port = freePort();
    runPg(QStringLiteral("pg_ctl"),
          {QStringLiteral("-D"), data, QStringLiteral("-l"), dir + QStringLiteral("/server.log"), QStringLiteral("-w"),
           QStringLiteral("-t"), QStringLiteral("60"), QStringLiteral("-o"),
           QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off -c synchronous_commit=off "
                          "-c full_page_writes=off -c max_connections=60")
               .arg(port).arg(dir),
           QStringLiteral("start")},
          dir);
    {
        ConnPtr admin = connectTo(dir, port, QStringLiteral("postgres"), true);
        run(admin.get(), QStringLiteral("create role quarv login password 'kadrim'"));
        run(admin.get(), QStringLiteral("create database %1 owner quarv").arg(QLatin1String(kTemplate)));
    }
    {
        ConnPtr c = connectTo(dir, port, QString::fromLatin1(kTemplate), false);
        QFile schema(sourceFile("demo/schema.sql"));
        if (schema.open(QIODevice::ReadOnly))
            run(c.get(), QString::fromUtf8(schema.readAll()));
    }
    QFile f(dir + QStringLiteral("/port"));
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        fail(QStringLiteral("cannot write %1").arg(f.fileName()));
    f.write(QByteArray::number(port));
}

void PgTestServer::stopCluster(const QString &dir)
{
    const QString data = dir + QStringLiteral("/data");
    if (!QFileInfo::exists(data + QStringLiteral("/postmaster.pid")))
        return;
    QProcess p;
    QString program = pgBinDir() + QStringLiteral("/pg_ctl");
    QStringList a{QStringLiteral("-D"), data, QStringLiteral("-m"), QStringLiteral("immediate"), QStringLiteral("-w"),
                  QStringLiteral("stop")};
    if (isRoot()) {
        a = QStringList{QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"), program} + a;
        program = QStringLiteral("runuser");
    }
    p.start(program, a);
    p.waitForFinished(60000);
}

qint64 PgTestServer::postmasterPid() const
{
    QFile f(m_dir + QStringLiteral("/data/postmaster.pid"));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    return f.readLine().trimmed().toLongLong();
}

PgTestServer &PgTestServer::instance()
{
    static PgTestServer server;
    return server;
}

PgTestServer::PgTestServer()
{
    const QByteArray env = qgetenv("QUARV_TEST_PGDIR");
    if (!env.isEmpty() && readPort(QString::fromLocal8Bit(env)) > 0) {
        m_dir = QString::fromLocal8Bit(env);
    } else {
        m_dir = QStringLiteral("/tmp/quarv-pgtest-%1").arg(::getpid());
        startCluster(m_dir);
        m_own = true;
    }
    m_port = readPort(m_dir);
    QString app = QFileInfo(QCoreApplication::applicationFilePath()).baseName().toLower();
    if (app.isEmpty())
        app = QStringLiteral("test");
    app.replace(QRegularExpression(QStringLiteral("[^a-z0-9_]")), QStringLiteral("_"));
    m_database = QStringLiteral("t_%1_%2").arg(app).arg(::getpid());
    recreateDatabase();
}

PgTestServer::~PgTestServer()
{
    try {
        ConnPtr admin = connectTo(m_dir, m_port, QStringLiteral("postgres"), true);
        run(admin.get(), QStringLiteral("drop database if exists %1 with (force)").arg(m_database));
    } catch (...) {
    }
    if (m_own) {
        stopCluster(m_dir);
        QDir(m_dir).removeRecursively();
    }
}

void PgTestServer::recreateDatabase()
{
    try {
        ConnPtr admin = connectTo(m_dir, m_port, QStringLiteral("postgres"), true);
        run(admin.get(), QStringLiteral("drop database if exists %1 with (force)").arg(m_database));
        run(admin.get(), QStringLiteral("create database %1 template %2 owner quarv").arg(m_database, QLatin1String(kTemplate)));
    } catch (const QuarvError &e) {
        fail(e.text());
    }
}

int PgTestServer::deadPort()
{
    return freePort();
}

void PgTestServer::configure(db::Connection &c) const
{
    c.setHost(host());
    c.setPort(m_port);
    c.setDatabase(m_database);
    c.setUserName(user());
    c.setPassword(password());
}

void PgTestServer::exec(const QString &sql) const
{
    ConnPtr c = connectTo(m_dir, m_port, m_database, false);
    run(c.get(), sql);
}

void PgTestServer::execAdmin(const QString &sql) const
{
    ConnPtr c = connectTo(m_dir, m_port, m_database, true);
    run(c.get(), sql);
}

QVariantList PgTestServer::column(const QString &sql) const
{
    ConnPtr c = connectTo(m_dir, m_port, m_database, false);
    ResultPtr r = run(c.get(), sql);
    QVariantList out;
    for (int i = 0; i < PQntuples(r.get()); ++i)
        out.append(PQgetisnull(r.get(), i, 0) ? QVariant() : QVariant(QString::fromUtf8(PQgetvalue(r.get(), i, 0))));
    return out;
}

QVariant PgTestServer::scalar(const QString &sql) const
{
    return column(sql).value(0);
}

int PgTestServer::terminateOthers() const
{
    ConnPtr c = connectTo(m_dir, m_port, m_database, true);
    ResultPtr r = run(c.get(), QStringLiteral("select count(pg_terminate_backend(pid)) from pg_stat_activity "
                                              "where datname = current_database() and pid <> pg_backend_pid()"));
    return QString::fromLatin1(PQgetvalue(r.get(), 0, 0)).toInt();
}
