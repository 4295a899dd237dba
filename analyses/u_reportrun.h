#pragma once
// The steps of a report's run ("Cauta") without windows: the checks in their
// order, the period to the server (bound parameters or the period row), the
// query opened or re-run. The form runs them over its editors; the
// command-line exporter over the dates it was given.

#include "analyses/u_reportdesc.h"

#include "db/u_query.h"

namespace rep {

// Where a run reads its editors and what it asks of its surroundings.
class RunHost {
public:
    virtual ~RunHost() = default;
    virtual QDate date(const QString &editor) const = 0;   // null when empty
    virtual QString text(const QString &editor) const = 0; // a text or button editor, as typed
    virtual bool isEmpty(const QString &editor) const = 0;
    virtual db::Query &query() = 0;
    virtual db::Query &periodRow(PeriodSource source) = 0;
    // The plain information box of a check that stops the run silently.
    virtual void inform(const QString &message) = 0;
    // The hourglass from a BusyCursor step to the end of the run.
    virtual void beginBusy() {}
    virtual void endBusy() {}
    virtual void customStep(const QString &name);
};

// The description's steps in order; false when a check stopped the run
// silently (after its information). Errors are thrown as QuarvError; the
// busy state ends on every way out.
bool runReport(const ReportDesc &d, RunHost &host);
// One step (a BusyCursor step only begins the busy state).
bool runStep(const ReportDesc &d, const RunStep &s, RunHost &host);
// The description's parameters from the editors.
void setParams(const ReportDesc &d, RunHost &host);
// Period row: open or re-read, edit the current row (insert into an empty
// table), write data_incep/data_sf, post; optionally close again.
void writePeriodRow(db::Query &periodRow, const QDate &start, const QDate &end, bool closeAfter);

// What a date editor holds after `typed` was typed into it and the editor
// was left: its own snapping applied (an empty date stays empty).
QDate enteredDate(const EditorDesc &e, const QDate &typed);

} // namespace rep
