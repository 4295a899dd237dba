#pragma once
// A report described once: its form, its parameter editors, its SQL and how
// the period reaches the server, the steps of its run, its grid (columns,
// summaries, options), its style key and its export buttons. TReportForm
// builds the whole form from this; a report unit is mostly this description.

#include "ui/core/u_gridmodel.h"

#include <QDate>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

namespace rep {

// ----- parameter editors

enum class EditorKind { Date, ButtonEdit, Text };

// What a date editor does by itself with the value it is given.
enum class DateSnap {
    None,
    MonthStartOnChange, // every new value becomes the first day of its month
    MonthEndOnChange,   // every new value becomes the last day of its month
    MonthStartOnExit,   // on leaving the editor (when not empty)
    MonthEndOnExit,
};

// Values a date editor takes each time the form is shown.
enum class DateOnShow { Keep, CurrentMonthStart, CurrentMonthEnd };

struct EditorDesc {
    EditorKind kind = EditorKind::Date;
    QString objectName;       // "cxDateEdit1", "cxButtonEdit1"
    QString label;            // "Perioada de la :" (the label is the editor's buddy)
    DateSnap snap = DateSnap::None;
    DateOnShow onShow = DateOnShow::Keep;
    int width = 0;            // pixels; 0 = the editor's own
};

// ----- run

// How an editor's value becomes a parameter or a period-row date.
enum class DateConv { AsIs, MonthStart, MonthEnd };

// pDataIncep <- cxDateEdit1 (first day of its month); pConts <- cxButtonEdit1's text.
struct ParamBinding {
    QString param;
    QString editor;
    DateConv conv = DateConv::AsIs; // dates only
};

enum class PeriodSource {
    Session, // dmQuarv->dsDataList
    Own,     // the form's own data_list query (ReportDesc::ownDataListSql)
};

enum class StepKind {
    CheckFilled,    // every editor in `editors` non-empty, else QuarvError(message)
    CheckSameMonth, // editors[0] and editors[1] in one month of one year (an empty date is
                    // month 0, year 0); else QuarvError(message), or with `informOnly` an
                    // information box with the message and a silent stop
    BusyCursor,     // the hourglass from here to the end of the run, restored on every path;
                    // the window repaints before the next step
    CloseQuery,     // close the form's query
    SetParams,      // ReportDesc::params from the editors
    PostPeriodRow,  // open or re-read the period row, edit its current row (an empty table
                    // inserts one), data_incep/data_sf from editors[0]/[1] with
                    // startConv/endConv, post; closeAfter closes it again
    OpenQuery,      // open the query when closed; an open query is left as it is
    OpenOrRefresh,  // open when closed, re-run when open
    Custom,         // TReportForm::runCustomStep(name)
};

struct RunStep {
    StepKind kind = StepKind::OpenQuery;
    QStringList editors;
    QString message;
    bool informOnly = false;
    PeriodSource source = PeriodSource::Session;
    DateConv startConv = DateConv::AsIs;
    DateConv endConv = DateConv::AsIs;
    bool closeAfter = false;
    QString name;

