#include "reports/u_frmAnalizaContabilaDetaliata.h"

#include <QLabel>

TfrmAnalizaContabilaDetaliata *frmAnalizaContabilaDetaliata = nullptr;

TfrmAnalizaContabilaDetaliata::TfrmAnalizaContabilaDetaliata(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmAnalizaContabilaDetaliata"));
    setWindowTitle(QStringLiteral("frmAnalizaContabilaDetaliata"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Analiza Contabila Detaliata"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
