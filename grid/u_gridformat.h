#pragma once
// Display formats of grid cells and summaries.
//
// A number pattern has the form "positive[;negative]":
//   ','  anywhere before the decimal point switches thousands separators on;
//   '0'  a digit always shown, '#' a digit shown only when needed;
//   '.'  the decimal point: the '0's after it are the decimals always shown,
//        the '#'s after them extra decimals shown only when not zero;
//   any other character is copied as it stands ("lei", "%" is NOT scaling).
// The negative part is applied to the absolute value, so ",0.00;-,0.00" shows
// -1234.5 as "-1,234.50" (with the locale's separators); without a negative
// part a '-' is put in front. Examples: ",0.00;-,0.00", "0", "#,##0.000".
//
// A date pattern is a QDate/QDateTime pattern ("dd.MM.yyyy", the default for
// dates; "dd.MM.yyyy hh:mm:ss" for date-times).
//
// The separators come from the QLocale given; the grid uses its own locale
// (GridModel::locale(), the system's unless set), so a Romanian desktop shows
// "1.234,50".

#include <QByteArray>
#include <QLocale>
#include <QString>

namespace grid {

class NumberFormat {
public:
    NumberFormat() = default;                       // plain: shortest exact form, no separators
    explicit NumberFormat(const QString &pattern);  // an unreadable pattern falls back to plain

    bool isPlain() const { return m_plain; }
    const QString &pattern() const { return m_pattern; }

    QString format(double v, const QLocale &locale) const;
    // Appends the UTF-8 text of v (the exporters' fast path).
    void appendUtf8(QByteArray &out, double v, const QLocale &locale) const;

    // The spreadsheet (.xlsx) number format equivalent of the pattern
    // (",0.00;-,0.00" -> "#,##0.00;-#,##0.00"); empty for plain.
    QByteArray spreadsheetFormat() const;

private:
    struct Part {
        bool grouping = false;
        int minInt = 1;        // '0's before the point
        int minDec = 0;        // '0's after the point
        int maxDec = 0;        // '0's and '#'s after the point
        QString prefix;
        QString suffix;
    };
    static bool parsePart(const QString &text, Part &part);
    QString formatPart(const Part &p, double absValue, const QLocale &locale) const;

    QString m_pattern;
    bool m_plain = true;
    bool m_hasNegative = false;
    Part m_pos;
    Part m_neg;
};

// The plain text of a double: up to 15 significant digits, no exponent, no
// trailing zeros, the locale's decimal point (no thousands separators).
QString plainNumberText(double v, const QLocale &locale);

// QDate pattern of a spreadsheet date format ("dd.MM.yyyy" -> "dd.mm.yyyy",
// "dd.MM.yyyy hh:mm:ss" -> "dd.mm.yyyy hh:mm:ss").
QByteArray spreadsheetDateFormat(const QString &qtPattern);

} // namespace grid
