#include "db/u_field.h"

#include "db/u_busy.h"
#include "db/u_error.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace db {

namespace {

// The integers a column of the type holds (Date: Julian day numbers).
void integerRange(FieldType t, qint64 *lo, qint64 *hi)
{
    if (t == FieldType::Int32 || t == FieldType::Date) {
        *lo = std::numeric_limits<qint32>::min();
        *hi = std::numeric_limits<qint32>::max();
    } else {
        *lo = std::numeric_limits<qint64>::min();
        *hi = std::numeric_limits<qint64>::max();
    }
}

[[noreturn]] void refuseValue(FieldType t, const QString &value, const QString &field)
{
    if (t == FieldType::Date)
        throw QuarvError(field.isEmpty() ? QStringLiteral("Data %1 este in afara domeniului acceptat").arg(value)
                                         : QStringLiteral("Data %1 din campul '%2' este in afara domeniului acceptat")
                                               .arg(value, field));
    qint64 lo = 0, hi = 0;
    integerRange(t, &lo, &hi);
    throw QuarvError(field.isEmpty()
                         ? QStringLiteral("Valoarea %1 nu este un numar intreg intre %2 si %3").arg(value).arg(lo).arg(hi)
                         : QStringLiteral("Valoarea %1 din campul '%2' nu este un numar intreg intre %3 si %4")
                               .arg(value, field).arg(lo).arg(hi));
}

QString doubleText(double x)
{
    return QString::number(x, 'g', 17);
}

// An integral double (already truncated or rounded) as an integer of the
// column's range; refuses NaN, the infinities and whatever lies outside.
qint64 checkedInteger(FieldType t, double x, const QString &field)
{
    qint64 lo = 0, hi = 0;
    integerRange(t, &lo, &hi);
    // double(hi) + 1 is exactly 2^31 or 2^63; x is integral, so x < that is x <= hi
    if (!(x >= double(lo) && x < double(hi) + 1.0))
        refuseValue(t, doubleText(x), field);
    return qint64(x);
}

qint64 checkedInteger(FieldType t, qint64 v, const QString &field)
{
    qint64 lo = 0, hi = 0;
    integerRange(t, &lo, &hi);
    if (v < lo || v > hi)
        refuseValue(t, QString::number(v), field);
    return v;
}

} // namespace

QString fieldTypeName(FieldType t)
{
    switch (t) {
    case FieldType::String: return QStringLiteral("string");
    case FieldType::Text: return QStringLiteral("text");
    case FieldType::Date: return QStringLiteral("date");
    case FieldType::DateTime: return QStringLiteral("datetime");
    case FieldType::Float: return QStringLiteral("float");
    case FieldType::Int32: return QStringLiteral("int32");
    case FieldType::Int64: return QStringLiteral("int64");
    case FieldType::Bool: return QStringLiteral("bool");
    case FieldType::Bytes: return QStringLiteral("bytes");
    }
    return QStringLiteral("text");
}

bool isNumeric(FieldType t)
{
    return t == FieldType::Float || t == FieldType::Int32 || t == FieldType::Int64;
}

bool isInteger(FieldType t)
{
    return t == FieldType::Int32 || t == FieldType::Int64;
}

bool isTextual(FieldType t)
{
    return t == FieldType::String || t == FieldType::Text;
}

Column::Column(FieldType type) : m_type(type)
{
    switch (type) {
    case FieldType::Float: m_store = Store::Doubles; break;
    case FieldType::Bool: m_store = Store::Int8s; break;
    case FieldType::Int32:
    case FieldType::Date: m_store = Store::Int32s; break;
    case FieldType::Int64:
    case FieldType::DateTime: m_store = Store::Int64s; break;
    case FieldType::String:
    case FieldType::Text:
    case FieldType::Bytes: m_store = Store::Text; break;
    }
    // Blobs hardly ever repeat.
    m_lookup = type != FieldType::Bytes;
}

