// Groups and summaries: the group tree built in one pass over the ordered
// records (a node per run of equal keys, level by level), the aggregates of
// each group and of the footer, and the summaries read from them.

#include "grid/u_gridmodel_p.h"

#include <QHash>

namespace grid {

QString GridModel::Impl::nodeKeyText(const Node &nd) const
{
    QString path;
    const Node *cur = &nd;
    QStringList parts;
    for (;;) {
        const ColState &cs = cols[size_t(groupCols[size_t(cur->level)])];
        QString part;
        if (cs.field < 0 || column(cs.field).isNull(cur->keyRow))
            part = QStringLiteral("\x01");
        else
            part = column(cs.field).asString(cur->keyRow);
        parts.prepend(part);
        if (cur->parent < 0)
            break;
        cur = &nodes[size_t(cur->parent)];
    }
    return parts.join(QChar(0x1f));
}

void GridModel::Impl::buildNodes()
{
    nodes.clear();
    const int levels = int(groupCols.size());
    if (levels == 0)
        return;
    std::vector<KeyReader> readers;
    for (int col : groupCols)
        readers.push_back(keyReader(cols[size_t(col)]));
    std::vector<qint64> cur(static_cast<size_t>(levels));
    std::vector<qint32> open(static_cast<size_t>(levels), -1);
    auto keyAt = [&](int level, qint32 row) -> qint64 { return readers[size_t(level)](row); };
    auto closeFrom = [&](int level, qint32 recEnd) {
        for (int l = levels - 1; l >= level; --l) {
            const qint32 i = open[size_t(l)];
            if (i < 0)
                continue;
            Node &nd = nodes[size_t(i)];
            nd.count = recEnd - nd.first;
            nd.end = qint32(nodes.size());
            open[size_t(l)] = -1;
        }
    };
    const qint32 total = qint32(records.size());
    for (qint32 p = 0; p < total; ++p) {
        db::busy::beat();
        const qint32 row = records[size_t(p)];
        int from = levels;
        for (int l = 0; l < levels; ++l) {
            const qint64 k = keyAt(l, row);
            if (open[size_t(l)] < 0 || k != cur[size_t(l)]) {
                from = l;
                break;
            }
        }
        if (from == levels)
            continue;
        closeFrom(from, p);
        for (int l = from; l < levels; ++l) {
            cur[size_t(l)] = keyAt(l, row);
            Node nd;
            nd.parent = l > 0 ? open[size_t(l - 1)] : -1;
            nd.level = l;
            nd.first = p;
            nd.keyRow = row;
            open[size_t(l)] = qint32(nodes.size());
            nodes.push_back(nd);
        }
    }
    closeFrom(0, total);

    if (allExpanded) {
        for (Node &nd : nodes)
            nd.expanded = true;
    } else if (!expandedPaths.isEmpty()) {
        // only nodes whose parent is expanded can matter for what is shown,
        // but every remembered path is honoured
        for (Node &nd : nodes)
            if (nd.parent < 0 || nodes[size_t(nd.parent)].expanded)
                nd.expanded = expandedPaths.contains(nodeKeyText(nd));
    }
}

void GridModel::Impl::computeSums()
{
    // aggregates per field of the group summaries, per node
    aggFields.clear();
    for (const GridSummary &s : groupSums) {
        const int f = fieldOf(s.fieldName);
        if (f >= 0 && std::find(aggFields.begin(), aggFields.end(), f) == aggFields.end())
            aggFields.push_back(f);
    }
    const size_t F = aggFields.size();
    nodeAggs.assign(nodes.size() * F, Agg{});
    const int leafLevel = int(groupCols.size()) - 1;
    auto addValue = [&](Agg &a, const db::Column &c, qint32 row) {
        if (!c.isNull(row))
            a.add(c.asDouble(row));
    };
    for (size_t fi = 0; fi < F; ++fi) {
        const db::Column &c = column(aggFields[fi]);
        for (size_t i = 0; i < nodes.size(); ++i) {
            const Node &nd = nodes[i];
            if (nd.level != leafLevel)
                continue;
            Agg &a = nodeAggs[i * F + fi];
            for (qint32 p = nd.first; p < nd.first + nd.count; ++p) {
                addValue(a, c, records[size_t(p)]);
                db::busy::beat();
            }
        }
        for (size_t i = nodes.size(); i-- > 0;) {
            const qint32 parent = nodes[i].parent;
            if (parent >= 0)
                nodeAggs[size_t(parent) * F + fi].merge(nodeAggs[i * F + fi]);
        }
    }
    footerAggs.assign(size_t(footerSums.size()), Agg{});
    QHash<int, Agg> done;
    for (qsizetype s = 0; s < footerSums.size(); ++s) {
        const int f = fieldOf(footerSums[s].fieldName);
        if (f < 0)
            continue;
        if (done.contains(f)) {
            footerAggs[size_t(s)] = done.value(f);
            continue;
        }
        Agg a;
        const auto fi = std::find(aggFields.begin(), aggFields.end(), f);
        if (!nodes.empty() && fi != aggFields.end()) {
            const size_t k = size_t(fi - aggFields.begin());
            for (size_t i = 0; i < nodes.size(); ++i)
                if (nodes[i].parent < 0)
                    a.merge(nodeAggs[i * F + k]);
        } else {
            const db::Column &c = column(f);
            for (qint32 row : records) {
                addValue(a, c, row);
                db::busy::beat();
            }
        }
        footerAggs[size_t(s)] = a;
        done.insert(f, a);
    }
}

QVariant GridModel::Impl::summaryValue(const GridSummary &s, const Agg *a) const
{
    const int f = fieldOf(s.fieldName);
    if (f < 0 || !a)
        return {};
    const db::FieldType t = ds->fieldDef(f).type;
    const ColumnKind k = kindOf(t);
    if (s.kind == SummaryKind::Count)
        return QVariant(qlonglong(a->count));
    // A sum over no values of a result is zero: an empty result shows 0 under
    // its money column; before any result the footer stays empty.
    if (a->count == 0)
        return s.kind == SummaryKind::Sum && k == ColumnKind::Number && ds->isActive() ? QVariant(0.0) : QVariant();
    if (k == ColumnKind::Text || k == ColumnKind::Bytes)
        return {};
    switch (s.kind) {
    case SummaryKind::Sum:
        if (k != ColumnKind::Number)
            return {};
        return QVariant(a->total());
    case SummaryKind::Average:
        if (k != ColumnKind::Number)
            return {};
        return QVariant(a->total() / double(a->count));
    case SummaryKind::Min:
    case SummaryKind::Max: {
        const double v = s.kind == SummaryKind::Min ? a->min : a->max;
        if (k == ColumnKind::Date)
            return QVariant(QDate::fromJulianDay(qint64(v)));
        if (k == ColumnKind::DateTime)
            return QVariant(wallClockOf(qint64(v)));
        if (k == ColumnKind::Bool)
            return QVariant(v != 0);
        return QVariant(v);
    }
    default: return {};
    }
}

QString GridModel::Impl::summaryText(const GridSummary &s, const QVariant &v) const
{
    if (!v.isValid())
        return {};
    const ColState *cs = colForField(s.shownUnder());
    switch (v.typeId()) {
    case QMetaType::QDate: return v.toDate().toString(cs && !cs->c.displayFormat.isEmpty() ? cs->c.displayFormat : QStringLiteral("dd.MM.yyyy"));
    case QMetaType::QDateTime:
        return v.toDateTime().toString(cs && !cs->c.displayFormat.isEmpty() ? cs->c.displayFormat
                                                                           : QStringLiteral("dd.MM.yyyy hh:mm:ss"));
    case QMetaType::Bool: return v.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::LongLong: {
        const NumberFormat f(s.format);
        if (!f.isPlain())
            return f.format(double(v.toLongLong()), locale);
        return QString::number(v.toLongLong());
    }
    default: {
        NumberFormat f(s.format);
        if (f.isPlain() && cs && cs->kind == ColumnKind::Number)
            f = cs->numFmt;
        return f.format(v.toDouble(), locale);
    }
    }
}

const Agg *GridModel::Impl::nodeAgg(qint32 node, const GridSummary &s) const
{
    const int f = fieldOf(s.fieldName);
    const auto it = std::find(aggFields.begin(), aggFields.end(), f);
    if (f < 0 || it == aggFields.end() || node < 0 || size_t(node) >= nodes.size())
        return nullptr;
    return &nodeAggs[size_t(node) * aggFields.size() + size_t(it - aggFields.begin())];
}

// ================================================================ GridModel: summaries

void GridModel::setFooterSummaries(const QList<GridSummary> &s)
{
    d->footerSums = s;
    d->run(Impl::FSums);
}

void GridModel::addFooterSummary(const GridSummary &s)
{
    d->footerSums.append(s);
    d->run(Impl::FSums);
}

const QList<GridSummary> &GridModel::footerSummaries() const { return d->footerSums; }

void GridModel::setGroupSummaries(const QList<GridSummary> &s)
{
    const bool hadAny = !d->groupSums.isEmpty();
    d->groupSums = s;
    d->run(Impl::FSums | (hadAny != !s.isEmpty() ? unsigned(Impl::FDisplay) : 0u));
}

void GridModel::addGroupSummary(const GridSummary &s)
{
    const bool hadAny = !d->groupSums.isEmpty();
    d->groupSums.append(s);
    d->run(Impl::FSums | (hadAny ? 0u : unsigned(Impl::FDisplay)));
}

const QList<GridSummary> &GridModel::groupSummaries() const { return d->groupSums; }

QVariant GridModel::footerValue(int summary) const
{
    if (summary < 0 || summary >= d->footerSums.size() || size_t(summary) >= d->footerAggs.size())
        return {};
    return d->summaryValue(d->footerSums[summary], &d->footerAggs[size_t(summary)]);
}

QString GridModel::footerText(int summary) const
{
    if (summary < 0 || summary >= d->footerSums.size())
        return {};
    return d->summaryText(d->footerSums[summary], footerValue(summary));
}

QString GridModel::footerTextForColumn(int col) const
{
    if (col < 0 || col >= columnCount())
        return {};
    QStringList parts;
    const QString &field = d->cols[size_t(col)].c.fieldName;
    for (int i = 0; i < d->footerSums.size(); ++i)
        if (d->footerSums[i].shownUnder().compare(field, Qt::CaseInsensitive) == 0)
            parts << footerText(i);
    parts.removeAll(QString());
    return parts.join(QLatin1Char('\n'));
}

QVariant GridModel::groupSummaryValue(int displayRow, int summary) const
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()) || summary < 0 || summary >= d->groupSums.size())
        return {};
    const DRow &r = d->drows[size_t(displayRow)];
    if (r.kind == RowKind::Data)
        return {};
    const GridSummary &s = d->groupSums[summary];
    return d->summaryValue(s, d->nodeAgg(r.node, s));
}

QString GridModel::groupSummaryText(int displayRow, int summary) const
{
    if (summary < 0 || summary >= d->groupSums.size())
        return {};
    return d->summaryText(d->groupSums[summary], groupSummaryValue(displayRow, summary));
}

QString GridModel::groupFooterTextForColumn(int displayRow, int col) const
{
    if (col < 0 || col >= columnCount())
        return {};
    QStringList parts;
    const QString &field = d->cols[size_t(col)].c.fieldName;
    for (int i = 0; i < d->groupSums.size(); ++i)
        if (d->groupSums[i].shownUnder().compare(field, Qt::CaseInsensitive) == 0)
            parts << groupSummaryText(displayRow, i);
    parts.removeAll(QString());
    return parts.join(QLatin1Char('\n'));
}

} // namespace grid
