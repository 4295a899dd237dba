#include "reports/u_frmAnalizaContabilaDetaliata.h"

TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata = nullptr;

TfrmAnalizaContabilaDetaliata::TfrmAnalizaContabilaDetaliata(FormSession &session, QWidget *parent)
    : TReportForm(rep::AnalizaContabilaDetaliata::description(), session, parent)
{
    dsViewContabDet = query();
}
