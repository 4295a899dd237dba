#include "reports/common/u_frmConts_select.h"

TfrmConts_select *frmConts_select = nullptr;

namespace {
const char kContsSql[] =
    "select *\n"
    "from conts\n"
    "where not discontinued \n"
    "order by conts\n"
    "         \n"
    ";";
}

const char *TfrmConts_select::sql()
{
    return kContsSql;
}

TfrmConts_select::TfrmConts_select(FormSession &session, QWidget *parent)
    : TAccountPicker(QStringLiteral("frmConts_select"), QStringLiteral("dsConts"), kContsSql,
                     {QStringLiteral("conts"), QStringLiteral("den_conts")}, session, parent)
{
    dsConts = pickerQuery();
}