QString Column::asString(qsizetype row) const
{
    if (isNull(row))
        return {};
    switch (m_type) {
    case FieldType::String:
    case FieldType::Text: {
        const QByteArrayView b = bytes(row);
        return QString::fromUtf8(b.data(), b.size());
    }
    case FieldType::Bytes: return QString::fromLatin1(bytes(row).toByteArray().toHex());
    case FieldType::Date: return asDate(row).toString(Qt::ISODate);
    case FieldType::DateTime: return asDateTime(row).toString(Qt::ISODateWithMs);
    case FieldType::Float: return QString::number(asDouble(row), 'g', 17);
    case FieldType::Int32:
    case FieldType::Int64: return QString::number(asInt64(row));
    case FieldType::Bool: return asBool(row) ? QStringLiteral("True") : QStringLiteral("False");
    }
    return {};
}

QDate Column::asDate(qsizetype row) const
{
    if (isNull(row))
        return {};
    if (m_type == FieldType::Date)
        return QDate::fromJulianDay(asInt64(row));
    if (m_type == FieldType::DateTime)
        return asDateTime(row).date();
    return {};
}

qint64 wallClockMs(const QDateTime &dt)
{
    return (dt.date().toJulianDay() - kUnixEpochJulianDay) * kMsPerDay + dt.time().msecsSinceStartOfDay();
}

QDateTime wallClockOf(qint64 ms)
{
    return QDateTime(QDate::fromJulianDay(julianDayOfMs(ms)),
                     QTime::fromMSecsSinceStartOfDay(int(((ms % kMsPerDay) + kMsPerDay) % kMsPerDay)));
}

QDateTime Column::asDateTime(qsizetype row) const
{
    if (isNull(row))
        return {};
    if (m_type == FieldType::DateTime) {
        return wallClockOf(asInt64(row));
    }
    if (m_type == FieldType::Date)
        return QDateTime(asDate(row), QTime(0, 0));
    return {};
}

QVariant Column::value(qsizetype row) const
{
    if (isNull(row))
        return {};
    switch (m_type) {
    case FieldType::String:
    case FieldType::Text: return asString(row);
    case FieldType::Bytes: return bytes(row).toByteArray();
    case FieldType::Date: return asDate(row);
    case FieldType::DateTime: return asDateTime(row);
    case FieldType::Float: return asDouble(row);
    case FieldType::Int32: return int(asInt64(row));
    case FieldType::Int64: return qlonglong(asInt64(row));
    case FieldType::Bool: return asBool(row);
    }
    return {};
}

void Column::reserve(qsizetype rows)
{
    const size_t n = size_t(rows);
    m_nulls.reserve((n + 63) / 64);
    switch (m_store) {
    case Store::Doubles: m_doubles.reserve(n); break;
    case Store::Int8s: m_i8.reserve(n); break;
    case Store::Int32s: m_i32.reserve(n); break;
    case Store::Int64s: m_i64.reserve(n); break;
    case Store::Text: m_codes.reserve(n); break;
    }
}

void Column::clear()
{
    m_rows = 0;
    m_nulls.clear();
    m_doubles.clear();
    m_i8.clear();
    m_i32.clear();
    m_i64.clear();
    m_codes.clear();
    m_last = 0;
    m_probes = m_misses = 0;
    m_offsets.clear();
    m_pool.clear();
    m_hash.clear();
    m_lookup = m_type != FieldType::Bytes;
}

void Column::pushNullBit(bool null)
{
    if ((m_rows & 63) == 0)
        m_nulls.push_back(0);
    if (null)
        m_nulls[m_rows >> 6] |= quint64(1) << (m_rows & 63);
    ++m_rows;
}

void Column::setNullBit(size_t row, bool null) noexcept
{
    const quint64 bit = quint64(1) << (row & 63);
    if (null)
        m_nulls[row >> 6] |= bit;
    else
        m_nulls[row >> 6] &= ~bit;
}

void Column::appendNull()
{
    pushNullBit(true);
    switch (m_store) {
    case Store::Doubles: m_doubles.push_back(0.0); break;
    case Store::Int8s: m_i8.push_back(0); break;
    case Store::Int32s: m_i32.push_back(0); break;
    case Store::Int64s: m_i64.push_back(0); break;
    case Store::Text:
        if (m_offsets.size() == 0)
            addEntry(nullptr, 0);
        m_codes.push(0);
        break;
    }
}

