#pragma once
// The form of the journal register analysis, over rep::AnalizaRegistruJurnal::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaRegistruJurnal : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaRegistruJurnal(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsAnalizaRegistruJurnal = nullptr;
};

extern TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal;
