#pragma once
// Moves a whole dataset into a delimited text file: every field in the
// dataset's field order, a header line of field names, text values in double
// quotes, UTF-8, the destination replaced (written through a temporary file,
// so a failure never leaves half a file).

#include <QChar>
#include <QString>

namespace db {

class DataSet;

// Throws QuarvError with the file system's message when the file cannot be written.
void moveToText(const DataSet &ds, const QString &path, QChar separator);

} // namespace db
