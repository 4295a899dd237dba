#include "paper/u_gridpaper.h"

#include "db/u_busy.h"
#include "db/u_error.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridmodel.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
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

// A font on the device. The books' texts are set glyph by glyph, each
// character's glyph and advance found once: no shaping, which plain Latin
// text with the Romanian letters does not need and which would cost most of
// the time of a long print. A text with a character the font lacks (or one
// beyond the table) goes through the full text machinery, which finds a
// font that has it.
class Face {
public:
    Face(const QFont &f, QPaintDevice *device)
        : font(f), fm(f, device), ascent(fm.ascent()), m_raw(QRawFont::fromFont(f)), m_table(kTableSize)
    {
        m_raw.setPixelSize(f.pointSizeF() * device->logicalDpiY() / 72.0);
    }

    double width(const QString &text) const
    {
        double w = 0;
        for (QChar c : text) {
            const Glyph *g = glyph(c.unicode());
            if (!g)
                return fm.horizontalAdvance(text);
            w += g->advance;
        }
        return w;
    }

    // Sets a text on the page; its glyphs wait for flush() with the rest of
    // the page's in this face, as one run: every run costs the page a font
    // selection and a text object of its own.
    void draw(QPainter &p, const QPointF &baseline, const QString &text) const
    {
        const qsizetype mark = m_indexes.size();
        double x = baseline.x();
        for (QChar c : text) {
            const Glyph *g = glyph(c.unicode());
            if (!g) {
                m_indexes.resize(mark);
                m_positions.resize(mark);
                p.setFont(font);
                p.drawText(baseline, text);
                return;
            }
            m_indexes.append(g->index);
            m_positions.append(QPointF(x, baseline.y()));
            x += g->advance;
        }
    }

    void flush(QPainter &p) const
    {
        if (m_indexes.isEmpty())
            return;
        QGlyphRun run;
        run.setRawFont(m_raw);
        run.setGlyphIndexes(m_indexes);
        run.setPositions(m_positions);
        p.drawGlyphRun(QPointF(0, 0), run);
        m_indexes.clear();
        m_positions.clear();
    }

    const QFont font;
    const QFontMetricsF fm;
    const double ascent;

private:
    static constexpr char16_t kTableSize = 0x0800; // Latin, Greek, Cyrillic
    struct Glyph {
        quint32 index = 0;
        double advance = 0;
        bool known = false;
    };

    const Glyph *glyph(char16_t c) const
    {
        if (c >= kTableSize || !m_raw.isValid())
            return nullptr;
        Glyph &g = m_table[c];
        if (!g.known) {
            const QChar ch(c);
            int n = 1;
            QPointF advance;
            if (m_raw.glyphIndexesForChars(&ch, 1, &g.index, &n) && n == 1 && g.index != 0
                && m_raw.advancesForGlyphIndexes(&g.index, &advance, 1))
                g.advance = advance.x();
            else
                g.index = 0;
            g.known = true;
        }
        return g.index ? &g : nullptr;
    }

    QRawFont m_raw;
    mutable std::vector<Glyph> m_table; // by character
    mutable QList<quint32> m_indexes;   // the page's glyphs not flushed yet
    mutable QList<QPointF> m_positions;
};

// The longest head of a text that fits a width, broken after a blank where
// there is one; the rest on a second line, ending with an ellipsis when it
// is longer still.
QStringList fitText(const QString &text, const QFontMetricsF &fm, double width, bool twoLines)
{
    if (!twoLines)
        return {fm.elidedText(text, Qt::ElideRight, width)};
    qsizetype lo = 1, hi = text.size();
    while (lo < hi) {
        const qsizetype mid = (lo + hi + 1) / 2;
        if (fm.horizontalAdvance(text.left(mid)) <= width)
            lo = mid;
        else
            hi = mid - 1;
    }
    qsizetype cut = lo;
    if (cut < text.size() && text.at(cut) != QLatin1Char(' ')) {
        const qsizetype blank = text.lastIndexOf(QLatin1Char(' '), cut - 1);
        if (blank > 0)
            cut = blank;
    }
    return {text.left(cut).trimmed(), fm.elidedText(text.mid(cut).trimmed(), Qt::ElideRight, width)};
}

