#include "reports/u_frmAnaliza_Profitabilitate.h"

TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate = nullptr;

TfrmAnaliza_Profitabilitate::TfrmAnaliza_Profitabilitate(FormSession &session, QWidget *parent)
    : TReportForm(rep::Analiza_Profitabilitate::description(), session, parent)
{
    dsPostcalculRulaj = query();
}
