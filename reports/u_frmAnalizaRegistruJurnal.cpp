#include "reports/u_frmAnalizaRegistruJurnal.h"

TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal = nullptr;

TfrmAnalizaRegistruJurnal::TfrmAnalizaRegistruJurnal(QWidget *parent) : TReportForm(description(), parent)
{
    dsAnalizaRegistruJurnal = query();
}
