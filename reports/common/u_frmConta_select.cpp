#include "reports/common/u_frmConta_select.h"

TfrmConta_select *frmConta_select = nullptr;

namespace {
const char kContaSql[] =
    "select *\n"
    "from conta\n"
    "where not discontinued \n"
    "order by conts,\n"
    "         conta\n"
    ";";
}

const char *TfrmConta_select::sql()
{
    return kContaSql;
}

TfrmConta_select::TfrmConta_select(FormSession &session, QWidget *parent)
    : TAccountPicker(QStringLiteral("frmConta_select"), QStringLiteral("dsConta"), kContaSql,
                     {QStringLiteral("conts"), QStringLiteral("conta"), QStringLiteral("den_conta"),
                      QStringLiteral("moneda")},
                     session, parent)
{
    dsConta = pickerQuery();
}
