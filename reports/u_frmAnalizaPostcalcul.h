#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmAnalizaPostcalcul : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmAnalizaPostcalcul(QWidget *parent = nullptr);
};

// This form is never created: the global stays empty for the whole run.
extern TfrmAnalizaPostcalcul *frmAnalizaPostcalcul;
