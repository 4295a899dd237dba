#include "reports/u_frmAnaliza_Profitabilitate.h"

TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate = nullptr;

TfrmAnaliza_Profitabilitate::TfrmAnaliza_Profitabilitate(QWidget *parent) : TReportForm(rep::Analiza_Profitabilitate::description(), parent)
{
    dsPostcalculRulaj = query();
}
