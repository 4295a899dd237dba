#pragma once
// Accounting of documents: the posting lines of one calendar month ordered by
// account pair, with budget chapters, the sales channel of 'FactCI' lines and
// an English description. The month goes to the server through the session's
// period row; the query is only opened, so a later run with another month
// changes the period row but keeps the rows of the first.

#include "reports/common/u_reportform.h"

class TfrmContareDocumente : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmContareDocumente(QWidget *parent = nullptr);

    // Text of dsView_Contab_Det, sent as it stands.
    static QString sqlViewContabDet();
    static rep::ReportDesc description();

    db::Query *dsView_Contab_Det = nullptr;
};

extern TfrmContareDocumente *frmContareDocumente;
