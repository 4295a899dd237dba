// tkquarv-export's csv-all of the detailed analysis over the whole of the
// books against psql's \copy of the same SQL text, in the same run, on the
// database that scripts/bench provides.
//
//   bench_exportcli [--repeat N]
// Prints BENCH export_cli_ms, export_psql_ms (medians of N runs after one
// warm-up of each) and export_cli_vs_psql_ratio. The exporter signs in as
// the demo issuer (QUARV_BENCH_ISSUER / _ISSUER_PASSWORD, DEMO / demo).
// Where QUARV_BENCH_WINDOWS_EXPORT names the Windows exporter (scripts/bench
// sets it when scripts/windows has built one), the same export runs under
// Wine too: BENCH windows_export_ms and windows_export_vs_linux_ratio.

#include "bench/common/u_benchpsql.h"
#include "db/u_error.h"
#include "analyses/u_reports.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// The Linux exporter, or the Windows one under Wine when windowsExe is given.
double runExporter(const QString &file, const QString &windowsExe = {})
{
    QProcess p;
    const QStringList args{QStringLiteral("--host"), benchlib::env("QUARV_BENCH_HOST", "127.0.0.1"), QStringLiteral("--port"),
                    benchlib::env("QUARV_BENCH_PORT", "5432"), QStringLiteral("--database"),
                    benchlib::env("QUARV_BENCH_DB", "quarv_mare"), QStringLiteral("--issuer"),
                    benchlib::env("QUARV_BENCH_ISSUER", "DEMO"), QStringLiteral("--report"),
                    QStringLiteral("frmAnalizaContabilaDetaliata"), QStringLiteral("--from"), QStringLiteral("01.01.2025"),
                    QStringLiteral("--to"), QStringLiteral("30.11.2026"), QStringLiteral("--format"),
                    QStringLiteral("csv-all"), QStringLiteral("--output"), file, QStringLiteral("--password-stdin"),
                    QStringLiteral("--quiet")};
    if (windowsExe.isEmpty()) {
        p.setProgram(QStringLiteral(QUARV_EXPORT_EXE));
        p.setArguments(args);
    } else {
        p.setProgram(QStringLiteral("wine64"));
        p.setArguments(QStringList{windowsExe} + args);
    }
    QElapsedTimer t;
    t.start();
    p.start();
    p.write(benchlib::env("QUARV_BENCH_ISSUER_PASSWORD", "demo").toUtf8() + '\n');
    p.closeWriteChannel();
    p.waitForFinished(-1);
    const double ms = double(t.nsecsElapsed()) / 1e6;
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        throw QuarvError(QStringLiteral("tkquarv-export: ") + QString::fromUtf8(p.readAllStandardError()).trimmed());
    return ms;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    int repeat = 3;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--repeat") && i + 1 < args.size()) {
            repeat = std::max(1, args[++i].toInt());
        } else {
            std::fprintf(stderr, "usage: bench_exportcli [--repeat N]\n");
            return 2;
        }
    }
    try {
        const QString psql = benchlib::psqlProgram();
        if (psql.isEmpty())
            throw QuarvError(QStringLiteral("psql not found"));
        QTemporaryDir tmp;
        const QString cliFile = tmp.filePath(QStringLiteral("cli.csv")), psqlFile = tmp.filePath(QStringLiteral("psql.csv"));
        // The exporter writes the period into data_list first; psql then reads the same view.
        const QString command = benchlib::copyCommand(rep::AnalizaContabilaDetaliata::sql(), psqlFile);
        std::vector<double> cli, base;
        for (int i = 0; i <= repeat; ++i) {
            const double c = runExporter(cliFile);
            const double b = benchlib::runPsql(psql, command);
            if (i > 0) {
                cli.push_back(c);
                base.push_back(b);
            }
        }
        const double c = median(cli), b = median(base);
        std::printf("# files: the exporter's %.1f MB, psql's %.1f MB\n", double(QFileInfo(cliFile).size()) / 1048576.0,
                    double(QFileInfo(psqlFile).size()) / 1048576.0);
        std::printf("BENCH export_cli_ms %.1f ms\n", c);
        std::printf("BENCH export_psql_ms %.1f ms\n", b);
        std::printf("BENCH export_cli_vs_psql_ratio %.2f x\n", c / b);

        const QString windows = qEnvironmentVariable("QUARV_BENCH_WINDOWS_EXPORT");
        if (!windows.isEmpty()) {
            // Linux and Windows in turn, so both see the same server and machine.
            const QString winFile = tmp.filePath(QStringLiteral("windows.csv"));
            std::vector<double> win, lin;
            for (int i = 0; i <= repeat; ++i) {
                const double w = runExporter(winFile, windows);
                const double l = runExporter(cliFile);
                if (i > 0) {
                    win.push_back(w);
                    lin.push_back(l);
                }
            }
            const double w = median(win), l = median(lin);
            std::printf("# the Windows exporter's file %s the Linux one's\n",
                        QFileInfo(winFile).size() == QFileInfo(cliFile).size() ? "has the size of" : "differs from");
            std::printf("BENCH windows_export_ms %.1f ms\n", w);
            std::printf("BENCH windows_export_vs_linux_ratio %.2f x\n", w / l);
        }
        return 0;
    } catch (const QuarvError &e) {
        std::fprintf(stderr, "bench_exportcli: %s\n", e.what());
        return 1;
    }
}
