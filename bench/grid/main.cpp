// bench_grid: runs the registered figures (all, or those named as arguments).

#include "bench/grid/u_benchgrid.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

struct Entry {
    const char *name;
    BenchFigure fn;
    int order;
};

std::vector<Entry> &figures()
{
    static std::vector<Entry> list;
    return list;
}

BenchAppFactory &appFactory()
{
    static BenchAppFactory f = nullptr;
    return f;
}

qsizetype procStatus(const char *key)
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray k(key);
    for (const QByteArray &line : f.readAll().split('\n'))
        if (line.startsWith(k))
            return line.mid(k.size()).trimmed().split(' ').value(0).toLongLong() * 1024;
    return 0;
}

} // namespace

bool registerBenchFigure(const char *name, BenchFigure fn, int order)
{
    figures().push_back({name, fn, order});
    return true;
}

bool registerBenchApp(BenchAppFactory f)
{
    appFactory() = f;
    return true;
}

qsizetype BenchContext::rssBytes() { return procStatus("VmRSS:"); }
qsizetype BenchContext::peakRssBytes() { return procStatus("VmHWM:"); }

void BenchContext::resetPeak()
{
    QFile f(QStringLiteral("/proc/self/clear_refs"));
    if (f.open(QIODevice::WriteOnly))
        f.write("5");
}

void BenchContext::report(const char *name, double value, const char *unit)
{
    std::printf("BENCH %s %.3f %s\n", name, value, unit);
    std::fflush(stdout);
}

QString BenchContext::scratchDir()
{
    if (m_dir.isEmpty()) {
        const QString base = qEnvironmentVariable("QUARV_BENCH_TMP", QDir::tempPath());
        m_dir = QDir(base).filePath(QStringLiteral("quarv-bench-grid-%1").arg(QCoreApplication::applicationPid()));
        QDir().mkpath(m_dir);
    }
    return m_dir;
}

int main(int argc, char **argv)
{
    std::unique_ptr<QCoreApplication> app =
        appFactory() ? appFactory()(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);
    QStringList wanted = QCoreApplication::arguments().mid(1);
    std::vector<Entry> list = figures();
    std::stable_sort(list.begin(), list.end(), [](const Entry &a, const Entry &b) { return a.order < b.order; });
    BenchContext ctx;
    for (const Entry &e : list) {
        if (!wanted.isEmpty() && !wanted.contains(QString::fromLatin1(e.name)))
            continue;
        std::fprintf(stderr, "bench_grid: %s\n", e.name);
        e.fn(ctx);
    }
    const QString dir = ctx.scratchDir();
    QDir(dir).removeRecursively();
    return 0;
}
