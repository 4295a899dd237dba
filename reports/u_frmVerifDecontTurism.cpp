#include "reports/u_frmVerifDecontTurism.h"

TfrmVerifDecontTurism *frmVerifDecontTurism = nullptr;

TfrmVerifDecontTurism::TfrmVerifDecontTurism(QWidget *parent) : TReportForm(rep::VerifDecontTurism::description(), parent)
{
    dsViewVerifTvaInclus = query();
}
