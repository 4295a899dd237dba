#include "reports/u_frmVerifDecontTurism.h"

TfrmVerifDecontTurism *frmVerifDecontTurism = nullptr;

TfrmVerifDecontTurism::TfrmVerifDecontTurism(QWidget *parent)
    : TPendingReportForm(QStringLiteral("frmVerifDecontTurism"), QStringLiteral("Verificare decont turism"), parent)
{
}
