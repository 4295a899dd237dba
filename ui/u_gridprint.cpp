// A grid on paper from its view: the print dialog or the save dialog, then
// the pages, with the progress of any long work and "Renunta".

#include "db/u_busy.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_printdialog.h"
#include "ui/u_progress.h"
#include "ui/u_waitcursor.h"

#include <QPrinter>

namespace ui {

void GridTableView::printGrid()
{
    if (!onPaper())
        return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(10, 10, 10, 10),
                                      QPageLayout::Millimeter));
    if (!printDialog().choose(printer, window()))
        return;
    const paper::PageHeader header = m_paper.header();
    printer.setDocName(header.title);
    paper::PaperOptions options;
    options.abort = [&printer] { printer.abort(); };
    try {
        WaitCursor busy;
        ProgressWatch progress(window());
        paper::paintGrid(*m_model, header, printer, options);
    } catch (const db::busy::Cancelled &) {
        // stopped: the job was dropped, and nothing more to say
    }
}

void GridTableView::exportPdf()
{
    if (!onPaper())
        return;
    const QString filter = QStringLiteral("*.pdf");
    const QString chosen = fileDialog().saveFileName(filter, m_paper.pdfPath ? m_paper.pdfPath() : QString(), window());
    if (chosen.isEmpty())
        return;
    const QString file = withDefaultSuffix(chosen, filterSuffix(filter));
    try {
        WaitCursor busy;
        ProgressWatch progress(window());
        paper::exportGridPdf(*m_model, file, m_paper.header());
    } catch (const db::busy::Cancelled &) {
        // stopped: no file
    }
}

} // namespace ui
