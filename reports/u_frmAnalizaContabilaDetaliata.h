#pragma once
// Detailed accounting analysis: every posting line of a period, as the view
// view_contab_det returns it. The period goes to the server through the
// form's own data_list query, written exactly as the editors hold it (their
// exit handlers already moved it to month boundaries); the view then reads it.

#include "reports/common/u_reportform.h"

class TfrmAnalizaContabilaDetaliata : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaContabilaDetaliata(QWidget *parent = nullptr);

    // Text of dsViewContabDet, sent as it stands.
    static QString sqlViewContabDet();
    static rep::ReportDesc description();

    db::Query *dsViewContabDet = nullptr;
};

extern TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata;
