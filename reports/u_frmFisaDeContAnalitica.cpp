#include "reports/u_frmFisaDeContAnalitica.h"

#include <QLabel>

TfrmFisaDeContAnalitica *frmFisaDeContAnalitica = nullptr;

TfrmFisaDeContAnalitica::TfrmFisaDeContAnalitica(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmFisaDeContAnalitica"));
    setWindowTitle(QStringLiteral("frmFisaDeContAnalitica"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Fisa De Cont Analitic"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
