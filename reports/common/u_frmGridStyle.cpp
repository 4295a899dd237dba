#include "reports/common/u_frmGridStyle.h"

TfrmGridStyle *frmGridStyle = nullptr;

TfrmGridStyle::TfrmGridStyle(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmGridStyle"));
    setWindowTitle(QStringLiteral("frmGridStyle"));
    resize(420, 360);
}
