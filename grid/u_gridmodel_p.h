#pragma once
// Internals of GridModel shared by the units of this folder: the model's own
// passes (u_griddict, u_gridfilter, u_gridorder, u_gridgroups, u_griddisplay,
// u_gridcells), the layout store and the exporters. Not for use outside grid/.
//
// The passes run in this order (Impl::run): the dictionary of each text field
// (built on first use after a data load), the order of all rows, the filter,
// the records (rows passing, in order), the groups and their aggregates, the
// display rows.

#include "db/u_busy.h"
#include "grid/u_gridmodel.h"

#include <QByteArrayView>
#include <QCollator>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <unordered_map>

namespace grid {

// std::sort in blocks merged pairwise, with a beat of the work in progress
// after each block and each merge: a long sort keeps the windows served
// without a beat per comparison. For a strict total order (every comparer
// here breaks ties) the result is std::sort's.
template <class It, class Less>
void servedSort(It first, It last, Less less)
{
    using Diff = typename std::iterator_traits<It>::difference_type;
    constexpr Diff kBlock = Diff(1) << 15;
    const Diff n = last - first;
    if (n <= kBlock) {
        std::sort(first, last, less);
        return;
    }
    for (Diff i = 0; i < n; i += kBlock) {
        std::sort(first + i, first + std::min(n, i + kBlock), less);
        db::busy::tick();
    }
    for (Diff width = kBlock; width < n; width *= 2) {
        for (Diff i = 0; i + width < n; i += 2 * width) {
            std::inplace_merge(first + i, first + i + width, first + std::min(n, i + 2 * width), less);
            db::busy::tick();
        }
    }
}

// ---------------------------------------------------------------- dates

// Date-time cells hold the dataset's stored form (db/u_field.h).
using db::julianDayOfMs;
using db::kMsPerDay;
using db::kUnixEpochJulianDay;
using db::wallClockOf;

ColumnKind kindOf(db::FieldType t);

// ---------------------------------------------------------------- dictionary (u_griddict.cpp)

// Distinct values of one text field: an id per row (-1 for null), the
// distinct values (a compact copy of their bytes), their collation rank
// and, for filtering, their folded form. Built once per data load and field.
struct TextDict {
    std::vector<qint32> ids;
    std::vector<QByteArrayView> values;   // into ownBytes
    QByteArray ownBytes;
    std::vector<qint32> rank;          // per id; empty until ranked
    QByteArray foldHeap;               // folded values, back to back
    std::vector<quint32> foldOffsets;  // values.size() + 1 when folded

    QByteArrayView folded(size_t id) const
    {
        return QByteArrayView(foldHeap.constData() + foldOffsets[id], qsizetype(foldOffsets[id + 1] - foldOffsets[id]));
    }
};

// Folds text for the filter: lower case, cedilla forms of s/t as comma-below.
QString foldText(const QString &s);

// ---------------------------------------------------------------- filter (u_gridfilter.cpp)

// Reading what the operator typed: numbers in the grid's locale or with a
// point, dates in the usual Romanian and ISO forms, yes/no words (1, 0 or -1
// when the text is neither).
bool parseNumber(QString s, const QLocale &loc, double &out);
bool parseDate(const QString &s, QDate &out);
int boolWord(const QString &raw);

// What a condition tests. Text: Contains (the filter row) or Eq (a
// programmatic condition), both on folded text. Numbers: Eq/Ne within a
// rounding error, the rest exactly. Dates and date-times: by day; At: a
// date-time to the millisecond. NoMatch (a field the data lacks) and Invalid
// (a text that cannot be read) let no row through.
enum class FilterOp : std::uint8_t {
    None, NoMatch, Invalid, Contains, Eq, Ne, Lt, Le, Gt, Ge, IsTrue, IsFalse, IsNull, At
};

// One condition on one field, compiled from the filter row's text of a
// column or from a programmatic condition; both are evaluated alike.
struct CompiledFilter {
    FilterOp op = FilterOp::None;
    int field = -1;
    ColumnKind kind = ColumnKind::Missing;
    QByteArray needle;      // folded UTF-8 (text)
    double number = 0;      // number operand
    bool exact = false;     // an integer column and a whole operand: compared as integers
    qint64 integer = 0;     // that operand
    qint64 day = 0;         // date operand (Julian day)
    qint64 ms = 0;          // date-time operand of At (wall-clock milliseconds)
};

// ---------------------------------------------------------------- columns

struct ColState {
    GridColumn c;
    int field = -1;
    ColumnKind kind = ColumnKind::Missing;
    db::FieldType type = db::FieldType::Text;
    NumberFormat numFmt;
    CompiledFilter filter;
};

// ---------------------------------------------------------------- order (u_gridorder.cpp)

constexpr qint64 kNullKey = std::numeric_limits<qint64>::min();

inline qint64 orderedBits(double v)
{
    if (v == 0)
        v = 0; // -0 and +0 are one key
    qint64 i;
    std::memcpy(&i, &v, sizeof i);
    if (i < 0)
        i ^= std::numeric_limits<qint64>::max();
    return i;
}

// The ordering key of one column's cells: collation rank for text, the value
// (order-preserving bits for doubles) otherwise; nulls lowest.
struct KeyReader {
    const db::Column *c = nullptr;
    const qint32 *ids = nullptr;
    const qint32 *rank = nullptr;
    bool isFloat = false;

