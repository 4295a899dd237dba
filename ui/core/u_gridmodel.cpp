#include "ui/core/u_gridmodel_p.h"

#include "db/u_error.h"

#include <QCollatorSortKey>
#include <QHashFunctions>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <numeric>

namespace ui {

namespace {

constexpr qint64 kNullKey = std::numeric_limits<qint64>::min();
constexpr qint64 kUnixEpochJulianDay = 2440588; // 1970-01-01
constexpr qint64 kMsPerDay = 86400000;

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

qint64 orderedBits(double v)
{
    if (v == 0)
        v = 0; // -0 and +0 are one key
    qint64 i;
    std::memcpy(&i, &v, sizeof i);
    if (i < 0)
        i ^= std::numeric_limits<qint64>::max();
    return i;
}

// Folds UTF-8 the way foldText does, for ASCII and the Romanian letters; false
// (with nothing appended) for any other character, which takes the slow path.
bool appendFolded(QByteArray &out, QByteArrayView v)
{
    const qsizetype start = out.size();
    const char *p = v.data();
    const qsizetype n = v.size();
    for (qsizetype i = 0; i < n; ++i) {
        const auto b = static_cast<unsigned char>(p[i]);
        if (b < 0x80) {
            out += char(b >= 'A' && b <= 'Z' ? b + 32 : b);
            continue;
        }
        if (i + 1 >= n) {
            out.truncate(start);
            return false;
        }
        const auto b2 = static_cast<unsigned char>(p[i + 1]);
        const unsigned cp = (unsigned(b & 0x1f) << 6) | (b2 & 0x3f);
        unsigned folded = 0;
        switch (cp) {
        case 0x015e: case 0x015f: case 0x0218: case 0x0219: folded = 0x0219; break; // s cedilla / comma below
        case 0x0162: case 0x0163: case 0x021a: case 0x021b: folded = 0x021b; break; // t cedilla / comma below
        case 0x0102: case 0x0103: folded = 0x0103; break;                             // a breve
        case 0x00c2: case 0x00e2: folded = 0x00e2; break;                             // a circumflex
        case 0x00ce: case 0x00ee: folded = 0x00ee; break;                             // i circumflex
        default: break;
        }
        if ((b & 0xe0) != 0xc0 || !folded) {
            out.truncate(start);
            return false;
        }
        out += char(0xc0 | (folded >> 6));
        out += char(0x80 | (folded & 0x3f));
        ++i;
    }
    return true;
}

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

QString dateText(qint64 julianDay, const QString &fmt)
{
    const QDate d = QDate::fromJulianDay(julianDay);
    return d.toString(fmt.isEmpty() ? QStringLiteral("dd.MM.yyyy") : fmt);
}

QDateTime wallClock(qint64 ms)
{
    return QDateTime(QDate::fromJulianDay(kUnixEpochJulianDay + (ms >= 0 ? ms / kMsPerDay : (ms - kMsPerDay + 1) / kMsPerDay)),
                     QTime::fromMSecsSinceStartOfDay(int(((ms % kMsPerDay) + kMsPerDay) % kMsPerDay)));
}

QString dateTimeText(qint64 ms, const QString &fmt)
{
    if (!fmt.isEmpty())
        return wallClock(ms).toString(fmt);
    // Fractions of a second are shown when the value has them, never dropped.
    return wallClock(ms).toString(ms % 1000 == 0 ? QStringLiteral("dd.MM.yyyy hh:mm:ss")
                                                 : QStringLiteral("dd.MM.yyyy hh:mm:ss.zzz"));
}

void append2(QByteArray &out, int v)
{
    out += char('0' + v / 10);
    out += char('0' + v % 10);
}

} // namespace

QString foldText(const QString &in)
{
    QString s = in;
    for (QChar c : in) {
        if (c.unicode() >= 0x300 && c.unicode() <= 0x36f) {
            s = in.normalized(QString::NormalizationForm_C);
            break;
        }
    }
    s = s.toLower();
    for (QChar &c : s) {
        if (c.unicode() == 0x015f)      // s with cedilla
            c = QChar(0x0219);
        else if (c.unicode() == 0x0163) // t with cedilla
            c = QChar(0x021b);
    }
    return s;
}

// ---------------------------------------------------------------- Impl: data

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

TextDict &GridModel::Impl::dict(int field)
{
    auto it = dicts.find(field);
    if (it != dicts.end())
        return *it->second;
    auto d = std::make_unique<TextDict>();
    const db::Column &c = column(field);
    const qsizetype rows = n();
    d->ids.resize(size_t(rows));
    // The column numbers its pooled values (equal numbers, equal values): each
    // number is looked up once. Values it did not pool are merged by their
    // bytes, kept in a compact copy so the comparisons stay in cache.
    std::vector<qint32> byEntry;
    std::vector<quint64> table(1024, 0); // (hash tag << 32) | (id + 1); 0 = free
    std::vector<quint64> offsets{0};
    QByteArray &heap = d->ownBytes;
    size_t mask = table.size() - 1;
    auto fastHash = [](const char *p, qsizetype len) {
        quint64 h = 0x9e3779b97f4a7c15ull ^ quint64(len);
        qsizetype i = 0;
        for (; i + 8 <= len; i += 8) {
            quint64 w;
            std::memcpy(&w, p + i, 8);
            h = (h ^ w) * 0xff51afd7ed558ccdull;
            h ^= h >> 32;
        }
        quint64 w = 0;
        std::memcpy(&w, p + i, size_t(len - i));
        h = (h ^ w) * 0xc4ceb9fe1a85ec53ull;
        h ^= h >> 29;
        return h;
    };
    for (qsizetype r = 0; r < rows; ++r) {
        if (c.isNull(r)) {
            d->ids[size_t(r)] = -1;
            continue;
        }
        const quint32 e = c.textId(r);
        if (e < byEntry.size() && byEntry[e] >= 0) {
            d->ids[size_t(r)] = byEntry[e];
            continue;
        }
        const QByteArrayView v = c.bytes(r);
        const quint64 h = fastHash(v.data(), v.size());
        const quint64 tag = h >> 32;
        size_t s = size_t(h) & mask;
        qint32 id;
        for (;;) {
            const quint64 slot = table[s];
            if (slot == 0) {
                id = qint32(offsets.size() - 1);
                heap.append(v.data(), v.size());
                offsets.push_back(quint64(heap.size()));
                table[s] = (tag << 32) | quint64(id + 1);
                if ((offsets.size() - 1) * 2 > table.size()) {
                    std::vector<quint64> old(table.size() * 2, 0);
                    old.swap(table);
                    mask = table.size() - 1;
                    for (quint64 o : old) {
                        if (!o)
                            continue;
                        const qint32 k = qint32(o & 0xffffffffu) - 1;
                        const quint64 hk = fastHash(heap.constData() + offsets[size_t(k)],
                                                    qsizetype(offsets[size_t(k) + 1] - offsets[size_t(k)]));
                        size_t t = size_t(hk) & mask;
                        while (table[t])
                            t = (t + 1) & mask;
                        table[t] = o;
                    }
                }
                break;
            }
            if ((slot >> 32) == tag) {
                id = qint32(slot & 0xffffffffu) - 1;
                const QByteArrayView have(heap.constData() + offsets[size_t(id)],
                                          qsizetype(offsets[size_t(id) + 1] - offsets[size_t(id)]));
                if (have == v)
                    break;
            }
            s = (s + 1) & mask;
        }
        if (e >= byEntry.size())
            byEntry.resize(std::max<size_t>(size_t(e) + 1, byEntry.size() * 2), -1);
        byEntry[e] = id;
        d->ids[size_t(r)] = id;
    }
    d->values.reserve(offsets.size() - 1);
    for (size_t k = 0; k + 1 < offsets.size(); ++k)
        d->values.emplace_back(heap.constData() + offsets[k], qsizetype(offsets[k + 1] - offsets[k]));
    TextDict &ref = *d;
    dicts.emplace(field, std::move(d));
    return ref;
}

void GridModel::Impl::rankDict(TextDict &d)
{
    if (d.rank.size() == d.values.size() && !d.values.empty())
        return;
    const size_t m = d.values.size();
    std::vector<qint32> order(m);
    std::iota(order.begin(), order.end(), 0);
    std::vector<qint32> rank(m);
    bool allDigits = true;
    for (const QByteArrayView &v : d.values) {
        for (char ch : v) {
            const auto u = static_cast<unsigned char>(ch);
            if (!((u >= '0' && u <= '9'))) {
                allDigits = false;
                break;
            }
        }
        if (!allDigits)
            break;
    }
    if (allDigits) {
        // digits only (account codes, numbers kept as text): the collation
        // orders them as bytes do
        std::sort(order.begin(), order.end(),
                  [&](qint32 a, qint32 b) { return d.values[size_t(a)] < d.values[size_t(b)]; });
        for (size_t i = 0; i < m; ++i)
            rank[size_t(order[i])] = qint32(i);
    } else {
        QCollator coll(locale);
        coll.setNumericMode(false);
        std::vector<QCollatorSortKey> keys;
        keys.reserve(m);
        for (const QByteArrayView &v : d.values)
            keys.push_back(coll.sortKey(QString::fromUtf8(v)));
        std::sort(order.begin(), order.end(), [&](qint32 a, qint32 b) {
            const int c = keys[size_t(a)].compare(keys[size_t(b)]);
            if (c != 0)
                return c < 0;
            return d.values[size_t(a)] < d.values[size_t(b)];
        });
        // values the collation holds equal share a rank, so they group together
        qint32 r = -1;
        for (size_t i = 0; i < m; ++i) {
            if (i == 0 || keys[size_t(order[i - 1])].compare(keys[size_t(order[i])]) != 0)
                ++r;
            rank[size_t(order[i])] = r;
        }
    }
    d.rank = std::move(rank);
}

void GridModel::Impl::foldDict(TextDict &d)
{
    if (d.foldOffsets.size() == d.values.size() + 1)
        return;
    d.foldHeap.clear();
    d.foldOffsets.clear();
    d.foldOffsets.reserve(d.values.size() + 1);
    d.foldOffsets.push_back(0);
    for (const QByteArrayView &v : d.values) {
        if (!appendFolded(d.foldHeap, v))
            d.foldHeap += foldText(QString::fromUtf8(v)).toUtf8();
        d.foldOffsets.push_back(quint32(d.foldHeap.size()));
    }
}

namespace {

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

KeyReader keyReader(GridModel::Impl &d, const ColState &cs)
{
    KeyReader k;
    if (cs.field < 0)
        return k;
    k.c = &d.column(cs.field);
    if (cs.kind == ColumnKind::Text || cs.kind == ColumnKind::Bytes) {
        TextDict &t = d.dict(cs.field);
        d.rankDict(t);
        k.ids = t.ids.data();
        k.rank = t.rank.data();
    }
    k.isFloat = cs.type == db::FieldType::Float;
    return k;
}

} // namespace

// ---------------------------------------------------------------- filters

namespace {

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

} // namespace

void GridModel::Impl::compileFilter(ColState &cs)
{
    CompiledFilter f;
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
            ok = parseNumber(s, locale, f.number);
        } else {
            QDate d;
            ok = parseDate(s, d);
            f.day = d.toJulianDay();
            f.isDate = true;
        }
        f.op = ok ? op : FilterOp::Invalid;
        break;
    }
    }
    cs.filter = f;
}

