#pragma once
// Field definitions and the typed, columnar storage that every dataset keeps
// its rows in. One Column per field; no per-cell objects.

#include <QByteArray>
#include <QByteArrayView>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

namespace db {

enum class FieldType : std::uint8_t {
    String,   // varchar/bpchar with a declared length (FieldDef::size)
    Text,     // unbounded text (text, varchar without length, anything unknown)
    Date,
    DateTime, // timestamp / timestamptz, kept as local wall-clock time
    Float,    // float4, float8, numeric
    Int32,    // int2, int4
    Int64,    // int8
    Bool,
    Bytes,    // bytea (and large-object ids read as bytes where asked)
};

QString fieldTypeName(FieldType t);

// How a DateTime is stored: the milliseconds of its wall-clock reading since
// 1970-01-01, counted as if that reading were UTC (no zone shift either way).
constexpr qint64 kUnixEpochJulianDay = 2440588; // 1970-01-01
constexpr qint64 kMsPerDay = 86400000;
// The day a stored date-time falls in, as a Julian day (also before 1970).
inline qint64 julianDayOfMs(qint64 ms) noexcept
{
    return kUnixEpochJulianDay + (ms >= 0 ? ms / kMsPerDay : (ms - kMsPerDay + 1) / kMsPerDay);
}
// A QDateTime's own wall-clock reading in the stored form, and back (local time).
qint64 wallClockMs(const QDateTime &dt);
QDateTime wallClockOf(qint64 ms);
bool isNumeric(FieldType t);
bool isInteger(FieldType t); // Int32 or Int64
bool isTextual(FieldType t); // String or Text

struct FieldDef {
    QString name;
    FieldType type = FieldType::Text;
    int size = 0;          // declared length of a String, 0 when unknown
    bool required = false;
    bool readOnly = false;
    unsigned pgType = 0;   // server type OID, 0 for fields not from a query
};

// A growable array of plain values. It grows in place through realloc, which
// for large blocks remaps pages instead of copying them, so a column that
// grows to hundreds of megabytes never holds two copies of itself.
template <typename T>
class PodBuf {
    static_assert(std::is_trivially_copyable_v<T>, "PodBuf moves its values with realloc and memmove");

public:
    PodBuf() noexcept = default;
    PodBuf(const PodBuf &o) { assign(o); }
    PodBuf(PodBuf &&o) noexcept : m_p(o.m_p), m_n(o.m_n), m_cap(o.m_cap) { o.m_p = nullptr; o.m_n = o.m_cap = 0; }
    PodBuf &operator=(const PodBuf &o) { if (this != &o) assign(o); return *this; }
    PodBuf &operator=(PodBuf &&o) noexcept
    {
        if (this != &o) {
            std::free(m_p);
            m_p = o.m_p; m_n = o.m_n; m_cap = o.m_cap;
            o.m_p = nullptr; o.m_n = o.m_cap = 0;
        }
        return *this;
    }
    ~PodBuf() { std::free(m_p); }

    size_t size() const noexcept { return m_n; }
    size_t capacity() const noexcept { return m_cap; }
    T *data() noexcept { return m_p; }
    const T *data() const noexcept { return m_p; }
    T &operator[](size_t i) noexcept { return m_p[i]; }
    const T &operator[](size_t i) const noexcept { return m_p[i]; }

