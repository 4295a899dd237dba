#pragma once
// The form of the journal register analysis, over rep::AnalizaRegistruJurnal::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaRegistruJurnal : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaRegistruJurnal(QWidget *parent = nullptr);

    // Text of dsAnalizaRegistruJurnal, sent as it stands.
    static QString sqlAnalizaRegistruJurnal() { return rep::AnalizaRegistruJurnal::sql(); }
    static rep::ReportDesc description() { return rep::AnalizaRegistruJurnal::description(); }

    db::Query *dsAnalizaRegistruJurnal = nullptr;
};

extern TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal;
