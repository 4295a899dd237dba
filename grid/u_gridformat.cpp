#include "grid/u_gridformat.h"

#include "db/u_textmover.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace grid {

namespace {

// Decimal digits of |v| rounded half away from zero to `decimals` places,
// working from its 15 significant digits (what the operator typed, not the
// binary value's tail: 2.675 rounds to 2.68).
void roundedDigits(double absv, int decimals, QByteArray &intPart, QByteArray &fracPart)
{
    intPart.clear();
    fracPart.clear();
    if (!(absv > 0) || !std::isfinite(absv)) {
        intPart = "0";
        fracPart = QByteArray(decimals, '0');
        return;
    }
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, absv, std::chars_format::scientific, 14);
    // buf: d.dddddddddddddde[+-]xx
    char digits[16];
    digits[0] = buf[0];
    std::memcpy(digits + 1, buf + 2, 14);
    const char *ePos = static_cast<const char *>(std::memchr(buf, 'e', size_t(res.ptr - buf)));
    int exp = 0;
    std::from_chars(ePos + (ePos[1] == '+' ? 2 : 1), res.ptr, exp);
    int intDigits = exp + 1;              // digits before the point
    int keep = intDigits + decimals;      // significant digits kept
    QByteArray all;                       // the kept digits
    if (keep < 0) {
        intPart = "0";
        fracPart = QByteArray(decimals, '0');
        return;
    }
    if (keep >= 15) {
        all = QByteArray(digits, 15) + QByteArray(keep - 15, '0');
    } else {
        all = QByteArray(digits, keep);
        if (digits[keep] >= '5') {
            int i = keep - 1;
            while (i >= 0 && all[i] == '9') {
                all[i] = '0';
                --i;
            }
            if (i >= 0) {
                all[i] = char(all[i] + 1);
            } else {
                all.prepend('1');
                ++intDigits;
            }
        }
    }
    if (intDigits <= 0) {
        intPart = "0";
        fracPart = QByteArray(-intDigits, '0') + all;
    } else {
        intPart = all.left(intDigits);
        fracPart = all.mid(intDigits);
    }
    if (fracPart.size() < decimals)
        fracPart += QByteArray(decimals - fracPart.size(), '0');
    fracPart.truncate(decimals);
    // strip leading zeros of the integer part (a value < 1 rounded up to "1")
    int lead = 0;
    while (lead < intPart.size() - 1 && intPart[lead] == '0')
        ++lead;
    intPart.remove(0, lead);
}

bool allZero(const QByteArray &s)
{
    for (char c : s)
        if (c != '0')
            return false;
    return true;
}

} // namespace

NumberFormat::NumberFormat(const QString &pattern) : m_pattern(pattern)
{
    if (pattern.trimmed().isEmpty())
        return;
    const int semi = pattern.indexOf(QLatin1Char(';'));
    const QString pos = semi < 0 ? pattern : pattern.left(semi);
    if (!parsePart(pos, m_pos))
        return;
    if (semi >= 0) {
        if (!parsePart(pattern.mid(semi + 1), m_neg))
            return;
        m_hasNegative = true;
    }
    m_plain = false;
}

bool NumberFormat::parsePart(const QString &text, Part &part)
{
    part = Part{};
    part.minInt = 0;
    bool inNumber = false, afterNumber = false, afterPoint = false, sawDigit = false;
    for (QChar c : text) {
        const bool numChar = c == QLatin1Char('0') || c == QLatin1Char('#') || c == QLatin1Char(',')
            || (c == QLatin1Char('.') && !afterPoint);
        if (numChar && !afterNumber) {
            inNumber = true;
            if (c == QLatin1Char(',')) {
                if (!afterPoint)
                    part.grouping = true;
            } else if (c == QLatin1Char('.')) {
                afterPoint = true;
            } else {
                sawDigit = true;
                if (afterPoint) {
                    if (c == QLatin1Char('0'))
                        part.minDec = ++part.maxDec;
                    else
                        ++part.maxDec;
                } else if (c == QLatin1Char('0')) {
                    ++part.minInt;
                }
            }
        } else {
            if (inNumber)
                afterNumber = true;
            (afterNumber ? part.suffix : part.prefix) += c;
        }
    }
    if (!sawDigit && !part.grouping)
        return false;
    // "#,##0.0#": the '0's after '#' decimals count only once each
    if (part.maxDec < part.minDec)
        part.maxDec = part.minDec;
    return true;
}

