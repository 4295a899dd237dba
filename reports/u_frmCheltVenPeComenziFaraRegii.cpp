#include "reports/u_frmCheltVenPeComenziFaraRegii.h"

TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii = nullptr;

TfrmCheltVenPeComenziFaraRegii::TfrmCheltVenPeComenziFaraRegii(QWidget *parent) : TReportForm(rep::CheltVenPeComenziFaraRegii::description(), parent)
{
    dsPostcalculRulaj = query();
}
