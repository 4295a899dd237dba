#pragma once
// Moves a whole dataset into a delimited text file: every field in the
// dataset's field order, a header line of field names, text values in double
// quotes, UTF-8 with a byte-order mark, the destination replaced (written
// through a temporary file, so a failure never leaves half a file).
//
// Numbers are written the way the grid's own CSV writes them, so that a
// spreadsheet reads both alike: plain decimals (never an exponent, up to 15
// significant digits), no thousands separators, the locale's decimal point;
// a value holding the field separator (a decimal comma in a comma-separated
// file) is enclosed in double quotes. Dates are ISO (2024-03-01), date-times
// "2024-03-01 08:05:00" (milliseconds when there are any).

#include <QByteArray>
#include <QChar>
#include <QLocale>
#include <QString>

#include <memory>

namespace db {

class DataSet;

// The same move row by row, for rows still arriving: writeRows(n) writes the
// rows not written yet below n (the header first, once the fields are known);
// finish() writes the rest and replaces the destination. A mover destroyed
// before finish() leaves the destination as it was. Rows read anew from the
// start (a query re-run after a dropped link) start the file anew.
class TextMover {
public:
    TextMover(const DataSet &ds, const QString &path, QChar separator, const QLocale &locale = QLocale());
    ~TextMover();
    TextMover(const TextMover &) = delete;
    TextMover &operator=(const TextMover &) = delete;
    void writeRows(qsizetype upTo);
    void finish();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

// Throws QuarvError with the file system's message when the file cannot be written.
void moveToText(const DataSet &ds, const QString &path, QChar separator, const QLocale &locale = QLocale());

// The plain text of a number with '.' as its decimal point: up to 15
// significant digits, never an exponent, no trailing zeros, "0" for -0.
QByteArray plainNumber(double v);

} // namespace db
