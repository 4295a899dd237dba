#include "grid/u_gridlayout.h"

#include "db/u_error.h"
#include "grid/u_gridlayout_p.h"
#include "grid/u_gridmodel_p.h"

#include <QFile>
#include <QMap>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <map>

namespace grid {

using layout::ColumnData;
using layout::kLayoutVersion;

namespace {

QString escapeValue(const QString &v)
{
    QString out;
    out.reserve(v.size());
    for (QChar c : v) {
        if (c == QLatin1Char('\\'))
            out += QLatin1String("\\\\");
        else if (c == QLatin1Char('\n'))
            out += QLatin1String("\\n");
        else if (c == QLatin1Char('\r'))
            out += QLatin1String("\\r");
        else
            out += c;
    }
    return out;
}

QString escapeSection(const QString &v)
{
    QString e = escapeValue(v);
    e.replace(QLatin1Char(']'), QLatin1String("\\]"));
    return e;
}

const char *sortName(SortOrder o)
{
    switch (o) {
    case SortOrder::Ascending: return "Ascending";
    case SortOrder::Descending: return "Descending";
    default: return "None";
    }
}

const char *kindName(SummaryKind k)
{
    switch (k) {
    case SummaryKind::Count: return "Count";
    case SummaryKind::Min: return "Min";
    case SummaryKind::Max: return "Max";
    case SummaryKind::Average: return "Average";
    default: return "Sum";
    }
}

void writeValueOf(QString &out, const QVariant &v)
{
    QString type, text;
    switch (v.typeId()) {
    case QMetaType::Bool: type = QStringLiteral("Bool"); text = v.toBool() ? QStringLiteral("True") : QStringLiteral("False"); break;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong: type = QStringLiteral("Int"); text = v.toString(); break;
    case QMetaType::Double:
    case QMetaType::Float: type = QStringLiteral("Double"); text = QString::number(v.toDouble(), 'g', 17); break;
    case QMetaType::QDate: type = QStringLiteral("Date"); text = v.toDate().toString(Qt::ISODate); break;
    case QMetaType::QDateTime: type = QStringLiteral("DateTime"); text = v.toDateTime().toString(Qt::ISODateWithMs); break;
    default:
        if (!v.isValid() || v.isNull()) {
            type = QStringLiteral("Null");
        } else {
            type = QStringLiteral("String");
            text = v.toString();
        }
    }
    out += QLatin1String("Type=") + type + QLatin1Char('\n');
    out += QLatin1String("Value=") + escapeValue(text) + QLatin1Char('\n');
}

} // namespace

QByteArray saveGridLayout(const GridModel &m)
{
    QString out;
    auto flag = [&](const char *key, bool v) { out += QLatin1String(key) + QLatin1Char('=') + QLatin1Char(v ? '1' : '0') + QLatin1Char('\n'); };
    out += QLatin1String("[View]\n");
    out += QStringLiteral("Version=%1\n").arg(kLayoutVersion);
    flag("GroupByBox", m.groupByBoxVisible());
    flag("Footer", m.footerVisible());
    flag("FilterRow", m.filterRowVisible());
    flag("GroupFooters", m.groupFootersVisible());
    flag("Indicator", m.indicatorVisible());
    flag("ProgramFilter", m.programFilterActive());
    for (int i = 0; i < m.columnCount(); ++i) {
        const GridColumn &c = m.column(i);
        out += QLatin1String("\n[Column:") + escapeSection(c.fieldName) + QLatin1String("]\n");
        out += QStringLiteral("Index=%1\nWidth=%2\n").arg(i).arg(c.width);
        flag("Visible", c.visible);
        out += QLatin1String("Caption=") + escapeValue(c.caption) + QLatin1Char('\n');
        out += QLatin1String("Sort=") + QLatin1String(sortName(c.sortOrder)) + QLatin1Char('\n');
        out += QStringLiteral("SortIndex=%1\nGroupIndex=%2\n").arg(c.sortIndex).arg(c.groupIndex);
        out += QLatin1String("Format=") + escapeValue(c.displayFormat) + QLatin1Char('\n');
        out += QLatin1String("Filter=") + escapeValue(c.filterText) + QLatin1Char('\n');
    }
    auto sums = [&](const char *name, const QList<GridSummary> &list) {
        for (int i = 0; i < list.size(); ++i) {
            const GridSummary &s = list[i];
            out += QStringLiteral("\n[%1:%2]\n").arg(QLatin1String(name)).arg(i);
            out += QLatin1String("Field=") + escapeValue(s.fieldName) + QLatin1Char('\n');
            out += QLatin1String("Kind=") + QLatin1String(kindName(s.kind)) + QLatin1Char('\n');
            out += QLatin1String("Format=") + escapeValue(s.format) + QLatin1Char('\n');
            out += QLatin1String("Column=") + escapeValue(s.columnField) + QLatin1Char('\n');
        }
    };
    sums("FooterSummary", m.footerSummaries());
    sums("GroupSummary", m.groupSummaries());
    const QList<FilterCondition> &conds = m.filterConditions();
    for (int i = 0; i < conds.size(); ++i) {
        out += QStringLiteral("\n[FilterCondition:%1]\n").arg(i);
        out += QLatin1String("Field=") + escapeValue(conds[i].fieldName) + QLatin1Char('\n');
        writeValueOf(out, conds[i].value);
    }
    return out.toUtf8();
}

namespace {

// The view's columns become the stream's, in its order: the ones it does not
// name dropped, the ones it lacks created.
void applyColumns(GridModel &m, const std::vector<ColumnData> &columns)
{
    QSet<QString> named;
    for (const ColumnData &c : columns)
        named.insert(c.field.toCaseFolded());
    for (int i = m.columnCount() - 1; i >= 0; --i)
        if (!named.contains(m.column(i).fieldName.toCaseFolded()))
            m.removeColumn(i);
    for (size_t pos = 0; pos < columns.size(); ++pos) {
        const ColumnData &c = columns[pos];
        int at = m.columnIndex(c.field);
        if (at < 0)
            at = m.addColumn(c.field, c.caption, c.width);
        m.moveColumn(at, int(pos));
        at = int(pos);
        m.setColumnCaption(at, c.caption);
        m.setColumnWidth(at, c.width);
        m.setColumnVisible(at, c.visible);
        m.setColumnDisplayFormat(at, c.format);
        m.setFilterText(at, c.filter);
    }
}

// Sorting by key order, grouping by level.
void applyOrdering(GridModel &m, const std::vector<ColumnData> &columns)
{
    std::vector<const ColumnData *> sorted, grouped;
    for (const ColumnData &c : columns) {
        if (c.groupIndex >= 0)
            grouped.push_back(&c);
        else if (c.sort != SortOrder::None)
            sorted.push_back(&c);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](auto a, auto b) { return a->sortIndex < b->sortIndex; });
    std::stable_sort(grouped.begin(), grouped.end(), [](auto a, auto b) { return a->groupIndex < b->groupIndex; });
    for (const ColumnData *c : sorted)
        m.setSortOrder(m.columnIndex(c->field), c->sort, true);
    for (const ColumnData *c : grouped) {
        const int at = m.columnIndex(c->field);
        m.groupByColumn(at);
        if (c->sort != SortOrder::None)
            m.setSortOrder(at, c->sort, true);
    }
}

} // namespace

