#pragma once
// The form of the detailed accounting analysis, over rep::AnalizaContabilaDetaliata::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaContabilaDetaliata : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaContabilaDetaliata(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsViewContabDet = nullptr;
};

extern TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata;
