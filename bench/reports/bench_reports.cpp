// "Cauta" of the journal register analysis and of the analytic account sheet,
// timed through the forms themselves (checks, period, query, grid rebuild and
// one paint), on the database that scripts/bench provides.
//
//   bench_reports [--repeat N] [--shots DIR]
// Prints BENCH registru_cauta_ms (one month), BENCH registru_all_cauta_ms (the
// whole of the books), BENCH fisa_cauta_ms (account 4111, three months), each
// the median of N runs after one warm-up, with their row counts. --shots also
// renders both forms to PNG files in DIR (the register grouped by journal,
// with its group footers and sums).
// Connection from QUARV_BENCH_HOST, _PORT, _DB, _USER, _PASSWORD.

#include "session/u_dmQuarv.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

QString env(const char *name, const char *fallback)
{
    const QString v = qEnvironmentVariable(name);
    return v.isEmpty() ? QString::fromLatin1(fallback) : v;
}

// Median of `repeat` timed runs of Cauta, after a warm-up; the form's query
// row count of the last run goes to *rows.
double timeCauta(TReportForm *f, int repeat, qsizetype *rows)
{
    std::vector<double> ms;
    for (int i = 0; i <= repeat; ++i) {
        QElapsedTimer t;
        t.start();
        f->Cauta();
        f->repaint();
        QCoreApplication::processEvents();
        if (i > 0)
            ms.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(ms.begin(), ms.end());
    *rows = f->query()->rowCount();
    return ms[ms.size() / 2];
}

void bench(const char *name, TReportForm *f, int repeat)
{
    qsizetype rows = 0;
    const double ms = timeCauta(f, repeat, &rows);
    std::printf("BENCH %s %.1f ms\n", name, ms);
    std::printf("BENCH %s_rows %lld rows\n", name, static_cast<long long>(rows));
    std::fflush(stdout);
}

void shot(QWidget *w, const QString &dir, const char *file)
{
    QCoreApplication::processEvents();
    const QString path = QDir(dir).filePath(QString::fromLatin1(file));
    if (!w->grab().save(path))
        std::fprintf(stderr, "bench_reports: could not write %s\n", qPrintable(path));
    else
        std::printf("shot %s\n", qPrintable(path));
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

    // Errors are printed, never shown in a box.
    ui::RecordingMessages messages;
    ui::setMessages(&messages);

    dmQuarv = new TdmQuarv;
    db::Connection &c = *dmQuarv->pgConn;
    c.setHost(env("QUARV_BENCH_HOST", "127.0.0.1"));
    c.setPort(env("QUARV_BENCH_PORT", "5432").toInt());
    c.setDatabase(env("QUARV_BENCH_DB", "quarv_mare"));
    c.setUserName(env("QUARV_BENCH_USER", "quarv"));
    c.setPassword(env("QUARV_BENCH_PASSWORD", "kadrim"));
    try {
        c.open();

        frmConts_select = new TfrmConts_select;
        auto *reg = new TfrmAnalizaRegistruJurnal;
        auto *fisa = new TfrmFisaDeContAnalitica;
        for (QWidget *w : {static_cast<QWidget *>(reg), static_cast<QWidget *>(fisa)}) {
            w->resize(1400, 760);
            w->show();
        }

        // The register: one month, then the whole of the books.
        reg->dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2026, 3, 1));
        reg->dateEdit(QStringLiteral("cxDateEdit2"))->setDate(QDate(2026, 3, 31));
        bench("registru_cauta_ms", reg, repeat);
        if (!shots.isEmpty()) {
            QDir().mkpath(shots);
            ui::GridModel *g = reg->tableView();
            g->groupByColumn(g->columnIndex(QStringLiteral("jurnal")));
            // Groups closed but the smallest: its rows and every group footer show.
            g->collapseAll();
            qsizetype smallest = -1;
            for (qsizetype r = 0; r < g->rowCount(); ++r)
                if (g->rowKind(r) == ui::RowKind::Group
                    && (smallest < 0 || g->groupInfo(r).rowCount < g->groupInfo(smallest).rowCount))
                    smallest = r;
            if (smallest >= 0)
                g->setExpanded(smallest, true);
            shot(reg, shots, "registru_grupat.png");
            g->clearGrouping();
            g->clearSorting(); // grouping sorted by the journal; back to the query's order
            // Every column in sight, the journal and the English description included.
            reg->resize(2860, 760);
            shot(reg, shots, "registru.png");
            reg->resize(1400, 760);
        }
        reg->dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2025, 1, 1));
        reg->dateEdit(QStringLiteral("cxDateEdit2"))->setDate(QDate(2026, 11, 30));
        bench("registru_all_cauta_ms", reg, std::max(1, repeat / 2));

        // The account sheet: customers over a quarter (the period row is posted
        // each run; the period found there is put back afterwards).
        db::Query &periodRow = *dmQuarv->dsDataList;
        periodRow.open();
        const bool hadPeriod = !periodRow.isEmpty();
        const QDate oldStart = periodRow.fieldValue(QStringLiteral("data_incep")).toDate();
        const QDate oldEnd = periodRow.fieldValue(QStringLiteral("data_sf")).toDate();
        fisa->buttonEdit(QStringLiteral("cxButtonEdit1"))->setText(QStringLiteral("4111"));
        fisa->dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2026, 1, 1));
        fisa->dateEdit(QStringLiteral("cxDateEdit2"))->setDate(QDate(2026, 3, 31));
        bench("fisa_cauta_ms", fisa, repeat);
        if (!shots.isEmpty()) {
            // Wide enough for every column at its designed width.
            fisa->resize(1960, 760);
            shot(fisa, shots, "fisa.png");
        }
        if (hadPeriod)
            TReportForm::writePeriodRow(periodRow, oldStart, oldEnd, false);
    } catch (const QuarvError &e) {
        std::fprintf(stderr, "bench_reports: %s\n", e.what());
        return 1;
    }
    for (const QString &m : std::as_const(messages.all))
        std::fprintf(stderr, "bench_reports: message: %s\n", qPrintable(m));
    return messages.errors.isEmpty() ? 0 : 1;
}
