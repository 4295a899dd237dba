#include "db/u_field.h"



#include <cstring>

namespace db {

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

bool isTextual(FieldType t)
{
    return t == FieldType::String || t == FieldType::Text;
}

Column::Column(FieldType type) : m_type(type) {}

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

QDateTime Column::asDateTime(qsizetype row) const
{
    if (isNull(row))
        return {};
    if (m_type == FieldType::DateTime) {
        // Wall-clock time kept as if it were UTC, shown back without a shift.
        QDateTime utc = QDateTime::fromMSecsSinceEpoch(asInt64(row), Qt::UTC);
        return QDateTime(utc.date(), utc.time());
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
    m_nulls.reserve(size_t(rows));
    if (usesDoubles())
        m_doubles.reserve(size_t(rows));
    else if (usesSpans())
        m_spans.reserve(size_t(rows));
    else
        m_ints.reserve(size_t(rows));
}

void Column::clear()
{
    m_nulls.clear();
    m_doubles.clear();
    m_ints.clear();
    m_spans.clear();
    m_heap.clear();
    m_nulls.shrink_to_fit();
    m_doubles.shrink_to_fit();
    m_ints.shrink_to_fit();
    m_spans.shrink_to_fit();
}

void Column::appendNull()
{
    m_nulls.push_back(1);
    if (usesDoubles())
        m_doubles.push_back(0.0);
    else if (usesSpans())
        m_spans.push_back({0, 0});
    else
        m_ints.push_back(0);
}

void Column::appendDouble(double v)
{
    m_nulls.push_back(0);
    if (usesDoubles())
        m_doubles.push_back(v);
    else if (usesSpans())
        m_spans.push_back({0, 0});
    else
        m_ints.push_back(qint64(v));
}

void Column::appendInt64(qint64 v)
{
    m_nulls.push_back(0);
    if (usesDoubles())
        m_doubles.push_back(double(v));
    else if (usesSpans())
        m_spans.push_back({0, 0});
    else
        m_ints.push_back(v);
}

void Column::storeBytes(size_t row, const char *data, qsizetype len)
{
    const auto offset = quint32(m_heap.size());
    m_heap.append(data, len);
    m_spans[row] = {offset, quint32(len)};
}

void Column::appendBytes(const char *data, qsizetype len)
{
    if (!usesSpans()) {
        append(QVariant(QString::fromUtf8(data, len)));
        return;
    }
    m_nulls.push_back(0);
    m_spans.push_back({0, 0});
    storeBytes(m_spans.size() - 1, data, len);
}

namespace {

// Converts a value to what a column of the given type stores; false for null.
bool toStored(FieldType t, const QVariant &v, double *d, qint64 *i, QByteArray *b)
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
        *i = date.toJulianDay();
        return true;
    }
    case FieldType::DateTime: {
        QDateTime dt = v.typeId() == QMetaType::QDate ? QDateTime(v.toDate(), QTime(0, 0))
                     : v.typeId() == QMetaType::QString ? QDateTime::fromString(v.toString(), Qt::ISODateWithMs)
                                                        : v.toDateTime();
        if (!dt.isValid())
            return false;
        *i = QDateTime(dt.date(), dt.time(), Qt::UTC).toMSecsSinceEpoch();
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
        *i = v.toLongLong(&ok);
        if (!ok) {
            const double x = v.toDouble(&ok);
            *i = qint64(x);
        }
        return ok;
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
    appendNull();
    set(size() - 1, v);
}

void Column::set(qsizetype row, const QVariant &v)
{
    double d = 0;
    qint64 i = 0;
    QByteArray b;
    const size_t r = size_t(row);
    if (!toStored(m_type, v, &d, &i, &b)) {
        m_nulls[r] = 1;
        if (usesDoubles())
            m_doubles[r] = 0;
        else if (usesSpans())
            m_spans[r] = {0, 0};
        else
            m_ints[r] = 0;
        return;
    }
    m_nulls[r] = 0;
    if (usesDoubles())
        m_doubles[r] = d;
    else if (usesSpans())
        storeBytes(r, b.constData(), b.size());
    else
        m_ints[r] = i;
}

void Column::insertNull(qsizetype row)
{
    const size_t r = size_t(row);
    m_nulls.insert(m_nulls.begin() + qsizetype(r), 1);
    if (usesDoubles())
        m_doubles.insert(m_doubles.begin() + qsizetype(r), 0.0);
    else if (usesSpans())
        m_spans.insert(m_spans.begin() + qsizetype(r), Span{0, 0});
    else
        m_ints.insert(m_ints.begin() + qsizetype(r), 0);
}

void Column::removeAt(qsizetype row)
{
    m_nulls.erase(m_nulls.begin() + row);
    if (usesDoubles())
        m_doubles.erase(m_doubles.begin() + row);
    else if (usesSpans())
        m_spans.erase(m_spans.begin() + row);
    else
        m_ints.erase(m_ints.begin() + row);
}

qsizetype Column::memoryUsage() const
{
    return qsizetype(m_nulls.capacity() + m_doubles.capacity() * sizeof(double)
                     + m_ints.capacity() * sizeof(qint64) + m_spans.capacity() * sizeof(Span))
         + m_heap.capacity();
}

} // namespace db
