#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmContareDocumente : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmContareDocumente(QWidget *parent = nullptr);
};

extern TfrmContareDocumente *frmContareDocumente;
