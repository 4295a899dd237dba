#include "reports/u_frmAnalizaContabilaDetaliata.h"

TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata = nullptr;

TfrmAnalizaContabilaDetaliata::TfrmAnalizaContabilaDetaliata(QWidget *parent) : TReportForm(rep::AnalizaContabilaDetaliata::description(), parent)
{
    dsViewContabDet = query();
}
