#include "reports/u_frmAnalizaContabilaDetaliata.h"

TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata = nullptr;

TfrmAnalizaContabilaDetaliata::TfrmAnalizaContabilaDetaliata(QWidget *parent) : TReportForm(description(), parent)
{
    dsViewContabDet = query();
}
