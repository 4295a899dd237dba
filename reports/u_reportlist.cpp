#include "reports/u_reportlist.h"

#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaPostcalcul.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "reports/u_frmVerifDecontTurism.h"

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
        entry<TfrmAnalizaContabilaDetaliata>("frmAnalizaContabilaDetaliata"),
        entry<TfrmContareDocumente>("frmContareDocumente"),
        entry<TfrmCheltVenPeComenziFaraRegii>("frmCheltVenPeComenziFaraRegii"),
        entry<TfrmAnaliza_Profitabilitate>("frmAnaliza_Profitabilitate"),
        entry<TfrmVerifDecontTurism>("frmVerifDecontTurism"),
        entry<TfrmAnalizaPostcalcul>("frmAnalizaPostcalcul"),
    };
    return list;
}

} // namespace rep
