#include "reports/u_frmAnalizaRegistruJurnal.h"

TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal = nullptr;

TfrmAnalizaRegistruJurnal::TfrmAnalizaRegistruJurnal(FormSession &session, QWidget *parent)
    : TReportForm(rep::AnalizaRegistruJurnal::description(), session, parent)
{
    dsAnalizaRegistruJurnal = query();
}