void Column::appendDouble(double v)
{
    switch (m_store) {
    case Store::Doubles: pushNullBit(false); m_doubles.push_back(v); break;
    case Store::Int8s: pushNullBit(false); m_i8.push_back(v != 0 ? 1 : 0); break;
    case Store::Int32s: m_i32.push_back(qint32(checkedInteger(m_type, std::trunc(v), {}))); pushNullBit(false); break;
    case Store::Int64s: m_i64.push_back(checkedInteger(m_type, std::trunc(v), {})); pushNullBit(false); break;
    case Store::Text: appendNull(); break;
    }
}

void Column::appendInt64(qint64 v)
{
    switch (m_store) {
    case Store::Doubles: pushNullBit(false); m_doubles.push_back(double(v)); break;
    case Store::Int8s: pushNullBit(false); m_i8.push_back(v != 0 ? 1 : 0); break;
    case Store::Int32s: m_i32.push_back(qint32(checkedInteger(m_type, v, {}))); pushNullBit(false); break;
    case Store::Int64s: pushNullBit(false); m_i64.push_back(v); break;
    case Store::Text: appendNull(); break;
    }
}

namespace {

inline quint64 hashBytes(const char *p, size_t n) noexcept
{
    quint64 h = 0x9E3779B97F4A7C15ull ^ (n * 0xff51afd7ed558ccdull);
    while (n >= 8) {
        quint64 w;
        std::memcpy(&w, p, 8);
        h = (h ^ w) * 0xff51afd7ed558ccdull;
        h ^= h >> 32;
        p += 8;
        n -= 8;
    }
    quint64 w = 0;
    std::memcpy(&w, p, n);
    h = (h ^ w) * 0xc4ceb9fe1a85ec53ull;
    h ^= h >> 29;
    return h;
}

} // namespace

quint32 Column::addEntry(const char *data, size_t len)
{
    if (m_offsets.size() == 0)
        m_offsets.push_back(0);
    if (m_offsets.size() > 0xFFFFFFF0u)
        throw std::length_error("column pool full");
    if (len)
        std::memcpy(m_pool.extend(len), data, len);
    m_offsets.push_back(m_pool.size());
    return quint32(m_offsets.size() - 2);
}

void Column::rehash(size_t size)
{
    // Long for a large pool: served, and never left half way.
    busy::Unstoppable whole;
    m_hash.clear();
    m_hash.resize(size, 0);
    const size_t mask = size - 1;
    const size_t entries = m_offsets.size() - 1;
    for (size_t e = 1; e < entries; ++e) {
        const quint64 h = hashBytes(m_pool.data() + m_offsets[e], m_offsets[e + 1] - m_offsets[e]);
        size_t i = h & mask;
        while (m_hash[i])
            i = (i + 1) & mask;
        m_hash[i] = (h & 0xFFFFFFFF00000000ull) | e;
        busy::beat();
    }
}

quint32 Column::intern(const char *data, size_t len)
{
    if (m_offsets.size() == 0)
        addEntry(nullptr, 0); // entry 0: the empty value, also under nulls
    if (len == 0)
        return 0;
    // Rows often come grouped: the value of the row before needs no look-up.
    if (m_last) {
        const quint64 a = m_offsets[m_last];
        if (m_offsets[m_last + 1] - a == len && std::memcmp(m_pool.data() + a, data, len) == 0)
            return m_last;
    }
    if (!m_lookup)
        return m_last = addEntry(data, len);
    const size_t entries = m_offsets.size() - 1;
    if (m_hash.size() < (entries + 1) * 2)
        rehash(m_hash.size() < 1024 ? 1024 : m_hash.size() * 2);
    const quint64 h = hashBytes(data, len);
    const quint64 tag = h & 0xFFFFFFFF00000000ull;
    const size_t mask = m_hash.size() - 1;
    size_t i = h & mask;
    while (const quint64 slot = m_hash[i]) {
        if ((slot & 0xFFFFFFFF00000000ull) == tag) {
            const size_t e = size_t(slot & 0xFFFFFFFFu);
            const quint64 a = m_offsets[e];
            if (m_offsets[e + 1] - a == len && std::memcmp(m_pool.data() + a, data, len) == 0) {
                reviewLookup(true);
                return m_last = quint32(e);
            }
        }
        i = (i + 1) & mask;
    }
    const quint32 e = addEntry(data, len);
    m_hash[i] = tag | e;
    reviewLookup(false);
    return m_last = e;
}

