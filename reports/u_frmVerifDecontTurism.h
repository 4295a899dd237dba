#pragma once
// Tourism settlement check: the document lines of the tourism settlements of
// a period within one month, with their VAT treatment, commissions and
// supplier data, ordered by settlement. The two dates are written exactly as
// chosen through the form's own data_list query, then the view is read under
// the hourglass; an open result is re-run.

#include "reports/common/u_reportform.h"

class TfrmVerifDecontTurism : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmVerifDecontTurism(QWidget *parent = nullptr);

    // Text of dsViewVerifTvaInclus, sent as it stands.
    static QString sqlViewVerifTvaInclus();
    static rep::ReportDesc description();

    db::Query *dsViewVerifTvaInclus = nullptr;
};

extern TfrmVerifDecontTurism *frmVerifDecontTurism;
