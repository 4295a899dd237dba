#pragma once
// The forms of the analyses, bound to the registry's rows (rep::catalog())
// by form name: how each is built and the global variable that holds it.
// Start-up, exit and the main menu work through these; tests walk them so
// that no report escapes validation.

#include "analyses/u_reports.h"

#include <QList>

class FormSession;
class QWidget;
class TReportForm;

namespace rep {

struct ReportForm {
    const CatalogEntry *entry;
    TReportForm *(*create)(FormSession &session, QWidget *parent);
    TReportForm *(*instance)();           // the global's value (nullptr before creation)
    void (*setInstance)(TReportForm *form);
};

// One per registry row, in its order. Throws std::logic_error naming the
// analysis whose row and form do not match.
const QList<ReportForm> &reportForms();
// nullptr when no analysis has that form name.
const ReportForm *reportForm(const QString &formName);

} // namespace rep
