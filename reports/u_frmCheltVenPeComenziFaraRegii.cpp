#include "reports/u_frmCheltVenPeComenziFaraRegii.h"

TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii = nullptr;

TfrmCheltVenPeComenziFaraRegii::TfrmCheltVenPeComenziFaraRegii(QWidget *parent)
    : TPendingReportForm(QStringLiteral("frmCheltVenPeComenziFaraRegii"), QStringLiteral("Cheltuieli/Venituri pe Comenzi"), parent)
{
}
