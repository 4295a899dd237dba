#include "analyses/u_reports.h"

namespace rep {

const QList<CatalogEntry> &catalog()
{
    static const QList<CatalogEntry> list = {
        {QStringLiteral("frmAnalizaRegistruJurnal"), &AnalizaRegistruJurnal::description},
        {QStringLiteral("frmFisaDeContAnalitica"), &FisaDeContAnalitica::description},
        {QStringLiteral("frmAnalizaContabilaDetaliata"), &AnalizaContabilaDetaliata::description},
        {QStringLiteral("frmContareDocumente"), &ContareDocumente::description},
        {QStringLiteral("frmCheltVenPeComenziFaraRegii"), &CheltVenPeComenziFaraRegii::description},
        {QStringLiteral("frmAnaliza_Profitabilitate"), &Analiza_Profitabilitate::description},
        {QStringLiteral("frmVerifDecontTurism"), &VerifDecontTurism::description},
        {QStringLiteral("frmAnalizaPostcalcul"), &AnalizaPostcalcul::description},
    };
    return list;
}

const CatalogEntry *findReport(const QString &formName)
{
    for (const CatalogEntry &e : catalog())
        if (e.formName == formName)
            return &e;
    return nullptr;
}

} // namespace rep
