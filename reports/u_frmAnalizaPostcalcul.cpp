#include "reports/u_frmAnalizaPostcalcul.h"

TfrmAnalizaPostcalcul *frmAnalizaPostcalcul = nullptr;

TfrmAnalizaPostcalcul::TfrmAnalizaPostcalcul(QWidget *parent)
    : TPendingReportForm(QStringLiteral("frmAnalizaPostcalcul"), QStringLiteral("ANALIZA POSTCALCUL"), parent)
{
}