namespace {

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

} // namespace

void GridModel::Impl::computePass()
{
    const qsizetype rows = n();
    bool any = false;
    for (const ColState &cs : cols)
        if (cs.filter.op != FilterOp::None)
            any = true;
    if (progActive && !conds.isEmpty())
        any = true;
    pass.clear();
    if (!any || rows == 0)
        return;
    pass.assign(size_t(rows), 1);
    quint8 *ps = pass.data();
    auto clearAll = [&] { std::fill(pass.begin(), pass.end(), quint8(0)); };

    for (ColState &cs : cols) {
        const CompiledFilter &f = cs.filter;
        if (f.op == FilterOp::None)
            continue;
        if (f.op == FilterOp::NoMatch || f.op == FilterOp::Invalid) {
            clearAll();
            continue;
        }
        const db::Column &c = column(cs.field);
        if (f.op == FilterOp::Contains) {
            // one test per distinct value, then a look-up per row
            TextDict &d = dict(cs.field);
            foldDict(d);
            const QByteArrayView needle(f.needle);
            const bool needleAscii = !hasHighBit(needle);
            std::vector<quint8> match(d.values.size());
            for (size_t i = 0; i < d.values.size(); ++i) {
                const QByteArrayView v(d.foldHeap.constData() + d.foldOffsets[i],
                                       qsizetype(d.foldOffsets[i + 1] - d.foldOffsets[i]));
                match[i] = needleAscii ? asciiContainsFolded(v, needle) : v.indexOf(needle) >= 0;
            }
            const qint32 *ids = d.ids.data();
            for (qsizetype r = 0; r < rows; ++r) {
                const qint32 id = ids[r];
                ps[r] &= quint8(id >= 0 && match[size_t(id)]);
            }
        } else if (f.op == FilterOp::IsTrue || f.op == FilterOp::IsFalse) {
            const bool want = f.op == FilterOp::IsTrue;
            for (qsizetype r = 0; r < rows; ++r)
                ps[r] &= quint8(!c.isNull(r) && c.asBool(r) == want);
        } else if (cs.kind == ColumnKind::Number) {
            const bool eq = f.op == FilterOp::Eq || f.op == FilterOp::Ne;
            for (qsizetype r = 0; r < rows; ++r) {
                if (!ps[r])
                    continue;
                if (c.isNull(r)) {
                    ps[r] = 0;
                    continue;
                }
                const double v = c.asDouble(r);
                bool ok;
                if (eq)
                    ok = nearlyEqual(v, f.number) == (f.op == FilterOp::Eq);
                else
                    ok = compareOp(f.op, v, f.number);
                ps[r] = ok;
            }
        } else {
            const bool dt = cs.kind == ColumnKind::DateTime;
            for (qsizetype r = 0; r < rows; ++r) {
                if (!ps[r])
                    continue;
                if (c.isNull(r)) {
                    ps[r] = 0;
                    continue;
                }
                qint64 day = c.asInt64(r);
                if (dt)
                    day = kUnixEpochJulianDay + (day >= 0 ? day / kMsPerDay : (day - kMsPerDay + 1) / kMsPerDay);
                ps[r] = compareOp(f.op, day, f.day);
            }
        }
    }

    if (progActive) {
        for (const FilterCondition &fc : conds) {
            const int field = fieldOf(fc.fieldName);
            if (field < 0) {
                clearAll();
                continue;
            }
            const db::Column &c = column(field);
            const db::FieldType t = ds->fieldDef(field).type;
            if (!fc.value.isValid() || fc.value.isNull()) {
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(c.isNull(r));
                continue;
            }
            switch (kindOf(t)) {
            case ColumnKind::Text:
            case ColumnKind::Bytes: {
                TextDict &d = dict(field);
                foldDict(d);
                const QByteArray want = foldText(fc.value.toString()).toUtf8();
                std::vector<quint8> match(d.values.size());
                for (size_t i = 0; i < d.values.size(); ++i)
                    match[i] = QByteArrayView(d.foldHeap.constData() + d.foldOffsets[i],
                                              qsizetype(d.foldOffsets[i + 1] - d.foldOffsets[i]))
                        == QByteArrayView(want);
                for (qsizetype r = 0; r < rows; ++r) {
                    const qint32 id = d.ids[size_t(r)];
                    ps[r] &= quint8(id >= 0 && match[size_t(id)]);
                }
                break;
            }
            case ColumnKind::Bool: {
                int b = fc.value.typeId() == QMetaType::Bool ? int(fc.value.toBool()) : boolWord(fc.value.toString());
                if (b < 0) {
                    clearAll();
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(!c.isNull(r) && int(c.asBool(r)) == b);
                break;
            }
            case ColumnKind::Number: {
                double v = 0;
                bool ok = false;
                if (fc.value.typeId() == QMetaType::QString)
                    ok = parseNumber(fc.value.toString(), locale, v);
                else
                    v = fc.value.toDouble(&ok);
                if (!ok) {
                    clearAll();
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(!c.isNull(r) && nearlyEqual(c.asDouble(r), v));
                break;
            }
            case ColumnKind::Date:
            case ColumnKind::DateTime: {
                QDate d;
                if (fc.value.typeId() == QMetaType::QDate)
                    d = fc.value.toDate();
                else if (fc.value.typeId() == QMetaType::QDateTime)
                    d = fc.value.toDateTime().date();
                else
                    parseDate(fc.value.toString(), d);
                if (!d.isValid()) {
                    clearAll();
                    break;
                }
                const bool isDt = t == db::FieldType::DateTime;
                if (isDt && fc.value.typeId() == QMetaType::QDateTime) {
                    const QDateTime want = fc.value.toDateTime();
                    for (qsizetype r = 0; r < rows; ++r)
                        ps[r] &= quint8(!c.isNull(r) && wallClock(c.asInt64(r)) == want);
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r) {
                    qint64 day = c.asInt64(r);
                    if (isDt)
                        day = kUnixEpochJulianDay + (day >= 0 ? day / kMsPerDay : (day - kMsPerDay + 1) / kMsPerDay);
                    ps[r] &= quint8(!c.isNull(r) && day == d.toJulianDay());
                }
                break;
            }
            case ColumnKind::Missing: clearAll(); break;
            }
        }
    }
}

// ---------------------------------------------------------------- order

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
    std::vector<std::vector<qint64>> kv(keys.size());
    for (size_t k = 0; k < keys.size(); ++k) {
        const KeyReader key = keyReader(*this, *keys[k].cs);
        std::vector<qint64> &v = kv[k];
        v.resize(size_t(rows));
        if (keys[k].desc) {
            for (qint32 r = 0; r < qint32(rows); ++r)
                v[size_t(r)] = ~key(r);
        } else {
            for (qint32 r = 0; r < qint32(rows); ++r)
                v[size_t(r)] = key(r);
        }
    }

    qint32 *ord = sortedAll.data();
    const std::vector<qint64> &k0 = kv[0];
    auto restCompare = [&](size_t from) {
        return [&kv, from](qint32 a, qint32 b) {
            for (size_t k = from; k < kv.size(); ++k) {
                const qint64 x = kv[k][size_t(a)], y = kv[k][size_t(b)];
                if (x != y)
                    return x < y;
            }
            return a < b;
        };
    };
    bool counted = false;
    {
        // a counting sort on the first key when its values are few and close
        // together (collation ranks, dates, flags), with nulls kept apart
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
        if (specials == rows || span < quint64(rows) * 4 + 1024) {
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
            counted = true;
        }
    }
    if (!counted) {
        std::sort(ord, ord + rows, restCompare(0));
        return;
    }
    if (kv.size() == 1)
        return;
    // equal first keys are runs now: order each run by the remaining keys
    const auto cmp = restCompare(1);
    qsizetype i = 0;
    while (i < rows) {
        qsizetype j = i + 1;
        const qint64 v = k0[size_t(ord[i])];
        while (j < rows && k0[size_t(ord[j])] == v)
            ++j;
        if (j - i > 1)
            std::sort(ord + i, ord + j, cmp);
        i = j;
    }
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

// ---------------------------------------------------------------- groups

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
        readers.push_back(keyReader(*this, cols[size_t(col)]));
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
            for (qint32 p = nd.first; p < nd.first + nd.count; ++p)
                addValue(a, c, records[size_t(p)]);
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
            for (qint32 row : records)
                addValue(a, c, row);
        }
        footerAggs[size_t(s)] = a;
        done.insert(f, a);
    }
}

