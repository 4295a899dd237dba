#pragma once
// The form of the post-calculation analysis, over rep::AnalizaPostcalcul::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaPostcalcul : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaPostcalcul(QWidget *parent = nullptr);

    // Text of dsViewPostcRulDet, sent as it stands.
    static QString sqlViewPostcRulDet() { return rep::AnalizaPostcalcul::sql(); }
    static rep::ReportDesc description() { return rep::AnalizaPostcalcul::description(); }

    db::Query *dsViewPostcRulDet = nullptr;
};

// Never created: the global stays empty for the whole run.
extern TfrmAnalizaPostcalcul *frmAnalizaPostcalcul;
