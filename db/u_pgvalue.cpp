#include "db/u_pgvalue.h"

#include "db/u_error.h"

#include <libpq-fe.h>

#include <charconv>
#include <cstring>
#include <limits>

namespace db::pg {

void ConnCloser::operator()(PGconn *c) const noexcept { PQfinish(c); }
void ResultDeleter::operator()(PGresult *r) const noexcept { PQclear(r); }
void CancelDeleter::operator()(PGcancel *c) const noexcept { PQfreeCancel(c); }

namespace {

// Server type OIDs (pg_type.dat).
enum : unsigned {
    kBool = 16, kBytea = 17, kChar = 18, kName = 19, kInt8 = 20, kInt2 = 21, kInt4 = 23, kText = 25,
    kOid = 26, kFloat4 = 700, kFloat8 = 701, kBpchar = 1042, kVarchar = 1043, kDate = 1082,
    kTimestamp = 1114, kTimestamptz = 1184, kNumeric = 1700,
};

inline bool digits(const char *p, int n, int *out) noexcept
{
    int v = 0;
    for (int i = 0; i < n; ++i) {
        const unsigned c = unsigned(p[i]) - '0';
        if (c > 9)
            return false;
        v = v * 10 + int(c);
    }
    *out = v;
    return true;
}

// The server's dates end in the year 5874897 and its timestamps earlier; a
// longer year is no value of the server's (and would overflow the day count).
constexpr qint64 kMaxYear = 9999999;

// "YYYY-MM-DD" (years may have more digits; " BC" suffix) -> Julian day; the
// number of characters read through *used. False for a year past kMaxYear.
bool parseDate(const char *v, int len, qint64 *jd, int *used) noexcept
{
    int i = 0;
    qint64 y = 0;
    while (i < len && v[i] >= '0' && v[i] <= '9') {
        y = y * 10 + (v[i++] - '0');
        if (y > kMaxYear)
            return false;
    }
    if (i < 4 || i + 6 > len || v[i] != '-' || v[i + 3] != '-')
        return false;
    int m = 0, d = 0;
    if (!digits(v + i + 1, 2, &m) || !digits(v + i + 4, 2, &d) || m < 1 || m > 12 || d < 1 || d > 31)
        return false;
    i += 6;
    if (len - i >= 3 && std::memcmp(v + len - 3, " BC", 3) == 0)
        y = 1 - y;
    *jd = julianDay(y, m, d);
    *used = i;
    return true;
}

// Date, then " HH:MM:SS[.ffffff]" and a zone we ignore -> ms of wall-clock time.
bool parseTimestamp(const char *v, int len, qint64 *ms) noexcept
{
    qint64 jd = 0;
    int i = 0;
    if (!parseDate(v, len, &jd, &i))
        return false;
    qint64 t = 0;
    if (i + 9 <= len && v[i] == ' ') {
        int h = 0, mi = 0, s = 0;
        if (!digits(v + i + 1, 2, &h) || v[i + 3] != ':' || !digits(v + i + 4, 2, &mi) || v[i + 6] != ':'
            || !digits(v + i + 7, 2, &s))
            return false;
        t = (h * 3600 + mi * 60 + s) * qint64(1000);
        i += 9;
        if (i < len && v[i] == '.') {
            int frac = 0, n = 0;
            ++i;
            while (i < len && v[i] >= '0' && v[i] <= '9') {
                if (n < 3) {
                    frac = frac * 10 + (v[i] - '0');
                    ++n;
                }
                ++i;
            }
            while (n++ < 3)
                frac *= 10;
            t += frac;
        }
    }
    *ms = (jd - kUnixEpochJulianDay) * kMsPerDay + t;
    return true;
}

inline int hexVal(char c) noexcept
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

QByteArray decodeBytea(const char *v, int len)
{
    if (len >= 2 && v[0] == '\\' && v[1] == 'x') {
        QByteArray out;
        out.resize((len - 2) / 2);
        char *o = out.data();
        for (int i = 2; i + 1 < len; i += 2)
            *o++ = char(hexVal(v[i]) << 4 | hexVal(v[i + 1]));
        return out;
    }
    size_t n = 0;
    unsigned char *raw = PQunescapeBytea(reinterpret_cast<const unsigned char *>(v), &n);
    QByteArray out(reinterpret_cast<const char *>(raw), qsizetype(n));
    PQfreemem(raw);
    return out;
}

QByteArray doubleText(double d)
{
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, d);
    QByteArray s(buf, res.ptr - buf);
    if (s == "inf")
        return QByteArrayLiteral("Infinity");
    if (s == "-inf")
        return QByteArrayLiteral("-Infinity");
    if (s == "nan" || s == "-nan")
        return QByteArrayLiteral("NaN");
    return s;
}

QByteArray dateTimeText(const QDateTime &dt)
{
    return dt.date().toString(Qt::ISODate).toLatin1() + ' ' + dt.time().toString(QStringLiteral("HH:mm:ss.zzz")).toLatin1();
}

} // namespace

