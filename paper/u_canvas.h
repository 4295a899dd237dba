#pragma once
// Where laid-out pages are drawn, and the text faces they are set in.
//
// Two canvases: Qt's painter on a paged device (the printer chosen in the
// print dialog), and this program's own PDF writer, which writes one string
// per cell where Qt's PDF engine positions every glyph on its own, and so
// writes a long grid several times faster.

#include <QFont>
#include <QHash>
#include <QLineF>
#include <QRawFont>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class QPagedPaintDevice;
class QPainter;

namespace paper {

class PdfWriter;

// The glyphs of one font set on a page: strings of glyphs, each from its
// baseline origin on by the glyphs' advances.
struct GlyphStrings {
    struct String {
        QPointF origin;
        qsizetype first = 0;
        qsizetype count = 0;
    };
    std::vector<quint32> glyphs;
    std::vector<float> advances;
    std::vector<String> strings;

    bool empty() const { return strings.empty(); }
    void clear()
    {
        glyphs.clear();
        advances.clear();
        strings.clear();
    }
};

class Canvas {
public:
    virtual ~Canvas() = default;
    virtual double unit() const = 0;        // device units per point
    virtual QSizeF size() const = 0;        // the printable area, device units
    virtual void begin() = 0;
    virtual void startPage(int page) = 0;   // pages count from 1
    virtual void finishPage() = 0;
    virtual void end() = 0;

    virtual void fillRect(const QRectF &rect, int gray) = 0;  // gray 0..255
    virtual void strokeLines(const QLineF *lines, qsizetype count, int gray, double width) = 0;

    // A font file for text; thicken and slant where the file lacks the
    // bold or slanted face asked for. -1: a font this canvas cannot use.
    virtual int addFont(const QRawFont &raw, bool thicken, bool slant) = 0;
    // The character a glyph stands for and its advance in thousandths of an em.
    virtual void mapGlyph(int font, quint32 glyph, char32_t ch, double width) = 0;
    virtual void drawGlyphs(int font, double pixelSize, const GlyphStrings &text) = 0;
};

class PainterCanvas final : public Canvas {
public:
    explicit PainterCanvas(QPagedPaintDevice &device);
    ~PainterCanvas() override;
    double unit() const override;
    QSizeF size() const override;
    void begin() override;
    void startPage(int page) override;
    void finishPage() override {}
    void end() override;
    void fillRect(const QRectF &rect, int gray) override;
    void strokeLines(const QLineF *lines, qsizetype count, int gray, double width) override;
    int addFont(const QRawFont &raw, bool thicken, bool slant) override;
    void mapGlyph(int, quint32, char32_t, double) override {}
    void drawGlyphs(int font, double pixelSize, const GlyphStrings &text) override;

private:
    struct Font {
        QRawFont raw;
        bool thicken = false, slant = false;
    };
    void drawMadeUp(const Font &f, double pixelSize, const GlyphStrings &text);

    QPagedPaintDevice &m_device;
    std::unique_ptr<QPainter> m_painter;
    std::vector<Font> m_fonts;
};

class PdfCanvas final : public Canvas {
public:
    explicit PdfCanvas(PdfWriter &writer) : m_writer(writer) {}
    double unit() const override { return 1; }
    QSizeF size() const override;
    void begin() override {}
    void startPage(int page) override;
    void finishPage() override;
    void end() override {}
    void fillRect(const QRectF &rect, int gray) override;
    void strokeLines(const QLineF *lines, qsizetype count, int gray, double width) override;
    int addFont(const QRawFont &raw, bool thicken, bool slant) override;
    void mapGlyph(int font, quint32 glyph, char32_t ch, double width) override;
    void drawGlyphs(int font, double pixelSize, const GlyphStrings &text) override;

private:
    PdfWriter &m_writer;
};

// A font on a canvas. Texts are set glyph by glyph, each character's glyph
// and advance found once: no shaping, which the books' Latin text with the
// Romanian letters does not need and which would cost most of the time of a
// long grid. A character the font lacks comes from a wide-ranging second
// font; one that neither has shows as "?"; control characters show as
// blanks, invisible ones not at all. The advances are the font's design
// widths, as the PDF's text advances by them.
class Face {
public:
    Face(const QFont &font, Canvas &canvas);

    double width(QStringView text) const;
    // The text cut to a width, with an ellipsis where it was cut.
    QString elided(const QString &text, double width) const;
    // How many of the text's first code units fit a width.
    qsizetype fitting(QStringView text, double width) const;
    // Sets a text on the page at a baseline origin; it reaches the canvas
    // with the rest of the page's text in this face at flush().
    void draw(QPointF baseline, QStringView text);
    void flush();

    double ascent() const { return m_ascent; }
    double height() const { return m_height; }

private:
    struct Glyph {
        quint32 index = 0;
        float advance = 0;
        quint8 source = 0;
        bool known = false;
        bool shown = true;
    };
    struct Source {
        QRawFont metrics; // at kMetricsSize pixels
        int handle = 0;
        GlyphStrings text;
    };

    const Glyph &glyph(char32_t c) const;
    bool find(char32_t c, Glyph &g) const;
    bool addSource(const QRawFont &raw) const;
    bool addFallback(QStringView character) const;
    void take(size_t source, quint32 index, char32_t c, Glyph &g) const;

    Canvas &m_canvas;
    QFont m_font;
    double m_pixelSize = 0;
    double m_scale = 0;  // device units per metrics pixel
    double m_ascent = 0, m_height = 0;
    mutable std::vector<Source> m_sources;
    mutable std::vector<Glyph> m_table;    // by character, for the first pages of Unicode
    mutable QHash<char32_t, Glyph> m_other;
};

} // namespace paper
