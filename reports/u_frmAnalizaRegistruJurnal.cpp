#include "reports/u_frmAnalizaRegistruJurnal.h"

TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal = nullptr;

TfrmAnalizaRegistruJurnal::TfrmAnalizaRegistruJurnal(QWidget *parent) : TReportForm(rep::AnalizaRegistruJurnal::description(), parent)
{
    dsAnalizaRegistruJurnal = query();
}
