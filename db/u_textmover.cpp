#include "db/u_textmover.h"

#include "db/u_dataset.h"
#include "db/u_error.h"

#include <QSaveFile>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

namespace db {

namespace {

void appendQuoted(QByteArray &out, QByteArrayView text)
{
    out += '"';
    for (char ch : text) {
        if (ch == '"')
            out += '"';
        out += ch;
    }
    out += '"';
}

void appendDate(QByteArray &out, const QDate &d)
{
    char buf[16];
    const int n = std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", d.year(), d.month(), d.day());
    out.append(buf, n);
}

} // namespace

QByteArray plainNumber(double v)
{
    if (std::isnan(v))
        return QByteArrayLiteral("NaN");
    if (std::isinf(v))
        return v < 0 ? QByteArrayLiteral("-Infinity") : QByteArrayLiteral("Infinity");
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
    QByteArray s(buf, int(res.ptr - buf));
    if (s.contains('e')) {
        // No exponent form in a ledger: fixed, trailing zeros dropped.
        const double a = std::fabs(v);
        const int mag = a >= 1 ? int(std::floor(std::log10(a))) + 1 : 0;
        const int dec = std::max(0, 15 - mag);
        std::string big(400, '\0');
        const auto r2 = std::to_chars(big.data(), big.data() + big.size(), v, std::chars_format::fixed, dec);
        s = QByteArray(big.data(), int(r2.ptr - big.data()));
        if (s.contains('.')) {
            while (s.endsWith('0'))
                s.chop(1);
            if (s.endsWith('.'))
                s.chop(1);
        }
    }
    if (s == "-0")
        s = "0";
    return s;
}

void moveToText(const DataSet &ds, const QString &path, QChar separator, const QLocale &locale)
{
    QSaveFile file(path);
    auto fail = [&]() {
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, file.errorString()));
    };
    if (!file.open(QIODevice::WriteOnly))
        fail();
    const QByteArray sep = QString(separator).toUtf8();
    const QByteArray point = locale.decimalPoint().toUtf8();
    const int nf = ds.fieldCount();
    QByteArray out;
    out.reserve(1 << 20);
    // The mark tells a spreadsheet opening the file that it is UTF-8 ("Brașov").
    out += "\xEF\xBB\xBF";
    for (int f = 0; f < nf; ++f) {
        if (f)
            out += sep;
        out += ds.fieldDef(f).name.toUtf8();
    }
    out += "\r\n";
    char buf[64];
    for (qsizetype r = 0; r < ds.rowCount(); ++r) {
        for (int f = 0; f < nf; ++f) {
            if (f)
                out += sep;
            const Column &c = ds.column(f);
            // Values not read yet (deferred blobs) count as empty.
            if (c.isNull(r))
                continue;
            switch (c.type()) {
            case FieldType::String:
            case FieldType::Text: appendQuoted(out, c.bytes(r)); break;
            case FieldType::Bytes: appendQuoted(out, c.bytes(r).toByteArray().toHex()); break;
            case FieldType::Float: {
                QByteArray n = plainNumber(c.asDouble(r));
                if (point != ".")
                    n.replace('.', point);
                if (n.contains(sep))
                    appendQuoted(out, n);
                else
                    out += n;
                break;
            }
            case FieldType::Int32:
            case FieldType::Int64: {
                const auto res = std::to_chars(buf, buf + sizeof buf, c.asInt64(r));
                out.append(buf, res.ptr - buf);
                break;
            }
            case FieldType::Bool: out += c.asBool(r) ? "True" : "False"; break;
            case FieldType::Date: appendDate(out, c.asDate(r)); break;
            case FieldType::DateTime: {
                const QDateTime dt = c.asDateTime(r);
                appendDate(out, dt.date());
                const QTime t = dt.time();
                const int n = t.msec() ? std::snprintf(buf, sizeof buf, " %02d:%02d:%02d.%03d", t.hour(), t.minute(),
                                                       t.second(), t.msec())
                                       : std::snprintf(buf, sizeof buf, " %02d:%02d:%02d", t.hour(), t.minute(), t.second());
                out.append(buf, n);
                break;
            }
            }
        }
        out += "\r\n";
        if (out.size() > (1 << 20) - 4096) {
            if (file.write(out) != out.size())
                fail();
            out.resize(0);
        }
    }
    if (file.write(out) != out.size() || !file.commit())
        fail();
}

} // namespace db
