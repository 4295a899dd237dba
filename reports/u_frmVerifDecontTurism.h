#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmVerifDecontTurism : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmVerifDecontTurism(QWidget *parent = nullptr);
};

extern TfrmVerifDecontTurism *frmVerifDecontTurism;
