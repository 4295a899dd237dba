#pragma once
// A PDF file written as its pages are laid out: a page's content goes to the
// file when the page ends, and only the fonts wait for the end, subset to the
// glyphs the pages used. The text is real text: each TrueType font is
// embedded as a CID font with its widths and a map back to Unicode, so the
// file can be searched and copied from.
//
// Coordinates are points from the top left corner of the printable area
// (inside the margins), y growing downwards, as the page layout sees them.

#include <QByteArray>
#include <QLineF>
#include <QMarginsF>
#include <QRawFont>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <vector>

class QIODevice;

namespace paper {

// A bold or slanted face made up where the font file lacks it, on paper
// and in a PDF alike: the glyphs lean by kMadeUpSlant of their height and
// their outlines are stroked at kMadeUpStroke of the size besides filled.
inline constexpr double kMadeUpSlant = 0.2;
inline constexpr double kMadeUpStroke = 0.03;

class PdfWriter {
public:
    // pageSize and margins in points.
    PdfWriter(QIODevice &out, QSizeF pageSize, QMarginsF margins);

    QSizeF printableSize() const { return m_printable; }

    // A font for text; its handle is what beginText takes, -1 for a font
    // whose outlines cannot be embedded (not TrueType). Where the file lacks
    // the bold or slanted face asked for, the text is thickened or slanted.
    int addFont(const QRawFont &font, bool thicken, bool slant);
    // The character a glyph stands for, for the map back to Unicode, and its
    // width in thousandths of the font size, as the layout measured it.
    void mapGlyph(int font, quint32 glyph, char32_t ch, double width);

    void beginPage();
    void fillRect(const QRectF &rect, double gray);
    void strokeLines(const QLineF *lines, qsizetype count, double gray, double width);
    // Glyph strings in one font and size, each at its baseline origin; the
    // glyphs advance by the font's own widths.
    void beginText(int font, double size);
    void showGlyphs(QPointF origin, const quint32 *glyphs, qsizetype count);
    void endText();
    void endPage();

    // The fonts, the page tree and the cross-reference table. A write that
    // fails shows in the device's error, as with any QIODevice.
    void finish(const QString &title);

private:
    struct Font {
        QRawFont raw;
        QString name;                  // PostScript
        bool thicken = false;
        bool slant = false;
        int object = 0;                // the first of its five objects, once a page uses it
        std::vector<char32_t> text;    // by glyph: 0 unused, else its character
        std::vector<float> widths;     // by glyph: -1 unknown
        std::vector<bool> used;
    };

    int reserve(int count = 1);
    void beginObject(int object);
    void writeStream(int object, const QByteArray &dict, const QByteArray &data, qsizetype length1 = -1);
    void writeFont(const Font &font, int index);
    QByteArray toUnicode(const Font &font) const;
    void setFill(double gray);
    void point(double x, double y);

    QIODevice &m_out;
    qint64 m_offset = 0;
    std::vector<qint64> m_xref;        // by object number
    QSizeF m_page;
    QMarginsF m_margins;
    QSizeF m_printable;

    std::vector<Font> m_fonts;
    static constexpr size_t kPagesPerNode = 64;
    std::vector<int> m_pages;          // page objects
    std::vector<int> m_nodes;          // the page tree's nodes below its root
    QByteArray m_content;              // the page being drawn
    double m_fill = -1;                // the content's fill gray (-1 unknown)
    Font *m_textFont = nullptr;
    qint64 m_lastX = 0, m_lastY = 0;   // the text line's origin, in hundredths of a point
    bool m_lineSet = false;
};

} // namespace paper
