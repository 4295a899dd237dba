#include "bench/common/u_benchpsql.h"

#include "db/u_connection.h"
#include "db/u_error.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

namespace benchlib {

QString env(const char *name, const char *fallback)
{
    const QString v = qEnvironmentVariable(name);
    return v.isEmpty() ? QString::fromLatin1(fallback) : v;
}

void configure(db::Connection &c)
{
    c.setHost(env("QUARV_BENCH_HOST", "127.0.0.1"));
    c.setPort(env("QUARV_BENCH_PORT", "5432").toInt());
    c.setDatabase(env("QUARV_BENCH_DB", "quarv_mare"));
    c.setUserName(env("QUARV_BENCH_USER", "quarv"));
    c.setPassword(env("QUARV_BENCH_PASSWORD", "kadrim"));
}

QString psqlProgram()
{
    for (const char *p : {"/usr/bin/psql", "/usr/lib/postgresql/15/bin/psql"})
        if (QFileInfo(QString::fromLatin1(p)).isExecutable())
            return QString::fromLatin1(p);
    return {};
}

QString copyCommand(const QString &sql, const QString &file)
{
    QString text = sql;
    while (!text.isEmpty() && (text.back().isSpace() || text.back() == QLatin1Char(';')))
        text.chop(1);
    QString path = file;
    path.replace(QLatin1Char('\''), QLatin1String("''"));
    return QStringLiteral("\\copy (") + text + QStringLiteral(") to '") + path + QStringLiteral("' with csv header");
}

double runPsql(const QString &program, const QString &command)
{
    QProcess p;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(QStringLiteral("PGPASSWORD"), env("QUARV_BENCH_PASSWORD", "kadrim"));
    e.insert(QStringLiteral("PGCLIENTENCODING"), QStringLiteral("UTF8"));
    p.setProcessEnvironment(e);
    p.setProgram(program);
    p.setArguments({QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"),
                    QStringLiteral("-h"), env("QUARV_BENCH_HOST", "127.0.0.1"), QStringLiteral("-p"),
                    env("QUARV_BENCH_PORT", "5432"), QStringLiteral("-U"), env("QUARV_BENCH_USER", "quarv"),
                    QStringLiteral("-d"), env("QUARV_BENCH_DB", "quarv_mare"), QStringLiteral("-c"), command});
    QElapsedTimer t;
    t.start();
    p.start();
    if (!p.waitForStarted(-1))
        throw QuarvError(QStringLiteral("%1: %2").arg(program, p.errorString()));
    p.waitForFinished(-1);
    const double ms = double(t.nsecsElapsed()) / 1e6;
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        throw QuarvError(QStringLiteral("psql: ") + QString::fromLocal8Bit(p.readAllStandardError()).trimmed());
    return ms;
}

} // namespace benchlib
