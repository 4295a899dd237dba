#pragma once
// The form of the post-calculation analysis, over rep::AnalizaPostcalcul::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaPostcalcul : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaPostcalcul(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsViewPostcRulDet = nullptr;
};

// Never created: the global stays empty for the whole run.
extern TfrmAnalizaPostcalcul *frmAnalizaPostcalcul;
