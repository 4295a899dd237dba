#pragma once
// Every analysis of the program, by form name: its description and a way to
// build its form. Tests walk this list so that no report escapes validation.

#include "analyses/u_reportdesc.h"

#include <QList>

class QWidget;
class TReportForm;

namespace rep {

struct ReportEntry {
    QString formName;
    ReportDesc (*description)();
    TReportForm *(*create)(QWidget *parent);
};

const QList<ReportEntry> &allReports();

} // namespace rep
