#pragma once
// Analytic account sheet: for one synthetic account and whole months, every
// analytic account with its opening balance and the postings of the period,
// each row with the running balance after it. The period reaches the server
// through the session's period row (dmQuarv->dsDataList), which the views read.

#include "reports/common/u_reportform.h"

class QFrame;

class TfrmFisaDeContAnalitica : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmFisaDeContAnalitica(QWidget *parent = nullptr);

    // Text of dsFisaContAnalitic, sent as it stands.
    static QString sqlFisaContAnalitic();
    static rep::ReportDesc description();

    // The ellipsis of cxButtonEdit1: the synthetic-account picker.
    void cxButtonEdit1PropertiesButtonClick();

    db::Query *dsFisaContAnalitic = nullptr;
    QFrame *Shape1 = nullptr; // the thin red line under the parameters
};

extern TfrmFisaDeContAnalitica *frmFisaDeContAnalitica;
