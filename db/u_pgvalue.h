#pragma once
// Conversions between the server's text format and our stored values, shared
// by the query and the benchmarks. Internal to db/.

#include "db/u_field.h"

#include "db/u_pglink.h"

#include <QByteArray>
#include <QVariant>

namespace db::pg {

// The field type and declared length for a server type OID and type modifier.
FieldType fieldTypeFor(unsigned oid, int typmod, int *size);

// Appends one server text value (not null) to a column of its type. A value
// that cannot be read (a date of 'infinity', say) is stored as null.
void appendText(Column &c, const char *v, int len);

// The same value as a QVariant of the field's type (invalid when unreadable).
QVariant variantFromText(FieldType t, const char *v, int len);

// A value in the server's text format; QByteArray travels as raw bytea.
// With a field type the value is first converted to what that field holds.
// Text with a NUL or half a surrogate pair, an invalid date or moment raise
// QuarvError before anything is sent; `what` names the value in the message
// ("Parametrul 'x'"), "Valoarea" when empty.
Param encode(const QVariant &v, const QString &what = {});
Param encodeAs(const QVariant &v, FieldType t, const QString &what = {});

// Days from the civil date (proleptic Gregorian) to the Julian day number.
inline qint64 julianDay(qint64 y, int m, int d) noexcept
{
    const qint64 a = (14 - m) / 12;
    const qint64 yy = y + 4800 - a;
    const qint64 mm = m + 12 * a - 3;
    auto fdiv = [](qint64 x, qint64 q) { return x >= 0 ? x / q : -((-x + q - 1) / q); };
    return d + (153 * mm + 2) / 5 + 365 * yy + fdiv(yy, 4) - fdiv(yy, 100) + fdiv(yy, 400) - 32045;
}


} // namespace db::pg
