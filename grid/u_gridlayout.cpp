#include "grid/u_gridlayout.h"

#include "db/u_error.h"
#include "grid/u_gridmodel_p.h"

#include <QFile>
#include <QMap>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <map>

namespace grid {

namespace {

constexpr int kLayoutVersion = 1;

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

bool unescapeValue(const QString &v, QString &out)
{
    out.clear();
    for (int i = 0; i < v.size(); ++i) {
        const QChar c = v[i];
        if (c != QLatin1Char('\\')) {
            out += c;
            continue;
        }
        if (++i >= v.size())
            return false;
        const QChar e = v[i];
        if (e == QLatin1Char('\\'))
            out += QLatin1Char('\\');
        else if (e == QLatin1Char('n'))
            out += QLatin1Char('\n');
        else if (e == QLatin1Char('r'))
            out += QLatin1Char('\r');
        else if (e == QLatin1Char(']'))
            out += QLatin1Char(']');
        else
            return false;
    }
    return true;
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

// What a stream says, read completely before anything is applied.
struct ColumnData {
    QString field;
    int index = -1;
    int width = 64;
    bool visible = true;
    QString caption;
    SortOrder sort = SortOrder::None;
    int sortIndex = -1;
    int groupIndex = -1;
    QString format;
    QString filter;
    int line = 0;
};

struct LayoutData {
    QMap<QString, bool> options;
    bool programFilter = false;
    std::vector<ColumnData> columns;
    std::map<int, GridSummary> footer, group;
    std::map<int, FilterCondition> conditions;
};

// The [View] switches besides Version and ProgramFilter.
const char *const kViewOptions[] = {"GroupByBox", "Footer", "FilterRow", "GroupFooters", "Indicator"};

[[noreturn]] void malformed(int line, const QString &why)
{
    throw QuarvError(QStringLiteral("Modul de prezentare al gridului nu poate fi citit (linia %1): %2").arg(line).arg(why));
}

bool parseBool(const QString &v, bool &out)
{
    if (v == QLatin1String("1") || v.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        out = true;
        return true;
    }
    if (v == QLatin1String("0") || v.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        out = false;
        return true;
    }
    return false;
}

int parseInt(const QString &v, int line, const QString &key)
{
    bool ok = false;
    const int i = v.toInt(&ok);
    if (!ok)
        malformed(line, QStringLiteral("valoare nenumerica pentru %1").arg(key));
    return i;
}

LayoutData parseLayout(const QByteArray &stream)
{
    LayoutData L;
    const QString text = QString::fromUtf8(stream);
    if (text.contains(QChar::ReplacementCharacter))
        malformed(1, QStringLiteral("textul nu este UTF-8"));
    const QStringList lines = text.split(QLatin1Char('\n'));
    enum class Sec { None, View, Column, Footer, Group, Condition } sec = Sec::None;
    ColumnData *col = nullptr;
    GridSummary *sum = nullptr;
    FilterCondition *cond = nullptr;
    bool sawView = false, sawVersion = false;
    int viewLine = 0, firstLine = 0;
    std::map<int, QString> condTypes, condValues;
    // where each section and value came from, for the checks after the loop
    std::map<int, int> footerLines, groupLines, condLines, condTypeLines, condValueLines;
    QSet<QString> columnNames; // case-folded
    int condIndex = -1;
    for (int i = 0; i < lines.size(); ++i) {
        const int ln = i + 1;
        QString line = lines[i];
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (i == 0 && line.startsWith(QChar(0xfeff)))
            line.remove(0, 1);
        const QString t = line.trimmed();
        if (t.isEmpty() || t.startsWith(QLatin1Char(';')) || t.startsWith(QLatin1Char('#')))
            continue;
        if (!firstLine)
            firstLine = ln;
        if (t.startsWith(QLatin1Char('['))) {
            if (!t.endsWith(QLatin1Char(']')) || t.endsWith(QLatin1String("\\]")))
                malformed(ln, QStringLiteral("sectiune neinchisa"));
            QString name;
            if (!unescapeValue(t.mid(1, t.size() - 2), name))
                malformed(ln, QStringLiteral("nume de sectiune invalid"));
            col = nullptr;
            sum = nullptr;
            cond = nullptr;
            if (name == QLatin1String("View")) {
                if (sawView)
                    malformed(ln, QStringLiteral("sectiunea [View] apare de doua ori"));
                sawView = true;
                viewLine = ln;
                sec = Sec::View;
            } else if (name.startsWith(QLatin1String("Column:"))) {
                const QString field = name.mid(7);
                if (field.isEmpty())
                    malformed(ln, QStringLiteral("coloana fara nume de camp"));
                const QString folded = field.toCaseFolded();
                if (columnNames.contains(folded))
                    malformed(ln, QStringLiteral("coloana %1 apare de doua ori").arg(field));
                columnNames.insert(folded);
                L.columns.push_back(ColumnData{});
                col = &L.columns.back();
                col->field = field;
                col->line = ln;
                sec = Sec::Column;
            } else if (name.startsWith(QLatin1String("FooterSummary:")) || name.startsWith(QLatin1String("GroupSummary:"))) {
                const bool isFooter = name.startsWith(QLatin1String("Footer"));
                const int idx = parseInt(name.mid(name.indexOf(QLatin1Char(':')) + 1), ln, name);
                auto &m = isFooter ? L.footer : L.group;
                if (m.count(idx))
                    malformed(ln, QStringLiteral("sectiunea %1 apare de doua ori").arg(name));
                sum = &m[idx];
                (isFooter ? footerLines : groupLines)[idx] = ln;
                sec = isFooter ? Sec::Footer : Sec::Group;
            } else if (name.startsWith(QLatin1String("FilterCondition:"))) {
                condIndex = parseInt(name.mid(16), ln, name);
                if (L.conditions.count(condIndex))
                    malformed(ln, QStringLiteral("sectiunea %1 apare de doua ori").arg(name));
                cond = &L.conditions[condIndex];
                condTypes[condIndex] = QStringLiteral("String");
                condLines[condIndex] = condTypeLines[condIndex] = condValueLines[condIndex] = ln;
                sec = Sec::Condition;
            } else {
                malformed(ln, QStringLiteral("sectiune necunoscuta [%1]").arg(name));
            }
            continue;
        }
        const int eq = line.indexOf(QLatin1Char('='));
        if (eq <= 0)
            malformed(ln, QStringLiteral("linia nu are forma cheie=valoare"));
        const QString key = line.left(eq).trimmed();
        QString value;
        if (!unescapeValue(line.mid(eq + 1), value))
            malformed(ln, QStringLiteral("secventa \\ invalida"));
        switch (sec) {
        case Sec::None: malformed(ln, QStringLiteral("valoare inaintea primei sectiuni"));
        case Sec::View:
            if (key == QLatin1String("Version")) {
                const int v = parseInt(value, ln, key);
                if (v < 1 || v > kLayoutVersion)
                    malformed(ln, QStringLiteral("versiune necunoscuta %1").arg(v));
                sawVersion = true;
            } else {
                // as in every other section, a key this version does not write is an error
                const bool known = key == QLatin1String("ProgramFilter")
                                || std::any_of(std::begin(kViewOptions), std::end(kViewOptions),
                                               [&](const char *k) { return key == QLatin1String(k); });
                if (!known)
                    malformed(ln, QStringLiteral("cheie necunoscuta %1").arg(key));
                bool b;
                if (!parseBool(value, b))
                    malformed(ln, QStringLiteral("valoare invalida pentru %1").arg(key));
                if (key == QLatin1String("ProgramFilter"))
                    L.programFilter = b;
                else
                    L.options.insert(key, b);
            }
            break;
        case Sec::Column:
            if (key == QLatin1String("Index")) {
                col->index = parseInt(value, ln, key);
            } else if (key == QLatin1String("Width")) {
                col->width = parseInt(value, ln, key);
                if (col->width <= 0)
                    malformed(ln, QStringLiteral("latime invalida"));
            } else if (key == QLatin1String("Visible")) {
                if (!parseBool(value, col->visible))
                    malformed(ln, QStringLiteral("valoare invalida pentru Visible"));
            } else if (key == QLatin1String("Caption")) {
                col->caption = value;
            } else if (key == QLatin1String("Sort")) {
                if (value == QLatin1String("Ascending"))
                    col->sort = SortOrder::Ascending;
                else if (value == QLatin1String("Descending"))
                    col->sort = SortOrder::Descending;
                else if (value == QLatin1String("None"))
                    col->sort = SortOrder::None;
                else
                    malformed(ln, QStringLiteral("ordine de sortare necunoscuta %1").arg(value));
            } else if (key == QLatin1String("SortIndex")) {
                col->sortIndex = parseInt(value, ln, key);
            } else if (key == QLatin1String("GroupIndex")) {
                col->groupIndex = parseInt(value, ln, key);
            } else if (key == QLatin1String("Format")) {
                col->format = value;
            } else if (key == QLatin1String("Filter")) {
                col->filter = value;
            } else {
                malformed(ln, QStringLiteral("cheie necunoscuta %1").arg(key));
            }
            break;
        case Sec::Footer:
        case Sec::Group:
            if (key == QLatin1String("Field")) {
                sum->fieldName = value;
            } else if (key == QLatin1String("Kind")) {
                static const std::pair<const char *, SummaryKind> kinds[] = {
                    {"Sum", SummaryKind::Sum}, {"Count", SummaryKind::Count}, {"Min", SummaryKind::Min},
                    {"Max", SummaryKind::Max}, {"Average", SummaryKind::Average}};
                bool found = false;
                for (const auto &[n, k] : kinds)
                    if (value == QLatin1String(n)) {
                        sum->kind = k;
                        found = true;
                    }
                if (!found)
                    malformed(ln, QStringLiteral("tip de sumar necunoscut %1").arg(value));
            } else if (key == QLatin1String("Format")) {
                sum->format = value;
            } else if (key == QLatin1String("Column")) {
                sum->columnField = value;
            } else {
                malformed(ln, QStringLiteral("cheie necunoscuta %1").arg(key));
            }
            break;
        case Sec::Condition:
            if (key == QLatin1String("Field")) {
                cond->fieldName = value;
            } else if (key == QLatin1String("Type")) {
                condTypes[condIndex] = value;
                condTypeLines[condIndex] = ln;
            } else if (key == QLatin1String("Value")) {
                condValues[condIndex] = value;
                condValueLines[condIndex] = ln;
            } else {
                malformed(ln, QStringLiteral("cheie necunoscuta %1").arg(key));
            }
            break;
        }
    }
    // a [View] without Version is named by its own line, a missing one where it was due
    if (!sawView || !sawVersion)
        malformed(sawView ? viewLine : std::max(firstLine, 1), QStringLiteral("lipseste sectiunea [View] cu versiunea"));
    for (const auto &[idx, s] : L.footer)
        if (s.fieldName.isEmpty())
            malformed(footerLines[idx], QStringLiteral("sumarul de subsol %1 nu are camp").arg(idx));
    for (const auto &[idx, s] : L.group)
        if (s.fieldName.isEmpty())
            malformed(groupLines[idx], QStringLiteral("sumarul de grup %1 nu are camp").arg(idx));
    for (auto &[idx, c] : L.conditions) {
        if (c.fieldName.isEmpty())
            malformed(condLines[idx], QStringLiteral("conditia de filtru %1 nu are camp").arg(idx));
        const QString type = condTypes[idx];
        const QString v = condValues[idx];
        bool ok = true;
        if (type == QLatin1String("Null")) {
            c.value = QVariant();
        } else if (type == QLatin1String("String")) {
            c.value = v;
        } else if (type == QLatin1String("Bool")) {
            bool b = false;
            ok = parseBool(v, b);
            c.value = b;
        } else if (type == QLatin1String("Int")) {
            c.value = v.toLongLong(&ok);
        } else if (type == QLatin1String("Double")) {
            c.value = v.toDouble(&ok);
        } else if (type == QLatin1String("Date")) {
            const QDate d = QDate::fromString(v, Qt::ISODate);
            ok = d.isValid();
            c.value = d;
        } else if (type == QLatin1String("DateTime")) {
            const QDateTime d = QDateTime::fromString(v, Qt::ISODateWithMs);
            ok = d.isValid();
            c.value = d;
        } else {
            malformed(condTypeLines[idx], QStringLiteral("tipul %1 al conditiei de filtru %2 este necunoscut").arg(type).arg(idx));
        }
        if (!ok)
            malformed(condValueLines[idx], QStringLiteral("valoarea conditiei de filtru %1 nu poate fi citita").arg(idx));
    }
    // display order: by Index, then as listed
    std::stable_sort(L.columns.begin(), L.columns.end(), [](const ColumnData &a, const ColumnData &b) {
        const int x = a.index < 0 ? std::numeric_limits<int>::max() : a.index;
        const int y = b.index < 0 ? std::numeric_limits<int>::max() : b.index;
        return x < y;
    });
    return L;
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

void restoreGridLayout(GridModel &m, const QByteArray &stream)
{
    if (stream.trimmed().isEmpty())
        return; // an empty layout keeps the view as it is
    const LayoutData L = parseLayout(stream);

    GridModelAccess::beginBatch(m);
    struct EndBatch {
        GridModel &m;
        ~EndBatch() { GridModelAccess::endBatch(m); }
    } endBatch{m};

    m.clearGrouping();
    m.clearSorting();
    m.clearAllFilters();
    // drop the view's columns the stream does not name, create the ones it lacks
    QSet<QString> named;
    for (const ColumnData &c : L.columns)
        named.insert(c.field.toCaseFolded());
    for (int i = m.columnCount() - 1; i >= 0; --i)
        if (!named.contains(m.column(i).fieldName.toCaseFolded()))
            m.removeColumn(i);
    for (size_t pos = 0; pos < L.columns.size(); ++pos) {
        const ColumnData &c = L.columns[pos];
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
    // sorting by key order, grouping by level
    std::vector<const ColumnData *> sorted, grouped;
    for (const ColumnData &c : L.columns) {
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
