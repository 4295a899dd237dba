// Cells: the typed value of a dataset row's cell, its text as displayed
// (the column's number or date format), and the export form appended as
// UTF-8 without a QString on the way for the common types.

#include "grid/u_gridmodel_p.h"

#include <charconv>

namespace grid {

namespace {

QString dateText(qint64 julianDay, const QString &fmt)
{
    const QDate d = QDate::fromJulianDay(julianDay);
    return d.toString(fmt.isEmpty() ? QStringLiteral("dd.MM.yyyy") : fmt);
}

QString dateTimeText(qint64 ms, const QString &fmt)
{
    if (!fmt.isEmpty())
        return wallClockOf(ms).toString(fmt);
    // Fractions of a second are shown when the value has them, never dropped.
    return wallClockOf(ms).toString(ms % 1000 == 0 ? QStringLiteral("dd.MM.yyyy hh:mm:ss")
                                                 : QStringLiteral("dd.MM.yyyy hh:mm:ss.zzz"));
}

void append2(QByteArray &out, int v)
{
    out += char('0' + v / 10);
    out += char('0' + v % 10);
}

} // namespace

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
    case db::FieldType::DateTime: return QVariant(wallClockOf(c.asInt64(row)));
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
            int y, m, day;
            QDate::fromJulianDay(c.asInt64(row)).getDate(&y, &m, &day);
            append2(out, day);
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

// ================================================================ GridModel: cells

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

} // namespace grid
