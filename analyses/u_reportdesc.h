#pragma once
// A report described once: its form, its parameter editors, its SQL and how
// the period reaches the server, the steps of its run, its grid (columns,
// summaries, options), its style key and its export buttons. TReportForm
// builds the whole form from this; a report unit is mostly this description.
//
// validate() checks a description against itself (every editor, parameter
// and step it names); validateFields() against the fields its query returns.
// The form validates its description when it is built, and one test builds
// every report, so a misspelt name fails a test, never an operator's run.

#include "grid/u_gridmodel.h"

#include <QDate>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <initializer_list>

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

// Values a date editor takes each time the form becomes visible.
enum class DateOnShow { Keep, CurrentMonthStart, CurrentMonthEnd };

struct EditorDesc {
    EditorKind kind = EditorKind::Date;
    QString objectName;       // "cxDateEdit1", "cxButtonEdit1"
    QString label;            // "Perioada de la :" (the label is the editor's buddy)
    DateSnap snap = DateSnap::None;
    DateOnShow onShow = DateOnShow::Keep;
    int width = 0;            // pixels; 0 = the editor's own
};

// The two period editors, cxDateEdit1 and cxDateEdit2.
inline const QString kFromEditor = QStringLiteral("cxDateEdit1");
inline const QString kToEditor = QStringLiteral("cxDateEdit2");

// How the period editors behave.
enum class PeriodSnap {
    None,            // what is typed stays as typed
    MonthOnChange,   // start to the first, end to the last day of its month, at once
    MonthOnExit,     // the same, when the editor is left (an emptied editor stays empty)
};
enum class PeriodOnShow {
    Keep,            // the form sets no dates; they stay between showings
    CurrentMonth,    // the first and last day of today's month, each time the form becomes visible
};

// "Perioada de la :" cxDateEdit1 and "Pana la :" cxDateEdit2.
QList<EditorDesc> periodEditors(PeriodSnap snap = PeriodSnap::None, PeriodOnShow onShow = PeriodOnShow::Keep,
                                const QString &fromLabel = QStringLiteral("Perioada de la :"));

// ----- run

// How an editor's value becomes a parameter or a period-row date.
enum class DateConv { AsIs, MonthStart, MonthEnd };

// The same date moved to the first / last day of its month, or kept (null stays null).
QDate convertDate(const QDate &d, DateConv conv);

// Two dates in one month of one year; an empty date counts as month 0 of year 0,
// so one empty date never shares the month of a real one, and two empty dates do.
bool sameMonth(const QDate &a, const QDate &b);

// pDataIncep <- cxDateEdit1 (first day of its month); pConts <- cxButtonEdit1's text.
struct ParamBinding {
    QString param;
    QString editor;
    DateConv conv = DateConv::AsIs; // dates only
};

enum class PeriodSource {
    Session, // the session module's dsDataList
    Own,     // the form's own data_list query (ReportDesc::ownDataListSql)
};

enum class StepKind {
    CheckFilled,    // every editor in `editors` non-empty, else QuarvError(message)
    CheckSameMonth, // editors[0] and editors[1] in one month (rep::sameMonth); else
                    // QuarvError(message), or with `informOnly` an information box
                    // with the message and a silent stop
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

    bool isCheck() const { return kind == StepKind::CheckFilled || kind == StepKind::CheckSameMonth; }

    static RunStep checkFilled(const QStringList &editors, const QString &message);
    // Both period editors filled, else `message`.
    static RunStep checkPeriodFilled(const QString &message) { return checkFilled({kFromEditor, kToEditor}, message); }
    // The period editors in one calendar month, else the program's one message for it.
    static RunStep checkSameMonth(bool informOnly = false);
    static RunStep busyCursor();
    static RunStep closeQuery();
    static RunStep setParams();
    static RunStep postPeriodRow(PeriodSource source, DateConv startConv, DateConv endConv, bool closeAfter = false);
    static RunStep openQuery();
    static RunStep openOrRefresh();
    static RunStep custom(const QString &name);
};

QString stepName(StepKind kind);

// The messages of the period checks, each report with its own.
inline QString choosePeriodText() { return QStringLiteral("Alegeti Perioada Dorita!"); }
inline QString selectPeriodText() { return QStringLiteral("Selectati perioada dorita!"); }

// The text of a form's own period-row query.
inline QString dataListSql() { return QStringLiteral("select *\nfrom data_list\n;"); }
// The text of the session's period row (the session module's dsDataList).
inline QString sessionDataListSql() { return QStringLiteral("select * \nfrom data_list\n;"); }

// The message of the same-month check.
inline QString sameMonthText()
{
    return QStringLiteral("Pentru a obtine situatii coerente alegeti o perioada care sa apartina aceleiasi luni "
                          "calendaristice");
}

// ----- grid

