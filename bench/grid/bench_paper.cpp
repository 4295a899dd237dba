// A grid on paper: the PDF of 100,000 grouped rows (group rows, group footers
// and the grand total, every group expanded) against the .xlsx of the same
// grid in the same run, in time and in peak memory.

#include "bench/grid/u_benchgrid.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridmodel.h"
#include "paper/u_gridpaper.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

constexpr qsizetype kPaperRows = 100000;

// The first rows of the generated books, as a dataset of their own.
class Slice : public db::DataSet {
public:
    Slice(const db::DataSet &from, qsizetype rows)
    {
        setFields(from.fieldDefs());
        rows = std::min(rows, from.rowCount());
        for (int f = 0; f < from.fieldCount(); ++f) {
            const db::Column &src = from.column(f);
            db::Column &dst = mutableColumn(f);
            for (qsizetype r = 0; r < rows; ++r) {
                if (src.isNull(r)) {
                    dst.appendNull();
                    continue;
                }
                switch (from.fieldDef(f).type) {
                case db::FieldType::Float: dst.appendDouble(src.asDouble(r)); break;
                case db::FieldType::String:
                case db::FieldType::Text:
                case db::FieldType::Bytes: dst.appendBytes(src.bytes(r).data(), src.bytes(r).size()); break;
                default: dst.appendInt64(src.asInt64(r)); break;
                }
            }
        }
        setRowCount(rows);
        setActiveState(true);
    }
};

// Time and resident peak growth of one write.
std::pair<double, qsizetype> measure(const std::function<void()> &write)
{
    const qsizetype base = BenchContext::rssBytes();
    BenchContext::resetPeak();
    QElapsedTimer t;
    t.start();
    write();
    const double ms = BenchContext::ms(t);
    return {ms, std::max<qsizetype>(1, BenchContext::peakRssBytes() - base)};
}

void pdfExport(BenchContext &ctx)
{
    Slice ds(ctx.dataSet(), kPaperRows);
    grid::GridModel m;
    m.setDataSet(&ds);
    m.createDefaultColumns();
    const QList<grid::GridSummary> sums = {
        {QStringLiteral("valoare_lei"), grid::SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")},
        {QStringLiteral("valoare"), grid::SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")}};
    m.setFooterSummaries(sums);
    m.setGroupSummaries(sums);
    // The register as an accountant prints it: a dozen columns, grouped by partner.
    const QStringList shown = {QStringLiteral("jurnal"), QStringLiteral("data_doc"), QStringLiteral("tip_doc"),
                               QStringLiteral("nr_doc"), QStringLiteral("partener"), QStringLiteral("conts"),
                               QStringLiteral("conta"), QStringLiteral("conts_coresp"), QStringLiteral("conta_coresp"),
                               QStringLiteral("explicatie"), QStringLiteral("valoare_lei"), QStringLiteral("valoare")};
    for (int c = 0; c < m.columnCount(); ++c)
        m.setColumnVisible(c, shown.contains(m.column(c).fieldName, Qt::CaseInsensitive));
    m.groupByColumn(m.columnIndex(QStringLiteral("partener")));
    m.expandAll();

    const QString xlsx = QDir(ctx.scratchDir()).filePath(QStringLiteral("paper.xlsx"));
    const QString pdf = QDir(ctx.scratchDir()).filePath(QStringLiteral("paper.pdf"));
    const paper::PageHeader header{QStringLiteral("Registru jurnal"), QStringLiteral("01.01.2025 - 31.12.2025"),
                                   QStringLiteral("DEMO"), QDateTime::currentDateTime()};
    // The workbook first: the peak of whichever runs second starts from what the first left.
    const auto [xlsxMs, xlsxPeak] = measure([&] { grid::exportGridXlsx(m, xlsx); });
    const auto [pdfMs, pdfPeak] = measure([&] { paper::exportGridPdf(m, pdf, header); });
    std::fprintf(stderr, "bench_grid: %lld rows (%lld display rows), pdf %.0f ms %.1f MiB peak %.1f MiB, xlsx %.0f ms peak %.1f MiB\n",
                 static_cast<long long>(m.recordCount()), static_cast<long long>(m.rowCount()), pdfMs,
                 double(QFileInfo(pdf).size()) / 1048576.0, double(pdfPeak) / 1048576.0, xlsxMs,
                 double(xlsxPeak) / 1048576.0);
    QFile::remove(xlsx);
    QFile::remove(pdf);
    ctx.report("pdf_ms", pdfMs, "ms");
    ctx.report("pdf_ratio", pdfMs / xlsxMs, "x");
    ctx.report("pdf_mem_ratio", double(pdfPeak) / double(xlsxPeak), "x");
}
QUARV_BENCH_FIGURE(pdfExport, 65)

} // namespace
