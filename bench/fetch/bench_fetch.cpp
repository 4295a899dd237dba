// Fetch benchmark: `select * from view_contab_det` through db::Query against
// two raw libpq baselines that touch every value (PQexec of the whole result,
// and single-row streaming). Each phase runs in a child process of its own so
// that its peak memory is its own; the figure is the growth of the resident
// set from the start of the phase to its high-water mark.
//
//   bench_fetch [--repeat N] [--sql TEXT] [--phase pqexec|singlerow|fetch]
// (--phase runs that one phase in this process, for a profiler).
// Connection from QUARV_BENCH_HOST, _PORT, _DB, _USER, _PASSWORD.

#include "db/u_connection.h"
#include "db/u_query.h"

#include <libpq-fe.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct Outcome {
    double ms = 0;
    long long rows = 0;
    long long checksum = 0;
    long peakKb = 0; // growth of the resident set during the phase
    double cpuMs = 0; // user + system time of the whole child
    int ok = 0;
    char error[512] = {};
};

std::string env(const char *name, const char *fallback)
{
    const char *v = std::getenv(name);
    return v && *v ? v : fallback;
}

std::string connInfo()
{
    return "host='" + env("QUARV_BENCH_HOST", "127.0.0.1") + "' port='" + env("QUARV_BENCH_PORT", "5432")
         + "' dbname='" + env("QUARV_BENCH_DB", "quarv_mare") + "' user='" + env("QUARV_BENCH_USER", "quarv")
         + "' password='" + env("QUARV_BENCH_PASSWORD", "kadrim") + "' client_encoding=UTF8";
}

long statusKb(const char *key)
{
    FILE *f = std::fopen("/proc/self/status", "r");
    if (!f)
        return 0;
    char line[256];
    long v = 0;
    const size_t n = std::strlen(key);
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, key, n) == 0) {
            v = std::atol(line + n);
            break;
        }
    std::fclose(f);
    return v;
}

double nowMs()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

// Touches a value the way a consumer would: its length and its bytes.
inline long long touch(const char *v, int len)
{
    long long s = len;
    for (int i = 0; i < len; ++i)
        s += static_cast<unsigned char>(v[i]);
    return s;
}

PGconn *rawConnect(Outcome &o)
{
    PGconn *c = PQconnectdb(connInfo().c_str());
    if (PQstatus(c) != CONNECTION_OK) {
        std::snprintf(o.error, sizeof o.error, "%s", PQerrorMessage(c));
        PQfinish(c);
        return nullptr;
    }
    return c;
}

void phasePqexec(const std::string &sql, Outcome &o)
{
    PGconn *c = rawConnect(o);
    if (!c)
        return;
    const long base = statusKb("VmRSS:");
    const double t0 = nowMs();
    PGresult *r = PQexec(c, sql.c_str());
    if (PQresultStatus(r) != PGRES_TUPLES_OK) {
        std::snprintf(o.error, sizeof o.error, "%s", PQresultErrorMessage(r));
        PQclear(r);
        PQfinish(c);
        return;
    }
    const int rows = PQntuples(r), nf = PQnfields(r);
    long long sum = 0;
    for (int i = 0; i < rows; ++i)
        for (int f = 0; f < nf; ++f)
            if (!PQgetisnull(r, i, f))
                sum += touch(PQgetvalue(r, i, f), PQgetlength(r, i, f));
    o.ms = nowMs() - t0;
    o.rows = rows;
    o.checksum = sum;
    o.peakKb = statusKb("VmHWM:") - base;
    o.ok = 1;
    PQclear(r);
    PQfinish(c);
}

