#include "reports/common/u_frmConts_select.h"

TfrmConts_select *frmConts_select = nullptr;

TfrmConts_select::TfrmConts_select(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmConts_select"));
    setWindowTitle(QStringLiteral("frmConts_select"));
    resize(420, 360);
}
