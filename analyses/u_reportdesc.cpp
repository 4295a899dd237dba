#include "analyses/u_reportdesc.h"

#include "db/u_query.h"

#include <QSet>

#include <algorithm>

namespace rep {

// ----- editors and dates

QList<EditorDesc> periodEditors(PeriodSnap snap, PeriodOnShow onShow, const QString &fromLabel)
{
    EditorDesc from;
    from.objectName = kFromEditor;
    from.label = fromLabel;
    EditorDesc to;
    to.objectName = kToEditor;
    to.label = QStringLiteral("Pana la :");
    switch (snap) {
    case PeriodSnap::None: break;
    case PeriodSnap::MonthOnChange:
        from.snap = DateSnap::MonthStartOnChange;
        to.snap = DateSnap::MonthEndOnChange;
        break;
    case PeriodSnap::MonthOnExit:
        from.snap = DateSnap::MonthStartOnExit;
        to.snap = DateSnap::MonthEndOnExit;
        break;
    }
    if (onShow == PeriodOnShow::CurrentMonth) {
        from.onShow = DateOnShow::CurrentMonthStart;
        to.onShow = DateOnShow::CurrentMonthEnd;
    }
    return {from, to};
}

QDate convertDate(const QDate &d, DateConv conv)
{
    if (!d.isValid())
        return {};
    switch (conv) {
    case DateConv::AsIs: return d;
    case DateConv::MonthStart: return QDate(d.year(), d.month(), 1);
    case DateConv::MonthEnd: return QDate(d.year(), d.month(), d.daysInMonth());
    }
    return d;
}

bool sameMonth(const QDate &a, const QDate &b)
{
    const int ma = a.isValid() ? a.month() : 0, mb = b.isValid() ? b.month() : 0;
    const int ya = a.isValid() ? a.year() : 0, yb = b.isValid() ? b.year() : 0;
    return ma == mb && ya == yb;
}

// ----- steps

RunStep RunStep::checkFilled(const QStringList &editors, const QString &message)
{
    RunStep s;
    s.kind = StepKind::CheckFilled;
    s.editors = editors;
    s.message = message;
    return s;
}

RunStep RunStep::checkSameMonth(bool informOnly)
{
    RunStep s;
    s.kind = StepKind::CheckSameMonth;
    s.editors = {kFromEditor, kToEditor};
    s.message = sameMonthText();
    s.informOnly = informOnly;
    return s;
}

static RunStep plain(StepKind kind)
{
    RunStep s;
    s.kind = kind;
    return s;
}

RunStep RunStep::busyCursor() { return plain(StepKind::BusyCursor); }
RunStep RunStep::closeQuery() { return plain(StepKind::CloseQuery); }
RunStep RunStep::setParams() { return plain(StepKind::SetParams); }
RunStep RunStep::openQuery() { return plain(StepKind::OpenQuery); }
RunStep RunStep::openOrRefresh() { return plain(StepKind::OpenOrRefresh); }

RunStep RunStep::postPeriodRow(PeriodSource source, DateConv startConv, DateConv endConv, bool closeAfter)
{
    RunStep s = plain(StepKind::PostPeriodRow);
    s.source = source;
    s.startConv = startConv;
    s.endConv = endConv;
    s.closeAfter = closeAfter;
    s.editors = {kFromEditor, kToEditor};
    return s;
}

RunStep RunStep::custom(const QString &name)
{
    RunStep s = plain(StepKind::Custom);
    s.name = name;
    return s;
}

QString stepName(StepKind kind)
{
    switch (kind) {
    case StepKind::CheckFilled: return QStringLiteral("CheckFilled");
    case StepKind::CheckSameMonth: return QStringLiteral("CheckSameMonth");
    case StepKind::BusyCursor: return QStringLiteral("BusyCursor");
    case StepKind::CloseQuery: return QStringLiteral("CloseQuery");
    case StepKind::SetParams: return QStringLiteral("SetParams");
    case StepKind::PostPeriodRow: return QStringLiteral("PostPeriodRow");
    case StepKind::OpenQuery: return QStringLiteral("OpenQuery");
    case StepKind::OpenOrRefresh: return QStringLiteral("OpenOrRefresh");
    case StepKind::Custom: return QStringLiteral("Custom");
    }
    return QStringLiteral("?");
}

// ----- grid

ColumnDesc column(const char *field, int width, const QString &caption)
{
    ColumnDesc c;
    c.field = QString::fromLatin1(field);
    c.width = width;
    c.caption = caption;
    return c;
}

QList<grid::GridSummary> sums(std::initializer_list<const char *> fields, const QString &format)
{
    QList<grid::GridSummary> out;
    for (const char *f : fields) {
        grid::GridSummary s;
        s.fieldName = QString::fromLatin1(f);
        s.kind = grid::SummaryKind::Sum;
        s.format = format;
        out << s;
    }
    return out;
}

void setUpGrid(const ReportDesc &d, grid::GridModel &model)
{
    for (const ColumnDesc &c : d.columns) {
        const int col = model.addColumn(c.field, c.caption, c.width > 0 ? c.width : grid::GridColumn{}.width);
        if (col < 0)
            continue;
        if (!c.visible)
            model.setColumnVisible(col, false);
        if (!c.displayFormat.isEmpty())
            model.setColumnDisplayFormat(col, c.displayFormat);
    }
    model.setFooterSummaries(d.footerSummaries);
    model.setGroupSummaries(d.groupSummaries);
}

// ----- exports

QString exportKindName(ExportKind kind)
{
    switch (kind) {
    case ExportKind::GridCsv: return QStringLiteral("GridCsv");
    case ExportKind::AllDataCsv: return QStringLiteral("AllDataCsv");
    case ExportKind::GridText: return QStringLiteral("GridText");
    case ExportKind::GridXlsx: return QStringLiteral("GridXlsx");
    case ExportKind::GridCsvStatus: return QStringLiteral("GridCsvStatus");
    }
    return QStringLiteral("?");
}

QString exportFilter(ExportKind kind)
{
    return kind == ExportKind::GridXlsx ? QStringLiteral("*.xlsx") : QStringLiteral("*.csv");
}

static ExportDesc exportButton(ExportKind kind, const char *caption, const QString &objectName, const QString &fileName)
{
    return ExportDesc{kind, QString::fromLatin1(caption), objectName, fileName};
}

ExportDesc exportGridCsv(const QString &objectName, const QString &fileName)
{
    return exportButton(ExportKind::GridCsv, "Export csv (Grid)", objectName, fileName);
}
ExportDesc exportAllData(const QString &objectName, const QString &fileName)
{
    return exportButton(ExportKind::AllDataCsv, "Export csv (Toate Datele)", objectName, fileName);
}
ExportDesc exportText(const QString &objectName, const QString &fileName)
{
    return exportButton(ExportKind::GridText, "Export csv", objectName, fileName);
}
ExportDesc exportExcel(const QString &objectName, const QString &fileName)
{
    return exportButton(ExportKind::GridXlsx, "Export Excel", objectName, fileName);
}
ExportDesc exportCsvToStatus(const QString &objectName, const QString &fileName)
{
    return exportButton(ExportKind::GridCsvStatus, "Export csv", objectName, fileName);
}

// ----- the report

const ExportDesc *ReportDesc::exportOf(ExportKind kind) const
{
    for (const ExportDesc &e : exports)
        if (e.kind == kind)
            return &e;
    return nullptr;
}

const EditorDesc *ReportDesc::editorNamed(const QString &objectName) const
{
    for (const EditorDesc &e : editors)
        if (e.objectName == objectName)
            return &e;
    return nullptr;
}

// ----- validation

namespace {

struct Faults {
    const ReportDesc &d;
    QStringList list;
    QSet<QString> names; // object names claimed so far: one widget per name
    void add(const QString &what) { list << QStringLiteral("%1: %2").arg(d.formName.isEmpty() ? QStringLiteral("?") : d.formName, what); }
    void claim(const QString &name, const QString &what)
    {
        if (name.isEmpty())
            add(QStringLiteral("%1 has no object name").arg(what));
        else if (names.contains(name))
            add(QStringLiteral("object name \"%1\" (%2) is used twice").arg(name, what));
        names.insert(name);
    }
    void dateEditor(const QString &name, const QString &where)
    {
        const EditorDesc *e = d.editorNamed(name);
        if (!e)
            add(QStringLiteral("%1 names the editor \"%2\", which the form does not have").arg(where, name));
        else if (e->kind != EditorKind::Date)
            add(QStringLiteral("%1 needs a date editor; \"%2\" is not one").arg(where, name));
    }
};

bool changesState(StepKind k)
{
    return k == StepKind::CloseQuery || k == StepKind::SetParams || k == StepKind::PostPeriodRow
           || k == StepKind::OpenQuery || k == StepKind::OpenOrRefresh || k == StepKind::Custom;
}

void checkHeader(Faults &f)
{
    const ReportDesc &d = f.d;
    if (d.formName.isEmpty())
        f.add(QStringLiteral("the form has no name"));
    if (d.title.isEmpty())
        f.add(QStringLiteral("the form has no title"));
    if (!d.queryName.startsWith(QLatin1String("ds")) || d.queryName.size() < 3)
        f.add(QStringLiteral("query name \"%1\" does not start with \"ds\"").arg(d.queryName));
    if (d.sql.trimmed().isEmpty())
        f.add(QStringLiteral("the query has no SQL text"));
}

void checkObjectNames(Faults &f)
{
    const ReportDesc &d = f.d;
    f.names = {d.titleObjectName, d.runButtonName};
    for (const EditorDesc &e : d.editors)
        f.claim(e.objectName, QStringLiteral("an editor"));
    for (const HiddenLabel &l : d.hiddenLabels)
        f.claim(l.objectName, QStringLiteral("the label \"%1\"").arg(l.text));
    if (!d.styleKey.isEmpty())
        f.claim(d.styleButtonName, QStringLiteral("the style button"));
}

// Every :name of the SQL bound, every binding a :name of the SQL.
void checkParams(Faults &f, const QStringList &sqlParams)
{
    const ReportDesc &d = f.d;
    for (const ParamBinding &b : d.params) {
        if (!sqlParams.contains(b.param))
            f.add(QStringLiteral("the parameter \"%1\" is not in the query's SQL").arg(b.param));
        if (!d.editorNamed(b.editor))
            f.add(QStringLiteral("the parameter \"%1\" reads the editor \"%2\", which the form does not have")
                      .arg(b.param, b.editor));
    }
    for (const QString &p : sqlParams) {
        bool bound = false;
        for (const ParamBinding &b : d.params)
            bound = bound || b.param == p;
        if (!bound)
            f.add(QStringLiteral("the query's parameter \"%1\" is bound to no editor").arg(p));
    }
}

// Where the query stands after the steps so far.
struct StepState {
    bool opened = false;
    bool paramsSet = false;
    bool stateChanged = false;
};

void checkStep(Faults &f, const RunStep &s, const QString &where, const QStringList &sqlParams, StepState &st)
{
    const ReportDesc &d = f.d;
    if (s.isCheck()) {
        if (st.stateChanged)
            f.add(QStringLiteral("%1 comes after a step that changes something").arg(where));
        if (s.message.isEmpty())
            f.add(QStringLiteral("%1 has no message").arg(where));
    }
    if (st.opened && s.kind != StepKind::Custom)
        f.add(QStringLiteral("%1 comes after the query was opened").arg(where));
    switch (s.kind) {
    case StepKind::CheckFilled:
        if (s.editors.isEmpty())
            f.add(QStringLiteral("%1 names no editor").arg(where));
        for (const QString &e : s.editors)
            if (!d.editorNamed(e))
                f.add(QStringLiteral("%1 names the editor \"%2\", which the form does not have").arg(where, e));
        break;
    case StepKind::CheckSameMonth:
    case StepKind::PostPeriodRow:
        if (s.editors.size() != 2)
            f.add(QStringLiteral("%1 needs two date editors").arg(where));
        for (const QString &e : s.editors)
            f.dateEditor(e, where);
        if (s.kind == StepKind::PostPeriodRow && s.source == PeriodSource::Own && d.ownDataListSql.isEmpty())
            f.add(QStringLiteral("%1 writes the form's own period row, which the form does not have").arg(where));
        break;
    case StepKind::SetParams:
        if (d.params.isEmpty())
            f.add(QStringLiteral("%1 has no parameters to set").arg(where));
        st.paramsSet = true;
        break;
    case StepKind::OpenQuery:
    case StepKind::OpenOrRefresh:
        if (!sqlParams.isEmpty() && !st.paramsSet)
            f.add(QStringLiteral("%1 opens the query before its parameters are set").arg(where));
        st.opened = true;
        break;
    case StepKind::Custom:
        if (!d.customSteps.contains(s.name))
            f.add(QStringLiteral("%1 names \"%2\", a step the form does not declare").arg(where, s.name));
        break;
    case StepKind::BusyCursor:
    case StepKind::CloseQuery:
        break;
    }
    st.stateChanged = st.stateChanged || changesState(s.kind);
}

void checkSteps(Faults &f, const QStringList &sqlParams)
{
    const ReportDesc &d = f.d;
    StepState st;
    for (int i = 0; i < d.steps.size(); ++i) {
        const RunStep &s = d.steps.at(i);
        checkStep(f, s, QStringLiteral("step %1 (%2)").arg(i + 1).arg(stepName(s.kind)), sqlParams, st);
    }
    if (!st.opened)
        f.add(QStringLiteral("no step opens the query"));
    if (!d.params.isEmpty() && !st.paramsSet)
        f.add(QStringLiteral("the parameters are never set"));
}

// The editors' own behaviour.
void checkEditors(Faults &f)
{
    for (const EditorDesc &e : f.d.editors)
        if (e.kind != EditorKind::Date && (e.snap != DateSnap::None || e.onShow != DateOnShow::Keep))
            f.add(QStringLiteral("the editor \"%1\" is not a date editor and cannot snap or take dates").arg(e.objectName));
}

void checkGrid(Faults &f)
{
    const ReportDesc &d = f.d;
    QSet<QString> fields;
    for (const ColumnDesc &c : d.columns) {
        if (c.field.isEmpty())
            f.add(QStringLiteral("a column has no field"));
        else if (fields.contains(c.field.toLower()))
            f.add(QStringLiteral("the column \"%1\" is declared twice").arg(c.field));
        fields.insert(c.field.toLower());
        if (c.width < 0)
            f.add(QStringLiteral("the column \"%1\" has a negative width").arg(c.field));
    }
    if (d.columns.isEmpty())
        f.add(QStringLiteral("the grid has no column"));
    if (!d.grid.footer && !d.footerSummaries.isEmpty())
        f.add(QStringLiteral("footer sums are declared but the footer is hidden"));
    if (!d.grid.groupFooters && !d.groupSummaries.isEmpty())
        f.add(QStringLiteral("group sums are declared but the group footers are hidden"));
}

void checkExports(Faults &f)
{
    const ReportDesc &d = f.d;
    for (const ExportDesc &e : d.exports) {
        const QString what = QStringLiteral("the export \"%1\"").arg(e.caption);
        f.claim(e.objectName, what);
        if (!e.fileName.startsWith(QLatin1Char('\\')))
            f.add(QStringLiteral("%1 proposes \"%2\", which does not start with a backslash").arg(what, e.fileName));
        const QString ext = e.kind == ExportKind::GridXlsx ? QStringLiteral(".xlsx") : QStringLiteral(".csv");
        if (!e.fileName.endsWith(ext, Qt::CaseInsensitive))
            f.add(QStringLiteral("%1 proposes \"%2\", which does not end in %3").arg(what, e.fileName, ext));
        const bool writesStatus = e.kind == ExportKind::GridCsv || e.kind == ExportKind::AllDataCsv
                                  || e.kind == ExportKind::GridCsvStatus;
        if (writesStatus && !d.statusBar)
            f.add(QStringLiteral("%1 writes the status bar, which the form does not have").arg(what));
    }
}

} // namespace

QString parametersText(const ReportDesc &d, const std::function<QString(const EditorDesc &)> &shown)
{
    QStringList parts;
    for (const EditorDesc &e : d.editors) {
        const QString value = shown(e);
        if (value.isEmpty())
            continue;
        const QString label = e.label.trimmed();
        parts << (label.isEmpty() ? value : label + QLatin1Char(' ') + value);
    }
    return parts.join(QStringLiteral("  "));
}

QString pdfFileName(const ReportDesc &d)
{
    QString name = d.exports.isEmpty() ? QStringLiteral("\\") + d.formName : d.exports.constFirst().fileName;
    const qsizetype slash = std::max(name.lastIndexOf(QLatin1Char('\\')), name.lastIndexOf(QLatin1Char('/')));
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > slash)
        name.truncate(dot);
    return name + QStringLiteral(".pdf");
}