void restoreGridLayout(GridModel &m, const QByteArray &stream)
{
    if (stream.trimmed().isEmpty())
        return; // an empty layout keeps the view as it is
    const layout::LayoutData L = layout::parse(stream);

    GridModelAccess::beginBatch(m);
    struct EndBatch {
        GridModel &m;
        ~EndBatch() { GridModelAccess::endBatch(m); }
    } endBatch{m};

    m.clearGrouping();
    m.clearSorting();
    m.clearAllFilters();
    applyColumns(m, L.columns);
    applyOrdering(m, L.columns);
    QList<GridSummary> footer, group;
    for (const auto &[idx, s] : L.footer)
        footer << s;
    for (const auto &[idx, s] : L.group)
        group << s;
    m.setFooterSummaries(footer);
    m.setGroupSummaries(group);
    m.clearProgramFilter();
    for (const auto &[idx, c] : L.conditions)
        m.addFilterCondition(c.fieldName, c.value);
    m.setProgramFilterActive(L.programFilter);
    const auto opt = [&](const char *key, bool current) { return L.options.value(QLatin1String(key), current); };
    m.setGroupByBoxVisible(opt("GroupByBox", m.groupByBoxVisible()));
    m.setFooterVisible(opt("Footer", m.footerVisible()));
    m.setFilterRowVisible(opt("FilterRow", m.filterRowVisible()));
    m.setGroupFootersVisible(opt("GroupFooters", m.groupFootersVisible()));
    m.setIndicatorVisible(opt("Indicator", m.indicatorVisible()));
}

void saveGridLayoutToFile(const GridModel &model, const QString &path)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, f.errorString()));
    const QByteArray bytes = saveGridLayout(model);
    if (f.write(bytes) != bytes.size() || !f.commit())
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, f.errorString()));
}

void restoreGridLayoutFromFile(GridModel &model, const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi citit: %2").arg(path, f.errorString()));
    restoreGridLayout(model, f.readAll());
}

} // namespace grid
