#pragma once
// The form of the detailed accounting analysis, over rep::AnalizaContabilaDetaliata::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmAnalizaContabilaDetaliata : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaContabilaDetaliata(QWidget *parent = nullptr);

    // Text of dsViewContabDet, sent as it stands.
    static QString sqlViewContabDet() { return rep::AnalizaContabilaDetaliata::sql(); }
    static rep::ReportDesc description() { return rep::AnalizaContabilaDetaliata::description(); }

    db::Query *dsViewContabDet = nullptr;
};

extern TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata;
