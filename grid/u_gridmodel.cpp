// GridModel: the data source, the view options, the columns, the sort keys,
// the grouping, the filter row and the programmatic filter. The passes that
// turn these into rows live beside it (u_gridmodel_p.h names them).

#include "grid/u_gridmodel_p.h"

namespace grid {

ColumnKind kindOf(db::FieldType t)
{
    switch (t) {
    case db::FieldType::String:
    case db::FieldType::Text: return ColumnKind::Text;
    case db::FieldType::Date: return ColumnKind::Date;
    case db::FieldType::DateTime: return ColumnKind::DateTime;
    case db::FieldType::Float:
    case db::FieldType::Int32:
    case db::FieldType::Int64: return ColumnKind::Number;
    case db::FieldType::Bool: return ColumnKind::Bool;
    case db::FieldType::Bytes: return ColumnKind::Bytes;
    }
    return ColumnKind::Text;
}

void GridModel::Impl::resolve(ColState &cs) const
{
    cs.field = fieldOf(cs.c.fieldName);
    cs.type = cs.field >= 0 ? ds->fieldDef(cs.field).type : db::FieldType::Text;
    cs.kind = cs.field >= 0 ? kindOf(cs.type) : ColumnKind::Missing;
    cs.numFmt = (cs.kind == ColumnKind::Number || cs.kind == ColumnKind::Missing) ? NumberFormat(cs.c.displayFormat)
                                                                                : NumberFormat();
}

void GridModel::Impl::resolveAll()
{
    for (ColState &cs : cols) {
        resolve(cs);
        compileFilter(cs);
    }
}

const ColState *GridModel::Impl::colForField(const QString &field) const
{
    for (const ColState &cs : cols)
        if (cs.c.fieldName.compare(field, Qt::CaseInsensitive) == 0)
            return &cs;
    return nullptr;
}

// ================================================================ GridModel

GridModel::GridModel(QObject *parent) : QObject(parent), d(std::make_unique<Impl>())
{
    d->q = this;
    d->decimalPoint8 = d->locale.decimalPoint().toUtf8();
}

GridModel::Hold::Hold(const GridModel &model) : m_model(const_cast<GridModel &>(model))
{
    GridModelAccess::beginBatch(m_model);
}

GridModel::Hold::~Hold()
{
    try {
        GridModelAccess::endBatch(m_model);
    } catch (...) {
        // a refused change of the focus; the rows are rebuilt all the same
    }
}

GridModel::~GridModel()
{
    for (const auto &c : std::as_const(d->conns))
        disconnect(c);
}

void GridModel::setDataSet(db::DataSet *ds)
{
    for (const auto &c : std::as_const(d->conns))
        disconnect(c);
    d->conns.clear();
    d->ds = ds;
    if (ds) {
        Impl *p = d.get();
        d->conns << connect(ds, &db::DataSet::rowsReset, this, [p] { p->onDataReset(); });
        d->conns << connect(ds, &db::DataSet::opened, this, [p] { p->onDataReset(); });
        d->conns << connect(ds, &db::DataSet::rowChanged, this, [p](qsizetype) { p->onDataReset(); });
        d->conns << connect(ds, &db::DataSet::rowInserted, this, [p](qsizetype) { p->onDataReset(); });
        d->conns << connect(ds, &db::DataSet::rowRemoved, this, [p](qsizetype) { p->onDataReset(); });
        d->conns << connect(ds, &db::DataSet::currentRowChanged, this, [p](qsizetype r) { p->onCurrentRowChanged(r); });
        d->conns << connect(ds, &QObject::destroyed, this, [this] { setDataSet(nullptr); });
    }
    d->run(Impl::FData);
}

db::DataSet *GridModel::dataSet() const { return d->ds; }
void GridModel::setSyncCurrentRow(bool on) { d->sync = on; }
QLocale GridModel::locale() const { return d->locale; }

void GridModel::setLocale(const QLocale &l)
{
    d->locale = l;
    d->decimalPoint8 = l.decimalPoint().toUtf8();
    d->run(Impl::FData);
    emit columnsChanged();
}

#define QUARV_OPTION(getter, setter, member)                                                                           \
    bool GridModel::getter() const { return d->member; }                                                              \
    void GridModel::setter(bool v)                                                                                     \
    {                                                                                                                  \
        if (d->member == v)                                                                                            \
            return;                                                                                                    \
        d->member = v;                                                                                                 \
        emit optionsChanged();                                                                                         \
    }
QUARV_OPTION(groupByBoxVisible, setGroupByBoxVisible, groupByBox)
QUARV_OPTION(footerVisible, setFooterVisible, footer)
QUARV_OPTION(filterRowVisible, setFilterRowVisible, filterRow)
QUARV_OPTION(indicatorVisible, setIndicatorVisible, indicator)
#undef QUARV_OPTION

bool GridModel::groupFootersVisible() const { return d->groupFooters; }
void GridModel::setGroupFootersVisible(bool v)
{
    if (d->groupFooters == v)
        return;
    d->groupFooters = v;
    emit optionsChanged();
    d->run(Impl::FDisplay);
}

// ----- columns

int GridModel::columnCount() const { return int(d->cols.size()); }
const GridColumn &GridModel::column(int col) const { return d->cols.at(size_t(col)).c; }

int GridModel::columnIndex(const QString &fieldName) const
{
    for (size_t i = 0; i < d->cols.size(); ++i)
        if (d->cols[i].c.fieldName.compare(fieldName, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

ColumnKind GridModel::columnKind(int col) const { return d->cols.at(size_t(col)).kind; }
int GridModel::columnField(int col) const { return d->cols.at(size_t(col)).field; }

int GridModel::addColumn(const QString &fieldName, const QString &caption, int width, int position)
{
    if (fieldName.isEmpty() || columnIndex(fieldName) >= 0)
        return -1;
    ColState cs;
    cs.c.fieldName = fieldName;
    cs.c.caption = caption;
    cs.c.width = width > 0 ? width : 64;
    d->resolve(cs);
    if (position < 0 || position > int(d->cols.size()))
        position = int(d->cols.size());
    d->cols.insert(d->cols.begin() + position, cs);
    d->renumberGroups();
    emit columnsChanged();
    return position;
}

void GridModel::removeColumn(int col)
{
    if (col < 0 || col >= columnCount())
        return;
    const ColState &cs = d->cols[size_t(col)];
    unsigned flags = 0;
    if (cs.c.groupIndex >= 0 || cs.c.sortOrder != SortOrder::None)
        flags |= Impl::FOrder;
    if (cs.filter.op != FilterOp::None)
        flags |= Impl::FFilter;
    if (cs.c.groupIndex >= 0)
        d->expandedPaths.clear();
    d->cols.erase(d->cols.begin() + col);
    d->renumberGroups();
    d->renumberSort();
    emit columnsChanged();
    d->run(flags ? flags : unsigned(Impl::FSums));
}

void GridModel::clearColumns()
{
    d->cols.clear();
    d->groupCols.clear();
    d->expandedPaths.clear();
    emit columnsChanged();
    d->run(Impl::FOrder | Impl::FFilter);
}

void GridModel::createDefaultColumns()
{
    GridModelAccess::beginBatch(*this);
    clearColumns();
    if (d->ds)
        for (const db::FieldDef &f : d->ds->fieldDefs())
            addColumn(f.name);
    GridModelAccess::endBatch(*this);
}

QStringList GridModel::fieldsWithoutColumn() const
{
    QStringList out;
    if (d->ds)
        for (const db::FieldDef &f : d->ds->fieldDefs())
            if (columnIndex(f.name) < 0)
                out << f.name;
    return out;
}

void GridModel::moveColumn(int from, int to)
{
    const int count = columnCount();
    if (from < 0 || from >= count || from == to)
        return;
    to = std::clamp(to, 0, count - 1);
    ColState cs = std::move(d->cols[size_t(from)]);
    d->cols.erase(d->cols.begin() + from);
    d->cols.insert(d->cols.begin() + to, std::move(cs));
    d->renumberGroups();
    emit columnsChanged();
}

void GridModel::setColumnCaption(int col, const QString &caption)
{
    d->cols.at(size_t(col)).c.caption = caption;
    emit columnsChanged();
}

void GridModel::setColumnWidth(int col, int width)
{
    d->cols.at(size_t(col)).c.width = std::max(1, width);
    emit columnsChanged();
}

void GridModel::setColumnVisible(int col, bool visible)
{
    d->cols.at(size_t(col)).c.visible = visible;
    emit columnsChanged();
}

void GridModel::setColumnDisplayFormat(int col, const QString &format)
{
    ColState &cs = d->cols.at(size_t(col));
    cs.c.displayFormat = format;
    d->resolve(cs);
    emit columnsChanged();
    emit summariesChanged();
}

QList<int> GridModel::visibleColumns() const
{
    QList<int> out;
    for (size_t i = 0; i < d->cols.size(); ++i)
        if (d->cols[i].c.visible)
            out << int(i);
    return out;
}

// ----- sorting

void GridModel::clickSort(int col, bool add)
{
    if (col < 0 || col >= columnCount())
        return;
    ColState &cs = d->cols[size_t(col)];
    const SortOrder next = cs.c.sortOrder == SortOrder::Ascending ? SortOrder::Descending : SortOrder::Ascending;
    if (cs.c.groupIndex >= 0 || add) {
        setSortOrder(col, next, true);
        return;
    }
    setSortOrder(col, next, false);
}

void GridModel::setSortOrder(int col, SortOrder order, bool add)
{
    if (col < 0 || col >= columnCount())
        return;
    ColState &cs = d->cols[size_t(col)];
    if (!add && cs.c.groupIndex < 0) {
        for (ColState &o : d->cols)
            if (&o != &cs && o.c.groupIndex < 0) {
                o.c.sortOrder = SortOrder::None;
                o.c.sortIndex = -1;
            }
        cs.c.sortIndex = 0;
    } else if (cs.c.sortOrder == SortOrder::None) {
        cs.c.sortIndex = std::numeric_limits<int>::max() - 1; // appended
    }
    cs.c.sortOrder = order;
    if (order == SortOrder::None)
        cs.c.sortIndex = -1;
    d->renumberSort();
    emit columnsChanged();
    d->run(Impl::FOrder);
}

void GridModel::clearSorting()
{
    for (ColState &cs : d->cols)
        if (cs.c.groupIndex < 0) {
            cs.c.sortOrder = SortOrder::None;
            cs.c.sortIndex = -1;
        }
    emit columnsChanged();
    d->run(Impl::FOrder);
}

QList<int> GridModel::sortColumns() const
{
    QList<int> out;
    for (size_t i = 0; i < d->cols.size(); ++i)
        if (d->cols[i].c.sortIndex >= 0 && d->cols[i].c.groupIndex < 0 && d->cols[i].c.sortOrder != SortOrder::None)
            out << int(i);
    std::sort(out.begin(), out.end(),
              [&](int a, int b) { return d->cols[size_t(a)].c.sortIndex < d->cols[size_t(b)].c.sortIndex; });
    return out;
}

// ----- grouping

void GridModel::groupByColumn(int col, int level)
{
    if (col < 0 || col >= columnCount())
        return;
    ColState &target = d->cols[size_t(col)];
    std::vector<int> g = d->groupCols;
    g.erase(std::remove(g.begin(), g.end(), col), g.end());
    if (level < 0 || level > int(g.size()))
        level = int(g.size());
    g.insert(g.begin() + level, col);
    for (size_t l = 0; l < g.size(); ++l)
        d->cols[size_t(g[l])].c.groupIndex = int(l);
    if (target.c.sortOrder == SortOrder::None)
        target.c.sortOrder = SortOrder::Ascending;
    d->groupCols = g;
    d->renumberSort();
    d->expandedPaths.clear();
    d->allExpanded = false;
    emit columnsChanged();
    d->run(Impl::FOrder);
}

void GridModel::ungroupColumn(int col)
{
    if (col < 0 || col >= columnCount() || d->cols[size_t(col)].c.groupIndex < 0)
        return;
    ColState &cs = d->cols[size_t(col)];
    cs.c.groupIndex = -1;
    cs.c.sortIndex = std::numeric_limits<int>::max() - 1; // keeps its order as the last sort key
    d->renumberGroups();
    d->renumberSort();
    d->expandedPaths.clear();
    d->allExpanded = false;
    emit columnsChanged();
    d->run(Impl::FOrder);
}

void GridModel::clearGrouping()
{
    GridModelAccess::beginBatch(*this);
    while (!d->groupCols.empty())
        ungroupColumn(d->groupCols.back());
    GridModelAccess::endBatch(*this);
}

QList<int> GridModel::groupColumns() const
{
    return QList<int>(d->groupCols.begin(), d->groupCols.end());
}

// ----- filter row

void GridModel::setFilterText(int col, const QString &text)
{
    if (col < 0 || col >= columnCount())
        return;
    ColState &cs = d->cols[size_t(col)];
    if (cs.c.filterText == text)
        return;
    cs.c.filterText = text;
    d->compileFilter(cs);
    emit columnsChanged();
    d->run(Impl::FFilter);
}

void GridModel::setBoolFilter(int col, BoolFilter f)
{
    setFilterText(col, f == BoolFilter::True ? QStringLiteral("True") : f == BoolFilter::False ? QStringLiteral("False") : QString());
}

BoolFilter GridModel::boolFilter(int col) const
{
    const int b = boolWord(d->cols.at(size_t(col)).c.filterText);
    return b == 1 ? BoolFilter::True : b == 0 ? BoolFilter::False : BoolFilter::Any;
}

bool GridModel::filterError(int col) const { return d->cols.at(size_t(col)).filter.op == FilterOp::Invalid; }
void GridModel::clearFilter(int col) { setFilterText(col, QString()); }

void GridModel::clearAllFilters()
{
    bool any = false;
    for (ColState &cs : d->cols) {
        if (!cs.c.filterText.isEmpty())
            any = true;
        cs.c.filterText.clear();
        cs.filter = CompiledFilter{};
    }
    if (!any)
        return;
    emit columnsChanged();
    d->run(Impl::FFilter);
}

bool GridModel::hasFilterRowConditions() const
{
    for (const ColState &cs : d->cols)
        if (cs.filter.op != FilterOp::None)
            return true;
    return false;
}

// ----- programmatic filter

void GridModel::clearProgramFilter()
{
    const bool was = d->progActive && !d->conds.isEmpty();
    d->conds.clear();
    d->progActive = false;
    if (was)
        d->run(Impl::FFilter);
}

void GridModel::addFilterCondition(const QString &fieldName, const QVariant &value)
{
    d->conds.append(FilterCondition{fieldName, value});
    if (d->progActive)
        d->run(Impl::FFilter);
}

void GridModel::setProgramFilterActive(bool on)
{
    if (d->progActive == on)
        return;
    d->progActive = on;
    d->run(Impl::FFilter);
}

bool GridModel::programFilterActive() const { return d->progActive; }
const QList<FilterCondition> &GridModel::filterConditions() const { return d->conds; }

} // namespace grid