    qint64 operator()(qint32 row) const
    {
        if (!c)
            return 0;
        if (ids) {
            const qint32 id = ids[row];
            return id < 0 ? kNullKey : rank[id];
        }
        if (c->isNull(row))
            return kNullKey;
        return isFloat ? orderedBits(c->asDouble(row)) : c->asInt64(row);
    }
};

// ---------------------------------------------------------------- groups (u_gridgroups.cpp)

struct Agg {
    double sum = 0, comp = 0;
    qint64 count = 0;
    double min = std::numeric_limits<double>::infinity();
    double max = -std::numeric_limits<double>::infinity();
    void addSum(double v)
    {
        const double t = sum + v;
        if (std::abs(sum) >= std::abs(v))
            comp += (sum - t) + v;
        else
            comp += (v - t) + sum;
        sum = t;
    }
    void add(double v)
    {
        addSum(v);
        ++count;
        if (v < min)
            min = v;
        if (v > max)
            max = v;
    }
    void merge(const Agg &o)
    {
        if (!o.count)
            return;
        addSum(o.sum);
        addSum(o.comp);
        count += o.count;
        min = std::min(min, o.min);
        max = std::max(max, o.max);
    }
    double total() const { return sum + comp; }
};

struct Node {
    qint32 parent = -1;
    qint32 level = 0;
    qint32 first = 0;      // first record position
    qint32 count = 0;      // records
    qint32 end = 0;        // preorder index after the subtree
    qint32 keyRow = 0;     // a dataset row holding the key
    bool expanded = false;
};

// ---------------------------------------------------------------- display (u_griddisplay.cpp)

struct DRow {
    qint32 rec;            // Data: record position; Group: node.first; GroupFooter: node end record
    qint32 node;           // Group/GroupFooter: node index; Data: -1
    RowKind kind;
};

struct GridModel::Impl {
    enum Flag : unsigned { FData = 1, FOrder = 2, FFilter = 4, FGroups = 8, FSums = 16, FDisplay = 32 };

    GridModel *q = nullptr;
    QPointer<db::DataSet> ds;
    QList<QMetaObject::Connection> conns;
    QLocale locale;
    QByteArray decimalPoint8;   // the locale's decimal point, UTF-8 (export fast path)
    bool sync = true;
    bool syncGuard = false;
    bool groupByBox = true, footer = true, filterRow = true, groupFooters = true, indicator = true;

    std::vector<ColState> cols;
    QList<GridSummary> footerSums, groupSums;
    QList<FilterCondition> conds;
    bool progActive = false;

    int batch = 0;
    unsigned pending = 0;
    // While the passes run (windows may be served meanwhile): changes wait
    // for them, views do not read the rows.
    bool rebuilding = false;

    // caches of the loaded data
    std::unordered_map<int, std::unique_ptr<TextDict>> dicts; // by field
    std::vector<qint32> sortedAll;
    std::vector<quint8> pass;       // empty: every row passes
    std::vector<qint32> records;    // dataset rows passing, in display order (all expanded)
    std::vector<qint32> recPos;     // dataset row -> record position, -1 when filtered out
    std::vector<int> groupCols;     // column indexes by level
    std::vector<Node> nodes;        // preorder
    std::vector<int> aggFields;     // fields with group aggregates
    std::vector<Agg> nodeAggs;      // nodes.size() * aggFields.size()
    std::vector<Agg> footerAggs;    // per footer summary
    std::vector<DRow> drows;
    bool allExpanded = false;
    QSet<QString> expandedPaths;
    qsizetype focus = -1;

