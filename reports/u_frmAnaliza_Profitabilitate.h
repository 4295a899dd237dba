#pragma once
// The form of the profitability analysis, over rep::Analiza_Profitabilitate::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnaliza_Profitabilitate : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnaliza_Profitabilitate(QWidget *parent = nullptr);

    // Text of dsPostcalculRulaj, sent as it stands.
    static QString sqlPostcalculRulaj() { return rep::Analiza_Profitabilitate::sql(); }
    static rep::ReportDesc description() { return rep::Analiza_Profitabilitate::description(); }

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate;
