#pragma once
// The form of the analytic account sheet, over rep::FisaDeContAnalitica::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class QFrame;

class TfrmFisaDeContAnalitica : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmFisaDeContAnalitica(FormSession &session, QWidget *parent = nullptr);

    // The ellipsis of cxButtonEdit1: the synthetic-account picker.
    void cxButtonEdit1PropertiesButtonClick();

    db::Query *dsFisaContAnalitic = nullptr;
    QFrame *Shape1 = nullptr; // the thin red line under the parameters
};

extern TfrmFisaDeContAnalitica *frmFisaDeContAnalitica;
