#pragma once
// Profitability analysis: the post-calculation ledger of whole months over
// any span. The period row is written through the session's period row; the
// query is only opened, never closed or re-run, so a second run changes the
// period on the server and leaves the grid as it was.

#include "reports/common/u_reportform.h"

class TfrmAnaliza_Profitabilitate : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnaliza_Profitabilitate(QWidget *parent = nullptr);

    // Text of dsPostcalculRulaj, sent as it stands.
    static QString sqlPostcalculRulaj();
    static rep::ReportDesc description();

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate;