// A column whose new values are mostly new (document numbers, say) stops
// paying for the look-up once its pool is of some size.
void Column::reviewLookup(bool found)
{
    ++m_probes;
    if (!found)
        ++m_misses;
    if (m_probes < 4096)
        return;
    if (m_offsets.size() > 16384 && m_misses * 4 > m_probes * 3) {
        m_lookup = false;
        m_hash.clear();
    }
    m_probes = m_misses = 0;
}

void Column::appendBytes(const char *data, qsizetype len)
{
    if (!usesText()) {
        append(QVariant(QString::fromUtf8(data, len)));
        return;
    }
    m_codes.push(intern(data, size_t(len)));
    pushNullBit(false);
}

namespace {

// Converts a value to what a column of the given type stores; false for null.
// A number that an integer field cannot hold raises (field names it).
bool toStored(FieldType t, const QVariant &v, double *d, qint64 *i, QByteArray *b, const QString &field = {})
{
    if (!v.isValid() || v.isNull())
        return false;
    switch (t) {
    case FieldType::String:
    case FieldType::Text:
        if (v.typeId() == QMetaType::QDate)
            *b = v.toDate().toString(Qt::ISODate).toUtf8();
        else
            *b = v.toString().toUtf8();
        return true;
    case FieldType::Bytes: *b = v.toByteArray(); return true;
    case FieldType::Date: {
        QDate date = v.typeId() == QMetaType::QDateTime ? v.toDateTime().date()
                   : v.typeId() == QMetaType::QString   ? QDate::fromString(v.toString(), Qt::ISODate)
                                                        : v.toDate();
        if (!date.isValid())
            return false;
        const qint64 jd = date.toJulianDay();
        qint64 lo = 0, hi = 0;
        integerRange(t, &lo, &hi);
        if (jd < lo || jd > hi)
            refuseValue(t, date.toString(Qt::ISODate), field);
        *i = jd;
        return true;
    }
    case FieldType::DateTime: {
        QDateTime dt = v.typeId() == QMetaType::QDate ? QDateTime(v.toDate(), QTime(0, 0))
                     : v.typeId() == QMetaType::QString ? QDateTime::fromString(v.toString(), Qt::ISODateWithMs)
                                                        : v.toDateTime();
        if (!dt.isValid())
            return false;
        *i = wallClockMs(dt);
        return true;
    }
    case FieldType::Float: {
        bool ok = false;
        *d = v.toDouble(&ok);
        return ok;
    }
    case FieldType::Int32:
    case FieldType::Int64: {
        bool ok = false;
        if (v.typeId() == QMetaType::Double || v.typeId() == QMetaType::Float) {
            // rounded, as a number converts elsewhere; range-checked first
            *i = checkedInteger(t, std::round(v.toDouble()), field);
            return true;
        }
        *i = v.toLongLong(&ok);
        if (!ok) {
            // text such as "1e3" or "12.7": its whole part
            const double x = v.toDouble(&ok);
            if (!ok)
                return false;
            *i = checkedInteger(t, std::trunc(x), field);
        }
        checkedInteger(t, *i, field);
        return true;
    }
    case FieldType::Bool:
        if (v.typeId() == QMetaType::QString) {
            const QString s = v.toString().trimmed().toLower();
            if (s.isEmpty())
                return false;
            *i = (s == u"true" || s == u"t" || s == u"1" || s == u"da") ? 1 : 0;
        } else {
            *i = v.toBool() ? 1 : 0;
        }
        return true;
    }
    return false;
}

} // namespace

