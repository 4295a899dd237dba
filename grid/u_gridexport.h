#pragma once
// Exports of a grid as it is shown. One layout for every text variant:
//
//   line 1      the captions of the visible columns, in display order;
//   then, walking the rows that pass the filter with every group expanded:
//   group row   "caption: value (N)" in the first cell, the other cells empty;
//   data row    the cells as displayed (numbers and dates in the column's
//               display format, booleans "True"/"False", null empty);
//   group footer (when the grid has group summaries and shows group footers)
//               each group summary's text under its column, other cells empty;
//   footer      (when the grid has footer summaries and shows its footer) one
//               last line with each footer summary's text under its column.
//   Several summaries under one column are joined with "; ".
//
// CSV: the given separator; UTF-8 with a byte-order mark; a field is quoted
// (doubling inner quotes) when it holds the separator, a quote, a line break
// or leading/trailing blanks. Lines end with CRLF.
// Text: tab separated, every value enclosed in double quotes (inner quotes
// doubled), UTF-8 with a byte-order mark, CRLF.
// Spreadsheet (.xlsx): the same rows; numbers, dates and booleans as native
// cells carrying the column's (or summary's) display format; the header row
// bold and frozen; column widths from the grid; groups as outline levels
// (group rows and their footers at the group's level, their contents one
// level deeper, folding buttons above); more rows than a worksheet holds continue on further
// worksheets ("Sheet1", "Sheet2", ...), each starting with the header.
//
// Files are written completely or not at all, through QSaveFile (the workbook
// is built in a temporary file first), so every variant creates its file with
// the same mode and a replaced file keeps its own. Failures raise QuarvError
// with the file system's message.

#include <QChar>
#include <QString>

class QSaveFile;

namespace grid {

class GridModel;

struct XlsxOptions {
    // Rows per worksheet, header included (the format's limit; lower in tests).
    int maxRowsPerSheet = 1048576;
};

void exportGridCsv(const GridModel &model, const QString &path, QChar separator);
void exportGridText(const GridModel &model, const QString &path);
void exportGridXlsx(const GridModel &model, const QString &path, const XlsxOptions &options = {});

// For every writer of an export file (these and the printed ones):
// the failure they raise, naming the file ...
[[noreturn]] void writeFailed(const QString &path, const QString &why);
// ... and how a written file is put in place. The sync to disk that comes
// with it can take long on a large file: it runs aside, and a stop asked
// meanwhile comes too late (the file is whole and in place).
void commitAside(QSaveFile &file, const QString &path);

} // namespace grid