// ---------------------------------------------------------------- display

void GridModel::Impl::buildDisplay()
{
    drows.clear();
    if (groupCols.empty()) {
        drows.resize(records.size());
        for (qint32 p = 0; p < qint32(records.size()); ++p)
            drows[size_t(p)] = DRow{p, -1, RowKind::Data};
        return;
    }
    const bool footers = groupFooters && !groupSums.isEmpty();
    const int leafLevel = int(groupCols.size()) - 1;
    std::vector<qint32> open;
    qint32 i = 0;
    const qint32 count = qint32(nodes.size());
    auto closeUpTo = [&](qint32 idx) {
        while (!open.empty() && nodes[size_t(open.back())].end <= idx) {
            const Node &o = nodes[size_t(open.back())];
            if (footers)
                drows.push_back(DRow{o.first + o.count, open.back(), RowKind::GroupFooter});
            open.pop_back();
        }
    };
    while (i < count) {
        closeUpTo(i);
        const Node &nd = nodes[size_t(i)];
        drows.push_back(DRow{nd.first, i, RowKind::Group});
        if (!nd.expanded) {
            if (footers)
                drows.push_back(DRow{nd.first + nd.count, i, RowKind::GroupFooter});
            i = nd.end;
            continue;
        }
        if (nd.level == leafLevel) {
            for (qint32 p = nd.first; p < nd.first + nd.count; ++p)
                drows.push_back(DRow{p, -1, RowKind::Data});
            if (footers)
                drows.push_back(DRow{nd.first + nd.count, i, RowKind::GroupFooter});
        } else {
            open.push_back(i);
        }
        ++i;
    }
    closeUpTo(count);
}

