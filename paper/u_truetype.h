#pragma once
// What the PDF writer reads from a TrueType font file: its metrics, what
// face the file itself is, and the file cut down to the glyphs a document
// used.

#include <QByteArray>
#include <QRawFont>
#include <QString>

#include <vector>

namespace paper {

quint16 u16(const QByteArray &t, qsizetype at);
qint16 s16(const QByteArray &t, qsizetype at);

// Bold and italic as the font file's own tables say: the font system
// reports the face asked for, even where it makes one up from another file.
struct FileStyle {
    bool bold = false;
    bool italic = false;
};
FileStyle fileStyle(const QRawFont &raw);

// The font's PostScript name from its naming table, else family and style.
QString postScriptName(const QRawFont &raw);

// The tables a reader needs to draw a font's glyphs.
struct TrueType {
    QByteArray head, hhea, maxp, hmtx, loca, glyf, cvt, fpgm, prep;
    int unitsPerEm = 1000;
    int glyphs = 0;
    int hMetrics = 0;
    bool longLoca = false;

    explicit TrueType(const QRawFont &raw);

    // Outlines in another form (or none to read) cannot be embedded.
    bool embeddable() const;
    double scale() const { return 1000.0 / unitsPerEm; } // to thousandths of an em
    int advance(quint32 g) const;
    // The font file with only the outlines of the used glyphs (and the parts
    // of composite ones) kept; the glyph numbers stay, so the text can name
    // glyphs by their numbers in the font.
    QByteArray subset(const std::vector<bool> &used) const;

private:
    qsizetype glyphStart(quint32 g) const;
    QByteArray glyph(quint32 g) const;
    std::vector<quint32> components(quint32 g) const;
};

} // namespace paper
