// The filter: the filter row's text of each column and the programmatic
// conditions, all combined with AND.

#include "ui/core/u_gridmodel_p.h"

namespace ui {

namespace {

bool hasHighBit(QByteArrayView v)
{
    for (char ch : v)
        if (static_cast<unsigned char>(ch) >= 0x80)
            return true;
    return false;
}

// Whether ASCII text holds an ASCII needle already in lower case, ignoring case.
bool asciiContainsFolded(QByteArrayView hay, QByteArrayView needle)
{
    const qsizetype n = hay.size(), nn = needle.size();
    if (nn == 0)
        return true;
    const char *p = hay.data(), *nd = needle.data();
    const char c0 = nd[0];
    const char c0u = (c0 >= 'a' && c0 <= 'z') ? char(c0 - 32) : c0;
    for (qsizetype i = 0; i + nn <= n; ++i) {
        if (p[i] != c0 && p[i] != c0u)
            continue;
        qsizetype k = 1;
        for (; k < nn; ++k) {
            char x = p[i + k];
            if (x >= 'A' && x <= 'Z')
                x = char(x + 32);
            if (x != nd[k])
                break;
        }
        if (k == nn)
            return true;
    }
    return false;
}

template <typename T>
bool compareOp(FilterOp op, T a, T b)
{
    switch (op) {
    case FilterOp::Eq: return a == b;
    case FilterOp::Ne: return a != b;
    case FilterOp::Lt: return a < b;
    case FilterOp::Le: return a <= b;
    case FilterOp::Gt: return a > b;
    case FilterOp::Ge: return a >= b;
    default: return false;
    }
}

bool nearlyEqual(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(1.0, std::abs(b));
}

} // namespace

bool parseNumber(QString s, const QLocale &loc, double &out)
{
    s.remove(QLatin1Char(' '));
    bool ok = false;
    out = loc.toDouble(s, &ok);
    if (ok)
        return true;
    out = QLocale::c().toDouble(s, &ok);
    if (ok)
        return true;
    QString t = s;
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    out = QLocale::c().toDouble(t, &ok);
    return ok;
}

bool parseDate(const QString &s, QDate &out)
{
    for (const char *f : {"dd.MM.yyyy", "d.M.yyyy", "yyyy-MM-dd", "dd/MM/yyyy", "d/M/yyyy", "dd.MM.yy"}) {
        out = QDate::fromString(s, QLatin1String(f));
        if (out.isValid()) {
            if (std::strcmp(f, "dd.MM.yy") == 0 && out.year() < 1950)
                out = out.addYears(100);
            return true;
        }
    }
    return false;
}

int boolWord(const QString &raw)
{
    const QString s = raw.trimmed().toLower();
    if (s == QLatin1String("1") || s == QLatin1String("true") || s == QLatin1String("da")
        || s == QLatin1String("adevarat") || s == QLatin1String("checked"))
        return 1;
    if (s == QLatin1String("0") || s == QLatin1String("false") || s == QLatin1String("nu")
        || s == QLatin1String("fals") || s == QLatin1String("unchecked"))
        return 0;
    return -1;
}

void GridModel::Impl::compileFilter(ColState &cs)
{
    CompiledFilter f;
    const QString raw = cs.c.filterText;
    if (raw.trimmed().isEmpty()) {
        cs.filter = f;
        return;
    }
    switch (cs.kind) {
    case ColumnKind::Missing:
        f.op = FilterOp::NoMatch;
        break;
    case ColumnKind::Text:
    case ColumnKind::Bytes:
        f.op = FilterOp::Contains;
        f.needle = foldText(raw).toUtf8();
        break;
    case ColumnKind::Bool: {
        const int b = boolWord(raw);
        f.op = b == 1 ? FilterOp::IsTrue : b == 0 ? FilterOp::IsFalse : FilterOp::Invalid;
        break;
    }
    case ColumnKind::Number:
    case ColumnKind::Date:
    case ColumnKind::DateTime: {
        QString s = raw.trimmed();
        FilterOp op = FilterOp::Eq;
        static const std::pair<const char *, FilterOp> ops[] = {
            {"<>", FilterOp::Ne}, {">=", FilterOp::Ge}, {"<=", FilterOp::Le}, {"!=", FilterOp::Ne},
            {"=", FilterOp::Eq},  {">", FilterOp::Gt},  {"<", FilterOp::Lt},
        };
        for (const auto &[txt, o] : ops) {
            if (s.startsWith(QLatin1String(txt))) {
                op = o;
                s = s.mid(int(std::strlen(txt))).trimmed();
                break;
            }
        }
        bool ok;
        if (cs.kind == ColumnKind::Number) {
            ok = parseNumber(s, locale, f.number);
        } else {
            QDate d;
            ok = parseDate(s, d);
            f.day = d.toJulianDay();
            f.isDate = true;
        }
        f.op = ok ? op : FilterOp::Invalid;
        break;
    }
    }
    cs.filter = f;
}

void GridModel::Impl::computePass()
{
    const qsizetype rows = n();
    bool any = false;
    for (const ColState &cs : cols)
        if (cs.filter.op != FilterOp::None)
            any = true;
    if (progActive && !conds.isEmpty())
        any = true;
    pass.clear();
    if (!any || rows == 0)
        return;
    pass.assign(size_t(rows), 1);
    quint8 *ps = pass.data();
    auto clearAll = [&] { std::fill(pass.begin(), pass.end(), quint8(0)); };

    for (ColState &cs : cols) {
        const CompiledFilter &f = cs.filter;
        if (f.op == FilterOp::None)
            continue;
        if (f.op == FilterOp::NoMatch || f.op == FilterOp::Invalid) {
            clearAll();
            continue;
        }
        const db::Column &c = column(cs.field);
        if (f.op == FilterOp::Contains) {
            // one test per distinct value, then a look-up per row
            TextDict &d = dict(cs.field);
            foldDict(d);
            const QByteArrayView needle(f.needle);
            const bool needleAscii = !hasHighBit(needle);
            std::vector<quint8> match(d.values.size());
            for (size_t i = 0; i < d.values.size(); ++i) {
                const QByteArrayView v(d.foldHeap.constData() + d.foldOffsets[i],
                                       qsizetype(d.foldOffsets[i + 1] - d.foldOffsets[i]));
                match[i] = needleAscii ? asciiContainsFolded(v, needle) : v.indexOf(needle) >= 0;
            }
            const qint32 *ids = d.ids.data();
            for (qsizetype r = 0; r < rows; ++r) {
                const qint32 id = ids[r];
                ps[r] &= quint8(id >= 0 && match[size_t(id)]);
            }
        } else if (f.op == FilterOp::IsTrue || f.op == FilterOp::IsFalse) {
            const bool want = f.op == FilterOp::IsTrue;
            for (qsizetype r = 0; r < rows; ++r)
                ps[r] &= quint8(!c.isNull(r) && c.asBool(r) == want);
        } else if (cs.kind == ColumnKind::Number) {
            const bool eq = f.op == FilterOp::Eq || f.op == FilterOp::Ne;
            for (qsizetype r = 0; r < rows; ++r) {
                if (!ps[r])
                    continue;
                if (c.isNull(r)) {
                    ps[r] = 0;
                    continue;
                }
                const double v = c.asDouble(r);
                bool ok;
                if (eq)
                    ok = nearlyEqual(v, f.number) == (f.op == FilterOp::Eq);
                else
                    ok = compareOp(f.op, v, f.number);
                ps[r] = ok;
            }
        } else {
            const bool dt = cs.kind == ColumnKind::DateTime;
            for (qsizetype r = 0; r < rows; ++r) {
                if (!ps[r])
                    continue;
                if (c.isNull(r)) {
                    ps[r] = 0;
                    continue;
                }
                qint64 day = c.asInt64(r);
                if (dt)
                    day = kUnixEpochJulianDay + (day >= 0 ? day / kMsPerDay : (day - kMsPerDay + 1) / kMsPerDay);
                ps[r] = compareOp(f.op, day, f.day);
            }
        }
    }

    if (progActive) {
        for (const FilterCondition &fc : conds) {
            const int field = fieldOf(fc.fieldName);
            if (field < 0) {
                clearAll();
                continue;
            }
            const db::Column &c = column(field);
            const db::FieldType t = ds->fieldDef(field).type;
            if (!fc.value.isValid() || fc.value.isNull()) {
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(c.isNull(r));
                continue;
            }
            switch (kindOf(t)) {
            case ColumnKind::Text:
            case ColumnKind::Bytes: {
                TextDict &d = dict(field);
                foldDict(d);
                const QByteArray want = foldText(fc.value.toString()).toUtf8();
                std::vector<quint8> match(d.values.size());
                for (size_t i = 0; i < d.values.size(); ++i)
                    match[i] = QByteArrayView(d.foldHeap.constData() + d.foldOffsets[i],
                                              qsizetype(d.foldOffsets[i + 1] - d.foldOffsets[i]))
                        == QByteArrayView(want);
                for (qsizetype r = 0; r < rows; ++r) {
                    const qint32 id = d.ids[size_t(r)];
                    ps[r] &= quint8(id >= 0 && match[size_t(id)]);
                }
                break;
            }
            case ColumnKind::Bool: {
                int b = fc.value.typeId() == QMetaType::Bool ? int(fc.value.toBool()) : boolWord(fc.value.toString());
                if (b < 0) {
                    clearAll();
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(!c.isNull(r) && int(c.asBool(r)) == b);
                break;
            }
            case ColumnKind::Number: {
                double v = 0;
                bool ok = false;
                if (fc.value.typeId() == QMetaType::QString)
                    ok = parseNumber(fc.value.toString(), locale, v);
                else
                    v = fc.value.toDouble(&ok);
                if (!ok) {
                    clearAll();
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r)
                    ps[r] &= quint8(!c.isNull(r) && nearlyEqual(c.asDouble(r), v));
                break;
            }
            case ColumnKind::Date:
            case ColumnKind::DateTime: {
                QDate d;
                if (fc.value.typeId() == QMetaType::QDate)
                    d = fc.value.toDate();
                else if (fc.value.typeId() == QMetaType::QDateTime)
                    d = fc.value.toDateTime().date();
                else
                    parseDate(fc.value.toString(), d);
                if (!d.isValid()) {
                    clearAll();
                    break;
                }
                const bool isDt = t == db::FieldType::DateTime;
                if (isDt && fc.value.typeId() == QMetaType::QDateTime) {
                    const QDateTime want = fc.value.toDateTime();
                    for (qsizetype r = 0; r < rows; ++r)
                        ps[r] &= quint8(!c.isNull(r) && wallClock(c.asInt64(r)) == want);
                    break;
                }
                for (qsizetype r = 0; r < rows; ++r) {
                    qint64 day = c.asInt64(r);
                    if (isDt)
                        day = kUnixEpochJulianDay + (day >= 0 ? day / kMsPerDay : (day - kMsPerDay + 1) / kMsPerDay);
                    ps[r] &= quint8(!c.isNull(r) && day == d.toJulianDay());
                }
                break;
            }
            case ColumnKind::Missing: clearAll(); break;
            }
        }
    }
}

} // namespace ui
