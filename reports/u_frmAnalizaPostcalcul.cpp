#include "reports/u_frmAnalizaPostcalcul.h"

#include <QLabel>

TfrmAnalizaPostcalcul *frmAnalizaPostcalcul = nullptr;

TfrmAnalizaPostcalcul::TfrmAnalizaPostcalcul(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmAnalizaPostcalcul"));
    setWindowTitle(QStringLiteral("frmAnalizaPostcalcul"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("ANALIZA POSTCALCUL"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
