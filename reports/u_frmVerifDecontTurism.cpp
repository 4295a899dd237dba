#include "reports/u_frmVerifDecontTurism.h"

TfrmVerifDecontTurism *frmVerifDecontTurism = nullptr;

TfrmVerifDecontTurism::TfrmVerifDecontTurism(FormSession &session, QWidget *parent)
    : TReportForm(rep::VerifDecontTurism::description(), session, parent)
{
    dsViewVerifTvaInclus = query();
}
