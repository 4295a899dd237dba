// "Cauta" and the exports of the analysis forms, timed through the forms
// themselves (checks, period, query, grid rebuild and one paint), on the
// database that scripts/bench provides.
//
//   bench_reports [--repeat N] [--shots DIR]
//
// Plain timings, each the median of N runs after one warm-up, with their row
// counts: BENCH registru_cauta_ms (the journal register, one month),
// registru_all_cauta_ms (the whole of the books), fisa_cauta_ms (the account
// sheet of 4111 over three months).
//
// Ratios against a baseline measured in the same run, the two runs taking
// turns (N of each after one warm-up of each; median over median):
//   contab_det_cauta_ratio            the detailed analysis over the whole of
//                                     the books against a raw libpq fetch of
//                                     its SQL text in single-row mode that
//                                     touches every value (data_list holding
//                                     the same period);
//   contab_det_csv_all_vs_psql_ratio  its "Export csv (Toate Datele)" against
//                                     psql's \copy of the same SQL text to a
//                                     CSV file with a header line;
//   profitabilitate_cauta_ratio       the profitability analysis over the whole
//                                     of the books (its query closed before
//                                     each run, as it only ever opens it)
//                                     against the raw fetch of its SQL text;
//   turism_cauta_ratio                the tourism settlement check, one month,
//                                     against the raw fetch of its SQL text;
//   turism_xlsx_ratio                 its "Export Excel" against a plain
//                                     constant-memory workbook of the same
//                                     cells (read from the form's query before
//                                     timing; one date format, no other).
// Each ratio comes with its two medians (_ms), the Cauta ratios also with the
// row count (_rows).
//
// --shots also renders forms to PNG files in DIR: the register grouped by
// journal and ungrouped, the account sheet, the detailed analysis grouped by
// account, the accounting of documents (one month), expenses and revenues by
// order grouped by order, the profitability analysis and the tourism
// settlement check. Grouped grids show every group closed but the smallest,
// with their group footers and sums.
//
// Connection from QUARV_BENCH_HOST, _PORT, _DB, _USER, _PASSWORD; psql is
// looked for in /usr/bin, then under /usr/lib/postgresql/15/bin. The period
// row found on the server is put back at the end.

#include "bench/common/u_benchpsql.h"
#include "session/u_dmQuarv.h"
#include "reports/common/u_frmConts_select.h"
#include "analyses/u_reportrun.h"
#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "reports/u_frmVerifDecontTurism.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"

#include <libpq-fe.h>
#include <xlsxwriter.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using benchlib::copyCommand;
using benchlib::env;
using benchlib::psqlProgram;
using benchlib::runPsql;

