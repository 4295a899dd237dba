#include "reports/u_frmContareDocumente.h"

TfrmContareDocumente *frmContareDocumente = nullptr;

TfrmContareDocumente::TfrmContareDocumente(QWidget *parent) : TReportForm(rep::ContareDocumente::description(), parent)
{
    dsView_Contab_Det = query();
}