void phaseSingleRow(const std::string &sql, Outcome &o)
{
    PGconn *c = rawConnect(o);
    if (!c)
        return;
    const long base = statusKb("VmRSS:");
    const double t0 = nowMs();
    if (!PQsendQuery(c, sql.c_str()) || !PQsetSingleRowMode(c)) {
        std::snprintf(o.error, sizeof o.error, "%s", PQerrorMessage(c));
        PQfinish(c);
        return;
    }
    long long sum = 0, rows = 0;
    bool failed = false;
    while (PGresult *r = PQgetResult(c)) {
        const ExecStatusType st = PQresultStatus(r);
        if (st == PGRES_SINGLE_TUPLE) {
            const int nf = PQnfields(r);
            for (int f = 0; f < nf; ++f)
                if (!PQgetisnull(r, 0, f))
                    sum += touch(PQgetvalue(r, 0, f), PQgetlength(r, 0, f));
            ++rows;
        } else if (st != PGRES_TUPLES_OK && !failed) {
            failed = true;
            std::snprintf(o.error, sizeof o.error, "%s", PQresultErrorMessage(r));
        }
        PQclear(r);
    }
    o.ms = nowMs() - t0;
    o.rows = rows;
    o.checksum = sum;
    o.peakKb = statusKb("VmHWM:") - base;
    o.ok = failed ? 0 : 1;
    PQfinish(c);
}

void phaseQuery(const std::string &sql, Outcome &o)
{
    try {
        db::Connection conn;
        conn.setHost(QString::fromStdString(env("QUARV_BENCH_HOST", "127.0.0.1")));
        conn.setPort(std::atoi(env("QUARV_BENCH_PORT", "5432").c_str()));
        conn.setDatabase(QString::fromStdString(env("QUARV_BENCH_DB", "quarv_mare")));
        conn.setUserName(QString::fromStdString(env("QUARV_BENCH_USER", "quarv")));
        conn.setPassword(QString::fromStdString(env("QUARV_BENCH_PASSWORD", "kadrim")));
        conn.open();
        db::Query q;
        q.setConnection(&conn);
        q.setSql(QString::fromStdString(sql));
        const long base = statusKb("VmRSS:");
        const double t0 = nowMs();
        q.open();
        o.ms = nowMs() - t0;
        o.peakKb = statusKb("VmHWM:") - base;
        o.rows = q.rowCount();
        long long mem = 0;
        const bool verbose = std::getenv("QUARV_BENCH_VERBOSE") != nullptr;
        for (int f = 0; f < q.fieldCount(); ++f) {
            mem += q.column(f).memoryUsage();
            if (verbose)
                std::printf("#   %-28s %-8s %8.1f MB\n", q.fieldDef(f).name.toUtf8().constData(),
                            db::fieldTypeName(q.fieldDef(f).type).toUtf8().constData(),
                            q.column(f).memoryUsage() / 1048576.0);
        }
        o.checksum = mem;
        o.ok = 1;
    } catch (const QuarvError &e) {
        std::snprintf(o.error, sizeof o.error, "%s", e.what());
    }
}

// Runs one phase in a child process and brings its outcome back.
Outcome runChild(void (*phase)(const std::string &, Outcome &), const std::string &sql)
{
    Outcome o;
    int fds[2];
    if (pipe(fds) != 0)
        return o;
    std::fflush(stdout);
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        Outcome mine;
        phase(sql, mine);
        [[maybe_unused]] auto n = write(fds[1], &mine, sizeof mine);
        close(fds[1]);
        _exit(0);
    }
    close(fds[1]);
    size_t got = 0;
    while (got < sizeof o) {
        const ssize_t n = read(fds[0], reinterpret_cast<char *>(&o) + got, sizeof o - got);
        if (n <= 0)
            break;
        got += size_t(n);
    }
    close(fds[0]);
    int status = 0;
    rusage ru{};
    wait4(pid, &status, 0, &ru);
    const double cpu = (ru.ru_utime.tv_sec + ru.ru_stime.tv_sec) * 1000.0
                     + (ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1000.0;
    if (got != sizeof o) {
        o = Outcome();
        std::snprintf(o.error, sizeof o.error, "the phase ended abnormally (status %d)", status);
    }
    o.cpuMs = cpu;
    return o;
}

} // namespace

