#include "reports/u_frmContareDocumente.h"

#include <QLabel>

TfrmContareDocumente *frmContareDocumente = nullptr;

TfrmContareDocumente::TfrmContareDocumente(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmContareDocumente"));
    setWindowTitle(QStringLiteral("frmContareDocumente"));
    resize(900, 600);
    auto *title = new QLabel(QStringLiteral("Contare Documente"), this);
    title->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = title->font();
    f.setBold(true);
    f.setPointSize(12);
    title->setFont(f);
    title->move(8, 8);
    title->adjustSize();
}
