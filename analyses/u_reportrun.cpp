#include "analyses/u_reportrun.h"

#include "db/u_error.h"

namespace rep {

void RunHost::customStep(const QString &name)
{
    throw QuarvError(QStringLiteral("Pasul \"%1\" nu este definit.").arg(name));
}

namespace {
// Ends the busy state on every way out of a run.
struct BusyScope {
    RunHost &host;
    bool on = false;
    void begin()
    {
        if (!on) {
            on = true;
            host.beginBusy();
        }
    }
    ~BusyScope()
    {
        if (on)
            host.endBusy();
    }
};
} // namespace

bool runReport(const ReportDesc &d, RunHost &host)
{
    BusyScope busy{host};
    for (const RunStep &s : d.steps) {
        if (s.kind == StepKind::BusyCursor) {
            busy.begin();
            continue;
        }
        if (!runStep(d, s, host))
            return false;
    }
    return true;
}

bool runStep(const ReportDesc &d, const RunStep &s, RunHost &host)
{
    switch (s.kind) {
    case StepKind::CheckFilled:
        for (const QString &name : s.editors)
            if (host.isEmpty(name))
                throw QuarvError(s.message);
        break;
    case StepKind::CheckSameMonth:
        if (!sameMonth(host.date(s.editors.value(0)), host.date(s.editors.value(1)))) {
            if (!s.informOnly)
                throw QuarvError(s.message);
            host.inform(s.message);
            return false;
        }
        break;
    case StepKind::BusyCursor:
        host.beginBusy();
        break;
    case StepKind::CloseQuery:
        host.query().close();
        break;
    case StepKind::SetParams:
        setParams(d, host);
        break;
    case StepKind::PostPeriodRow:
        writePeriodRow(host.periodRow(s.source), convertDate(host.date(s.editors.value(0)), s.startConv),
                       convertDate(host.date(s.editors.value(1)), s.endConv), s.closeAfter);
        break;
    case StepKind::OpenQuery:
        if (!host.query().isActive())
            host.query().open();
        break;
    case StepKind::OpenOrRefresh:
        if (host.query().isActive())
            host.query().refresh();
        else
            host.query().open();
        break;
    case StepKind::Custom:
        host.customStep(s.name);
        break;
    }
    return true;
}

void setParams(const ReportDesc &d, RunHost &host)
{
    for (const ParamBinding &b : d.params) {
        const EditorDesc *e = d.editorNamed(b.editor);
        if (e && e->kind == EditorKind::Date) {
            const QDate v = convertDate(host.date(b.editor), b.conv);
            host.query().setParam(b.param, v.isValid() ? QVariant(v) : QVariant());
        } else {
            host.query().setParam(b.param, host.text(b.editor));
        }
    }
}

void writePeriodRow(db::Query &periodRow, const QDate &start, const QDate &end, bool closeAfter)
{
    if (periodRow.isEditing())
        periodRow.cancel(); // a post refused by an earlier run; this run writes the period anew
    if (periodRow.isActive())
        periodRow.refresh();
    else
        periodRow.open();
    periodRow.edit(); // an empty table gets its row here
    periodRow.setFieldValue(QStringLiteral("data_incep"), start.isValid() ? QVariant(start) : QVariant());
    periodRow.setFieldValue(QStringLiteral("data_sf"), end.isValid() ? QVariant(end) : QVariant());
    periodRow.post();
    if (closeAfter)
        periodRow.close();
}

QDate enteredDate(const EditorDesc &e, const QDate &typed)
{
    if (!typed.isValid())
        return {};
    switch (e.snap) {
    case DateSnap::None: return typed;
    case DateSnap::MonthStartOnChange:
    case DateSnap::MonthStartOnExit: return convertDate(typed, DateConv::MonthStart);
    case DateSnap::MonthEndOnChange:
    case DateSnap::MonthEndOnExit: return convertDate(typed, DateConv::MonthEnd);
    }
    return typed;
}

} // namespace rep
