#include "reports/u_frmCheltVenPeComenziFaraRegii.h"

#include <QLabel>

TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii = nullptr;

TfrmCheltVenPeComenziFaraRegii::TfrmCheltVenPeComenziFaraRegii(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmCheltVenPeComenziFaraRegii"));
    setWindowTitle(QStringLiteral("frmCheltVenPeComenziFaraRegii"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Cheltuieli/Venituri pe Comenzi"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