void Column::append(const QVariant &v)
{
    check(v);
    appendNull();
    set(size() - 1, v);
}

void Column::check(const QVariant &v, const QString &fieldName) const
{
    double d = 0;
    qint64 i = 0;
    QByteArray b;
    if (m_store != Store::Text)
        toStored(m_type, v, &d, &i, &b, fieldName);
}

void Column::set(qsizetype row, const QVariant &v)
{
    double d = 0;
    qint64 i = 0;
    QByteArray b;
    const size_t r = size_t(row);
    const bool ok = toStored(m_type, v, &d, &i, &b);
    setNullBit(r, !ok);
    switch (m_store) {
    case Store::Doubles: m_doubles[r] = ok ? d : 0.0; break;
    case Store::Int8s: m_i8[r] = ok && i != 0 ? 1 : 0; break;
    case Store::Int32s: m_i32[r] = ok ? qint32(i) : 0; break;
    case Store::Int64s: m_i64[r] = ok ? i : 0; break;
    case Store::Text: m_codes.set(r, ok ? intern(b.constData(), size_t(b.size())) : 0); break;
    }
}

void Column::insertNull(qsizetype row)
{
    const size_t at = size_t(row);
    // Shift the null bits above the row up by one.
    pushNullBit(false);
    for (size_t w = (m_rows - 1) >> 6; w > (at >> 6); --w)
        m_nulls[w] = (m_nulls[w] << 1) | (m_nulls[w - 1] >> 63);
    {
        const size_t w = at >> 6;
        const unsigned b = unsigned(at & 63);
        const quint64 low = b ? (m_nulls[w] & ((quint64(1) << b) - 1)) : 0;
        const quint64 high = b ? (m_nulls[w] & ~((quint64(1) << b) - 1)) : m_nulls[w];
        m_nulls[w] = low | (high << 1) | (quint64(1) << b);
    }
    switch (m_store) {
    case Store::Doubles: m_doubles.insert(at, 0.0); break;
    case Store::Int8s: m_i8.insert(at, 0); break;
    case Store::Int32s: m_i32.insert(at, 0); break;
    case Store::Int64s: m_i64.insert(at, 0); break;
    case Store::Text:
        if (m_offsets.size() == 0)
            addEntry(nullptr, 0);
        m_codes.insert(at, 0);
        break;
    }
}

void Column::removeAt(qsizetype row)
{
    const size_t at = size_t(row);
    const size_t last = (m_rows - 1) >> 6;
    {
        const size_t w = at >> 6;
        const unsigned b = unsigned(at & 63);
        const quint64 low = b ? (m_nulls[w] & ((quint64(1) << b) - 1)) : 0;
        const quint64 high = b == 63 ? 0 : (m_nulls[w] >> (b + 1)) << b;
        m_nulls[w] = low | high;
        if (w < last)
            m_nulls[w] |= m_nulls[w + 1] << 63;
        for (size_t k = w + 1; k <= last; ++k) {
            m_nulls[k] >>= 1;
            if (k < last)
                m_nulls[k] |= m_nulls[k + 1] << 63;
        }
    }
    --m_rows;
    if ((m_rows & 63) == 0)
        m_nulls.resize(m_rows >> 6);
    switch (m_store) {
    case Store::Doubles: m_doubles.erase(at); break;
    case Store::Int8s: m_i8.erase(at); break;
    case Store::Int32s: m_i32.erase(at); break;
    case Store::Int64s: m_i64.erase(at); break;
    case Store::Text: m_codes.erase(at); break;
    }
}

qsizetype Column::memoryUsage() const
{
    return qsizetype(m_nulls.capacity() * 8 + m_doubles.capacity() * 8 + m_i8.capacity() + m_i32.capacity() * 4
                     + m_i64.capacity() * 8 + m_codes.bytes() + m_offsets.capacity() * 8
                     + m_pool.capacity() + m_hash.capacity() * 8);
}

} // namespace db