int main(int argc, char **argv)
{
    int repeat = 2;
    std::string sql = "select * from view_contab_det";
    std::string only;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--phase") && i + 1 < argc)
            only = argv[++i];
        if (!std::strcmp(argv[i], "--repeat") && i + 1 < argc)
            repeat = std::max(1, std::atoi(argv[++i]));
        else if (!std::strcmp(argv[i], "--sql") && i + 1 < argc)
            sql = argv[++i];
    }
    struct Phase {
        const char *name;
        void (*fn)(const std::string &, Outcome &);
        Outcome best;
    } phases[] = {{"pqexec", phasePqexec, {}}, {"singlerow", phaseSingleRow, {}}, {"fetch", phaseQuery, {}}};

    // One phase in this process (for a profiler).
    if (!only.empty()) {
        for (Phase &p : phases)
            if (only == p.name) {
                Outcome o;
                p.fn(sql, o);
                std::printf("# %s: %.0f ms, %lld rows, peak +%.1f MB %s\n", p.name, o.ms, o.rows, o.peakKb / 1024.0,
                            o.error);
                return o.ok ? 0 : 1;
            }
        std::fprintf(stderr, "bench_fetch: no phase named %s\n", only.c_str());
        return 2;
    }

    for (int rep = 0; rep < repeat; ++rep)
        for (Phase &p : phases) {
            const Outcome o = runChild(p.fn, sql);
            if (!o.ok) {
                std::fprintf(stderr, "bench_fetch: %s failed: %s\n", p.name, o.error);
                return 1;
            }
            std::printf("# %s run %d: %.0f ms, %lld rows, peak +%.1f MB, cpu %.0f ms\n", p.name, rep + 1, o.ms,
                        o.rows, o.peakKb / 1024.0, o.cpuMs);
            if (!p.best.ok || o.ms < p.best.ms)
                p.best.ms = o.ms, p.best.rows = o.rows, p.best.ok = 1, p.best.checksum = o.checksum;
            if (p.best.cpuMs == 0 || o.cpuMs < p.best.cpuMs)
                p.best.cpuMs = o.cpuMs;
            // Peak memory does not vary much between runs; keep the lowest.
            if (p.best.peakKb == 0 || o.peakKb < p.best.peakKb)
                p.best.peakKb = o.peakKb;
        }
    const Outcome &pq = phases[0].best, &sr = phases[1].best, &q = phases[2].best;
    if (pq.rows != q.rows || sr.rows != q.rows)
        std::fprintf(stderr, "bench_fetch: row counts differ (%lld, %lld, %lld)\n", pq.rows, sr.rows, q.rows);
    std::printf("BENCH fetch_rows %lld rows\n", q.rows);
    std::printf("BENCH fetch_ms %.0f ms\n", q.ms);
    std::printf("BENCH pqexec_ms %.0f ms\n", pq.ms);
    std::printf("BENCH singlerow_ms %.0f ms\n", sr.ms);
    std::printf("BENCH fetch_cpu_ms %.0f ms\n", q.cpuMs);
    std::printf("BENCH pqexec_cpu_ms %.0f ms\n", pq.cpuMs);
    std::printf("BENCH singlerow_cpu_ms %.0f ms\n", sr.cpuMs);
    std::printf("BENCH fetch_mb %.1f MB\n", q.peakKb / 1024.0);
    std::printf("BENCH fetch_columns_mb %.1f MB\n", q.checksum / 1048576.0);
    std::printf("BENCH pqexec_mb %.1f MB\n", pq.peakKb / 1024.0);
    std::printf("BENCH singlerow_mb %.1f MB\n", sr.peakKb / 1024.0);
    std::printf("BENCH fetch_ratio %.2f x\n", q.ms / sr.ms);
    std::printf("BENCH fetch_vs_pqexec_ratio %.2f x\n", q.ms / pq.ms);
    std::printf("BENCH fetch_mem_ratio %.2f x\n", double(q.peakKb) / double(pq.peakKb));
    return 0;
}