FieldType fieldTypeFor(unsigned oid, int typmod, int *size)
{
    *size = 0;
    switch (oid) {
    case kBool: return FieldType::Bool;
    case kBytea: return FieldType::Bytes;
    case kInt2:
    case kInt4: return FieldType::Int32;
    case kInt8:
    case kOid: return FieldType::Int64;
    case kFloat4:
    case kFloat8:
    case kNumeric: return FieldType::Float;
    case kDate: return FieldType::Date;
    case kTimestamp:
    case kTimestamptz: return FieldType::DateTime;
    case kChar: *size = 1; return FieldType::String;
    case kBpchar:
    case kVarchar:
        if (typmod >= 4) {
            *size = typmod - 4;
            return FieldType::String;
        }
        return FieldType::Text;
    default: return FieldType::Text;
    }
}

void appendText(Column &c, const char *v, int len)
{
    switch (c.type()) {
    case FieldType::String:
    case FieldType::Text: c.appendBytes(v, len); return;
    case FieldType::Float: {
        double d = 0;
        const auto r = std::from_chars(v, v + len, d);
        if (r.ec == std::errc() || r.ec == std::errc::result_out_of_range)
            c.appendDouble(d);
        else
            c.appendNull();
        return;
    }
    case FieldType::Int32:
    case FieldType::Int64: {
        qint64 x = 0;
        const auto r = std::from_chars(v, v + len, x);
        if (r.ec == std::errc())
            c.appendInt64(x);
        else
            c.appendNull();
        return;
    }
    case FieldType::Bool: c.appendInt64(len > 0 && (v[0] == 't' || v[0] == 'T' || v[0] == '1') ? 1 : 0); return;
    case FieldType::Date: {
        qint64 jd = 0;
        int used = 0;
        // a date column keeps the day in 32 bits: outside them it is unreadable
        if (parseDate(v, len, &jd, &used) && jd >= std::numeric_limits<qint32>::min()
            && jd <= std::numeric_limits<qint32>::max())
            c.appendInt64(jd);
        else
            c.appendNull();
        return;
    }
    case FieldType::DateTime: {
        qint64 ms = 0;
        if (parseTimestamp(v, len, &ms))
            c.appendInt64(ms);
        else
            c.appendNull();
        return;
    }
    case FieldType::Bytes: {
        const QByteArray b = decodeBytea(v, len);
        c.appendBytes(b.constData(), b.size());
        return;
    }
    }
}

QVariant variantFromText(FieldType t, const char *v, int len)
{
    Column c(t);
    appendText(c, v, len);
    return c.value(0);
}

