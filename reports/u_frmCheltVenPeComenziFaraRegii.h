#pragma once
// Expenses and revenues by order, without distributed overheads: the
// post-calculation ledger of one calendar month. Both dates must lie in one
// month; the whole month is written through the session's period row, under
// the hourglass, between closing and opening the query.

#include "reports/common/u_reportform.h"

class TfrmCheltVenPeComenziFaraRegii : public TReportForm {
    Q_OBJECT
public:
    explicit TfrmCheltVenPeComenziFaraRegii(QWidget *parent = nullptr);

    // Text of dsPostcalculRulaj, sent as it stands.
    static QString sqlPostcalculRulaj();
    static rep::ReportDesc description();

    db::Query *dsPostcalculRulaj = nullptr;
};

extern TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii;
