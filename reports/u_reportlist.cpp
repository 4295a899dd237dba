#include "reports/u_reportlist.h"

#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"

namespace rep {

namespace {
template <class T>
ReportEntry entry(const char *formName)
{
    return {QString::fromLatin1(formName), &T::description, [](QWidget *parent) -> TReportForm * { return new T(parent); }};
}
} // namespace

const QList<ReportEntry> &allReports()
{
    static const QList<ReportEntry> list = {
        entry<TfrmFisaDeContAnalitica>("frmFisaDeContAnalitica"),
        entry<TfrmAnalizaRegistruJurnal>("frmAnalizaRegistruJurnal"),
    };
    return list;
}

} // namespace rep