class GridPages {
public:
    GridPages(const grid::GridModel &model, const PageHeader &header, QPagedPaintDevice &device,
              const PaperOptions &options)
        : m_model(model), m_header(header), m_device(device), m_options(options),
          m_unit(device.logicalDpiY() / 72.0), m_pageWidth(device.width()), m_pageHeight(device.height())
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
        QPainter p;
        if (!p.begin(&m_device))
            throw QuarvError(QStringLiteral("Tiparirea nu poate incepe."));
        try {
            int page = 0;
            for (size_t chunk = 0; chunk < m_starts.size(); ++chunk)
                for (size_t band = 0; band < m_bands.size(); ++band) {
                    if (page > 0 && !m_device.newPage())
                        throw QuarvError(QStringLiteral("Pagina %1 nu poate fi tiparita.").arg(page + 1));
                    paintPage(p, chunk, band, ++page, pages);
                }
        } catch (const db::busy::Cancelled &) {
            if (m_options.abort)
                m_options.abort();
            throw;
        }
        p.end();
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
        m_body.emplace(body, &m_device);
        m_bold.emplace(bold, &m_device);
        m_italic.emplace(italic, &m_device);
        m_title.emplace(title, &m_device);
        m_meta.emplace(meta, &m_device);
        m_lineHeight = m_body->fm.height();
        m_pad = pt(1.5);
        m_top = m_title->fm.height() + m_meta->fm.height() + pt(6);
        m_headerRow = m_bold->fm.height() + 2 * m_pad;
        m_bottom = m_meta->fm.height() + pt(4);
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
    void paintHeader(QPainter &p, int page, int pages)
    {
        const double titleHeight = m_title->fm.height();
        paintLine(p, *m_title, 0, 0, m_pageWidth, false, m_header.title);
        paintLine(p, *m_meta, 0, titleHeight, m_pageWidth, false, m_header.period);
        paintLine(p, *m_meta, 0, titleHeight, m_pageWidth, true, issuerText(m_header));
        const QString number = pageNumberText(page, pages);
        const double numberWidth = m_meta->width(number);
        paintLine(p, *m_meta, (m_pageWidth - numberWidth) / 2, m_pageHeight - m_meta->fm.height(), numberWidth + 1,
                  false, number);
    }

    // One line of a cell at its top, right-aligned for numbers; cut with an
    // ellipsis where it does not fit.
    void paintLine(QPainter &p, const Face &face, double left, double top, double width, bool right, QString text)
    {
        double w = face.width(text);
        if (w > width) {
            text = face.fm.elidedText(text, Qt::ElideRight, width);
            w = face.width(text);
        }
        face.draw(p, QPointF(right ? left + width - w : left, top + face.ascent), text);
    }

