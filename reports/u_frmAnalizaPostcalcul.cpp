#include "reports/u_frmAnalizaPostcalcul.h"

TfrmAnalizaPostcalcul *frmAnalizaPostcalcul = nullptr;

TfrmAnalizaPostcalcul::TfrmAnalizaPostcalcul(QWidget *parent) : TReportForm(description(), parent)
{
    dsViewPostcRulDet = query();
}
