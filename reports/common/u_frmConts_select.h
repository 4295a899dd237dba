#pragma once
// Pick list of the synthetic accounts (conts not retired). Modal; "OK" closes
// it with the OK result and the caller reads conts from dsConts's current row.
// Every showing re-reads the list, keeping the filter row and the position.

#include "reports/common/u_accountpicker.h"

class TfrmConts_select : public TAccountPicker {
    Q_OBJECT
public:
    explicit TfrmConts_select(FormSession &session, QWidget *parent = nullptr);
    db::Query *dsConts = nullptr;
    static const char *sql();
};

extern TfrmConts_select *frmConts_select;
