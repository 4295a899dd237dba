#pragma once
// Post-calculation analysis: every post-calculation line joined to its
// cost-tracking object and its issuer, the lei value split into expense,
// revenue and signed profit, ordered by object type, object, article and
// document. The program never creates this form (the menu entry reports the
// missing form); the description is complete all the same: one whole month,
// written through the session's period row before the query opens.

#include "reports/common/u_reportform.h"

class TfrmAnalizaPostcalcul : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaPostcalcul(QWidget *parent = nullptr);

    // Text of dsViewPostcRulDet, sent as it stands.
    static QString sqlViewPostcRulDet();
    static rep::ReportDesc description();

    db::Query *dsViewPostcRulDet = nullptr;
};

// Never created: the global stays empty for the whole run.
extern TfrmAnalizaPostcalcul *frmAnalizaPostcalcul;
