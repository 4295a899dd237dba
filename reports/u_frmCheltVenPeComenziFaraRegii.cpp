#include "reports/u_frmCheltVenPeComenziFaraRegii.h"

TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii = nullptr;

TfrmCheltVenPeComenziFaraRegii::TfrmCheltVenPeComenziFaraRegii(QWidget *parent) : TReportForm(description(), parent)
{
    dsPostcalculRulaj = query();
}