    void push_back(T v)
    {
        if (m_n == m_cap)
            grow(m_n + 1);
        m_p[m_n++] = v;
    }
    // Room for n more values; returns where they go (the size grows by n).
    T *extend(size_t n)
    {
        if (m_n + n > m_cap)
            grow(m_n + n);
        T *at = m_p + m_n;
        m_n += n;
        return at;
    }
    void reserve(size_t n) { if (n > m_cap) setCapacity(n); }
    void resize(size_t n, T fill = T())
    {
        reserve(n);
        for (size_t i = m_n; i < n; ++i)
            m_p[i] = fill;
        m_n = n;
    }
    void insert(size_t at, T v)
    {
        push_back(v);
        std::memmove(m_p + at + 1, m_p + at, (m_n - 1 - at) * sizeof(T));
        m_p[at] = v;
    }
    void erase(size_t at)
    {
        std::memmove(m_p + at, m_p + at + 1, (m_n - at - 1) * sizeof(T));
        --m_n;
    }
    void clear() noexcept { std::free(m_p); m_p = nullptr; m_n = m_cap = 0; }

private:
    void grow(size_t need)
    {
        size_t cap = m_cap < 64 ? 64 : m_cap + m_cap / 2;
        setCapacity(cap < need ? need : cap);
    }
    void setCapacity(size_t cap)
    {
        T *p = static_cast<T *>(std::realloc(m_p, cap * sizeof(T)));
        if (!p)
            throw std::bad_alloc();
        m_p = p;
        m_cap = cap;
    }
    void assign(const PodBuf &o)
    {
        clear();
        if (o.m_n) {
            setCapacity(o.m_n);
            std::memcpy(m_p, o.m_p, o.m_n * sizeof(T));
            m_n = o.m_n;
        }
    }
    T *m_p = nullptr;
    size_t m_n = 0;
    size_t m_cap = 0;
};

// Entry numbers of a text column, one per row, kept in the narrowest width
// that holds the largest number so far (1, 2 or 4 bytes).
class CodeBuf {
public:
    size_t size() const noexcept { return m_n; }
    quint32 get(size_t i) const noexcept
    {
        switch (m_width) {
        case 1: return m_w1[i];
        case 2: return m_w2[i];
        default: return m_w4[i];
        }
    }
    void push(quint32 c)
    {
        fit(c);
        switch (m_width) {
        case 1: m_w1.push_back(quint8(c)); break;
        case 2: m_w2.push_back(quint16(c)); break;
        default: m_w4.push_back(c); break;
        }
        ++m_n;
    }
    void set(size_t i, quint32 c)
    {
        fit(c);
        switch (m_width) {
        case 1: m_w1[i] = quint8(c); break;
        case 2: m_w2[i] = quint16(c); break;
        default: m_w4[i] = c; break;
        }
    }
    void insert(size_t at, quint32 c)
    {
        fit(c);
        switch (m_width) {
        case 1: m_w1.insert(at, quint8(c)); break;
        case 2: m_w2.insert(at, quint16(c)); break;
        default: m_w4.insert(at, c); break;
        }
        ++m_n;
    }
    void erase(size_t at)
    {
        switch (m_width) {
        case 1: m_w1.erase(at); break;
        case 2: m_w2.erase(at); break;
        default: m_w4.erase(at); break;
        }
        --m_n;
    }
    void reserve(size_t n)
    {
        switch (m_width) {
        case 1: m_w1.reserve(n); break;
        case 2: m_w2.reserve(n); break;
        default: m_w4.reserve(n); break;
        }
    }
    void clear() noexcept
    {
        m_w1.clear();
        m_w2.clear();
        m_w4.clear();
        m_width = 1;
        m_n = 0;
    }
    size_t bytes() const noexcept { return m_w1.capacity() + m_w2.capacity() * 2 + m_w4.capacity() * 4; }

private:
    void fit(quint32 c)
    {
        if (m_width == 1 && c > 0xFF) {
            if (c > 0xFFFF)
                widenTo4();
            else
                widenTo2();
        } else if (m_width == 2 && c > 0xFFFF) {
            widenTo4();
        }
    }
    void widenTo2()
    {
        m_w2.reserve(m_w1.capacity() > m_n ? m_w1.capacity() : m_n + 1);
        for (size_t i = 0; i < m_n; ++i)
            m_w2.push_back(m_w1[i]);
        m_w1.clear();
        m_width = 2;
    }
    void widenTo4()
    {
        m_w4.reserve((m_width == 1 ? m_w1.capacity() : m_w2.capacity()) > m_n ? (m_width == 1 ? m_w1.capacity() : m_w2.capacity()) : m_n + 1);
        for (size_t i = 0; i < m_n; ++i)
            m_w4.push_back(get(i));
        m_w1.clear();
        m_w2.clear();
        m_width = 4;
    }
    PodBuf<quint8> m_w1;
    PodBuf<quint16> m_w2;
    PodBuf<quint32> m_w4;
    size_t m_n = 0;
    int m_width = 1;
};

// Values of one field for all rows, in compact typed storage: a null bitmap;
// numbers in one array of their natural width; text and bytes as an entry
// number per row into a pool of distinct values (repeated values such as
// account codes and partner names are stored once, while a column whose
// values are mostly distinct stops looking for repeats).
// Dates are Julian day numbers, date-times milliseconds since 1970-01-01 of
// the wall-clock time (no time zone shift).
class Column {
public:
    explicit Column(FieldType type = FieldType::Text);

    FieldType type() const noexcept { return m_type; }
    qsizetype size() const noexcept { return qsizetype(m_rows); }
    bool isNull(qsizetype row) const noexcept { return (m_nulls[size_t(row) >> 6] >> (size_t(row) & 63)) & 1; }

