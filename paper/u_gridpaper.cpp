#include "paper/u_gridpaper.h"

#include "db/u_busy.h"
#include "db/u_error.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridmodel.h"

#include "paper/u_canvas.h"
#include "paper/u_pdfwriter.h"

#include <QPageSize>
#include <QSaveFile>

#include <algorithm>
#include <optional>
#include <vector>

namespace paper {

QString pageNumberText(int page, int pages)
{
    return QStringLiteral("Pagina %1 din %2").arg(page).arg(pages);
}

QString issuerText(const PageHeader &header)
{
    QString text;
    if (!header.issuer.isEmpty())
        text = QStringLiteral("Emitent: %1   ").arg(header.issuer);
    return text + QStringLiteral("Tiparit: ") + header.printedAt.toString(QStringLiteral("dd.MM.yyyy HH:mm"));
}

namespace {

// A grid's widths are screen pixels (96 to the inch) for its 8 pt text.
constexpr double kGridPointSize = 8;
constexpr double kPointsPerPixel = 72.0 / 96.0;
constexpr double kMetaPointSize = 8;

struct PaperColumn {
    int col = 0;          // the model's column
    double width = 0;     // device units
    bool right = false;   // numbers
    bool wraps = false;   // text: up to two lines
};

// The longest head of a text that fits a width, broken after a blank where
// there is one; the rest on a second line, ending with an ellipsis when it
// is longer still.
QStringList fitText(const QString &text, const Face &face, double width)
{
    qsizetype cut = std::max<qsizetype>(1, face.fitting(text, width));
    if (cut < text.size() && text.at(cut) != QLatin1Char(' ')) {
        const qsizetype blank = text.lastIndexOf(QLatin1Char(' '), cut - 1);
        if (blank > 0)
            cut = blank;
    }
    return {text.left(cut).trimmed(), face.elided(text.mid(cut).trimmed(), width)};
}

class GridPages {
public:
    GridPages(const grid::GridModel &model, const PageHeader &header, Canvas &canvas, const PaperOptions &options)
        : m_model(model), m_header(header), m_canvas(canvas), m_options(options), m_unit(canvas.unit()),
          m_pageWidth(canvas.size().width()), m_pageHeight(canvas.size().height())
    {
    }

    int paint()
    {
        const grid::GridModel::Hold hold(m_model);
        placeColumns();
        setFonts();
        m_rows = m_model.rowCount();
        m_hasFooter = m_model.footerVisible() && !m_model.footerSummaries().isEmpty();
        db::busy::Stretch stretch(db::busy::Phase::Writing, true, m_rows * qsizetype(1 + m_bands.size()));
        paginate();
        const int pages = int(m_starts.size() * m_bands.size());
        m_canvas.begin();
        try {
            int page = 0;
            for (size_t chunk = 0; chunk < m_starts.size(); ++chunk)
                for (size_t band = 0; band < m_bands.size(); ++band) {
                    m_canvas.startPage(++page);
                    paintPage(chunk, band, page, pages);
                    m_canvas.finishPage();
                }
        } catch (const db::busy::Cancelled &) {
            if (m_options.abort)
                m_options.abort();
            throw;
        }
        m_canvas.end();
        return pages;
    }

private:
    double pt(double points) const { return points * m_unit; }