QString NumberFormat::formatPart(const Part &p, double absValue, const QLocale &locale) const
{
    QByteArray ip, fp;
    roundedDigits(absValue, p.maxDec, ip, fp);
    while (fp.size() > p.minDec && fp.endsWith('0'))
        fp.chop(1);
    if (ip == "0" && p.minInt == 0)
        ip.clear();
    while (ip.size() < p.minInt)
        ip.prepend('0');
    QString out = p.prefix;
    if (p.grouping && ip.size() > 3) {
        const QString sep = locale.groupSeparator();
        for (int i = 0; i < ip.size(); ++i) {
            if (i > 0 && (ip.size() - i) % 3 == 0)
                out += sep;
            out += QLatin1Char(ip[i]);
        }
    } else {
        out += QLatin1String(ip);
    }
    if (!fp.isEmpty())
        out += locale.decimalPoint() + QLatin1String(fp);
    out += p.suffix;
    return out;
}

QString NumberFormat::format(double v, const QLocale &locale) const
{
    if (m_plain)
        return plainNumberText(v, locale);
    if (!std::isfinite(v))
        return plainNumberText(v, locale);
    const bool neg = v < 0;
    const double a = std::fabs(v);
    if (neg) {
        // a value that rounds to zero is shown as zero, without a sign
        QByteArray ip, fp;
        roundedDigits(a, (m_hasNegative ? m_neg : m_pos).maxDec, ip, fp);
        if (allZero(ip) && allZero(fp))
            return formatPart(m_pos, 0.0, locale);
        if (m_hasNegative)
            return formatPart(m_neg, a, locale);
        return QLatin1Char('-') + formatPart(m_pos, a, locale);
    }
    return formatPart(m_pos, a, locale);
}

void NumberFormat::appendUtf8(QByteArray &out, double v, const QLocale &locale) const
{
    out += format(v, locale).toUtf8();
}

namespace {

QByteArray spreadsheetPart(const QString &text)
{
    // Our ',' anywhere means "thousands": write it the spreadsheet's way.
    QByteArray out;
    bool grouping = false, wroteNumber = false, inNumber = false, afterNumber = false, afterPoint = false;
    QByteArray intDigits, dec;
    QByteArray prefix, suffix;
    for (QChar c : text) {
        const bool numChar = c == QLatin1Char('0') || c == QLatin1Char('#') || c == QLatin1Char(',')
            || (c == QLatin1Char('.') && !afterPoint);
        if (numChar && !afterNumber) {
            inNumber = true;
            if (c == QLatin1Char(','))
                grouping = grouping || !afterPoint;
            else if (c == QLatin1Char('.'))
                afterPoint = true;
            else if (afterPoint)
                dec += char(c.unicode());
            else
                intDigits += char(c.unicode());
        } else {
            if (inNumber)
                afterNumber = true;
            QByteArray lit = QString(c).toUtf8();
            if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
                lit = "\\" + lit;
            (afterNumber ? suffix : prefix) += lit;
        }
    }
    Q_UNUSED(wroteNumber);
    if (!intDigits.contains('0'))
        intDigits += '0';
    if (grouping) {
        while (intDigits.size() < 4)
            intDigits.prepend('#');
        intDigits.insert(intDigits.size() - 3, ',');
    }
    out = prefix + intDigits;
    if (!dec.isEmpty())
        out += '.' + dec;
    out += suffix;
    return out;
}

} // namespace

QByteArray NumberFormat::spreadsheetFormat() const
{
    if (m_plain)
        return {};
    const int semi = m_pattern.indexOf(QLatin1Char(';'));
    if (semi < 0)
        return spreadsheetPart(m_pattern);
    return spreadsheetPart(m_pattern.left(semi)) + ';' + spreadsheetPart(m_pattern.mid(semi + 1));
}

QString plainNumberText(double v, const QLocale &locale)
{
    // The same digits the data mover writes, so both CSV exports agree.
    QString out = QString::fromLatin1(db::plainNumber(v));
    const QString dp = locale.decimalPoint();
    if (dp != QLatin1String("."))
        out.replace(QLatin1Char('.'), dp);
    return out;
}

QByteArray spreadsheetDateFormat(const QString &qtPattern)
{
    // Spreadsheets use "mm" for months (and for minutes after an hour).
    QByteArray out;
    const QString p = qtPattern.isEmpty() ? QStringLiteral("dd.MM.yyyy") : qtPattern;
    for (int i = 0; i < p.size(); ++i) {
        const QChar c = p[i];
        if (c == QLatin1Char('M'))
            out += 'm';
        else if (c == QLatin1Char('m'))
            out += 'm';
        else if (c == QLatin1Char('z'))
            out += '0';
        else if (c == QLatin1Char('A') || c == QLatin1Char('a'))
            out += (c == QLatin1Char('A') ? "AM/PM" : "am/pm");
        else if (c == QLatin1Char('\''))
            out += '"';
        else
            out += QString(c).toUtf8();
    }
    return out;
}

} // namespace grid
