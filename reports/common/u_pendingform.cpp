#include "reports/common/u_pendingform.h"

#include <QLabel>

TPendingReportForm::TPendingReportForm(const QString &name, const QString &title, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(name);
    setWindowTitle(name);
    resize(900, 600);
    auto *label = new QLabel(title, this);
    label->setObjectName(QStringLiteral("lblTitlu"));
    QFont f = label->font();
    f.setBold(true);
    f.setPointSize(12);
    label->setFont(f);
    label->move(8, 8);
    label->adjustSize();
}
