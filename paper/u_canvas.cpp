#include "paper/u_canvas.h"

#include "db/u_error.h"
#include "paper/u_pdfwriter.h"
#include "paper/u_truetype.h"

#include <QGlyphRun>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

namespace paper {

// ---------------------------------------------------------------- painter

PainterCanvas::PainterCanvas(QPagedPaintDevice &device) : m_device(device) {}

PainterCanvas::~PainterCanvas() = default;

double PainterCanvas::unit() const { return m_device.logicalDpiY() / 72.0; }

QSizeF PainterCanvas::size() const { return QSizeF(m_device.width(), m_device.height()); }

void PainterCanvas::begin()
{
    m_painter = std::make_unique<QPainter>();
    if (!m_painter->begin(&m_device))
        throw QuarvError(QStringLiteral("Tiparirea nu poate incepe."));
}

void PainterCanvas::startPage(int page)
{
    if (page > 1 && !m_device.newPage())
        throw QuarvError(QStringLiteral("Pagina %1 nu poate fi tiparita.").arg(page));
}

void PainterCanvas::end() { m_painter->end(); }

void PainterCanvas::fillRect(const QRectF &rect, int gray)
{
    m_painter->fillRect(rect, QColor(gray, gray, gray));
}

void PainterCanvas::strokeLines(const QLineF *lines, qsizetype count, int gray, double width)
{
    m_painter->setPen(QPen(QColor(gray, gray, gray), width));
    m_painter->drawLines(lines, int(count));
}

int PainterCanvas::addFont(const QRawFont &raw, bool thicken, bool slant)
{
    m_fonts.push_back({raw, thicken, slant});
    return int(m_fonts.size() - 1);
}

void PainterCanvas::drawGlyphs(int font, double pixelSize, const GlyphStrings &text)
{
    Font &f = m_fonts[size_t(font)];
    if (f.raw.pixelSize() != pixelSize)
        f.raw.setPixelSize(pixelSize);
    if (f.thicken || f.slant) {
        drawMadeUp(f, pixelSize, text);
        return;
    }
    QList<QPointF> positions;
    positions.reserve(qsizetype(text.glyphs.size()));
    for (const GlyphStrings::String &s : text.strings) {
        double x = s.origin.x();
        for (qsizetype i = s.first; i < s.first + s.count; ++i) {
            positions.append(QPointF(x, s.origin.y()));
            x += text.advances[size_t(i)];
        }
    }
    QGlyphRun run;
    run.setRawFont(f.raw);
    run.setGlyphIndexes(QList<quint32>(text.glyphs.begin(), text.glyphs.end()));
    run.setPositions(positions);
    m_painter->setPen(Qt::black);
    m_painter->drawGlyphRun(QPointF(0, 0), run);
}

// A bold or slanted face the font file lacks, made up as the PDF makes it:
// the outlines lean about each string's origin, and are stroked as well as
// filled to thicken them.
void PainterCanvas::drawMadeUp(const Font &f, double pixelSize, const GlyphStrings &text)
{
    const QPen thick(Qt::black, pixelSize * kMadeUpStroke);
    for (const GlyphStrings::String &s : text.strings) {
        QPainterPath path;
        double x = 0;
        for (qsizetype i = s.first; i < s.first + s.count; ++i) {
            path.addPath(f.raw.pathForGlyph(text.glyphs[size_t(i)]).translated(x, 0));
            x += text.advances[size_t(i)];
        }
        QTransform lean = QTransform::fromTranslate(s.origin.x(), s.origin.y());
        if (f.slant)
            lean.shear(-kMadeUpSlant, 0); // y grows downwards on a page
        m_painter->save();
        m_painter->setTransform(lean, true);
        m_painter->fillPath(path, Qt::black);
        if (f.thicken)
            m_painter->strokePath(path, thick);
        m_painter->restore();
    }
}

// ---------------------------------------------------------------- PDF

QSizeF PdfCanvas::size() const { return m_writer.printableSize(); }

void PdfCanvas::startPage(int) { m_writer.beginPage(); }

void PdfCanvas::finishPage() { m_writer.endPage(); }

void PdfCanvas::fillRect(const QRectF &rect, int gray) { m_writer.fillRect(rect, gray / 255.0); }

void PdfCanvas::strokeLines(const QLineF *lines, qsizetype count, int gray, double width)
{
    m_writer.strokeLines(lines, count, gray / 255.0, width);
}

int PdfCanvas::addFont(const QRawFont &raw, bool thicken, bool slant) { return m_writer.addFont(raw, thicken, slant); }

void PdfCanvas::mapGlyph(int font, quint32 glyph, char32_t ch, double width)
{
    m_writer.mapGlyph(font, glyph, ch, width);
}

void PdfCanvas::drawGlyphs(int font, double pixelSize, const GlyphStrings &text)
{
    m_writer.beginText(font, pixelSize);
    for (const GlyphStrings::String &s : text.strings)
        m_writer.showGlyphs(s.origin, text.glyphs.data() + s.first, s.count);
    m_writer.endText();
}

// ---------------------------------------------------------------- faces

namespace {

// Metrics are read at a large size and scaled, so that no rounding to
// whole pixels creeps into small text.
constexpr double kMetricsSize = 1000;
constexpr char32_t kTableSize = 0x0800; // Latin, Greek, Cyrillic
// The second font, for characters the first lacks.
const char *const kWideFamily = "DejaVu Sans";
// At most this many fonts in one face: the two above and those the system
// falls back to for characters neither has.
constexpr size_t kMaxSources = 6;

} // namespace

Face::Face(const QFont &font, Canvas &canvas)
    : m_canvas(canvas), m_font(font), m_pixelSize(font.pointSizeF() * canvas.unit()),
      m_scale(m_pixelSize / kMetricsSize), m_table(kTableSize)
{
    m_sources.reserve(kMaxSources); // draw() compares addresses of the sources' texts
    QFont wide(QString::fromLatin1(kWideFamily));
    wide.setPointSizeF(font.pointSizeF());
    wide.setBold(font.bold());
    wide.setItalic(font.italic());
    for (const QFont &f : {font, wide}) {
        const QRawFont raw = QRawFont::fromFont(f);
        if (raw.isValid() && (m_sources.empty() || raw.familyName() != m_sources[0].metrics.familyName()))
            addSource(raw);
    }
    if (m_sources.empty())
        throw QuarvError(QStringLiteral("Fontul %1 nu poate fi folosit pentru tiparire.").arg(font.family()));
    m_ascent = m_sources[0].metrics.ascent() * m_scale;
    m_height = (m_sources[0].metrics.ascent() + m_sources[0].metrics.descent()) * m_scale;
}

bool Face::addSource(const QRawFont &raw) const
{
    const FileStyle file = fileStyle(raw);
    Source s;
    s.handle = m_canvas.addFont(raw, m_font.bold() && !file.bold, m_font.italic() && !file.italic);
    if (s.handle < 0)
        return false;
    s.metrics = raw;
    s.metrics.setPixelSize(kMetricsSize);
    m_sources.push_back(std::move(s));
    return true;
}

bool Face::addFallback(QStringView character) const
{
    if (m_sources.size() >= kMaxSources)
        return false;
    QTextLayout layout(character.toString(), m_font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    for (const QGlyphRun &run : layout.glyphRuns()) {
        const QRawFont raw = run.rawFont();
        if (!raw.isValid() || run.glyphIndexes().value(0) == 0)
            continue;
        for (const Source &s : m_sources)
            if (s.metrics.familyName() == raw.familyName() && s.metrics.styleName() == raw.styleName())
                return false;
        return addSource(raw);
    }
    return false;
}

void Face::take(size_t source, quint32 index, char32_t c, Glyph &g) const
{
    QPointF advance;
    m_sources[source].metrics.advancesForGlyphIndexes(&index, &advance, 1, QRawFont::UseDesignMetrics);
    g.index = index;
    g.advance = float(advance.x() * m_scale);
    g.source = quint8(source);
    m_canvas.mapGlyph(m_sources[source].handle, index, c, advance.x() * 1000 / kMetricsSize);
}

bool Face::find(char32_t c, Glyph &g) const
{
    char16_t units[2];
    int n = 1;
    if (c > 0xFFFF) {
        units[0] = char16_t(0xD800 + ((c - 0x10000) >> 10));
        units[1] = char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
        n = 2;
    } else {
        units[0] = char16_t(c);
    }
    const QStringView character(units, n);
    auto search = [&](size_t from) {
        for (size_t i = from; i < m_sources.size(); ++i) {
            quint32 indexes[2] = {0, 0};
            int count = 2;
            if (m_sources[i].metrics.glyphIndexesForChars(reinterpret_cast<const QChar *>(units), n, indexes, &count)
                && count == 1 && indexes[0] != 0) {
                take(i, indexes[0], c, g);
                return true;
            }
        }
        return false;
    };
    // Neither font has it: the font the system would fall back to, if any.
    const size_t known = m_sources.size();
    return search(0) || (addFallback(character) && search(known));
}

const Face::Glyph &Face::glyph(char32_t c) const
{
    Glyph &g = c < kTableSize ? m_table[c] : m_other[c];
    if (g.known)
        return g;
    g.known = true;
    if (c < 0x20 || (c >= 0x7F && c < 0xA0)) {
        g = glyph(U' ');          // a tab, a carriage return
    } else if (c == 0xAD || (c >= 0x200B && c <= 0x200F) || c == 0x2060 || c == 0xFEFF) {
        g.shown = false;          // soft hyphen, zero-width and direction marks
    } else if (!find(c, g)) {
        if (c != U'?')
            g = glyph(U'?');
        else
            take(0, 0, c, g);     // not even "?": the font's box for a missing glyph
    }
    return g;
}

namespace {

// Characters of a text, a surrogate pair as one.
template <typename F> void eachChar(QStringView text, F &&f)
{
    const qsizetype n = text.size();
    const QChar *d = text.data();
    for (qsizetype i = 0; i < n; ++i) {
        char32_t c = d[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < n && d[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(d[i].unicode(), d[i + 1].unicode());
            ++i;
        }
        f(c);
    }
}

} // namespace

double Face::width(QStringView text) const
{
    double w = 0;
    eachChar(text, [&](char32_t c) { w += glyph(c).advance; });
    return w;
}

QString Face::elided(const QString &text, double width) const
{
    if (this->width(text) <= width)
        return text;
    const QString ellipsis(QChar(0x2026));
    return text.left(fitting(text, width - this->width(ellipsis))) + ellipsis;
}

qsizetype Face::fitting(QStringView text, double width) const
{
    double w = 0;
    qsizetype i = 0;
    while (i < text.size()) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t c = pair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        w += glyph(c).advance;
        if (w > width)
            break;
        i += pair ? 2 : 1;
    }
    return i;
}

void Face::draw(QPointF baseline, QStringView text)
{
    GlyphStrings *current = nullptr;
    double x = baseline.x();
    eachChar(text, [&](char32_t c) {
        const Glyph &g = glyph(c);
        if (!g.shown)
            return;
        GlyphStrings &t = m_sources[g.source].text;
        if (&t != current) {
            current = &t;
            t.strings.push_back({QPointF(x, baseline.y()), qsizetype(t.glyphs.size()), 0});
        }
        t.glyphs.push_back(g.index);
        t.advances.push_back(g.advance);
        ++t.strings.back().count;
        x += g.advance;
    });
}

void Face::flush()
{
    for (Source &s : m_sources) {
        if (s.text.empty())
            continue;
        m_canvas.drawGlyphs(s.handle, m_pixelSize, s.text);
        s.text.clear();
    }
}

} // namespace paper
