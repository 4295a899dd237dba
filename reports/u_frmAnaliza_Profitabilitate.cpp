#include "reports/u_frmAnaliza_Profitabilitate.h"

#include <QLabel>

TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate = nullptr;

TfrmAnaliza_Profitabilitate::TfrmAnaliza_Profitabilitate(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmAnaliza_Profitabilitate"));
    setWindowTitle(QStringLiteral("frmAnaliza_Profitabilitate"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Analiza Profitabilitate"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
