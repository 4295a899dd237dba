#include "reports/u_frmContareDocumente.h"

TfrmContareDocumente *frmContareDocumente = nullptr;

TfrmContareDocumente::TfrmContareDocumente(QWidget *parent)
    : TPendingReportForm(QStringLiteral("frmContareDocumente"), QStringLiteral("Contare Documente"), parent)
{
}