    // --- columns (u_gridmodel.cpp)
    qsizetype n() const { return ds ? ds->rowCount() : 0; }
    const db::Column &column(int field) const { return ds->column(field); }
    int fieldOf(const QString &name) const { return ds ? ds->fieldIndex(name) : -1; }
    void resolve(ColState &cs) const;
    void resolveAll();
    const ColState *colForField(const QString &field) const;

    // --- dictionary (u_griddict.cpp)
    TextDict &dict(int field);
    void rankDict(TextDict &d);
    void foldDict(TextDict &d);

    // --- filter (u_gridfilter.cpp)
    void compileFilter(ColState &cs);                          // the filter row's text of a column
    CompiledFilter compileCondition(const FilterCondition &fc) const;
    void applyFilter(const CompiledFilter &f, quint8 *ps, qsizetype rows);
    void computePass();

    // --- order (u_gridorder.cpp)
    KeyReader keyReader(const ColState &cs);
    void computeOrder();
    void computeRecords();
    void renumberSort();
    void renumberGroups();

    // --- groups and summaries (u_gridgroups.cpp)
    QString nodeKeyText(const Node &nd) const;
    void buildNodes();
    void computeSums();
    QVariant summaryValue(const GridSummary &s, const Agg *a) const;
    QString summaryText(const GridSummary &s, const QVariant &v) const;
    const Agg *nodeAgg(qint32 node, const GridSummary &s) const;

    // --- display rows, focus and the run of the passes (u_griddisplay.cpp)
    void run(unsigned flags);
    void runOnce(unsigned flags);
    void buildDisplay();
    qsizetype locateRecord(qint32 rec) const;
    qsizetype refocusedRow(qint32 rec, qint32 focusNode, unsigned flags) const;
    void expandPathTo(qint32 rec);
    void setFocusInternal(qsizetype row, bool syncDataSet);
    void onDataReset();
    void onCurrentRowChanged(qsizetype row);

    // --- values and texts (u_gridcells.cpp)
    QVariant value(qint32 row, const ColState &cs) const;
    QString text(qint32 row, const ColState &cs, bool exportBools) const;
    void appendUtf8(QByteArray &out, qint32 row, const ColState &cs) const; // export form
};

// What the layout store and the exporters need beyond the public API.
struct GridModelAccess {
    static GridModel::Impl &impl(const GridModel &m) { return *m.d; }
    static void beginBatch(GridModel &m) { ++m.d->batch; }
    static void endBatch(GridModel &m)
    {
        if (--m.d->batch == 0 && m.d->pending)
            m.d->run(0);
    }
};

// Export rows: the rows that pass the filter with every group expanded.
// Calls fn(kind, recordOrNode): Data -> record position, Group/GroupFooter -> node.
template <typename Fn>
void forEachExportRow(const GridModel::Impl &d, bool withGroupFooters, Fn &&fn)
{
    if (d.groupCols.empty()) {
        for (qint32 p = 0; p < qint32(d.records.size()); ++p)
            fn(RowKind::Data, p);
        return;
    }
    const int leafLevel = int(d.groupCols.size()) - 1;
    // iterative preorder with a stack of open nodes, to write footers after subtrees
    std::vector<qint32> open;
    for (qint32 i = 0; i < qint32(d.nodes.size()); ++i) {
        const Node &nd = d.nodes[size_t(i)];
        while (!open.empty() && d.nodes[size_t(open.back())].end <= i) {
            if (withGroupFooters)
                fn(RowKind::GroupFooter, open.back());
            open.pop_back();
        }
        fn(RowKind::Group, i);
        if (nd.level == leafLevel) {
            for (qint32 p = nd.first; p < nd.first + nd.count; ++p)
                fn(RowKind::Data, p);
            if (withGroupFooters)
                fn(RowKind::GroupFooter, i);
        } else {
            open.push_back(i);
        }
    }
    while (!open.empty()) {
        if (withGroupFooters)
            fn(RowKind::GroupFooter, open.back());
        open.pop_back();
    }
}

} // namespace grid
