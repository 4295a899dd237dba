#include "reports/u_frmVerifDecontTurism.h"

#include <QLabel>

TfrmVerifDecontTurism *frmVerifDecontTurism = nullptr;

TfrmVerifDecontTurism::TfrmVerifDecontTurism(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmVerifDecontTurism"));
    setWindowTitle(QStringLiteral("frmVerifDecontTurism"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Verificare decont turism"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
