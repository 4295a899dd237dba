#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmAnalizaContabilaDetaliata : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaContabilaDetaliata(QWidget *parent = nullptr);
};

extern TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata;