    // Scaled to the page's width with their text; below the smallest size,
    // bands of columns that fit, each after the first column.
    void placeColumns()
    {
        const QList<int> visible = m_model.visibleColumns();
        double pixels = 0;
        for (int c : visible)
            pixels += std::max(1, m_model.column(c).width);
        const double widthPoints = m_pageWidth / m_unit;
        const double fit = pixels > 0 ? kGridPointSize * widthPoints / (pixels * kPointsPerPixel) : m_options.basePointSize;
        m_pointSize = std::min(m_options.basePointSize, fit);
        double perPixel = m_pageWidth / std::max(1.0, pixels);
        if (m_pointSize < m_options.minPointSize) {
            m_pointSize = m_options.minPointSize;
            perPixel = pt(kPointsPerPixel * m_pointSize / kGridPointSize);
        }
        for (int c : visible) {
            const grid::ColumnKind kind = m_model.columnKind(c);
            m_columns.push_back({c, std::max(1, m_model.column(c).width) * perPixel, kind == grid::ColumnKind::Number,
                                 kind == grid::ColumnKind::Text});
        }
        m_bands.push_back({});
        double used = 0;
        for (size_t i = 0; i < m_columns.size(); ++i) {
            std::vector<size_t> &band = m_bands.back();
            const bool full = band.size() > (m_bands.size() > 1 ? 1u : 0u);
            if (full && used + m_columns[i].width > m_pageWidth + 0.5) {
                m_bands.push_back({0});
                used = m_columns[0].width;
            }
            m_bands.back().push_back(i);
            used += m_columns[i].width;
        }
    }

    void setFonts()
    {
        QFont body = m_options.font;
        body.setPointSizeF(m_pointSize);
        QFont bold = body;
        bold.setBold(true);
        QFont italic = body;
        italic.setItalic(true);
        QFont title = m_options.font;
        title.setPointSizeF(m_options.basePointSize + 3);
        title.setBold(true);
        QFont meta = m_options.font;
        meta.setPointSizeF(kMetaPointSize);
        m_body.emplace(body, m_canvas);
        m_bold.emplace(bold, m_canvas);
        m_italic.emplace(italic, m_canvas);
        m_title.emplace(title, m_canvas);
        m_meta.emplace(meta, m_canvas);
        m_lineHeight = m_body->height();
        m_pad = pt(1.5);
        m_top = m_title->height() + m_meta->height() + pt(6);
        m_headerRow = m_bold->height() + 2 * m_pad;
        m_bottom = m_meta->height() + pt(4);
    }

    QString cellText(qsizetype row, const PaperColumn &c) const
    {
        if (m_model.columnKind(c.col) == grid::ColumnKind::Bool) {
            const int check = m_model.cellCheck(row, c.col);
            return check < 0 ? QString() : check ? QStringLiteral("Da") : QStringLiteral("Nu");
        }
        QString t = m_model.cellText(row, c.col);
        if (c.wraps)
            t.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return t;
    }

    // Summaries under a column (several stand one under the other).
    QString summaryText(qsizetype row, const PaperColumn &c) const
    {
        return row < 0 ? m_model.footerTextForColumn(c.col) : m_model.groupFooterTextForColumn(row, c.col);
    }

    int summaryLines(qsizetype row) const
    {
        int lines = 1;
        for (const PaperColumn &c : m_columns)
            lines = std::max(lines, int(summaryText(row, c).count(QLatin1Char('\n'))) + 1);
        return lines;
    }

    int rowLines(qsizetype row) const
    {
        switch (m_model.rowKind(row)) {
        case grid::RowKind::Group: return 1;
        case grid::RowKind::GroupFooter: return summaryLines(row);
        case grid::RowKind::Data: break;
        }
        for (const PaperColumn &c : m_columns)
            if (c.wraps && m_body->width(cellText(row, c)) > c.width - 2 * m_pad)
                return 2;
        return 1;
    }

    double rowHeight(int lines) const { return lines * m_lineHeight + 2 * m_pad; }

    // Which rows go on which page: the heights are those of every band, as
    // a column keeps its width in all of them.
    void paginate()
    {
        const double room = m_pageHeight - m_top - m_headerRow - m_bottom;
        m_lines.resize(size_t(m_rows));
        m_starts.push_back(0);
        double used = 0;
        for (qsizetype r = 0; r < m_rows; ++r) {
            const int lines = rowLines(r);
            m_lines[size_t(r)] = quint8(lines);
            const double h = rowHeight(lines);
            if (used > 0 && used + h > room) {
                m_starts.push_back(r);
                used = 0;
            }
            used += h;
            db::busy::beat(r + 1);
        }
        if (m_hasFooter) {
            m_footerLines = summaryLines(-1);
            if (used > 0 && used + rowHeight(m_footerLines) > room)
                m_starts.push_back(m_rows);
        }
    }