struct ColumnDesc {
    QString field;
    QString caption;          // empty: the field name
    int width = 0;            // pixels; 0 = the grid's default
    bool visible = true;
    QString displayFormat;    // u_gridformat.h patterns; empty = default
};

// A column at the grid's default width, or at `width` pixels.
ColumnDesc column(const char *field, int width = 0, const QString &caption = {});

// Sums of the fields, one format for all of them (empty: the column's own).
QList<grid::GridSummary> sums(std::initializer_list<const char *> fields, const QString &format = {});

// The number format the money sums of several reports use.
inline QString moneyFormat() { return QStringLiteral(",0.00;-,0.00"); }

struct GridOptions {
    bool filterRow = true;
    bool footer = true;
    bool groupFooters = true;
    bool groupByBox = true;
    bool indicator = true;
};

// A label of the form that is kept but never shown ("Conta :").
struct HiddenLabel {
    QString objectName;
    QString text;
};

// ----- exports

enum class ExportKind {
    GridCsv,       // "Export csv (Grid)": the grid as shown, list-separated; status bar and "ok"
    AllDataCsv,    // "Export csv (Toate Datele)": every row and field of the query; status bar and "ok"
    GridText,      // "Export csv": the grid as shown, tab-separated and quoted; silent
    GridXlsx,      // "Export Excel": the grid as a workbook; silent
    GridCsvStatus, // "Export csv" of the account sheet: the grid, "fisier exportat: " in the status bar
};

QString exportKindName(ExportKind kind);
// "*.csv" or "*.xlsx"
QString exportFilter(ExportKind kind);

struct ExportDesc {
    ExportKind kind = ExportKind::GridCsv;
    QString caption;          // "Export csv (Grid)"
    QString objectName;       // "cxButton2"
    QString fileName;         // "\AnalizaRegistruJurnal.csv" (with its leading backslash)
};

// The buttons, each with its one caption: only the object name and the file vary.
ExportDesc exportGridCsv(const QString &objectName, const QString &fileName);
ExportDesc exportAllData(const QString &objectName, const QString &fileName);
ExportDesc exportText(const QString &objectName, const QString &fileName);
ExportDesc exportExcel(const QString &objectName, const QString &fileName);
ExportDesc exportCsvToStatus(const QString &objectName, const QString &fileName);

// ----- the report

struct ReportDesc {
    QString formName;         // objectName and window caption: "frmAnalizaRegistruJurnal"
    QString title;            // bold title label: "Analiza Registru Jurnal"
    QString titleObjectName = QStringLiteral("lblTitlu");
    QString paramGroupTitle;  // non-empty: the editors and "Cauta" sit in a framed group of this title
    QList<EditorDesc> editors;
    QList<HiddenLabel> hiddenLabels;

    QString runButtonName = QStringLiteral("btnCauta");
    QString runCaption = QStringLiteral("Cauta");
    bool runButtonBold = false;

    QString queryName;        // "dsAnalizaRegistruJurnal"; its data source is "dsou" + the rest
    QString sql;              // sent exactly as written
    QList<ParamBinding> params;
    QString ownDataListSql;   // non-empty: the form's own period-row query "dsDataList"
    QList<RunStep> steps;     // in order; checks come before anything that changes state
    QStringList customSteps;  // the names the form's runCustomStep knows
    bool closeQueryOnClose = false; // closing the form empties the grid

    QList<ColumnDesc> columns;
    QList<grid::GridSummary> footerSummaries;
    QList<grid::GridSummary> groupSummaries;
    // Summed fields the query does not return: declared by design, their sums stay empty.
    QStringList absentSumFields;
    GridOptions grid;

    QString styleKey;         // empty: no style button
    QString styleButtonName = QStringLiteral("cxButton1");
    QList<ExportDesc> exports;
    bool exportsBesideParams = false; // beside the parameter strip instead of under the grid
    bool statusBar = false;

    QSize size = QSize(1000, 650);

    const ExportDesc *exportOf(ExportKind kind) const;
    const EditorDesc *editorNamed(const QString &objectName) const;
};

// The report's columns and sums on a grid's logic (its default layout).
void setUpGrid(const ReportDesc &d, grid::GridModel &model);

// What is wrong with a description, one line per fault naming the report and
// the name at fault; empty when it is sound.
QStringList validate(const ReportDesc &d);

// What a report's pages say of its parameters: each editor's label and its
// value as the editor shows it ("Perioada de la : 01.01.2025 pana la :
// 30.11.2026"), in the editors' order; editors left empty are left out.
QString parametersText(const ReportDesc &d, const std::function<QString(const EditorDesc &)> &shown);
// The PDF's file name: the report's first export name with ".pdf"
// ("\AnalizaRegistruJurnal.pdf"); the form's name without one.
QString pdfFileName(const ReportDesc &d);
// The columns and sums against the fields the query returns.
QStringList validateFields(const ReportDesc &d, const QStringList &resultFields);

} // namespace rep