    void paintCell(QPainter &p, const Face &face, const QRectF &cell, bool right, const QString &text, bool twoLines)
    {
        if (text.isEmpty())
            return;
        const double left = cell.left() + m_pad, width = cell.width() - 2 * m_pad;
        double top = cell.top() + m_pad;
        if (!twoLines && !text.contains(QLatin1Char('\n')))
            return paintLine(p, face, left, top, width, right, text);
        const QStringList lines = text.contains(QLatin1Char('\n')) ? text.split(QLatin1Char('\n'))
                                                                   : fitText(text, face.fm, width, true);
        for (const QString &line : lines) {
            paintLine(p, face, left, top, width, right, line);
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

    void paintPage(QPainter &p, size_t chunk, size_t band, int page, int pages)
    {
        paintHeader(p, page, pages);
        const std::vector<size_t> &cols = m_bands[band];
        const double width = bandWidth(band);
        const QPen line(QColor(160, 160, 160), pt(0.4));
        double y = m_top;

        // the column headers
        p.fillRect(QRectF(0, y, width, m_headerRow), QColor(225, 225, 225));
        p.setPen(Qt::black);
        double x = 0;
        for (size_t i : cols) {
            const PaperColumn &c = m_columns[i];
            paintCell(p, *m_bold, QRectF(x, y, c.width, m_headerRow), c.right, m_model.column(c.col).headerText(), false);
            x += c.width;
        }
        const double tableTop = y;
        y += m_headerRow;

        const qsizetype from = m_starts[chunk];
        const qsizetype to = chunk + 1 < m_starts.size() ? m_starts[chunk + 1] : m_rows;
        std::vector<QLineF> rules; // under each row, drawn at once
        rules.reserve(size_t(to - from));
        for (qsizetype r = from; r < to; ++r) {
            const double h = rowHeight(m_lines[size_t(r)]);
            paintRow(p, r, cols, width, y, h);
            rules.emplace_back(0, y + h, width, y + h);
            y += h;
            db::busy::beat(m_rows + ++m_painted);
        }
        if (m_hasFooter && chunk + 1 == m_starts.size()) {
            const double h = rowHeight(m_footerLines);
            p.setPen(QPen(Qt::black, pt(0.8)));
            p.drawLine(QPointF(0, y), QPointF(width, y));
            p.setPen(Qt::black);
            x = 0;
            for (size_t i : cols) {
                const PaperColumn &c = m_columns[i];
                paintCell(p, *m_bold, QRectF(x, y, c.width, h), c.right, summaryText(-1, c), false);
                x += c.width;
            }
            y += h;
        }
        // the grid's lines under the rows and around the columns
        p.setPen(line);
        p.drawLines(rules.data(), int(rules.size()));
        x = 0;
        p.drawLine(QPointF(0, tableTop), QPointF(0, y));
        for (size_t i : cols) {
            x += m_columns[i].width;
            p.drawLine(QPointF(x, tableTop), QPointF(x, y));
        }
        p.drawLine(QPointF(0, tableTop), QPointF(width, tableTop));
        p.drawLine(QPointF(0, y), QPointF(width, y));
        p.setPen(Qt::black);
        for (const Face *face : {&*m_body, &*m_bold, &*m_italic, &*m_title, &*m_meta})
            face->flush(p);
    }

    void paintRow(QPainter &p, qsizetype r, const std::vector<size_t> &cols, double width, double y, double h)
    {
        p.setPen(Qt::black);
        switch (m_model.rowKind(r)) {
        case grid::RowKind::Group: {
            p.fillRect(QRectF(0, y, width, h), QColor(235, 235, 235));
            const double indent = pt(8) * m_model.rowLevel(r);
            paintCell(p, *m_bold, QRectF(indent, y, width - indent, h), false, m_model.groupRowText(r), false);
            return;
        }
        case grid::RowKind::GroupFooter: {
            p.fillRect(QRectF(0, y, width, h), QColor(246, 246, 246));
            double x = 0;
            for (size_t i : cols) {
                const PaperColumn &c = m_columns[i];
                paintCell(p, *m_italic, QRectF(x, y, c.width, h), c.right, summaryText(r, c), false);
                x += c.width;
            }
            return;
        }
        case grid::RowKind::Data: break;
        }
        double x = 0;
        for (size_t i : cols) {
            const PaperColumn &c = m_columns[i];
            paintCell(p, *m_body, QRectF(x, y, c.width, h), c.right, cellText(r, c), c.wraps && m_lines[size_t(r)] > 1);
            x += c.width;
        }
    }

    const grid::GridModel &m_model;
    const PageHeader &m_header;
    QPagedPaintDevice &m_device;
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
    return GridPages(model, header, device, options).paint();
}

void exportGridPdf(const grid::GridModel &model, const QString &path, const PageHeader &header,
                   const PaperOptions &options)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        grid::writeFailed(path, file.errorString());
    {
        QPdfWriter pdf(&file);
        pdf.setCreator(QStringLiteral("tkQuarv"));
        pdf.setTitle(header.title);
        pdf.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(10, 10, 10, 10),
                                      QPageLayout::Millimeter));
        pdf.setResolution(600);
        paintGrid(model, header, pdf, options);
    }
    if (file.error() != QFileDevice::NoError)
        grid::writeFailed(path, file.errorString());
    grid::commitAside(file, path);
}

} // namespace paper
