#include "reports/u_frmAnalizaContabilaDetaliata.h"

TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata = nullptr;

TfrmAnalizaContabilaDetaliata::TfrmAnalizaContabilaDetaliata(QWidget *parent)
    : TPendingReportForm(QStringLiteral("frmAnalizaContabilaDetaliata"), QStringLiteral("Analiza Contabila Detaliata"), parent)
{
}
