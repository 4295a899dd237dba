#include "analyses/u_reportexport.h"

#include "db/u_query.h"
#include "db/u_textmover.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridmodel.h"

namespace rep {

ReportExport::ReportExport(ExportKind kind, QString path, QChar separator)
    : m_kind(kind), m_path(std::move(path)), m_separator(separator)
{
}

ReportExport::~ReportExport() = default;

void ReportExport::streamFrom(db::Query &query, std::function<void(qsizetype)> alsoTell)
{
    if (m_kind != ExportKind::AllDataCsv)
        return;
    m_stream = std::make_unique<db::TextMover>(query, m_path, m_separator);
    query.setFetchProgress([this, tell = std::move(alsoTell)](qsizetype rows) {
        if (tell)
            tell(rows);
        m_stream->writeRows(rows);
    });
}

void ReportExport::write(const grid::GridModel &grid, const db::DataSet &data)
{
    switch (m_kind) {
    case ExportKind::GridCsv:
    case ExportKind::GridCsvStatus: grid::exportGridCsv(grid, m_path, m_separator); return;
    case ExportKind::GridText: grid::exportGridText(grid, m_path); return;
    case ExportKind::GridXlsx: grid::exportGridXlsx(grid, m_path); return;
    case ExportKind::AllDataCsv:
        if (m_stream)
            m_stream->finish();
        else
            db::moveToText(data, m_path, m_separator, grid.locale());
        return;
    }
}

} // namespace rep
