// Ordering: the order of all rows by the grouped columns, then the sort keys
// (one integer key per row and key: text by collation rank, the rest by
// value); the records (rows passing the filter, in that order); the numbering
// of sort keys and group levels.

#include "grid/u_gridmodel_p.h"

#include <numeric>

namespace grid {

KeyReader GridModel::Impl::keyReader(const ColState &cs)
{
    KeyReader k;
    if (cs.field < 0)
        return k;
    k.c = &column(cs.field);
    if (cs.kind == ColumnKind::Text || cs.kind == ColumnKind::Bytes) {
        TextDict &t = dict(cs.field);
        rankDict(t);
        k.ids = t.ids.data();
        k.rank = t.rank.data();
    }
    k.isFloat = cs.type == db::FieldType::Float;
    return k;
}

namespace {

using KeyVectors = std::vector<std::vector<qint64>>;

// Orders two rows by the key vectors from the given one on, then by position.
struct RestCompare {
    const KeyVectors *kv;
    size_t from;
    bool operator()(qint32 a, qint32 b) const
    {
        for (size_t k = from; k < kv->size(); ++k) {
            const qint64 x = (*kv)[k][size_t(a)], y = (*kv)[k][size_t(b)];
            if (x != y)
                return x < y;
        }
        return a < b;
    }
};

// A counting sort on the first key when its values are few and close together
// (collation ranks, dates, flags), with nulls kept apart. False, and nothing
// written, when the values lie too far apart for it.
bool countingSort(const std::vector<qint64> &k0, qint32 *ord, qsizetype rows)
{
    qint64 lo = std::numeric_limits<qint64>::max(), hi = std::numeric_limits<qint64>::min();
    qsizetype specials = 0;
    for (qint64 v : k0) {
        if (v == kNullKey || v == ~kNullKey) {
            ++specials;
            continue;
        }
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    // the span in unsigned arithmetic: the keys of doubles (and of large
    // integers) lie far apart, and hi - lo would overflow a signed integer
    const quint64 span = specials == rows ? 0 : quint64(hi) - quint64(lo);
    if (specials != rows && span >= quint64(rows) * 4 + 1024)
        return false;
    const qint64 range = specials == rows ? 0 : qint64(span) + 1;
    // buckets: 0 = null-low, 1..range = values, range+1 = null-high
    std::vector<qint32> count(size_t(range + 3), 0);
    auto bucket = [&](qint64 v) -> size_t {
        if (v == kNullKey)
            return 0;
        if (v == ~kNullKey)
            return size_t(range + 1);
        return size_t(quint64(v) - quint64(lo) + 1);
    };
    for (qint64 v : k0)
        ++count[bucket(v) + 1];
    for (size_t i = 1; i < count.size(); ++i)
        count[i] += count[i - 1];
    for (qint32 r = 0; r < qint32(rows); ++r)
        ord[count[bucket(k0[size_t(r)])]++] = r;
    return true;
}

// Equal first keys are runs after the counting sort: each run is ordered by
// the remaining keys.
void sortRuns(const KeyVectors &kv, qint32 *ord, qsizetype rows)
{
    const std::vector<qint64> &k0 = kv[0];
    const RestCompare cmp{&kv, 1};
    qsizetype i = 0;
    while (i < rows) {
        qsizetype j = i + 1;
        const qint64 v = k0[size_t(ord[i])];
        while (j < rows && k0[size_t(ord[j])] == v)
            ++j;
        if (j - i > 1)
            servedSort(ord + i, ord + j, cmp);
        db::busy::beat();
        i = j;
    }
}

} // namespace

void GridModel::Impl::computeOrder()
{
    const qsizetype rows = n();
    sortedAll.resize(size_t(rows));
    std::iota(sortedAll.begin(), sortedAll.end(), 0);
    struct Key { const ColState *cs; bool desc; };
    std::vector<Key> keys;
    for (int col : groupCols)
        keys.push_back({&cols[size_t(col)], cols[size_t(col)].c.sortOrder == SortOrder::Descending});
    for (int col : q->sortColumns())
        keys.push_back({&cols[size_t(col)], cols[size_t(col)].c.sortOrder == SortOrder::Descending});
    keys.erase(std::remove_if(keys.begin(), keys.end(), [](const Key &k) { return k.cs->field < 0; }), keys.end());
    if (keys.empty() || rows < 2)
        return;

    // one integer key vector per sort key: text by collation rank, the rest by value
    KeyVectors kv(keys.size());
    for (size_t k = 0; k < keys.size(); ++k) {
        const KeyReader key = keyReader(*keys[k].cs);
        std::vector<qint64> &v = kv[k];
        v.resize(size_t(rows));
        if (keys[k].desc) {
            for (qint32 r = 0; r < qint32(rows); ++r) {
                v[size_t(r)] = ~key(r);
                db::busy::beat();
            }
        } else {
            for (qint32 r = 0; r < qint32(rows); ++r) {
                v[size_t(r)] = key(r);
                db::busy::beat();
            }
        }
    }

    qint32 *ord = sortedAll.data();
    if (!countingSort(kv[0], ord, rows))
        servedSort(ord, ord + rows, RestCompare{&kv, 0});
    else if (kv.size() > 1)
        sortRuns(kv, ord, rows);
}

void GridModel::Impl::computeRecords()
{
    const qsizetype rows = n();
    records.clear();
    recPos.assign(size_t(rows), -1);
    if (pass.empty()) {
        records = sortedAll;
    } else {
        records.reserve(size_t(rows));
        for (qint32 r : sortedAll)
            if (pass[size_t(r)])
                records.push_back(r);
    }
    for (size_t p = 0; p < records.size(); ++p)
        recPos[size_t(records[p])] = qint32(p);
}

void GridModel::Impl::renumberSort()
{
    // a grouped column orders its groups by its sortOrder but is no sort key
    std::vector<ColState *> sorted;
    for (ColState &cs : cols)
        if (cs.c.sortOrder != SortOrder::None && cs.c.groupIndex < 0)
            sorted.push_back(&cs);
        else
            cs.c.sortIndex = -1;
    std::stable_sort(sorted.begin(), sorted.end(), [](const ColState *a, const ColState *b) {
        const int x = a->c.sortIndex < 0 ? std::numeric_limits<int>::max() : a->c.sortIndex;
        const int y = b->c.sortIndex < 0 ? std::numeric_limits<int>::max() : b->c.sortIndex;
        return x < y;
    });
    for (size_t i = 0; i < sorted.size(); ++i)
        sorted[i]->c.sortIndex = int(i);
}

void GridModel::Impl::renumberGroups()
{
    std::vector<int> g;
    for (size_t i = 0; i < cols.size(); ++i)
        if (cols[i].c.groupIndex >= 0)
            g.push_back(int(i));
    std::stable_sort(g.begin(), g.end(),
                     [&](int a, int b) { return cols[size_t(a)].c.groupIndex < cols[size_t(b)].c.groupIndex; });
    for (size_t l = 0; l < g.size(); ++l)
        cols[size_t(g[l])].c.groupIndex = int(l);
    groupCols = g;
}

} // namespace grid
