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
bool isNumeric(FieldType t);
bool isTextual(FieldType t); // String or Text

struct FieldDef {
    QString name;
    FieldType type = FieldType::Text;
    int size = 0;          // declared length of a String, 0 when unknown
    bool required = false;
    bool readOnly = false;
    unsigned pgType = 0;   // server type OID, 0 for fields not from a query
};

// Values of one field for all rows. Fixed-width values sit in one vector per
// type, text and bytes in one byte buffer with (offset, length) per row.
// Dates are Julian day numbers, date-times milliseconds since 1970-01-01 of
// the wall-clock time (no time zone shift).
class Column {
public:
    explicit Column(FieldType type = FieldType::Text);

    FieldType type() const noexcept { return m_type; }
    qsizetype size() const noexcept { return qsizetype(m_nulls.size()); }
    bool isNull(qsizetype row) const noexcept { return m_nulls[size_t(row)] != 0; }

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

    void reserve(qsizetype rows);
    void clear();
    void appendNull();
    void append(const QVariant &v);             // converts to the column's type; invalid/null -> null
    void appendDouble(double v);
    void appendInt64(qint64 v);                 // Int32, Int64, Bool, Date, DateTime
    void appendBytes(const char *data, qsizetype len); // String, Text, Bytes
    void set(qsizetype row, const QVariant &v); // null QVariant sets null
    void insertNull(qsizetype row);
    void removeAt(qsizetype row);

    // Bytes held, for memory accounting in benchmarks.
    qsizetype memoryUsage() const;

private:
    struct Span { quint32 offset; quint32 length; };
    FieldType m_type;
    std::vector<quint8> m_nulls;
    std::vector<double> m_doubles;   // Float
    std::vector<qint64> m_ints;      // Int32, Int64, Bool, Date, DateTime
    std::vector<Span> m_spans;       // String, Text, Bytes
    QByteArray m_heap;               // their bytes

    bool usesDoubles() const noexcept { return m_type == FieldType::Float; }
    bool usesSpans() const noexcept {
        return m_type == FieldType::String || m_type == FieldType::Text || m_type == FieldType::Bytes;
    }
    void storeBytes(size_t row, const char *data, qsizetype len);
};

inline double Column::asDouble(qsizetype row) const noexcept
{
    if (m_type == FieldType::Float)
        return m_doubles[size_t(row)];
    if (usesSpans())
        return 0.0;
    return double(m_ints[size_t(row)]);
}

inline qint64 Column::asInt64(qsizetype row) const noexcept
{
    if (m_type == FieldType::Float)
        return qint64(m_doubles[size_t(row)]);
    if (usesSpans())
        return 0;
    return m_ints[size_t(row)];
}

inline QByteArrayView Column::bytes(qsizetype row) const noexcept
{
    if (!usesSpans())
        return {};
    const Span &s = m_spans[size_t(row)];
    return QByteArrayView(m_heap.constData() + s.offset, s.length);
}

} // namespace db