    static RunStep checkFilled(const QStringList &editors, const QString &message)
    {
        RunStep s;
        s.kind = StepKind::CheckFilled;
        s.editors = editors;
        s.message = message;
        return s;
    }
    static RunStep checkSameMonth(const QString &message, bool informOnly = false,
                                  const QStringList &editors = {QStringLiteral("cxDateEdit1"),
                                                                QStringLiteral("cxDateEdit2")})
    {
        RunStep s;
        s.kind = StepKind::CheckSameMonth;
        s.editors = editors;
        s.message = message;
        s.informOnly = informOnly;
        return s;
    }
    static RunStep busyCursor() { RunStep s; s.kind = StepKind::BusyCursor; return s; }
    static RunStep closeQuery() { RunStep s; s.kind = StepKind::CloseQuery; return s; }
    static RunStep setParams() { RunStep s; s.kind = StepKind::SetParams; return s; }
    static RunStep postPeriodRow(PeriodSource source, DateConv startConv, DateConv endConv,
                                 bool closeAfter = false,
                                 const QStringList &editors = {QStringLiteral("cxDateEdit1"),
                                                               QStringLiteral("cxDateEdit2")})
    {
        RunStep s;
        s.kind = StepKind::PostPeriodRow;
        s.source = source;
        s.startConv = startConv;
        s.endConv = endConv;
        s.closeAfter = closeAfter;
        s.editors = editors;
        return s;
    }
    static RunStep openQuery() { RunStep s; s.kind = StepKind::OpenQuery; return s; }
    static RunStep openOrRefresh() { RunStep s; s.kind = StepKind::OpenOrRefresh; return s; }
    static RunStep custom(const QString &name) { RunStep s; s.kind = StepKind::Custom; s.name = name; return s; }
};

// ----- grid

struct ColumnDesc {
    QString field;
    QString caption;          // empty: the field name
    int width = 64;
    bool visible = true;
    QString displayFormat;    // u_gridformat.h patterns; empty = default
};

struct GridOptions {
    bool filterRow = true;
    bool footer = true;
    bool groupFooters = true;
    bool groupByBox = true;
    bool indicator = true;
};

// ----- exports

// 'A' csv of the grid, 'B' csv of all the query's data, 'C' tab-separated text
// of the grid, 'D' .xlsx of the grid, 'E' csv of the grid into the status bar.
struct ExportDesc {
    char variant = 'A';
    QString caption;          // "Export csv (Grid)"
    QString objectName;       // "cxButton2"
    QString fileName;         // "\AnalizaRegistruJurnal.csv" (with its leading backslash)
};

// ----- the report

struct ReportDesc {
    QString formName;         // objectName and window caption: "frmAnalizaRegistruJurnal"
    QString title;            // bold title label: "Analiza Registru Jurnal"
    QString titleObjectName = QStringLiteral("lblTitlu");
    QString paramGroupTitle;  // non-empty: the editors and "Cauta" sit in a framed group of this title
    QList<EditorDesc> editors;

    QString runButtonName = QStringLiteral("btnCauta");
    QString runCaption = QStringLiteral("Cauta");
    bool runButtonBold = false;

    QString queryName;        // "dsAnalizaRegistruJurnal"; its data source is "dsou" + the rest
    QString sql;              // sent exactly as written
    QList<ParamBinding> params;
    QString ownDataListSql;   // non-empty: the form's own period-row query "dsDataList"
    QList<RunStep> steps;     // empty: both dates required ("Alegeti Perioada Dorita!"),
                              // close, parameters, open
    bool closeQueryOnClose = false; // closing the form empties the grid

    QList<ColumnDesc> columns;
    QList<ui::GridSummary> footerSummaries;
    QList<ui::GridSummary> groupSummaries;
    GridOptions grid;

    QString styleKey;         // empty: no style button
    QString styleButtonName = QStringLiteral("cxButton1");
    QList<ExportDesc> exports;
    bool statusBar = false;

    QSize size = QSize(1000, 650);
};

// The same date moved to the first / last day of its month, or kept (null stays null).
QDate convertDate(const QDate &d, DateConv conv);

// Builders that keep the descriptions short.
// The period editors most forms carry: "Perioada de la :" cxDateEdit1, "Pana la :" cxDateEdit2.
inline QList<EditorDesc> periodEditors(DateSnap fromSnap = DateSnap::None, DateSnap toSnap = DateSnap::None)
{
    EditorDesc from;
    from.objectName = QStringLiteral("cxDateEdit1");
    from.label = QStringLiteral("Perioada de la :");
    from.snap = fromSnap;
    EditorDesc to;
    to.objectName = QStringLiteral("cxDateEdit2");
    to.label = QStringLiteral("Pana la :");
    to.snap = toSnap;
    return {from, to};
}

inline ColumnDesc column(const char *field, int width, const QString &caption = {})
{
    ColumnDesc c;
    c.field = QString::fromLatin1(field);
    c.width = width;
    c.caption = caption;
    return c;
}

inline ui::GridSummary sumOf(const char *field, const QString &format = {})
{
    ui::GridSummary s;
    s.fieldName = QString::fromLatin1(field);
    s.kind = ui::SummaryKind::Sum;
    s.format = format;
    return s;
}

// A file in a folder named the way the forms name theirs: folder + name, where
// name starts with a backslash ("\grid.ini"); outside Windows that backslash
// is the path separator. An empty folder gives the root ("/grid.ini").
QString documentsFile(const QString &folder, const QString &nameWithBackslash);

} // namespace rep
