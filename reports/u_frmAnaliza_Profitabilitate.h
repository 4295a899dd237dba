#pragma once
// The form of the profitability analysis, over rep::Analiza_Profitabilitate::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnaliza_Profitabilitate : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnaliza_Profitabilitate(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate;
