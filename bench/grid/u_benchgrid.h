#pragma once
// The grid benchmark's frame: figures register themselves from any source of
// this folder; main() builds the data once and runs them in order.
//
//   static void paintFigure(BenchContext &ctx) { ... ctx.report("paint_ms", v, "ms"); }
//   QUARV_BENCH_FIGURE(paintFigure, 70)   // 70 = its place in the run
//
// A figure that needs a QApplication registers its factory with
// QUARV_BENCH_APP(factory) (one per program); QCoreApplication otherwise.

#include "db/u_dataset.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QString>

#include <functional>
#include <memory>

class BenchContext {
public:
    // 1,000,000 rows (QUARV_BENCH_GRID_ROWS overrides) x 44 columns shaped like
    // view_contab_det, generated deterministically on first use.
    db::DataSet &dataSet();
    qsizetype datasetBytes();          // RSS growth while generating
    void report(const char *name, double value, const char *unit);
    // Directory for the export files (removed at the end).
    QString scratchDir();

    static double ms(const QElapsedTimer &t) { return double(t.nsecsElapsed()) / 1e6; }
    static qsizetype rssBytes();       // resident set now
    static qsizetype peakRssBytes();   // resident peak since resetPeak()
    static void resetPeak();

private:
    std::unique_ptr<db::DataSet> m_ds;
    qsizetype m_dsBytes = 0;
    QString m_dir;
};

using BenchFigure = void (*)(BenchContext &);
using BenchAppFactory = std::unique_ptr<QCoreApplication> (*)(int &argc, char **argv);

bool registerBenchFigure(const char *name, BenchFigure fn, int order);
bool registerBenchApp(BenchAppFactory f);

#define QUARV_BENCH_FIGURE(fn, order) \
    static const bool fn##_registered = registerBenchFigure(#fn, fn, order);
#define QUARV_BENCH_APP(factory) \
    static const bool factory##_registered = registerBenchApp(factory);
