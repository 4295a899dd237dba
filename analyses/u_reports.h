#pragma once
// What each analysis IS, apart from any window: its SQL text and its
// description (parameters, checks, period rule, columns, sums, style key,
// exports). The desktop forms and the command-line exporter build on these;
// a report is described here once.

#include "analyses/u_reportdesc.h"

#include <QList>

namespace rep {

// Analytic account sheet: for one synthetic account and whole months, every
// analytic account with its opening balance and the postings of the period,
// each row with the running balance after it. The period reaches the server
// through the session's period row (the session module's dsDataList), which the views read.
namespace FisaDeContAnalitica {
QString sql();
ReportDesc description();
} // namespace FisaDeContAnalitica

// Journal register analysis: the register entries of whole months, with the
// document's partner, its journal and an English description of each entry.
// The period travels as the bound parameters pDataIncep/pDataSf, widened to
// whole months at run time; the editors keep the dates as typed.
namespace AnalizaRegistruJurnal {
QString sql();
ReportDesc description();
} // namespace AnalizaRegistruJurnal

// Detailed accounting analysis: every posting line of a period, as the view
// view_contab_det returns it. The period goes to the server through the
// form's own data_list query, written exactly as the editors hold it (their
// exit handlers already moved it to month boundaries); the view then reads it.
namespace AnalizaContabilaDetaliata {
QString sql();
ReportDesc description();
} // namespace AnalizaContabilaDetaliata

// Accounting of documents: the posting lines of one calendar month ordered by
// account pair, with budget chapters, the sales channel of 'FactCI' lines and
// an English description. The month goes to the server through the session's
// period row; the query is only opened, so a later run with another month
// changes the period row but keeps the rows of the first.
namespace ContareDocumente {
QString sql();
ReportDesc description();
} // namespace ContareDocumente

// Expenses and revenues by order, without distributed overheads: the
// post-calculation ledger of one calendar month. Both dates must lie in one
// month; the whole month is written through the session's period row, under
// the hourglass, between closing and opening the query.
namespace CheltVenPeComenziFaraRegii {
QString sql();
ReportDesc description();
} // namespace CheltVenPeComenziFaraRegii

// Profitability analysis: the post-calculation ledger of whole months over
// any span. The period row is written through the session's period row; the
// query is only opened, never closed or re-run, so a second run changes the
// period on the server and leaves the grid as it was.
namespace Analiza_Profitabilitate {
QString sql();
ReportDesc description();
} // namespace Analiza_Profitabilitate

// Tourism settlement check: the document lines of the tourism settlements of
// a period within one month, with their VAT treatment, commissions and
// supplier data, ordered by settlement. The two dates are written exactly as
// chosen through the form's own data_list query, then the view is read under
// the hourglass; an open result is re-run.
namespace VerifDecontTurism {
QString sql();
ReportDesc description();
} // namespace VerifDecontTurism

// Post-calculation analysis: every post-calculation line joined to its
// cost-tracking object and its issuer, the lei value split into expense,
// revenue and signed profit, ordered by object type, object, article and
// document. The program never creates this form (the menu entry reports the
// missing form); the description is complete all the same: one whole month,
// written through the session's period row before the query opens.
namespace AnalizaPostcalcul {
QString sql();
ReportDesc description();
} // namespace AnalizaPostcalcul

// Its button in the main menu: objectName, caption and designed width.
struct MenuButton {
    QString objectName;
    QString caption;
    int width = 0;
};

// The registry of analyses, one row each, in the menu's order: the desktop
// program builds its menu from the rows, creates each form at its places in
// the start-up order (app/u_startup.cpp) and frees it at exit; the
// command-line exporter runs the descriptions. The forms themselves are
// bound to the rows by form name in reports/u_reportlist.cpp.
struct CatalogEntry {
    QString formName;
    ReportDesc (*description)();
    MenuButton menu;
    QList<int> createdAt; // places in the start-up order; empty: never created
};
const QList<CatalogEntry> &catalog();
// nullptr when no analysis has that form name.
const CatalogEntry *findReport(const QString &formName);

} // namespace rep
