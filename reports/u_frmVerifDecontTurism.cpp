#include "reports/u_frmVerifDecontTurism.h"

TfrmVerifDecontTurism *frmVerifDecontTurism = nullptr;

TfrmVerifDecontTurism::TfrmVerifDecontTurism(QWidget *parent) : TReportForm(description(), parent)
{
    dsViewVerifTvaInclus = query();
}
