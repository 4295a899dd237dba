#pragma once
// A grid on paper, as it is shown: the visible columns in their order and
// relative widths, the rows that pass the filter, group rows (caption and
// count) with the rows of expanded groups, collapsed groups as their group
// row, group footers and the grand footer with their display formats.
//
// Every page has a header (the report's title, the period, the issuer, the
// date and time of printing), the column headers, and "Pagina N din M" at the
// bottom. The columns are scaled to the page's width, their text with them,
// down to a readable size; past it the columns continue on the following
// pages, the first column repeated there. Long text wraps to two lines and
// ends with an ellipsis beyond; numbers are right-aligned.
//
// Pages are painted as they are laid out, never all held at once. The work
// beats in a Writing stretch and can be stopped (db::busy::Cancelled).

#include <QDateTime>
#include <QFont>
#include <QString>

#include <functional>

class QPagedPaintDevice;

namespace grid { class GridModel; }

namespace paper {

// What the header of every page says.
struct PageHeader {
    QString title;
    QString period;     // as the editors show it, with the account where there is one
    QString issuer;
    QDateTime printedAt;
};

struct PaperOptions {
    // The text's family; the rows are set at most at basePointSize and, to fit
    // the page's width, at least at minPointSize.
    QFont font = QFont(QStringLiteral("Tahoma"));
    double basePointSize = 9;
    double minPointSize = 7;
    // Called when the work is stopped, before the pages painted so far are
    // closed (a printer drops its job here).
    std::function<void()> abort;
};

// "Pagina 2 din 7".
QString pageNumberText(int page, int pages);
// The header's second line: the period, then who printed and when.
QString issuerText(const PageHeader &header);

// Paints the grid on a device set up by the caller (the printer chosen in the
// print dialog, a PDF writer); returns the number of pages.
int paintGrid(const grid::GridModel &model, const PageHeader &header, QPagedPaintDevice &device,
              const PaperOptions &options = {});

// A PDF file, A4 landscape, its text real text with the fonts embedded;
// written completely or not at all. Failures raise QuarvError.
void exportGridPdf(const grid::GridModel &model, const QString &path, const PageHeader &header,
                   const PaperOptions &options = {});

} // namespace paper
