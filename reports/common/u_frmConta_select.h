#pragma once
// Pick list of the analytic accounts (conta not retired), with the same
// protocol as the synthetic one: the caller reads conts and conta from
// dsConta's current row after an OK result.

#include "reports/common/u_accountpicker.h"

class TfrmConta_select : public TAccountPicker {
    Q_OBJECT
public:
    explicit TfrmConta_select(FormSession &session, QWidget *parent = nullptr);
    db::Query *dsConta = nullptr;
    static const char *sql();
};

extern TfrmConta_select *frmConta_select;
