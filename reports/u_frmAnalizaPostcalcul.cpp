#include "reports/u_frmAnalizaPostcalcul.h"

TfrmAnalizaPostcalcul *frmAnalizaPostcalcul = nullptr;

TfrmAnalizaPostcalcul::TfrmAnalizaPostcalcul(QWidget *parent) : TReportForm(rep::AnalizaPostcalcul::description(), parent)
{
    dsViewPostcRulDet = query();
}
