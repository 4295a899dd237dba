#pragma once
// The form of expenses and revenues by order, over rep::CheltVenPeComenziFaraRegii::description().

#include "reports/common/u_reportform.h"
#include "analyses/u_reports.h"

class TfrmCheltVenPeComenziFaraRegii : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmCheltVenPeComenziFaraRegii(QWidget *parent = nullptr);

    // Text of dsPostcalculRulaj, sent as it stands.
    static QString sqlPostcalculRulaj() { return rep::CheltVenPeComenziFaraRegii::sql(); }
    static rep::ReportDesc description() { return rep::CheltVenPeComenziFaraRegii::description(); }

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii;
