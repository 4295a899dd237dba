// The grid's logic figures: memory, grouping, sorting, a filter keystroke, and
// the CSV and .xlsx exports, each against a plain baseline measured in the same run.

#include "bench/grid/u_benchgrid.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridmodel_p.h"

#include <QDir>
#include <QFile>

#include <xlsxwriter.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <numeric>
#include <string>
#include <string_view>
#include <unordered_map>

using namespace grid;

namespace {

constexpr int kRepeats = 3;

const QList<GridSummary> &moneySums()
{
    static const QList<GridSummary> s = {{QStringLiteral("valoare_lei"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")},
                                         {QStringLiteral("valoare_coresp"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")},
                                         {QStringLiteral("valoare"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")}};
    return s;
}

std::unique_ptr<GridModel> boundModel(db::DataSet &ds)
{
    auto m = std::make_unique<GridModel>();
    m->setDataSet(&ds);
    m->createDefaultColumns();
    m->setFooterSummaries(moneySums());
    m->setGroupSummaries(moneySums());
    return m;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

std::string_view view(const db::Column &c, qsizetype r)
{
    const QByteArrayView b = c.bytes(r);
    return {b.data(), size_t(b.size())};
}

// ---------------------------------------------------------------- memory

void gridMemory(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    const qsizetype dsBytes = ctx.datasetBytes();
    const qsizetype base = BenchContext::rssBytes();
    BenchContext::resetPeak();
    const bool peakWorks = BenchContext::peakRssBytes() <= base + base / 20;
    qsizetype sampled = base;
    auto sample = [&] { sampled = std::max(sampled, BenchContext::rssBytes()); };
    {
        auto m = boundModel(ds);
        sample();
        m->groupByColumn(m->columnIndex(QStringLiteral("partener")));
        sample();
        m->expandAll();
        sample();
        m->setSortOrder(m->columnIndex(QStringLiteral("explicatie")), SortOrder::Ascending);
        m->setSortOrder(m->columnIndex(QStringLiteral("data_doc")), SortOrder::Ascending, true);
        sample();
        m->setFilterText(m->columnIndex(QStringLiteral("explicatie")), QStringLiteral("fa"));
        sample();
        m->clearAllFilters();
        sample();
    }
    const qsizetype peak = std::max(sampled, peakWorks ? BenchContext::peakRssBytes() : sampled) - base;
    std::fprintf(stderr, "bench_grid: dataset %.1f MiB, grid peak %.1f MiB (%s)\n", double(dsBytes) / 1048576.0,
                 double(peak) / 1048576.0, peakWorks ? "VmHWM" : "sampled RSS");
    ctx.report("grid_mem_ratio", double(peak) / double(dsBytes), "x");
    ctx.report("grid_total_mem_ratio", double(dsBytes + peak) / double(dsBytes), "x");
}
QUARV_BENCH_FIGURE(gridMemory, 10)

// ---------------------------------------------------------------- grouping

void grouping(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    const int fPart = ds.fieldIndex(QStringLiteral("partener"));
    const int f1 = ds.fieldIndex(QStringLiteral("valoare_lei")), f2 = ds.fieldIndex(QStringLiteral("valoare_coresp")),
              f3 = ds.fieldIndex(QStringLiteral("valoare"));
    std::vector<double> grid, plain;
    size_t groups = 0;
    for (int rep = 0; rep < kRepeats; ++rep) {
        {
            auto m = boundModel(ds);
            const int col = m->columnIndex(QStringLiteral("partener"));
            QElapsedTimer t;
            t.start();
            m->groupByColumn(col); // display rows, group footers and footer ready on return
            grid.push_back(BenchContext::ms(t));
        }
        {
            QElapsedTimer t;
            t.start();
            struct Group {
                double s1 = 0, s2 = 0, s3 = 0;
                std::vector<qint32> rows;
            };
            std::unordered_map<std::string_view, Group> map;
            const db::Column &k = ds.column(fPart), &c1 = ds.column(f1), &c2 = ds.column(f2), &c3 = ds.column(f3);
            for (qint32 r = 0; r < qint32(ds.rowCount()); ++r) {
                Group &g = map[view(k, r)];
                g.rows.push_back(r);
                g.s1 += c1.asDouble(r);
                g.s2 += c2.asDouble(r);
                g.s3 += c3.asDouble(r);
            }
            std::vector<std::string_view> keys;
            keys.reserve(map.size());
            for (const auto &kv : map)
                keys.push_back(kv.first);
            std::sort(keys.begin(), keys.end());
            plain.push_back(BenchContext::ms(t));
            groups = keys.size();
        }
    }
    std::fprintf(stderr, "bench_grid: group by partener (%zu groups): grid %.1f ms, plain %.1f ms\n", groups, median(grid),
                 median(plain));
    ctx.report("group_ms", median(grid), "ms");
    ctx.report("group_ratio", median(grid) / median(plain), "x");
}
QUARV_BENCH_FIGURE(grouping, 20)

// ---------------------------------------------------------------- sorting

void sorting(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    const int fText = ds.fieldIndex(QStringLiteral("partener"));
    const int fDate = ds.fieldIndex(QStringLiteral("data_contare"));
    std::vector<double> grid, plain;
    for (int rep = 0; rep < kRepeats; ++rep) {
        {
            auto m = boundModel(ds);
            const int a = m->columnIndex(QStringLiteral("partener")), b = m->columnIndex(QStringLiteral("data_contare"));
            QElapsedTimer t;
            t.start();
            // header click on the text column, Shift+click on the date, applied as one sort
            GridModelAccess::beginBatch(*m);
            m->clickSort(a, false);
            m->clickSort(b, true);
            GridModelAccess::endBatch(*m);
            grid.push_back(BenchContext::ms(t));
        }
        {
            QElapsedTimer t;
            t.start();
            const db::Column &tc = ds.column(fText), &dc = ds.column(fDate);
            std::vector<qint32> idx(size_t(ds.rowCount()));
            std::iota(idx.begin(), idx.end(), 0);
            std::sort(idx.begin(), idx.end(), [&](qint32 x, qint32 y) {
                const std::string_view a = view(tc, x), b = view(tc, y);
                if (a != b)
                    return a < b;
                return dc.asInt64(x) < dc.asInt64(y);
            });
            plain.push_back(BenchContext::ms(t));
        }
    }
    std::fprintf(stderr, "bench_grid: sort by partener, data_contare: grid %.1f ms, plain %.1f ms\n", median(grid), median(plain));
    ctx.report("sort_ms", median(grid), "ms");
    ctx.report("sort_ratio", median(grid) / median(plain), "x");
}
QUARV_BENCH_FIGURE(sorting, 30)

// ---------------------------------------------------------------- filter row

void filterKeystroke(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    auto m = boundModel(ds);
    const int col = m->columnIndex(QStringLiteral("explicatie"));
    const QStringList typed = {QStringLiteral("f"), QStringLiteral("fa"), QStringLiteral("fac"), QStringLiteral("fact"),
                               QStringLiteral("factu"), QStringLiteral("fact"), QStringLiteral("fact ş")};
    double first = 0, worst = 0;
    for (int i = 0; i < typed.size(); ++i) {
        QElapsedTimer t;
        t.start();
        m->setFilterText(col, typed[i]);
        const double ms = BenchContext::ms(t);
        std::fprintf(stderr, "bench_grid: filter \"%s\": %.1f ms, %lld rows\n", qPrintable(typed[i]), ms,
                     static_cast<long long>(m->recordCount()));
        if (i == 0)
            first = ms; // includes learning the column's distinct values, once per data load
        else
            worst = std::max(worst, ms);
    }
    // the same typing in a grid grouped by partener, with its group footers
    m->clearAllFilters();
    m->groupByColumn(m->columnIndex(QStringLiteral("partener")));
    double grouped = 0;
    for (const QString &s : typed.mid(1)) {
        QElapsedTimer t;
        t.start();
        m->setFilterText(col, s);
        grouped = std::max(grouped, BenchContext::ms(t));
    }
    ctx.report("filter_ms", worst, "ms");
    ctx.report("filter_first_ms", first, "ms");
    ctx.report("filter_grouped_ms", grouped, "ms");
}
QUARV_BENCH_FIGURE(filterKeystroke, 40)

// ---------------------------------------------------------------- CSV

void appendPlain(std::string &out, const db::Column &c, db::FieldType t, qsizetype r)
{
    if (c.isNull(r))
        return;
    char buf[40];
    switch (t) {
    case db::FieldType::Float: {
        auto res = std::to_chars(buf, buf + sizeof buf, c.asDouble(r), std::chars_format::general, 15);
        out.append(buf, size_t(res.ptr - buf));
        return;
    }
    case db::FieldType::Int32:
    case db::FieldType::Int64: {
        auto res = std::to_chars(buf, buf + sizeof buf, c.asInt64(r));
        out.append(buf, size_t(res.ptr - buf));
        return;
    }
    case db::FieldType::Date: {
        int y, mo, d;
        QDate::fromJulianDay(c.asInt64(r)).getDate(&y, &mo, &d);
        std::snprintf(buf, sizeof buf, "%02d.%02d.%04d", d, mo, y);
        out.append(buf);
        return;
    }
    case db::FieldType::Bool: out.append(c.asBool(r) ? "True" : "False"); return;
    default: {
        const QByteArrayView b = c.bytes(r);
        out.append(b.data(), size_t(b.size()));
    }
    }
}

void csvExport(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    auto m = boundModel(ds);
    const QString gridPath = QDir(ctx.scratchDir()).filePath(QStringLiteral("grid.csv"));
    const QString plainPath = QDir(ctx.scratchDir()).filePath(QStringLiteral("plain.csv"));
    double gridBest = 1e300, plainBest = 1e300;
    qint64 gridSize = 0, plainSize = 0;
    for (int rep = 0; rep < 2; ++rep) {
        {
            QElapsedTimer t;
            t.start();
            FILE *f = std::fopen(QFile::encodeName(plainPath).constData(), "wb");
            std::setvbuf(f, nullptr, _IOFBF, 1 << 20);
            std::string line = "\xEF\xBB\xBF";
            for (int c = 0; c < ds.fieldCount(); ++c) {
                if (c)
                    line += ';';
                line += ds.fieldDef(c).name.toStdString();
            }
            line += "\r\n";
            std::fwrite(line.data(), 1, line.size(), f);
            for (qsizetype r = 0; r < ds.rowCount(); ++r) {
                line.clear();
                for (int c = 0; c < ds.fieldCount(); ++c) {
                    if (c)
                        line += ';';
                    appendPlain(line, ds.column(c), ds.fieldDef(c).type, r);
                }
                line += "\r\n";
                std::fwrite(line.data(), 1, line.size(), f);
            }
            std::fclose(f);
            plainBest = std::min(plainBest, BenchContext::ms(t));
            plainSize = QFileInfo(plainPath).size();
            QFile::remove(plainPath);
        }
        {
            QElapsedTimer t;
            t.start();
            exportGridCsv(*m, gridPath, QLatin1Char(';'));
            gridBest = std::min(gridBest, BenchContext::ms(t));
            gridSize = QFileInfo(gridPath).size();
            QFile::remove(gridPath);
        }
    }
    std::fprintf(stderr, "bench_grid: csv grid %.0f ms (%lld bytes), plain %.0f ms (%lld bytes)\n", gridBest,
                 static_cast<long long>(gridSize), plainBest, static_cast<long long>(plainSize));
    ctx.report("csv_ms", gridBest, "ms");
    ctx.report("csv_ratio", gridBest / plainBest, "x");
}
QUARV_BENCH_FIGURE(csvExport, 50)

// ---------------------------------------------------------------- xlsx

void xlsxExport(BenchContext &ctx)
{
    db::DataSet &ds = ctx.dataSet();
    auto m = boundModel(ds);
    const QString gridPath = QDir(ctx.scratchDir()).filePath(QStringLiteral("grid.xlsx"));
    const QString plainPath = QDir(ctx.scratchDir()).filePath(QStringLiteral("plain.xlsx"));
    double plainMs, gridMs;
    {
        QElapsedTimer t;
        t.start();
        lxw_workbook_options o{};
        o.constant_memory = LXW_TRUE;
        o.use_zip64 = LXW_TRUE;
        lxw_workbook *wb = workbook_new_opt(QFile::encodeName(plainPath).constData(), &o);
        lxw_worksheet *ws = workbook_add_worksheet(wb, nullptr);
        lxw_format *date = workbook_add_format(wb);
        format_set_num_format(date, "dd.mm.yyyy");
        for (int c = 0; c < ds.fieldCount(); ++c)
            worksheet_write_string(ws, 0, lxw_col_t(c), ds.fieldDef(c).name.toUtf8().constData(), nullptr);
        std::string s;
        for (qsizetype r = 0; r < ds.rowCount(); ++r) {
            const lxw_row_t row = lxw_row_t(r + 1);
            for (int c = 0; c < ds.fieldCount(); ++c) {
                const db::Column &col = ds.column(c);
                if (col.isNull(r))
                    continue;
                switch (ds.fieldDef(c).type) {
                case db::FieldType::Float:
                case db::FieldType::Int32:
                case db::FieldType::Int64: worksheet_write_number(ws, row, lxw_col_t(c), col.asDouble(r), nullptr); break;
                case db::FieldType::Date:
                    worksheet_write_number(ws, row, lxw_col_t(c), double(col.asInt64(r) - 2415019), date);
                    break;
                case db::FieldType::Bool: worksheet_write_boolean(ws, row, lxw_col_t(c), col.asBool(r), nullptr); break;
                default: {
                    const QByteArrayView b = col.bytes(r);
                    s.assign(b.data(), size_t(b.size()));
                    worksheet_write_string(ws, row, lxw_col_t(c), s.c_str(), nullptr);
                }
                }
            }
        }
        workbook_close(wb);
        plainMs = BenchContext::ms(t);
        QFile::remove(plainPath);
    }
    {
        QElapsedTimer t;
        t.start();
        exportGridXlsx(*m, gridPath);
        gridMs = BenchContext::ms(t);
        QFile::remove(gridPath);
    }
    std::fprintf(stderr, "bench_grid: xlsx grid %.0f ms, plain %.0f ms\n", gridMs, plainMs);
    ctx.report("xlsx_ms", gridMs, "ms");
    ctx.report("xlsx_ratio", gridMs / plainMs, "x");
}
QUARV_BENCH_FIGURE(xlsxExport, 60)

} // namespace
