#pragma once
// One export of a run's result, written the same way for the form's export
// buttons and for the command-line exporter: the grid as shown (CSV, tab
// text, .xlsx) or all the query's data (CSV). The file appears whole or not
// at all; a stop (db::busy::Cancelled) leaves no file and no temporary file.

#include "analyses/u_reportdesc.h"

#include <QChar>
#include <QString>

#include <functional>
#include <memory>

namespace db {
class DataSet;
class Query;
class TextMover;
} // namespace db

namespace ui {
class GridModel;
}

namespace rep {

class ReportExport {
public:
    ReportExport(ExportKind kind, QString path, QChar separator);
    ~ReportExport();
    ReportExport(const ReportExport &) = delete;
    ReportExport &operator=(const ReportExport &) = delete;

    // All the data, written while its rows still arrive (before the query
    // runs): the server goes on producing rows while the file is written.
    // `alsoTell` still hears the fetch's progress.
    void streamFrom(db::Query &query, std::function<void(qsizetype)> alsoTell = {});
    // Writes the file: the grid as shown, or all the data of `data` (the
    // rest of the stream, when streaming). The grid's locale gives all the
    // data's numbers their decimal point, as in the grid's own CSV.
    void write(const grid::GridModel &grid, const db::DataSet &data);

    ExportKind kind() const { return m_kind; }

private:
    ExportKind m_kind;
    QString m_path;
    QChar m_separator;
    std::unique_ptr<db::TextMover> m_stream;
};

} // namespace rep
