#include "reports/u_frmAnalizaRegistruJurnal.h"

#include <QLabel>

TfrmAnalizaRegistruJurnal *frmAnalizaRegistruJurnal = nullptr;

TfrmAnalizaRegistruJurnal::TfrmAnalizaRegistruJurnal(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmAnalizaRegistruJurnal"));
    setWindowTitle(QStringLiteral("frmAnalizaRegistruJurnal"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Analiza Registru Jurnal"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
