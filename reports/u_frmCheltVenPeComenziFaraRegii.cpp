#include "reports/u_frmCheltVenPeComenziFaraRegii.h"

TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii = nullptr;

TfrmCheltVenPeComenziFaraRegii::TfrmCheltVenPeComenziFaraRegii(FormSession &session, QWidget *parent)
    : TReportForm(rep::CheltVenPeComenziFaraRegii::description(), session, parent)
{
    dsPostcalculRulaj = query();
}
