// Long work through the journal register's form over the whole of the books
// (1.4 million rows on the large demo): how long the event loop goes
// unserved, and how soon the form answers after "Renunta".
//
//   bench_longwork [--repeat N]
//
//   cauta_max_gap_ms  the longest gap between two served events during
//                     "Cauta" (period, query, the grid's rebuild)
//   csv_max_gap_ms    the same during "Export csv (Grid)" of those rows
//   xlsx_max_gap_ms   the same during an .xlsx export of those rows (the
//                     register's description with an Excel button added)
//   cancel_ms         from "Renunta", pressed 2 s into the fetch, to "Cauta"
//                     returning with the grid empty and the status bar saying so
// Each with the run's own time (_run_ms); the gaps are the largest of N runs,
// cancel_ms the median.
//
// A timer due every millisecond records when it is served; a gap is the time
// between two of its calls. Connection from QUARV_BENCH_HOST, _PORT, _DB,
// _USER, _PASSWORD (scripts/bench sets them).

#include "bench/common/u_benchpsql.h"
#include "db/u_error.h"
#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"
#include "session/u_dmQuarv.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_messages.h"
#include "ui/u_progress.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

// The longest time the event loop went unserved while `work` ran, and the work's own time.
struct Gap {
    double maxGapMs = 0;
    double runMs = 0;
};

Gap measure(const std::function<void()> &work)
{
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0;
    qint64 worst = 0;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(1);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        worst = std::max(worst, now - last);
        last = now;
    });
    tick.start();
    last = clock.nsecsElapsed();
    work();
    const qint64 end = clock.nsecsElapsed();
    worst = std::max(worst, end - last);
    return {double(worst) / 1e6, double(end) / 1e6};
}

void print(const char *name, double value)
{
    std::printf("BENCH %s %.1f ms\n", name, value);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    int repeat = 3;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--repeat") && i + 1 < args.size()) {
            repeat = std::max(1, args[++i].toInt());
        } else {
            std::fprintf(stderr, "usage: bench_longwork [--repeat N]\n");
            return 2;
        }
    }

    ui::RecordingMessages messages;
    ui::setMessages(&messages);
    ui::ScopedQueuedFileDialog saveDialog;
    QTemporaryDir tmp;

    auto *session = new TdmQuarv;
    db::Connection &c = *session->pgConn;
    benchlib::configure(c);
    try {
        c.open();
        rep::ReportDesc desc = rep::AnalizaRegistruJurnal::description();
        desc.exports.append(rep::exportExcel(QStringLiteral("cxButtonXlsx"), QStringLiteral("\\AnalizaRegistruJurnal.xlsx")));
        TReportForm form(desc, *session);
        form.resize(1400, 760);
        form.show();
        form.dateEdit(rep::kFromEditor)->setDate(QDate(2025, 1, 1));
        form.dateEdit(rep::kToEditor)->setDate(QDate(2026, 11, 30));
        QCoreApplication::processEvents();

        Gap cauta, csv, xlsx;
        std::vector<double> cancels;
        for (int i = 0; i < repeat; ++i) {
            const Gap g = measure([&] { form.Cauta(); });
            if (g.maxGapMs > cauta.maxGapMs)
                cauta = g;
            const qsizetype rows = form.gridModel()->recordCount();
            if (rows < 1000000)
                throw QuarvError(QStringLiteral("the register has %1 rows, not a million").arg(rows));

            saveDialog.answers.enqueue(tmp.filePath(QStringLiteral("registru.csv")));
            const Gap gc = measure([&] { form.exportKind(rep::ExportKind::GridCsv); });
            if (gc.maxGapMs > csv.maxGapMs)
                csv = gc;
            saveDialog.answers.enqueue(tmp.filePath(QStringLiteral("registru.xlsx")));
            const Gap gx = measure([&] { form.exportKind(rep::ExportKind::GridXlsx); });
            if (gx.maxGapMs > xlsx.maxGapMs)
                xlsx = gx;

            // "Renunta" two seconds into the fetch of the whole of the books.
            form.query()->close();
            QElapsedTimer sinceStop;
            QTimer::singleShot(2000, [&] {
                QDialog *w = ui::ProgressWatch::window();
                if (!w)
                    return;
                sinceStop.start();
                w->findChild<QPushButton *>(QStringLiteral("btnRenunta"))->click();
            });
            form.Cauta();
            if (!sinceStop.isValid())
                throw QuarvError(QStringLiteral("no progress window 2 s into the fetch"));
            cancels.push_back(double(sinceStop.nsecsElapsed()) / 1e6);
            if (form.statusText() != TReportForm::cancelledText() || form.gridModel()->recordCount() != 0)
                throw QuarvError(QStringLiteral("the stopped run left \"%1\" and %2 rows")
                                     .arg(form.statusText())
                                     .arg(form.gridModel()->recordCount()));
        }
        std::sort(cancels.begin(), cancels.end());
        print("cauta_max_gap_ms", cauta.maxGapMs);
        print("cauta_run_ms", cauta.runMs);
        print("csv_max_gap_ms", csv.maxGapMs);
        print("csv_run_ms", csv.runMs);
        print("xlsx_max_gap_ms", xlsx.maxGapMs);
        print("xlsx_run_ms", xlsx.runMs);
        print("cancel_ms", cancels[cancels.size() / 2]);
    } catch (const QuarvError &e) {
        std::fprintf(stderr, "bench_longwork: %s\n", qPrintable(e.text()));
        return 1;
    }
    if (!messages.errors.isEmpty()) {
        std::fprintf(stderr, "bench_longwork: %s\n", qPrintable(messages.errors.join(QLatin1Char('\n'))));
        return 1;
    }
    return 0;
}