qsizetype GridModel::Impl::locateRecord(qint32 rec) const
{
    auto it = std::lower_bound(drows.begin(), drows.end(), rec, [](const DRow &r, qint32 v) { return r.rec < v; });
    for (; it != drows.end() && it->rec == rec; ++it)
        if (it->kind == RowKind::Data)
            return qsizetype(it - drows.begin());
    return -1;
}

void GridModel::Impl::expandPathTo(qint32 rec)
{
    // walk down from the top groups to the leaf holding the record
    qint32 i = 0;
    const qint32 count = qint32(nodes.size());
    while (i < count) {
        Node &nd = nodes[size_t(i)];
        if (rec >= nd.first && rec < nd.first + nd.count) {
            if (!nd.expanded && !allExpanded)
                expandedPaths.insert(nodeKeyText(nd));
            nd.expanded = true;
            ++i; // its first child, if any
        } else {
            i = nd.end;
        }
    }
}

void GridModel::Impl::setFocusInternal(qsizetype row, bool syncDataSet)
{
    if (row >= qsizetype(drows.size()))
        row = qsizetype(drows.size()) - 1;
    if (row < -1)
        row = -1;
    if (syncDataSet && sync && ds && row >= 0 && drows[size_t(row)].kind == RowKind::Data) {
        const qint32 dr = records[size_t(drows[size_t(row)].rec)];
        if (ds->currentRow() != dr) {
            syncGuard = true;
            try {
                ds->setCurrentRow(dr);
            } catch (...) {
                syncGuard = false;
                throw;
            }
            syncGuard = false;
        }
    }
    if (row != focus) {
        focus = row;
        emit q->focusChanged(focus);
    }
}

