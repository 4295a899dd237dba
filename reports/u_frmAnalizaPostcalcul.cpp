#include "reports/u_frmAnalizaPostcalcul.h"

TfrmAnalizaPostcalcul *frmAnalizaPostcalcul = nullptr;

TfrmAnalizaPostcalcul::TfrmAnalizaPostcalcul(FormSession &session, QWidget *parent)
    : TReportForm(rep::AnalizaPostcalcul::description(), session, parent)
{
    dsViewPostcRulDet = query();
}
