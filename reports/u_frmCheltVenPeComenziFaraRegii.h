#pragma once
// The form of expenses and revenues by order, over rep::CheltVenPeComenziFaraRegii::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmCheltVenPeComenziFaraRegii : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmCheltVenPeComenziFaraRegii(FormSession &session, QWidget *parent = nullptr);

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii;