    // Set glyph by glyph like the cells: the text machinery would join "fi"
    // into one glyph, which a search for "Verificare" then misses.
    void paintHeader(int page, int pages)
    {
        const double titleHeight = m_title->height();
        paintLine(*m_title, 0, 0, m_pageWidth, false, m_header.title);
        paintLine(*m_meta, 0, titleHeight, m_pageWidth, false, m_header.period);
        paintLine(*m_meta, 0, titleHeight, m_pageWidth, true, issuerText(m_header));
        const QString number = pageNumberText(page, pages);
        const double numberWidth = m_meta->width(number);
        paintLine(*m_meta, (m_pageWidth - numberWidth) / 2, m_pageHeight - m_meta->height(), numberWidth + 1,
                  false, number);
    }

    // One line of a cell at its top, right-aligned for numbers; cut with an
    // ellipsis where it does not fit.
    void paintLine(Face &face, double left, double top, double width, bool right, QString text)
    {
        double w = face.width(text);
        if (w > width) {
            text = face.elided(text, width);
            w = face.width(text);
        }
        face.draw(QPointF(right ? left + width - w : left, top + face.ascent()), text);
    }

    void paintCell(Face &face, const QRectF &cell, bool right, const QString &text, bool twoLines)
    {
        if (text.isEmpty())
            return;
        const double left = cell.left() + m_pad, width = cell.width() - 2 * m_pad;
        double top = cell.top() + m_pad;
        if (!twoLines && !text.contains(QLatin1Char('\n')))
            return paintLine(face, left, top, width, right, text);
        const QStringList lines = text.contains(QLatin1Char('\n')) ? text.split(QLatin1Char('\n'))
                                                                   : fitText(text, face, width);
        for (const QString &line : lines) {
            paintLine(face, left, top, width, right, line);
            top += m_lineHeight;
        }
    }

    double bandWidth(size_t band) const
    {
        double w = 0;
        for (size_t i : m_bands[band])
            w += m_columns[i].width;
        return w;
    }

    void paintPage(size_t chunk, size_t band, int page, int pages)
    {
        paintHeader(page, pages);
        const std::vector<size_t> &cols = m_bands[band];
        const double width = bandWidth(band);
        double y = m_top;

        // the column headers
        m_canvas.fillRect(QRectF(0, y, width, m_headerRow), 225);
        double x = 0;
        for (size_t i : cols) {
            const PaperColumn &c = m_columns[i];
            paintCell(*m_bold, QRectF(x, y, c.width, m_headerRow), c.right, m_model.column(c.col).headerText(), false);
            x += c.width;
        }
        const double tableTop = y;
        y += m_headerRow;

        const qsizetype from = m_starts[chunk];
        const qsizetype to = chunk + 1 < m_starts.size() ? m_starts[chunk + 1] : m_rows;
        std::vector<QLineF> rules; // under each row, drawn at once
        rules.reserve(size_t(to - from) + cols.size() + 3);
        for (qsizetype r = from; r < to; ++r) {
            const double h = rowHeight(m_lines[size_t(r)]);
            paintRow(r, cols, width, y, h);
            rules.emplace_back(0, y + h, width, y + h);
            y += h;
            db::busy::beat(m_rows + ++m_painted);
        }
        if (m_hasFooter && chunk + 1 == m_starts.size()) {
            const double h = rowHeight(m_footerLines);
            const QLineF above(0, y, width, y);
            m_canvas.strokeLines(&above, 1, 0, pt(0.8));
            x = 0;
            for (size_t i : cols) {
                const PaperColumn &c = m_columns[i];
                paintCell(*m_bold, QRectF(x, y, c.width, h), c.right, summaryText(-1, c), false);
                x += c.width;
            }
            y += h;
        }
        // the grid's lines under the rows and around the columns
        x = 0;
        rules.emplace_back(0, tableTop, 0, y);
        for (size_t i : cols) {
            x += m_columns[i].width;
            rules.emplace_back(x, tableTop, x, y);
        }
        rules.emplace_back(0, tableTop, width, tableTop);
        rules.emplace_back(0, y, width, y);
        m_canvas.strokeLines(rules.data(), qsizetype(rules.size()), 160, pt(0.4));
        for (Face *face : {&*m_body, &*m_bold, &*m_italic, &*m_title, &*m_meta})
            face->flush();
    }

