#pragma once
// The form of the accounting of documents, over rep::ContareDocumente::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmContareDocumente : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmContareDocumente(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsView_Contab_Det = nullptr;
};

extern TfrmContareDocumente *frmContareDocumente;