namespace {

// Text the server can take as it is: libpq ends a text value at its first NUL
// and UTF-8 has no form for half a surrogate pair.
void checkText(const QString &s, const QString &what)
{
    if (s.contains(QChar(0)))
        throw QuarvError(QStringLiteral("%1 contine caracterul NUL (cod 0), pe care baza de date nu il poate primi")
                             .arg(what));
    if (!s.isValidUtf16())
        throw QuarvError(QStringLiteral("%1 contine un caracter Unicode incomplet (surogat fara pereche)").arg(what));
}

// What travels as text must be whole; a date or a moment must be valid.
void checkSendable(const QVariant &v, const QString &what)
{
    switch (v.typeId()) {
    case QMetaType::QByteArray: break;
    case QMetaType::QDate:
        if (!v.toDate().isValid())
            throw QuarvError(QStringLiteral("%1 nu este o data valida").arg(what));
        break;
    case QMetaType::QDateTime:
        if (!v.toDateTime().isValid())
            throw QuarvError(QStringLiteral("%1 nu este o data si ora valida").arg(what));
        break;
    case QMetaType::QString: checkText(v.toString(), what); break;
    default:
        if (v.canConvert<QString>())
            checkText(v.toString(), what);
        break;
    }
}

QString valueWord(const QString &what)
{
    return what.isEmpty() ? QStringLiteral("Valoarea") : what;
}

} // namespace

Param encode(const QVariant &v, const QString &what)
{
    Param p;
    if (!v.isValid() || v.isNull())
        return p;
    checkSendable(v, valueWord(what));
    p.isNull = false;
    switch (v.typeId()) {
    case QMetaType::QByteArray:
        p.data = v.toByteArray();
        p.binary = true;
        p.typeOid = kBytea;
        break;
    case QMetaType::QDate: p.data = v.toDate().toString(Qt::ISODate).toLatin1(); break;
    case QMetaType::QDateTime: p.data = dateTimeText(v.toDateTime()); break;
    case QMetaType::Double:
    case QMetaType::Float: p.data = doubleText(v.toDouble()); break;
    case QMetaType::Bool: p.data = v.toBool() ? QByteArrayLiteral("t") : QByteArrayLiteral("f"); break;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Long: p.data = QByteArray::number(v.toLongLong()); break;
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::ULong: p.data = QByteArray::number(v.toULongLong()); break;
    default: p.data = v.toString().toUtf8(); break;
    }
    return p;
}

Param encodeAs(const QVariant &v, FieldType t, const QString &what)
{
    if (!v.isValid() || v.isNull())
        return {};
    if (isTextual(t) && v.typeId() == QMetaType::QByteArray)
        checkText(QString::fromUtf8(v.toByteArray()), valueWord(what));
    else if (t != FieldType::Bytes) // a text's UTF-8 bytes travel raw into bytes
        checkSendable(v, valueWord(what));
    // Route the value through a column of the field's type, so that what is
    // written is exactly what the dataset would show.
    Column c(t);
    c.append(v);
    if (c.isNull(0)) {
        // Not convertible (text in a number field, say): let the server judge
        // the text and report it.
        Param p = encode(v, what);
        p.typeOid = 0;
        return p;
    }
    Param p;
    p.isNull = false;
    switch (t) {
    case FieldType::Bytes:
        p.data = c.bytes(0).toByteArray();
        p.binary = true;
        break;
    case FieldType::String:
    case FieldType::Text: p.data = c.bytes(0).toByteArray(); break;
    case FieldType::Date: p.data = c.asDate(0).toString(Qt::ISODate).toLatin1(); break;
    case FieldType::DateTime: p.data = dateTimeText(c.asDateTime(0)); break;
    case FieldType::Float: p.data = doubleText(c.asDouble(0)); break;
    case FieldType::Int32:
    case FieldType::Int64: p.data = QByteArray::number(c.asInt64(0)); break;
    case FieldType::Bool: p.data = c.asBool(0) ? QByteArrayLiteral("t") : QByteArrayLiteral("f"); break;
    }
    return p;
}

} // namespace db::pg
