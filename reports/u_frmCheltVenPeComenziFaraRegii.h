#pragma once
// Stand-in for the form until its own unit is written.

#include "reports/common/u_pendingform.h"

class TfrmCheltVenPeComenziFaraRegii : public TPendingReportForm {
    Q_OBJECT
public:
    explicit TfrmCheltVenPeComenziFaraRegii(QWidget *parent = nullptr);
};

extern TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii;