QStringList validate(const ReportDesc &d)
{
    Faults f{d, {}, {}};
    checkHeader(f);
    checkObjectNames(f);
    QStringList sqlParams;
    db::Query::translateParams(d.sql, &sqlParams);
    checkParams(f, sqlParams);
    checkSteps(f, sqlParams);
    checkEditors(f);
    checkGrid(f);
    checkExports(f);
    return f.list;
}

QStringList validateFields(const ReportDesc &d, const QStringList &resultFields)
{
    Faults f{d, {}, {}};
    QSet<QString> result;
    for (const QString &r : resultFields)
        result.insert(r.toLower());
    for (const ColumnDesc &c : d.columns)
        if (!result.contains(c.field.toLower()))
            f.add(QStringLiteral("the column \"%1\" is not a field of the query").arg(c.field));
    QList<grid::GridSummary> all = d.footerSummaries;
    all += d.groupSummaries;
    for (const grid::GridSummary &s : std::as_const(all)) {
        const bool present = result.contains(s.fieldName.toLower());
        const bool declaredAbsent = d.absentSumFields.contains(s.fieldName, Qt::CaseInsensitive);
        if (!present && !declaredAbsent)
            f.add(QStringLiteral("the sum of \"%1\" reads no field of the query").arg(s.fieldName));
        if (present && declaredAbsent)
            f.add(QStringLiteral("\"%1\" is declared absent but the query returns it").arg(s.fieldName));
        if (!s.columnField.isEmpty() && !result.contains(s.columnField.toLower()))
            f.add(QStringLiteral("the sum of \"%1\" stands under \"%2\", no field of the query")
                      .arg(s.fieldName, s.columnField));
    }
    for (const QString &a : d.absentSumFields) {
        bool summed = false;
        for (const grid::GridSummary &s : std::as_const(all))
            summed = summed || s.fieldName.compare(a, Qt::CaseInsensitive) == 0;
        if (!summed)
            f.add(QStringLiteral("\"%1\" is declared absent but nothing sums it").arg(a));
    }
    return f.list;
}

} // namespace rep
