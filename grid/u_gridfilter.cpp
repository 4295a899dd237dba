// The filter: the filter row's text of each column and the programmatic
// conditions are compiled into one form (CompiledFilter) and evaluated by one
// pass over the rows per condition, all combined with AND.

#include "grid/u_gridmodel_p.h"

namespace grid {

namespace {

bool hasHighBit(QByteArrayView v)
{
    for (char ch : v)
        if (static_cast<unsigned char>(ch) >= 0x80)
            return true;
    return false;
}

// Whether ASCII text holds an ASCII needle already in lower case, ignoring case.
bool asciiContainsFolded(QByteArrayView hay, QByteArrayView needle)
{
    const qsizetype n = hay.size(), nn = needle.size();
    if (nn == 0)
        return true;
    const char *p = hay.data(), *nd = needle.data();
    const char c0 = nd[0];
    const char c0u = (c0 >= 'a' && c0 <= 'z') ? char(c0 - 32) : c0;
    for (qsizetype i = 0; i + nn <= n; ++i) {
        if (p[i] != c0 && p[i] != c0u)
            continue;
        qsizetype k = 1;
        for (; k < nn; ++k) {
            char x = p[i + k];
            if (x >= 'A' && x <= 'Z')
                x = char(x + 32);
            if (x != nd[k])
                break;
        }
        if (k == nn)
            return true;
    }
    return false;
}

template <typename T>
bool compareOp(FilterOp op, T a, T b)
{
    switch (op) {
    case FilterOp::Eq: return a == b;
    case FilterOp::Ne: return a != b;
    case FilterOp::Lt: return a < b;
    case FilterOp::Le: return a <= b;
    case FilterOp::Gt: return a > b;
    case FilterOp::Ge: return a >= b;
    default: return false;
    }
}

bool nearlyEqual(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(1.0, std::abs(b));
}

void setExact(CompiledFilter &f, qint64 v)
{
    f.exact = true;
    f.integer = v;
    f.number = double(v);
}

// The operand of a number column: exact where the column holds integers and
// the text is a whole number (3000000001 is not 3000000000, nor is a value
// above 2^53 its neighbour); through floating point otherwise.
bool parseOperand(const QString &text, db::FieldType t, const QLocale &loc, CompiledFilter &f)
{
    if (db::isInteger(t)) {
        QString s = text;
        s.remove(QLatin1Char(' '));
        // The locale checks where its group separators stand ("1.234" in
        // Romanian); "17.5" is no whole number in either and is compared
        // through floating point below.
        bool ok = false;
        qint64 v = loc.toLongLong(s, &ok);
        if (!ok)
            v = QLocale::c().toLongLong(s, &ok);
        if (ok) {
            setExact(f, v);
            return true;
        }
    }
    return parseNumber(text, loc, f.number);
}

} // namespace

bool parseNumber(QString s, const QLocale &loc, double &out)
{
    s.remove(QLatin1Char(' '));
    bool ok = false;
    out = loc.toDouble(s, &ok);
    if (ok)
        return true;
    out = QLocale::c().toDouble(s, &ok);
    if (ok)
        return true;
    QString t = s;
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    out = QLocale::c().toDouble(t, &ok);
    return ok;
}

bool parseDate(const QString &s, QDate &out)
{
    for (const char *f : {"dd.MM.yyyy", "d.M.yyyy", "yyyy-MM-dd", "dd/MM/yyyy", "d/M/yyyy", "dd.MM.yy"}) {
        out = QDate::fromString(s, QLatin1String(f));
        if (out.isValid()) {
            if (std::strcmp(f, "dd.MM.yy") == 0 && out.year() < 1950)
                out = out.addYears(100);
            return true;
        }
    }
    return false;
}

int boolWord(const QString &raw)
{
    const QString s = raw.trimmed().toLower();
    if (s == QLatin1String("1") || s == QLatin1String("true") || s == QLatin1String("da")
        || s == QLatin1String("adevarat") || s == QLatin1String("checked"))
        return 1;
    if (s == QLatin1String("0") || s == QLatin1String("false") || s == QLatin1String("nu")
        || s == QLatin1String("fals") || s == QLatin1String("unchecked"))
        return 0;
    return -1;
}

// ---------------------------------------------------------------- compiling

void GridModel::Impl::compileFilter(ColState &cs)
{
    CompiledFilter f;
    f.field = cs.field;
    f.kind = cs.kind;
    const QString raw = cs.c.filterText;
    if (raw.trimmed().isEmpty()) {
        cs.filter = f;
        return;
    }
    switch (cs.kind) {
    case ColumnKind::Missing:
        f.op = FilterOp::NoMatch;
        break;
    case ColumnKind::Text:
    case ColumnKind::Bytes:
        f.op = FilterOp::Contains;
        f.needle = foldText(raw).toUtf8();
        break;
    case ColumnKind::Bool: {
        const int b = boolWord(raw);
        f.op = b == 1 ? FilterOp::IsTrue : b == 0 ? FilterOp::IsFalse : FilterOp::Invalid;
        break;
    }
    case ColumnKind::Number:
    case ColumnKind::Date:
    case ColumnKind::DateTime: {
        QString s = raw.trimmed();
        FilterOp op = FilterOp::Eq;
        static const std::pair<const char *, FilterOp> ops[] = {
            {"<>", FilterOp::Ne}, {">=", FilterOp::Ge}, {"<=", FilterOp::Le}, {"!=", FilterOp::Ne},
            {"=", FilterOp::Eq},  {">", FilterOp::Gt},  {"<", FilterOp::Lt},
        };
        for (const auto &[txt, o] : ops) {
            if (s.startsWith(QLatin1String(txt))) {
                op = o;
                s = s.mid(int(std::strlen(txt))).trimmed();
                break;
            }
        }
        bool ok;
        if (cs.kind == ColumnKind::Number) {
            ok = parseOperand(s, cs.type, locale, f);
        } else {
            QDate day;
            ok = parseDate(s, day);
            f.day = day.toJulianDay();
        }
        f.op = ok ? op : FilterOp::Invalid;
        break;
    }
    }
    cs.filter = f;
}

// A programmatic condition: field = value, the value compared typed (a
// string is read as the filter row reads it); a null value asks for nulls.
CompiledFilter GridModel::Impl::compileCondition(const FilterCondition &fc) const
{
    CompiledFilter f;
    f.field = fieldOf(fc.fieldName);
    if (f.field < 0) {
        f.op = FilterOp::NoMatch;
        return f;
    }
    const db::FieldType t = ds->fieldDef(f.field).type;
    f.kind = kindOf(t);
    const QVariant &v = fc.value;
    if (!v.isValid() || v.isNull()) {
        f.op = FilterOp::IsNull;
        return f;
    }
    f.op = FilterOp::Invalid;
    switch (f.kind) {
    case ColumnKind::Missing: f.op = FilterOp::NoMatch; break;
    case ColumnKind::Text:
    case ColumnKind::Bytes:
        f.op = FilterOp::Eq;
        f.needle = foldText(v.toString()).toUtf8();
        break;
    case ColumnKind::Bool: {
        const int b = v.typeId() == QMetaType::Bool ? int(v.toBool()) : boolWord(v.toString());
        if (b >= 0)
            f.op = b ? FilterOp::IsTrue : FilterOp::IsFalse;
        break;
    }
    case ColumnKind::Number: {
        bool ok = false;
        if (v.typeId() == QMetaType::QString) {
            ok = parseOperand(v.toString(), t, locale, f);
        } else if (db::isInteger(t) && (v.typeId() == QMetaType::LongLong || v.typeId() == QMetaType::Int
                                        || v.typeId() == QMetaType::UInt)) {
            ok = true;
            setExact(f, v.toLongLong());
        } else {
            f.number = v.toDouble(&ok);
        }
        if (ok)
            f.op = FilterOp::Eq;
        break;
    }
    case ColumnKind::Date:
    case ColumnKind::DateTime: {
        if (f.kind == ColumnKind::DateTime && v.typeId() == QMetaType::QDateTime) {
            // a moment: the cell that reads the same on this computer's clock
            const QDateTime local = v.toDateTime().toLocalTime();
            if (local.isValid()) {
                f.op = FilterOp::At;
                f.ms = db::wallClockMs(local);
            }
            break;
        }
        QDate day;
        if (v.typeId() == QMetaType::QDate)
            day = v.toDate();
        else if (v.typeId() == QMetaType::QDateTime)
            day = v.toDateTime().date();
        else
            parseDate(v.toString(), day);
        if (day.isValid()) {
            f.op = FilterOp::Eq;
            f.day = day.toJulianDay();
        }
        break;
    }
    }
    return f;
}

// ---------------------------------------------------------------- evaluating

namespace {

// Each filter... narrows the pass flags ps of the rows to those whose cell
// meets f.

// Text: one test per distinct value (of the folded dictionary), then a
// look-up per row.
void filterText(const TextDict &td, const CompiledFilter &f, quint8 *ps, qsizetype rows)
{
    const QByteArrayView needle(f.needle);
    std::vector<quint8> match(td.values.size());
    if (f.op == FilterOp::Contains) {
        const bool needleAscii = !hasHighBit(needle);
        for (size_t i = 0; i < td.values.size(); ++i) {
            const QByteArrayView v = td.folded(i);
            match[i] = needleAscii ? asciiContainsFolded(v, needle) : v.indexOf(needle) >= 0;
        }
    } else {
        for (size_t i = 0; i < td.values.size(); ++i)
            match[i] = td.folded(i) == needle;
    }
    const qint32 *ids = td.ids.data();
    for (qsizetype r = 0; r < rows; ++r) {
        const qint32 id = ids[r];
        ps[r] &= quint8(id >= 0 && match[size_t(id)]);
    }
}

// Rows still passing keep passing when their cell is not null and test(row)
// holds; the test is not run for the rest.
template <class Test>
void narrowNonNull(const db::Column &c, quint8 *ps, qsizetype rows, Test test)
{
    for (qsizetype r = 0; r < rows; ++r) {
        if (!ps[r])
            continue;
        if (c.isNull(r)) {
            ps[r] = 0;
            continue;
        }
        ps[r] = test(r);
    }
}

void filterNumber(const db::Column &c, const CompiledFilter &f, quint8 *ps, qsizetype rows)
{
    if (f.exact) {
        for (qsizetype r = 0; r < rows; ++r)
            ps[r] &= quint8(!c.isNull(r) && compareOp(f.op, c.asInt64(r), f.integer));
        return;
    }
    const bool eq = f.op == FilterOp::Eq || f.op == FilterOp::Ne;
    narrowNonNull(c, ps, rows, [&](qsizetype r) {
        const double v = c.asDouble(r);
        return eq ? nearlyEqual(v, f.number) == (f.op == FilterOp::Eq) : compareOp(f.op, v, f.number);
    });
}

void filterDate(const db::Column &c, const CompiledFilter &f, quint8 *ps, qsizetype rows)
{
    if (f.op == FilterOp::At) {
        for (qsizetype r = 0; r < rows; ++r)
            ps[r] &= quint8(!c.isNull(r) && c.asInt64(r) == f.ms);
        return;
    }
    const bool dt = f.kind == ColumnKind::DateTime;
    narrowNonNull(c, ps, rows, [&](qsizetype r) {
        qint64 day = c.asInt64(r);
        if (dt)
            day = julianDayOfMs(day);
        return compareOp(f.op, day, f.day);
    });
}

} // namespace

void GridModel::Impl::applyFilter(const CompiledFilter &f, quint8 *ps, qsizetype rows)
{
    switch (f.op) {
    case FilterOp::None: return;
    case FilterOp::NoMatch:
    case FilterOp::Invalid: std::fill(ps, ps + rows, quint8(0)); return;
    default: break;
    }
    const db::Column &c = column(f.field);
    if (f.op == FilterOp::IsNull) {
        for (qsizetype r = 0; r < rows; ++r)
            ps[r] &= quint8(c.isNull(r));
        return;
    }
    switch (f.kind) {
    case ColumnKind::Missing: std::fill(ps, ps + rows, quint8(0)); return;
    case ColumnKind::Text:
    case ColumnKind::Bytes: {
        TextDict &td = dict(f.field);
        foldDict(td);
        filterText(td, f, ps, rows);
        return;
    }
    case ColumnKind::Bool: {
        const bool want = f.op == FilterOp::IsTrue;
        for (qsizetype r = 0; r < rows; ++r)
            ps[r] &= quint8(!c.isNull(r) && c.asBool(r) == want);
        return;
    }
    case ColumnKind::Number: filterNumber(c, f, ps, rows); return;
    case ColumnKind::Date:
    case ColumnKind::DateTime: filterDate(c, f, ps, rows); return;
    }
}

void GridModel::Impl::computePass()
{
    const qsizetype rows = n();
    std::vector<CompiledFilter> all;
    for (const ColState &cs : cols)
        if (cs.filter.op != FilterOp::None)
            all.push_back(cs.filter);
    if (progActive)
        for (const FilterCondition &fc : conds)
            all.push_back(compileCondition(fc));
    pass.clear();
    if (all.empty() || rows == 0)
        return;
    pass.assign(size_t(rows), 1);
    for (const CompiledFilter &f : all)
        applyFilter(f, pass.data(), rows);
}

} // namespace grid
