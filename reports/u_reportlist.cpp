#include "reports/u_reportlist.h"

#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaPostcalcul.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "reports/u_frmVerifDecontTurism.h"

#include <QHash>

#include <stdexcept>

namespace rep {

namespace {

struct Binding {
    TReportForm *(*create)(FormSession &session, QWidget *parent);
    TReportForm *(*instance)();
    void (*setInstance)(TReportForm *form);
};

template <class Form, Form **Global>
Binding bind()
{
    return {[](FormSession &session, QWidget *parent) -> TReportForm * { return new Form(session, parent); },
            []() -> TReportForm * { return *Global; },
            [](TReportForm *f) { *Global = static_cast<Form *>(f); }};
}

// Each form under its global's name, which is its form name.
#define QUARV_FORM(Form, global) {QStringLiteral(#global), bind<Form, &global>()}

const QHash<QString, Binding> &bindings()
{
    static const QHash<QString, Binding> forms = {
        QUARV_FORM(TfrmFisaDeContAnalitica, frmFisaDeContAnalitica),
        QUARV_FORM(TfrmAnaliza_Profitabilitate, frmAnaliza_Profitabilitate),
        QUARV_FORM(TfrmAnalizaRegistruJurnal, frmAnalizaRegistruJurnal),
        QUARV_FORM(TfrmContareDocumente, frmContareDocumente),
        QUARV_FORM(TfrmCheltVenPeComenziFaraRegii, frmCheltVenPeComenziFaraRegii),
        QUARV_FORM(TfrmAnalizaContabilaDetaliata, frmAnalizaContabilaDetaliata),
        QUARV_FORM(TfrmVerifDecontTurism, frmVerifDecontTurism),
        QUARV_FORM(TfrmAnalizaPostcalcul, frmAnalizaPostcalcul),
    };
    return forms;
}

#undef QUARV_FORM

} // namespace

const QList<ReportForm> &reportForms()
{
    static const QList<ReportForm> list = [] {
        QList<ReportForm> out;
        for (const CatalogEntry &e : catalog()) {
            const auto it = bindings().constFind(e.formName);
            if (it == bindings().constEnd())
                throw std::logic_error("no form for the analysis " + e.formName.toStdString());
            out.append({&e, it->create, it->instance, it->setInstance});
        }
        if (out.size() != bindings().size())
            throw std::logic_error("a form is bound to no analysis of the registry");
        return out;
    }();
    return list;
}

const ReportForm *reportForm(const QString &formName)
{
    for (const ReportForm &f : reportForms())
        if (f.entry->formName == formName)
            return &f;
    return nullptr;
}

} // namespace rep