    // Raw typed reads; the value of a null cell is 0 / empty.
    double asDouble(qsizetype row) const noexcept;   // Float, Int32, Int64, Bool
    qint64 asInt64(qsizetype row) const noexcept;    // Int32, Int64, Bool, Date (Julian day), DateTime (ms)
    bool asBool(qsizetype row) const noexcept { return asInt64(row) != 0; }
    QByteArrayView bytes(qsizetype row) const noexcept; // String, Text (UTF-8), Bytes (raw)

    QString asString(qsizetype row) const;  // text as is; others in a plain, locale-free form
    QDate asDate(qsizetype row) const;       // Date and DateTime
    QDateTime asDateTime(qsizetype row) const;
    // Typed QVariant (QString, QDate, QDateTime, double, int, qlonglong, bool,
    // QByteArray), or an invalid QVariant for null.
    QVariant value(qsizetype row) const;

    // Text and bytes: the number of the row's value in the pool of distinct
    // values (equal numbers mean equal values; unequal numbers may still hold
    // equal values once the column stopped looking for repeats). 0 for null
    // and empty.
    quint32 textId(qsizetype row) const noexcept { return usesText() ? m_codes.get(size_t(row)) : 0; }

    void reserve(qsizetype rows);
    void clear();
    void appendNull();
    // Numbers an integer field (or a date the Julian day store) cannot hold
    // raise QuarvError, with nothing changed: NaN, infinities, out of range.
    void append(const QVariant &v);             // converts to the column's type; invalid/null -> null
    void appendDouble(double v);
    void appendInt64(qint64 v);                 // Int32, Int64, Bool, Date, DateTime
    void appendBytes(const char *data, qsizetype len); // String, Text, Bytes
    void set(qsizetype row, const QVariant &v); // null QVariant sets null
    // Raises, naming the field, what append and set would refuse.
    void check(const QVariant &v, const QString &fieldName = {}) const;
    void insertNull(qsizetype row);
    void removeAt(qsizetype row);

    // Bytes held, for memory accounting in benchmarks.
    qsizetype memoryUsage() const;

private:
    enum class Store : std::uint8_t { Doubles, Int8s, Int32s, Int64s, Text };
    FieldType m_type;
    Store m_store;
    size_t m_rows = 0;
    PodBuf<quint64> m_nulls;    // bit per row, 1 = null
    PodBuf<double> m_doubles;   // Float
    PodBuf<qint32> m_i32;       // Int32, Date
    PodBuf<qint64> m_i64;       // Int64, DateTime
    PodBuf<quint8> m_i8;        // Bool
    CodeBuf m_codes;            // Text: entry per row
    PodBuf<quint64> m_offsets;  // Text: entry i spans [m_offsets[i], m_offsets[i + 1]) of m_pool
    PodBuf<char> m_pool;        // Text: the bytes of the entries
    PodBuf<quint64> m_hash;     // Text: open-addressing table (hash high bits << 32 | entry), 0 = free
    bool m_lookup = true;       // still looking for repeated values
    quint32 m_last = 0;         // Text: entry of the last value added
    quint32 m_probes = 0;       // Text: look-ups since the last review
    quint32 m_misses = 0;       // ... and how many of them found nothing

    bool usesText() const noexcept { return m_store == Store::Text; }
    void pushNullBit(bool null);
    void setNullBit(size_t row, bool null) noexcept;
    quint32 intern(const char *data, size_t len);
    quint32 addEntry(const char *data, size_t len);
    void rehash(size_t size);
    void reviewLookup(bool found);
};

inline double Column::asDouble(qsizetype row) const noexcept
{
    switch (m_store) {
    case Store::Doubles: return m_doubles[size_t(row)];
    case Store::Int8s: return double(m_i8[size_t(row)]);
    case Store::Int32s: return double(m_i32[size_t(row)]);
    case Store::Int64s: return double(m_i64[size_t(row)]);
    case Store::Text: break;
    }
    return 0.0;
}

inline qint64 Column::asInt64(qsizetype row) const noexcept
{
    switch (m_store) {
    case Store::Doubles: return qint64(m_doubles[size_t(row)]);
    case Store::Int8s: return m_i8[size_t(row)];
    case Store::Int32s: return m_i32[size_t(row)];
    case Store::Int64s: return m_i64[size_t(row)];
    case Store::Text: break;
    }
    return 0;
}

inline QByteArrayView Column::bytes(qsizetype row) const noexcept
{
    if (!usesText())
        return {};
    const quint32 e = m_codes.get(size_t(row));
    const quint64 a = m_offsets[e];
    return QByteArrayView(m_pool.data() + a, qsizetype(m_offsets[e + 1] - a));
}

} // namespace db
