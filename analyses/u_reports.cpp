#include "analyses/u_reports.h"

namespace rep {

const QList<CatalogEntry> &catalog()
{
    // The places in the start-up order are those of app/u_startup.cpp: the
    // menu 1, the session module 2, the style manager 5, the login 7, the
    // account pickers 9 and 13, the menu and the login again 14 and 15.
    static const QList<CatalogEntry> list = {
        {QStringLiteral("frmFisaDeContAnalitica"), &FisaDeContAnalitica::description,
         {QStringLiteral("btnFisaCont"), QStringLiteral("Fisa de Cont"), 123}, {8, 16}},
        {QStringLiteral("frmAnaliza_Profitabilitate"), &Analiza_Profitabilitate::description,
         {QStringLiteral("btnAnalizaProfitabilitate"), QStringLiteral("Analiza Profitabilitate"), 123}, {10}},
        {QStringLiteral("frmAnalizaRegistruJurnal"), &AnalizaRegistruJurnal::description,
         {QStringLiteral("btnAnalizaRegJurn"), QStringLiteral("Analiza Registru Jurnal"), 123}, {11}},
        {QStringLiteral("frmContareDocumente"), &ContareDocumente::description,
         {QStringLiteral("btnContareDoc"), QStringLiteral("Contare Documente"), 123}, {12}},
        {QStringLiteral("frmCheltVenPeComenziFaraRegii"), &CheltVenPeComenziFaraRegii::description,
         {QStringLiteral("cxButton1"), QStringLiteral("Chelt/Ven Pe Comenzi(fara regii repartizate)"), 227}, {3}},
        {QStringLiteral("frmAnalizaContabilaDetaliata"), &AnalizaContabilaDetaliata::description,
         {QStringLiteral("btnAnalizaContabilaDetaliata"), QStringLiteral("Analiza Contabila Detaliata"), 147}, {4}},
        {QStringLiteral("frmVerifDecontTurism"), &VerifDecontTurism::description,
         {QStringLiteral("cxButton2"), QStringLiteral("Verificare Decont Turism"), 147}, {6}},
        // Never created: its menu button reports the missing form.
        {QStringLiteral("frmAnalizaPostcalcul"), &AnalizaPostcalcul::description,
         {QStringLiteral("cxButton3"), QStringLiteral("Analiza Postcalcul"), 147}, {}},
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
