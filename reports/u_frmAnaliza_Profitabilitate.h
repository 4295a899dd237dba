#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmAnaliza_Profitabilitate : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmAnaliza_Profitabilitate(QWidget *parent = nullptr);
};

extern TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate;