    void paintRow(qsizetype r, const std::vector<size_t> &cols, double width, double y, double h)
    {
        switch (m_model.rowKind(r)) {
        case grid::RowKind::Group: {
            m_canvas.fillRect(QRectF(0, y, width, h), 235);
            const double indent = pt(8) * m_model.rowLevel(r);
            paintCell(*m_bold, QRectF(indent, y, width - indent, h), false, m_model.groupRowText(r), false);
            return;
        }
        case grid::RowKind::GroupFooter: {
            m_canvas.fillRect(QRectF(0, y, width, h), 246);
            double x = 0;
            for (size_t i : cols) {
                const PaperColumn &c = m_columns[i];
                paintCell(*m_italic, QRectF(x, y, c.width, h), c.right, summaryText(r, c), false);
                x += c.width;
            }
            return;
        }
        case grid::RowKind::Data: break;
        }
        double x = 0;
        for (size_t i : cols) {
            const PaperColumn &c = m_columns[i];
            paintCell(*m_body, QRectF(x, y, c.width, h), c.right, cellText(r, c), c.wraps && m_lines[size_t(r)] > 1);
            x += c.width;
        }
    }

    const grid::GridModel &m_model;
    const PageHeader &m_header;
    Canvas &m_canvas;
    const PaperOptions &m_options;
    const double m_unit;        // device units per point
    const double m_pageWidth;
    const double m_pageHeight;

    std::vector<PaperColumn> m_columns;
    std::vector<std::vector<size_t>> m_bands; // indexes into m_columns, page by page across
    double m_pointSize = 9;
    std::optional<Face> m_body, m_bold, m_italic, m_title, m_meta;
    double m_lineHeight = 0, m_pad = 0, m_top = 0, m_headerRow = 0, m_bottom = 0;

    qsizetype m_rows = 0;
    qsizetype m_painted = 0;         // rows painted so far, page after page
    bool m_hasFooter = false;
    int m_footerLines = 1;
    std::vector<quint8> m_lines;     // text lines of each display row
    std::vector<qsizetype> m_starts; // first display row of each page down
};

} // namespace

int paintGrid(const grid::GridModel &model, const PageHeader &header, QPagedPaintDevice &device,
              const PaperOptions &options)
{
    PainterCanvas canvas(device);
    return GridPages(model, header, canvas, options).paint();
}

void exportGridPdf(const grid::GridModel &model, const QString &path, const PageHeader &header,
                   const PaperOptions &options)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        grid::writeFailed(path, file.errorString());
    // A4 across, 10 mm margins, in points
    const QSizeF a4 = QPageSize(QPageSize::A4).size(QPageSize::Point);
    const double margin = 10 * 72 / 25.4;
    PdfWriter pdf(file, a4.transposed(), QMarginsF(margin, margin, margin, margin));
    PdfCanvas canvas(pdf);
    GridPages(model, header, canvas, options).paint();
    pdf.finish(header.title);
    if (file.error() != QFileDevice::NoError)
        grid::writeFailed(path, file.errorString());
    grid::commitAside(file, path);
}

} // namespace paper