void GridModel::Impl::run(unsigned flags)
{
    if (batch > 0) {
        pending |= flags;
        return;
    }
    flags |= pending;
    pending = 0;
    if (!flags)
        return;

    // what the focus is on, to find it again afterwards
    qint32 focusData = -1;
    qint32 focusNode = -1;
    if (focus >= 0 && focus < qsizetype(drows.size())) {
        const DRow &fr = drows[size_t(focus)];
        if (fr.kind == RowKind::Data)
            focusData = records[size_t(fr.rec)];
        else
            focusNode = fr.node;
    }
    if ((flags & FData) && ds && sync && ds->currentRow() >= 0)
        focusData = qint32(ds->currentRow());
    if ((flags & FData) && focusData >= n())
        focusData = -1;

    if (flags & FData) {
        dicts.clear();
        resolveAll();
        flags |= FOrder | FFilter;
    }
    if (flags & FOrder)
        computeOrder();
    if (flags & FFilter)
        computePass();
    if (flags & (FOrder | FFilter)) {
        computeRecords();
        flags |= FGroups;
    }
    if (flags & FGroups) {
        buildNodes();
        flags |= FSums | FDisplay;
        focusNode = -1;
    }
    if (flags & FSums)
        computeSums();
    qsizetype newFocus = -1;
    if (flags & FDisplay) {
        const qint32 rec = focusData >= 0 && focusData < qint32(recPos.size()) ? recPos[size_t(focusData)] : -1;
        if (rec >= 0 && (flags & FGroups))
            expandPathTo(rec); // the focused record stays in sight after regrouping
        buildDisplay();
        if (rec >= 0)
            newFocus = locateRecord(rec);
        if (newFocus < 0 && focusNode >= 0) {
            for (size_t i = 0; i < drows.size(); ++i)
                if (drows[i].node == focusNode && drows[i].kind == RowKind::Group) {
                    newFocus = qsizetype(i);
                    break;
                }
        }
        if (newFocus < 0 && rec >= 0) {
            // the record sits in a collapsed group: focus the innermost visible group row
            for (size_t i = 0; i < drows.size(); ++i) {
                const DRow &r = drows[i];
                if (r.kind == RowKind::Group && rec >= nodes[size_t(r.node)].first
                    && rec < nodes[size_t(r.node)].first + nodes[size_t(r.node)].count)
                    newFocus = qsizetype(i);
            }
        }
        if (newFocus < 0 && !drows.empty())
            newFocus = (focus >= 0 && focus < qsizetype(drows.size()) && !(flags & (FData | FGroups))) ? focus : 0;
        focus = -2; // force the signal
        // the dataset's current row follows a focus that a filter or a regrouping moved
        try {
            setFocusInternal(newFocus, !(flags & FData));
        } catch (const QuarvError &) {
            // a refused post keeps the dataset where it was; the grid shows the new rows anyway
            setFocusInternal(newFocus, false);
        }
        emit q->rowsChanged();
    }
    if (flags & FSums)
        emit q->summariesChanged();
}

