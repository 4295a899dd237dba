#include "db/u_textmover.h"

#include "db/u_dataset.h"
#include "db/u_error.h"

#include <QSaveFile>

#include <charconv>
#include <cstdio>

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

void moveToText(const DataSet &ds, const QString &path, QChar separator)
{
    QSaveFile file(path);
    auto fail = [&]() {
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, file.errorString()));
    };
    if (!file.open(QIODevice::WriteOnly))
        fail();
    const QByteArray sep = QString(separator).toUtf8();
    const int nf = ds.fieldCount();
    QByteArray out;
    out.reserve(1 << 20);
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
                const auto res = std::to_chars(buf, buf + sizeof buf, c.asDouble(r));
                out.append(buf, res.ptr - buf);
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