double elapsedMs(const QElapsedTimer &t)
{
    return double(t.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// One "Cauta", up to the painted grid.
double cautaOnce(TReportForm *f)
{
    QElapsedTimer t;
    t.start();
    f->Cauta();
    f->repaint();
    QCoreApplication::processEvents();
    return elapsedMs(t);
}

// Median of `repeat` timed runs of Cauta, after a warm-up; the form's query
// row count of the last run goes to *rows.
double timeCauta(TReportForm *f, int repeat, qsizetype *rows)
{
    std::vector<double> ms;
    for (int i = 0; i <= repeat; ++i) {
        const double one = cautaOnce(f);
        if (i > 0)
            ms.push_back(one);
    }
    *rows = f->query()->rowCount();
    return median(ms);
}

void bench(const char *name, TReportForm *f, int repeat)
{
    qsizetype rows = 0;
    const double ms = timeCauta(f, repeat, &rows);
    std::printf("BENCH %s %.1f ms\n", name, ms);
    std::printf("BENCH %s_rows %lld rows\n", name, static_cast<long long>(rows));
    std::fflush(stdout);
}

// Two ways of doing one thing, taking turns: one warm-up of each, then
// `repeat` timed runs of each. Each run returns its own elapsed milliseconds,
// so that it can leave its preparation out.
template <typename RunA, typename RunB>
std::pair<double, double> timeTurns(int repeat, RunA runA, RunB runB)
{
    std::vector<double> a, b;
    for (int i = 0; i <= repeat; ++i) {
        const double ta = runA();
        const double tb = runB();
        if (i > 0) {
            a.push_back(ta);
            b.push_back(tb);
        }
    }
    return {median(a), median(b)};
}

void printRatio(const char *name, const char *what, double ms, const char *baseline, double baseMs)
{
    std::printf("BENCH %s_%s_ms %.1f ms\n", name, what, ms);
    std::printf("BENCH %s_%s_ms %.1f ms\n", name, baseline, baseMs);
    std::printf("BENCH %s_%s_ratio %.2f x\n", name, what, baseMs > 0 ? ms / baseMs : 0.0);
    std::fflush(stdout);
}

// ----- the raw libpq baseline

struct PgFinish {
    void operator()(PGconn *c) const { PQfinish(c); }
};
using RawConn = std::unique_ptr<PGconn, PgFinish>;

RawConn rawConnect()
{
    const QByteArray host = env("QUARV_BENCH_HOST", "127.0.0.1").toUtf8();
    const QByteArray port = env("QUARV_BENCH_PORT", "5432").toUtf8();
    const QByteArray db = env("QUARV_BENCH_DB", "quarv_mare").toUtf8();
    const QByteArray user = env("QUARV_BENCH_USER", "quarv").toUtf8();
    const QByteArray password = env("QUARV_BENCH_PASSWORD", "kadrim").toUtf8();
    const char *const keys[] = {"host", "port", "dbname", "user", "password", "client_encoding", nullptr};
    const char *const values[] = {host.constData(), port.constData(), db.constData(), user.constData(),
                                  password.constData(), "UTF8", nullptr};
    RawConn c(PQconnectdbParams(keys, values, 0));
    if (PQstatus(c.get()) != CONNECTION_OK)
        throw QuarvError(QStringLiteral("libpq: ") + QString::fromUtf8(PQerrorMessage(c.get())).trimmed());
    return c;
}

// The period the views read, as the baseline's connection sees it.
QString serverPeriod(PGconn *c)
{
    PGresult *r = PQexec(c, "select data_incep::text || ' .. ' || data_sf::text from data_list");
    QString text;
    if (PQresultStatus(r) == PGRES_TUPLES_OK && PQntuples(r) == 1 && !PQgetisnull(r, 0, 0))
        text = QString::fromUtf8(PQgetvalue(r, 0, 0));
    PQclear(r);
    return text;
}

// The period row must hold what the form wrote, or the two runs read different rows.
void checkPeriod(PGconn *c, const char *name, const QDate &start, const QDate &end)
{
    const QString want = start.toString(Qt::ISODate) + QStringLiteral(" .. ") + end.toString(Qt::ISODate);
    const QString got = serverPeriod(c);
    if (got != want)
        std::fprintf(stderr, "bench_reports: %s: data_list holds '%s', not '%s'\n", name, qPrintable(got),
                     qPrintable(want));
}

struct RawFetch {
    double ms = 0;
    long long rows = 0;
    long long checksum = 0;
};

// The SQL text as it stands, in single-row mode, every value read into a checksum.
RawFetch rawFetch(PGconn *c, const QByteArray &sql)
{
    RawFetch out;
    QElapsedTimer t;
    t.start();
    if (!PQsendQuery(c, sql.constData()) || !PQsetSingleRowMode(c))
        throw QuarvError(QStringLiteral("libpq: ") + QString::fromUtf8(PQerrorMessage(c)).trimmed());
    QString failure;
    while (PGresult *r = PQgetResult(c)) {
        const ExecStatusType st = PQresultStatus(r);
        if (st == PGRES_SINGLE_TUPLE) {
            const int nf = PQnfields(r);
            for (int f = 0; f < nf; ++f) {
                if (PQgetisnull(r, 0, f))
                    continue;
                const char *v = PQgetvalue(r, 0, f);
                const int len = PQgetlength(r, 0, f);
                long long s = len;
                for (int i = 0; i < len; ++i)
                    s += static_cast<unsigned char>(v[i]);
                out.checksum += s;
            }
            ++out.rows;
        } else if (st != PGRES_TUPLES_OK && failure.isEmpty()) {
            failure = QString::fromUtf8(PQresultErrorMessage(r)).trimmed();
        }
        PQclear(r);
    }
    out.ms = elapsedMs(t);
    if (!failure.isEmpty())
        throw QuarvError(QStringLiteral("libpq: ") + failure);
    return out;
}

// "Cauta" of a form against the raw fetch of `sql`; prepare() runs untimed
// before each Cauta. Prints <name>_cauta_ms, <name>_singlerow_ms,
// <name>_cauta_ratio and <name>_rows.
template <typename Prepare>
void benchCautaVsRaw(const char *name, TReportForm *f, PGconn *raw, const QString &sql, const QDate &start,
                     const QDate &end, int repeat, Prepare prepare)
{
    const QByteArray text = sql.toUtf8();
    bool checked = false;
    RawFetch last;
    const auto [cauta, fetch] = timeTurns(
        repeat,
        [&] {
            prepare();
            return cautaOnce(f);
        },
        [&] {
            if (!checked) {
                checkPeriod(raw, name, start, end);
                checked = true;
            }
            last = rawFetch(raw, text);
            return last.ms;
        });
    printRatio(name, "cauta", cauta, "singlerow", fetch);
    const qsizetype rows = f->query()->rowCount();
    std::printf("BENCH %s_rows %lld rows\n", name, static_cast<long long>(rows));
    std::fflush(stdout);
    if (rows != last.rows)
        std::fprintf(stderr, "bench_reports: %s: the form holds %lld rows, the raw fetch read %lld\n", name,
                     static_cast<long long>(rows), last.rows);
}

double fileMb(const QString &path)
{
    return double(QFileInfo(path).size()) / 1048576.0;
}

// The "ok" box that ends an export of all the data.
void forgetOk(ui::RecordingMessages &m)
{
    m.informations.removeAll(QStringLiteral("ok"));
    m.all.removeAll(QStringLiteral("ok"));
}

// ----- the plain workbook baseline

struct PlainCell {
    enum Kind : std::uint8_t { Empty, Number, Text, Date };
    Kind kind = Empty;
    double number = 0;
    std::string text;
    lxw_datetime date{};
};

struct PlainSheet {
    std::vector<std::string> header;
    std::vector<PlainCell> cells; // row by row, header.size() a row
    qsizetype rows = 0;
};

// The cells the grid holds (its visible columns in display order, its data
// rows in display order) copied out of the form's query.
PlainSheet gridCells(const TReportForm *f)
{
    const grid::GridModel &g = *f->gridModel();
    const db::DataSet &ds = *f->query();
    PlainSheet s;
    std::vector<int> fields;
    for (int col : g.visibleColumns()) {
        s.header.push_back(g.column(col).headerText().toStdString());
        fields.push_back(g.columnField(col));
    }
    for (qsizetype r = 0; r < g.rowCount(); ++r) {
        if (g.rowKind(r) != grid::RowKind::Data)
            continue;
        const qsizetype row = g.dataRow(r);
        ++s.rows;
        for (int field : fields) {
            PlainCell cell;
            if (field >= 0 && !ds.column(field).isNull(row)) {
                const db::Column &c = ds.column(field);
                switch (c.type()) {
                case db::FieldType::String:
                case db::FieldType::Text: {
                    const QByteArrayView b = c.bytes(row);
                    cell.kind = PlainCell::Text;
                    cell.text.assign(b.data(), size_t(b.size()));
                    break;
                }
                case db::FieldType::Bytes:
                    cell.kind = PlainCell::Text;
                    cell.text = "(binar)";
                    break;
                case db::FieldType::Float:
                case db::FieldType::Int32:
                case db::FieldType::Int64:
                case db::FieldType::Bool:
                    cell.kind = PlainCell::Number;
                    cell.number = c.asDouble(row);
                    break;
                case db::FieldType::Date: {
                    const QDate d = c.asDate(row);
                    cell.kind = PlainCell::Date;
                    cell.date = lxw_datetime{d.year(), d.month(), d.day(), 0, 0, 0.0};
                    break;
                }
                case db::FieldType::DateTime: {
                    const QDateTime dt = c.asDateTime(row);
                    const QDate d = dt.date();
                    const QTime tm = dt.time();
                    cell.kind = PlainCell::Date;
                    cell.date = lxw_datetime{d.year(), d.month(), d.day(), tm.hour(), tm.minute(),
                                             tm.second() + tm.msec() / 1000.0};
                    break;
                }
                }
            }
            s.cells.push_back(std::move(cell));
        }
    }
    return s;
}

// A constant-memory workbook of one worksheet: the header, then every cell.
double writePlainWorkbook(const PlainSheet &s, const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    QElapsedTimer t;
    t.start();
    lxw_workbook_options o{};
    o.constant_memory = LXW_TRUE;
    lxw_workbook *wb = workbook_new_opt(name.constData(), &o);
    if (!wb)
        throw QuarvError(QStringLiteral("libxlsxwriter: cannot create %1").arg(path));
    lxw_format *dateFormat = workbook_add_format(wb);
    format_set_num_format(dateFormat, "dd.mm.yyyy");
    lxw_worksheet *ws = workbook_add_worksheet(wb, nullptr);
    const size_t nc = s.header.size();
    for (size_t i = 0; i < nc; ++i)
        worksheet_write_string(ws, 0, lxw_col_t(i), s.header[i].c_str(), nullptr);
    for (size_t k = 0; k < s.cells.size(); ++k) {
        const PlainCell &cell = s.cells[k];
        const lxw_row_t row = lxw_row_t(1 + k / nc);
        const lxw_col_t col = lxw_col_t(k % nc);
        switch (cell.kind) {
        case PlainCell::Empty: break;
        case PlainCell::Number: worksheet_write_number(ws, row, col, cell.number, nullptr); break;
        case PlainCell::Text: worksheet_write_string(ws, row, col, cell.text.c_str(), nullptr); break;
        case PlainCell::Date: {
            lxw_datetime d = cell.date;
            worksheet_write_datetime(ws, row, col, &d, dateFormat);
            break;
        }
        }
    }
    const lxw_error err = workbook_close(wb);
    const double ms = elapsedMs(t);
    if (err != LXW_NO_ERROR)
        throw QuarvError(QStringLiteral("libxlsxwriter: ") + QString::fromUtf8(lxw_strerror(err)));
    return ms;
}

// ----- shots

void shot(QWidget *w, const QString &dir, const char *file)
{
    QCoreApplication::processEvents();
    const QString path = QDir(dir).filePath(QString::fromLatin1(file));
    if (!w->grab().save(path))
        std::fprintf(stderr, "bench_reports: could not write %s\n", qPrintable(path));
    else
        std::printf("shot %s\n", qPrintable(path));
}

// Groups the grid by `field` with every group closed but the smallest, so
// that its rows and every group footer show.
void groupForShot(grid::GridModel *g, const QString &field)
{
    const int col = g->columnIndex(field);
    if (col < 0) {
        std::fprintf(stderr, "bench_reports: the grid has no column %s\n", qPrintable(field));
        return;
    }
    g->groupByColumn(col);
    g->collapseAll();
    qsizetype smallest = -1;
    for (qsizetype r = 0; r < g->rowCount(); ++r)
        if (g->rowKind(r) == grid::RowKind::Group
            && (smallest < 0 || g->groupInfo(r).rowCount < g->groupInfo(smallest).rowCount))
            smallest = r;
    if (smallest >= 0)
        g->setExpanded(smallest, true);
}

// Wide enough for the grid's columns up to and including `field`.
void widenTo(TReportForm *f, const QString &field)
{
    const grid::GridModel *g = f->gridModel();
    int width = 120; // the indicator, a group level's indent, the scroll bar, the frame
    for (int col : g->visibleColumns()) {
        width += g->column(col).width;
        if (g->column(col).fieldName.compare(field, Qt::CaseInsensitive) == 0) {
            f->resize(std::max(f->width(), width), f->height());
            return;
        }
    }
}

// Back to the query's rows in the query's order (grouping sorts by the group).
void ungroup(grid::GridModel *g)
{
    g->clearGrouping();
    g->clearSorting();
}

void setPeriod(TReportForm *f, const QDate &start, const QDate &end)
{
    f->dateEdit(rep::kFromEditor)->setDate(start);
    f->dateEdit(rep::kToEditor)->setDate(end);
}

template <typename Form>
Form *showForm(FormSession &session)
{
    auto *f = new Form(session);
    f->resize(1400, 760);
    f->show();
    QCoreApplication::processEvents();
    return f;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    int repeat = 3;
    QString shots;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--repeat") && i + 1 < args.size())
            repeat = std::max(1, args[++i].toInt());
        else if (args[i] == QLatin1String("--shots") && i + 1 < args.size())
            shots = args[++i];
        else {
            std::fprintf(stderr, "usage: bench_reports [--repeat N] [--shots DIR]\n");
            return 2;
        }
    }

    // Errors are printed, never shown in a box; save dialogs answer from a queue.
    ui::RecordingMessages messages;
    ui::setMessages(&messages);
    ui::ScopedQueuedFileDialog saveDialog;

    QTemporaryDir tmp;
    if (!tmp.isValid()) {
        std::fprintf(stderr, "bench_reports: no temporary folder: %s\n", qPrintable(tmp.errorString()));
        return 1;
    }

    const QDate booksStart(2025, 1, 1), booksEnd(2026, 11, 30);
    const QDate monthStart(2026, 3, 1), monthEnd(2026, 3, 31);

    auto *session = new TdmQuarv;
    db::Connection &c = *session->pgConn;
    benchlib::configure(c);
    try {
        c.open();
        const RawConn raw = rawConnect();
        if (!shots.isEmpty())
            QDir().mkpath(shots);

        // Every form below writes the one period row; the one found here is put back at the end.
        db::Query &periodRow = *session->dsDataList;
        periodRow.open();
        const bool hadPeriod = !periodRow.isEmpty();
        const QDate oldStart = periodRow.fieldValue(QStringLiteral("data_incep")).toDate();
        const QDate oldEnd = periodRow.fieldValue(QStringLiteral("data_sf")).toDate();

        frmConts_select = new TfrmConts_select(*session);
        auto *reg = showForm<TfrmAnalizaRegistruJurnal>(*session);
        auto *fisa = showForm<TfrmFisaDeContAnalitica>(*session);

        // The register: one month, then the whole of the books.
        setPeriod(reg, monthStart, monthEnd);
        bench("registru_cauta_ms", reg, repeat);
        if (!shots.isEmpty()) {
            groupForShot(reg->gridModel(), QStringLiteral("jurnal"));
            shot(reg, shots, "registru_grupat.png");
            ungroup(reg->gridModel());
            // Every column in sight, the journal and the English description included.
            reg->resize(2860, 760);
            shot(reg, shots, "registru.png");
            reg->resize(1400, 760);
        }
        setPeriod(reg, booksStart, booksEnd);
        bench("registru_all_cauta_ms", reg, std::max(1, repeat / 2));
        reg->query()->close(); // its rows are not needed any more

        // The account sheet: customers over a quarter.
        fisa->buttonEdit(QStringLiteral("cxButtonEdit1"))->setText(QStringLiteral("4111"));
        setPeriod(fisa, QDate(2026, 1, 1), QDate(2026, 3, 31));
        bench("fisa_cauta_ms", fisa, repeat);
        if (!shots.isEmpty()) {
            // Wide enough for every column at its designed width.
            fisa->resize(1960, 760);
            shot(fisa, shots, "fisa.png");
        }
        fisa->query()->close();

        // The detailed analysis over the whole of the books: Cauta, then the
        // export of all its data against psql's \copy of the same text.
        {
            auto *det = showForm<TfrmAnalizaContabilaDetaliata>(*session);
            setPeriod(det, booksStart, booksEnd);
            const QString sql = rep::AnalizaContabilaDetaliata::sql();
            benchCautaVsRaw("contab_det", det, raw.get(), sql, booksStart, booksEnd, repeat, [] {});

            const QString psql = psqlProgram();
            if (psql.isEmpty()) {
                std::fprintf(stderr, "bench_reports: psql not found; contab_det_csv_all_vs_psql_ratio left out\n");
            } else {
                const QString formFile = tmp.filePath(QStringLiteral("contab_det_all.csv"));
                const QString psqlFile = tmp.filePath(QStringLiteral("contab_det_psql.csv"));
                const QString command = copyCommand(sql, psqlFile);
                double formMb = 0, psqlMb = 0;
                const auto [exportMs, psqlMs] = timeTurns(
                    repeat,
                    [&] {
                        saveDialog.answers.enqueue(formFile);
                        QElapsedTimer t;
                        t.start();
                        det->exportKind(rep::ExportKind::AllDataCsv);
                        const double ms = elapsedMs(t);
                        formMb = fileMb(formFile);
                        QFile::remove(formFile);
                        forgetOk(messages);
                        return ms;
                    },
                    [&] {
                        const double ms = runPsql(psql, command);
                        psqlMb = fileMb(psqlFile);
                        QFile::remove(psqlFile);
                        return ms;
                    });
                std::printf("# contab_det csv: the form's file %.1f MB, psql's %.1f MB\n", formMb, psqlMb);
                std::printf("BENCH contab_det_csv_all_ms %.1f ms\n", exportMs);
                std::printf("BENCH contab_det_csv_psql_ms %.1f ms\n", psqlMs);
                std::printf("BENCH contab_det_csv_all_vs_psql_ratio %.2f x\n", psqlMs > 0 ? exportMs / psqlMs : 0.0);
                std::fflush(stdout);
            }
            if (!shots.isEmpty()) {
                det->setStatusText(QString()); // not the temporary file of the export
                groupForShot(det->gridModel(), QStringLiteral("conts"));
                widenTo(det, QStringLiteral("valoare_lei"));
                shot(det, shots, "contab_det_grupat.png");
                ungroup(det->gridModel());
            }
            det->query()->close();
        }

        // The profitability analysis over the whole of the books. It only opens
        // its query, so each run starts from a closed one.
        {
            auto *prof = showForm<TfrmAnaliza_Profitabilitate>(*session);
            setPeriod(prof, booksStart, booksEnd);
            benchCautaVsRaw("profitabilitate", prof, raw.get(), rep::Analiza_Profitabilitate::sql(),
                            booksStart, booksEnd, repeat, [prof] { prof->query()->close(); });
            if (!shots.isEmpty())
                shot(prof, shots, "profitabilitate.png");
            prof->query()->close();
        }

        // The tourism settlement check, one month (its editors take the current
        // month each time it is shown, so the period is set after showing it),
        // then its workbook against a plain one of the same cells.
        {
            auto *tur = showForm<TfrmVerifDecontTurism>(*session);
            setPeriod(tur, monthStart, monthEnd);
            benchCautaVsRaw("turism", tur, raw.get(), rep::VerifDecontTurism::sql(), monthStart,
                            monthEnd, repeat, [] {});

            const PlainSheet cells = gridCells(tur);
            const QString formFile = tmp.filePath(QStringLiteral("turism.xlsx"));
            const QString plainFile = tmp.filePath(QStringLiteral("turism_plain.xlsx"));
            double formMb = 0, plainMb = 0;
            const auto [exportMs, plainMs] = timeTurns(
                repeat,
                [&] {
                    saveDialog.answers.enqueue(formFile);
                    QElapsedTimer t;
                    t.start();
                    tur->exportKind(rep::ExportKind::GridXlsx);
                    const double ms = elapsedMs(t);
                    formMb = fileMb(formFile);
                    QFile::remove(formFile);
                    return ms;
                },
                [&] {
                    const double ms = writePlainWorkbook(cells, plainFile);
                    plainMb = fileMb(plainFile);
                    QFile::remove(plainFile);
                    return ms;
                });
            std::printf("# turism xlsx: %lld rows x %lld columns; the form's file %.2f MB, the plain one %.2f MB\n",
                        static_cast<long long>(cells.rows), static_cast<long long>(cells.header.size()), formMb,
                        plainMb);
            printRatio("turism", "xlsx", exportMs, "plain_xlsx", plainMs);
            if (!shots.isEmpty()) {
                tur->resize(1960, 760);
                shot(tur, shots, "verif_decont_turism.png");
            }
            tur->query()->close();
        }

        if (!shots.isEmpty()) {
            // The accounting of documents, one month.
            auto *contare = showForm<TfrmContareDocumente>(*session);
            setPeriod(contare, monthStart, monthEnd);
            contare->Cauta();
            contare->resize(1960, 760);
            shot(contare, shots, "contare_documente.png");
            contare->query()->close();

            // Expenses and revenues by order, one month, grouped by order.
            auto *chelt = showForm<TfrmCheltVenPeComenziFaraRegii>(*session);
            setPeriod(chelt, monthStart, monthEnd);
            chelt->Cauta();
            groupForShot(chelt->gridModel(), QStringLiteral("com_int"));
            widenTo(chelt, QStringLiteral("valoare_lei"));
            shot(chelt, shots, "chelt_ven_comenzi_grupat.png");
            chelt->query()->close();
        }

        if (hadPeriod)
            rep::writePeriodRow(periodRow, oldStart, oldEnd, false);
    } catch (const QuarvError &e) {
        std::fprintf(stderr, "bench_reports: %s\n", e.what());
        return 1;
    }
    for (const QString &m : std::as_const(messages.all))
        std::fprintf(stderr, "bench_reports: message: %s\n", qPrintable(m));
    return messages.errors.isEmpty() ? 0 : 1;
}
