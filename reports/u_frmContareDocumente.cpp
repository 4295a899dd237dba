#include "reports/u_frmContareDocumente.h"

TfrmContareDocumente *frmContareDocumente = nullptr;

TfrmContareDocumente::TfrmContareDocumente(FormSession &session, QWidget *parent)
    : TReportForm(rep::ContareDocumente::description(), session, parent)
{
    dsView_Contab_Det = query();
}