void GridModel::Impl::renumberSort()
{
    std::vector<ColState *> sorted;
    for (ColState &cs : cols)
        if (cs.c.sortOrder != SortOrder::None && cs.c.groupIndex < 0)
            sorted.push_back(&cs);
        else if (cs.c.groupIndex >= 0)
            cs.c.sortIndex = -1;
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

void GridModel::Impl::onDataReset()
{
    run(FData);
}

void GridModel::Impl::onCurrentRowChanged(qsizetype row)
{
    if (syncGuard || !sync || row < 0 || row >= qsizetype(recPos.size()))
        return;
    if (focus >= 0 && focus < qsizetype(drows.size()) && drows[size_t(focus)].kind == RowKind::Data
        && records[size_t(drows[size_t(focus)].rec)] == row)
        return;
    q->focusDataRow(row);
}

// ---------------------------------------------------------------- values and texts

QVariant GridModel::Impl::value(qint32 row, const ColState &cs) const
{
    if (cs.field < 0 || !ds || row < 0 || row >= ds->rowCount())
        return {};
    const db::Column &c = column(cs.field);
    if (c.isNull(row))
        return {};
    switch (cs.type) {
    case db::FieldType::Int32:
    case db::FieldType::Int64: return QVariant(qlonglong(c.asInt64(row)));
    case db::FieldType::Float: return QVariant(c.asDouble(row));
    case db::FieldType::Date: return QVariant(QDate::fromJulianDay(c.asInt64(row)));
    case db::FieldType::DateTime: return QVariant(wallClock(c.asInt64(row)));
    case db::FieldType::Bool: return QVariant(c.asBool(row));
    case db::FieldType::Bytes: return QVariant(c.bytes(row).toByteArray());
    default: return QVariant(QString::fromUtf8(c.bytes(row)));
    }
}

QString GridModel::Impl::text(qint32 row, const ColState &cs, bool exportBools) const
{
    if (cs.field < 0 || !ds || row < 0 || row >= ds->rowCount())
        return {};
    const db::Column &c = column(cs.field);
    if (c.isNull(row))
        return {};
    switch (cs.type) {
    case db::FieldType::Int32:
    case db::FieldType::Int64:
        if (cs.numFmt.isPlain())
            return locale.toString(qlonglong(c.asInt64(row))).remove(locale.groupSeparator());
        return cs.numFmt.format(double(c.asInt64(row)), locale);
    case db::FieldType::Float: return cs.numFmt.format(c.asDouble(row), locale);
    case db::FieldType::Date: return dateText(c.asInt64(row), cs.c.displayFormat);
    case db::FieldType::DateTime: return dateTimeText(c.asInt64(row), cs.c.displayFormat);
    case db::FieldType::Bool:
        return exportBools ? (c.asBool(row) ? QStringLiteral("True") : QStringLiteral("False")) : QString();
    case db::FieldType::Bytes: return QStringLiteral("(binar)");
    default: return QString::fromUtf8(c.bytes(row));
    }
}

void GridModel::Impl::appendUtf8(QByteArray &out, qint32 row, const ColState &cs) const
{
    if (cs.field < 0)
        return;
    const db::Column &c = column(cs.field);
    if (c.isNull(row))
        return;
    switch (cs.type) {
    case db::FieldType::String:
    case db::FieldType::Text: {
        const QByteArrayView b = c.bytes(row);
        out.append(b.data(), b.size());
        return;
    }
    case db::FieldType::Int32:
    case db::FieldType::Int64:
        if (cs.numFmt.isPlain()) {
            char buf[24];
            auto res = std::to_chars(buf, buf + sizeof buf, c.asInt64(row));
            out.append(buf, int(res.ptr - buf));
            return;
        }
        break;
    case db::FieldType::Float:
        if (cs.numFmt.isPlain()) {
            const double v = c.asDouble(row);
            char buf[32];
            auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
            if (!std::memchr(buf, 'e', size_t(res.ptr - buf)) && !(res.ptr - buf == 2 && buf[0] == '-' && buf[1] == '0')) {
                if (decimalPoint8 != ".") {
                    const QByteArray &d8 = decimalPoint8;
                    for (char *p = buf; p < res.ptr; ++p) {
                        if (*p == '.') {
                            out.append(buf, int(p - buf));
                            out += d8;
                            out.append(p + 1, int(res.ptr - p - 1));
                            return;
                        }
                    }
                }
                out.append(buf, int(res.ptr - buf));
                return;
            }
        }
        break;
    case db::FieldType::Date:
        if (cs.c.displayFormat.isEmpty()) {
            int y, m, d;
            QDate::fromJulianDay(c.asInt64(row)).getDate(&y, &m, &d);
            append2(out, d);
            out += '.';
            append2(out, m);
            out += '.';
            if (y >= 1000 && y <= 9999) {
                append2(out, y / 100);
                append2(out, y % 100);
            } else {
                out += QByteArray::number(y);
            }
            return;
        }
        break;
    case db::FieldType::Bool: out += c.asBool(row) ? "True" : "False"; return;
    default: break;
    }
    out += text(row, cs, true).toUtf8();
}

const ColState *GridModel::Impl::colForField(const QString &field) const
{
    for (const ColState &cs : cols)
        if (cs.c.fieldName.compare(field, Qt::CaseInsensitive) == 0)
            return &cs;
    return nullptr;
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
            return QVariant(wallClock(qint64(v)));
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

// ================================================================ GridModel

GridModel::GridModel(QObject *parent) : QObject(parent), d(std::make_unique<Impl>())
{
    d->q = this;
    d->decimalPoint8 = d->locale.decimalPoint().toUtf8();
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

// ----- summaries

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

// ----- display rows

qsizetype GridModel::rowCount() const { return qsizetype(d->drows.size()); }

RowKind GridModel::rowKind(qsizetype displayRow) const { return d->drows.at(size_t(displayRow)).kind; }

int GridModel::rowLevel(qsizetype displayRow) const
{
    const DRow &r = d->drows.at(size_t(displayRow));
    if (r.kind == RowKind::Data)
        return int(d->groupCols.size());
    return d->nodes[size_t(r.node)].level;
}

qsizetype GridModel::dataRow(qsizetype displayRow) const
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return -1;
    const DRow &r = d->drows[size_t(displayRow)];
    return r.kind == RowKind::Data ? d->records[size_t(r.rec)] : -1;
}

GroupInfo GridModel::groupInfo(qsizetype displayRow) const
{
    GroupInfo gi;
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return gi;
    const DRow &r = d->drows[size_t(displayRow)];
    if (r.kind == RowKind::Data)
        return gi;
    const Node &nd = d->nodes[size_t(r.node)];
    gi.level = nd.level;
    gi.column = d->groupCols[size_t(nd.level)];
    const ColState &cs = d->cols[size_t(gi.column)];
    gi.value = d->value(nd.keyRow, cs);
    gi.valueText = d->text(nd.keyRow, cs, true);
    gi.rowCount = nd.count;
    gi.expanded = nd.expanded;
    return gi;
}

QString GridModel::groupRowText(qsizetype displayRow) const
{
    const GroupInfo gi = groupInfo(displayRow);
    if (gi.column < 0)
        return {};
    return QStringLiteral("%1: %2 (%3)").arg(column(gi.column).headerText(), gi.valueText).arg(gi.rowCount);
}

QString GridModel::cellText(qsizetype displayRow, int col) const
{
    const qsizetype r = dataRow(displayRow);
    if (r < 0 || col < 0 || col >= columnCount())
        return {};
    return d->text(qint32(r), d->cols[size_t(col)], false);
}

QVariant GridModel::cellValue(qsizetype displayRow, int col) const
{
    const qsizetype r = dataRow(displayRow);
    if (r < 0 || col < 0 || col >= columnCount())
        return {};
    return d->value(qint32(r), d->cols[size_t(col)]);
}

int GridModel::cellCheck(qsizetype displayRow, int col) const
{
    const QVariant v = cellValue(displayRow, col);
    if (!v.isValid())
        return -1;
    return v.toBool() ? 1 : 0;
}

QString GridModel::displayText(qsizetype dataRow, int col) const
{
    if (col < 0 || col >= columnCount())
        return {};
    return d->text(qint32(dataRow), d->cols[size_t(col)], false);
}

QString GridModel::exportText(qsizetype dataRow, int col) const
{
    if (col < 0 || col >= columnCount())
        return {};
    return d->text(qint32(dataRow), d->cols[size_t(col)], true);
}

// ----- expand / collapse

bool GridModel::isExpanded(qsizetype displayRow) const
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return false;
    const DRow &r = d->drows[size_t(displayRow)];
    return r.kind != RowKind::Data && d->nodes[size_t(r.node)].expanded;
}

void GridModel::setExpanded(qsizetype displayRow, bool expanded)
{
    if (displayRow < 0 || displayRow >= qsizetype(d->drows.size()))
        return;
    const DRow &r = d->drows[size_t(displayRow)];
    if (r.kind == RowKind::Data)
        return;
    Node &nd = d->nodes[size_t(r.node)];
    if (nd.expanded == expanded)
        return;
    nd.expanded = expanded;
    // remembered by key, so a refresh or a new filter keeps what the operator opened
    if (expanded)
        d->expandedPaths.insert(d->nodeKeyText(nd));
    else
        d->expandedPaths.remove(d->nodeKeyText(nd));
    if (!expanded && d->allExpanded) {
        d->allExpanded = false;
        for (const Node &o : d->nodes)
            if (o.expanded)
                d->expandedPaths.insert(d->nodeKeyText(o));
    }
    // a focus inside the collapsed group moves to the group row
    if (!expanded && d->focus >= 0 && d->focus < qsizetype(d->drows.size())) {
        const DRow &f = d->drows[size_t(d->focus)];
        if (f.rec >= nd.first && f.rec < nd.first + nd.count && d->focus > displayRow)
            d->focus = displayRow;
    }
    const qint32 node = r.node;
    const qsizetype oldFocus = d->focus;
    const DRow focusRow = oldFocus >= 0 && oldFocus < qsizetype(d->drows.size()) ? d->drows[size_t(oldFocus)] : DRow{-1, -1, RowKind::Data};
    d->buildDisplay();
    qsizetype nf = -1;
    if (focusRow.kind == RowKind::Data && focusRow.rec >= 0)
        nf = d->locateRecord(focusRow.rec);
    if (nf < 0) {
        const qint32 want = focusRow.node >= 0 ? focusRow.node : node;
        for (size_t i = 0; i < d->drows.size(); ++i)
            if (d->drows[i].node == want && d->drows[i].kind == (focusRow.node >= 0 ? focusRow.kind : RowKind::Group)) {
                nf = qsizetype(i);
                break;
            }
    }
    d->focus = -2;
    d->setFocusInternal(nf, false);
    emit rowsChanged();
}

void GridModel::toggleExpanded(qsizetype displayRow) { setExpanded(displayRow, !isExpanded(displayRow)); }

void GridModel::expandAll()
{
    d->allExpanded = true;
    for (Node &nd : d->nodes)
        nd.expanded = true;
    d->run(Impl::FDisplay);
}

void GridModel::collapseAll()
{
    d->allExpanded = false;
    d->expandedPaths.clear();
    for (Node &nd : d->nodes)
        nd.expanded = false;
    d->focus = -1;
    d->run(Impl::FDisplay);
}

// ----- focus and records

qsizetype GridModel::focusedRow() const { return d->focus; }
void GridModel::setFocusedRow(qsizetype displayRow) { d->setFocusInternal(displayRow, true); }
qsizetype GridModel::focusedDataRow() const { return dataRow(d->focus); }

bool GridModel::focusDataRow(qsizetype row)
{
    if (row < 0 || row >= qsizetype(d->recPos.size()) || d->recPos[size_t(row)] < 0)
        return false;
    const qint32 rec = d->recPos[size_t(row)];
    qsizetype at = d->locateRecord(rec);
    if (at < 0) {
        d->expandPathTo(rec);
        d->buildDisplay();
        at = d->locateRecord(rec);
        emit rowsChanged();
    }
    d->setFocusInternal(at, true);
    return true;
}

qsizetype GridModel::displayRowOfDataRow(qsizetype row) const
{
    if (row < 0 || row >= qsizetype(d->recPos.size()) || d->recPos[size_t(row)] < 0)
        return -1;
    return d->locateRecord(d->recPos[size_t(row)]);
}

qsizetype GridModel::recordCount() const { return qsizetype(d->records.size()); }

qsizetype GridModel::recordNumber() const
{
    if (d->focus < 0 || d->focus >= qsizetype(d->drows.size()))
        return 0;
    const DRow &r = d->drows[size_t(d->focus)];
    if (r.kind == RowKind::Data)
        return r.rec + 1;
    // A group row or its footer: the group's first record.
    return r.node >= 0 && size_t(r.node) < d->nodes.size() ? d->nodes[size_t(r.node)].first + 1 : 0;
}

qsizetype GridModel::recordIndexOfDataRow(qsizetype row) const
{
    if (row < 0 || row >= qsizetype(d->recPos.size()))
        return -1;
    return d->recPos[size_t(row)];
}

qsizetype GridModel::recordDataRow(qsizetype recordIndex) const
{
    if (recordIndex < 0 || recordIndex >= qsizetype(d->records.size()))
        return -1;
    return d->records[size_t(recordIndex)];
}

void GridModel::firstRecord()
{
    if (!d->records.empty())
        focusDataRow(d->records.front());
}

void GridModel::lastRecord()
{
    if (!d->records.empty())
        focusDataRow(d->records.back());
}

void GridModel::nextRecord()
{
    if (d->records.empty())
        return;
    qint32 target = 0;
    if (d->focus >= 0 && d->focus < qsizetype(d->drows.size())) {
        const DRow &r = d->drows[size_t(d->focus)];
        target = r.kind == RowKind::Data ? r.rec + 1 : r.rec;
    }
    if (target >= qint32(d->records.size()))
        return;
    focusDataRow(d->records[size_t(target)]);
}

void GridModel::priorRecord()
{
    if (d->records.empty() || d->focus < 0 || d->focus >= qsizetype(d->drows.size()))
        return;
    const DRow &r = d->drows[size_t(d->focus)];
    qint32 target = r.rec - 1;
    if (r.kind == RowKind::GroupFooter)
        target = r.rec - 1;
    if (target < 0)
        return;
    focusDataRow(d->records[size_t(target)]);
}

void GridModel::rebuild() { d->run(Impl::FData); }

} // namespace ui
