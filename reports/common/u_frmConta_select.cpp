#include "reports/common/u_frmConta_select.h"

TfrmConta_select *frmConta_select = nullptr;

TfrmConta_select::TfrmConta_select(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmConta_select"));
    setWindowTitle(QStringLiteral("frmConta_select"));
    resize(420, 360);
}
