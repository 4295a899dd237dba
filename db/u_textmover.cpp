#include "db/u_textmover.h"

#include "db/u_busy.h"
#include "db/u_dataset.h"
#include "db/u_error.h"

#include <QSaveFile>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace db {

namespace {

void appendQuoted(QByteArray &out, QByteArrayView text)
{
    // Whole runs between quotes at a time: most values hold none.
    out += '"';
    const char *p = text.data(), *end = p + text.size();
    while (p < end) {
        const auto *q = static_cast<const char *>(std::memchr(p, '"', size_t(end - p)));
        if (!q) {
            out.append(p, end - p);
            break;
        }
        out.append(p, q - p + 1);
        out += '"';
        p = q + 1;
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

struct TextMover::Impl {
    const DataSet &ds;
    QString path;
    QByteArray sep, point;
    std::unique_ptr<QSaveFile> file;
    QByteArray out;
    qsizetype written = -1; // rows written; -1 before the header

    [[noreturn]] void fail() const
    {
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, file->errorString()));
    }
    void open()
    {
        file = std::make_unique<QSaveFile>(path);
        if (!file->open(QIODevice::WriteOnly))
            fail();
        out.resize(0);
        written = -1;
    }
    void flush(bool always)
    {
        if ((always || out.size() > (1 << 20) - 4096) && !out.isEmpty()) {
            if (file->write(out) != out.size())
                fail();
            out.resize(0);
        }
    }
    void header()
    {
        // The mark tells a spreadsheet opening the file that it is UTF-8 ("Brașov").
        out += "\xEF\xBB\xBF";
        for (int f = 0; f < ds.fieldCount(); ++f) {
            if (f)
                out += sep;
            out += ds.fieldDef(f).name.toUtf8();
        }
        out += "\r\n";
        written = 0;
    }
    void row(qsizetype r);
};

void TextMover::Impl::row(qsizetype r)
{
    char buf[64];
    const int nf = ds.fieldCount();
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
            const double v = c.asDouble(r);
            // The usual case without an allocation: shortest form, no exponent.
            const auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
            QByteArrayView n(buf, res.ptr - buf);
            QByteArray slow;
            if (n.contains('e') || n.contains('n') || n == "-0") {
                slow = plainNumber(v);
                n = slow;
            }
            if (point != "." && n.contains('.')) {
                slow = n.toByteArray().replace('.', point);
                n = slow;
            }
            if (n.contains(QByteArrayView(sep)))
                appendQuoted(out, n);
            else
                out.append(n.data(), n.size());
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
    flush(false);
}

TextMover::TextMover(const DataSet &ds, const QString &path, QChar separator, const QLocale &locale)
    : d(std::make_unique<Impl>(Impl{ds, path, QString(separator).toUtf8(), locale.decimalPoint().toUtf8(), {}, {}, -1}))
{
    d->out.reserve(1 << 20);
    d->open();
}

TextMover::~TextMover() = default;

void TextMover::writeRows(qsizetype upTo)
{
    if (d->written > upTo || (upTo == 0 && d->written >= 0))
        d->open(); // the rows are read anew from the start: so is the file
    if (d->written < 0) {
        if (d->ds.fieldCount() == 0)
            return; // no fields yet: the header waits for them
        d->header();
    }
    for (; d->written < upTo; ++d->written) {
        d->row(d->written);
        busy::beat(d->written + 1);
    }
}

void TextMover::finish()
{
    writeRows(d->ds.rowCount());
    d->flush(true);
    // The sync to disk of a large file runs aside while the windows are served.
    bool ok = false;
    busy::aside([&] { ok = d->file->commit(); });
    if (!ok)
        d->fail();
}

void moveToText(const DataSet &ds, const QString &path, QChar separator, const QLocale &locale)
{
    busy::Stretch stretch(busy::Phase::Writing, true, ds.rowCount());
    TextMover mover(ds, path, separator, locale);
    mover.finish();
}

} // namespace db
