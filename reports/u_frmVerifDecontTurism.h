#pragma once
// The form of the tourism settlement check, over rep::VerifDecontTurism::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmVerifDecontTurism : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmVerifDecontTurism(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsViewVerifTvaInclus = nullptr;
};

extern TfrmVerifDecontTurism *frmVerifDecontTurism;
