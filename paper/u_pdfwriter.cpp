#include "paper/u_pdfwriter.h"

#include "paper/u_truetype.h"

#include <QDateTime>
#include <QIODevice>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace paper {

namespace {

// Compressed the way a reader expects a FlateDecode stream: a zlib stream,
// without the length Qt puts before it. The fastest level: page content is
// repetitive enough that more effort buys little and costs much.
QByteArray deflate(const QByteArray &data, int level)
{
    QByteArray z = qCompress(data, level);
    return z.mid(4);
}

void appendInt(QByteArray &out, qint64 v)
{
    char buf[24];
    const auto end = std::to_chars(buf, buf + sizeof buf, v).ptr;
    out.append(buf, end - buf);
}

// A number with at most two decimals, without trailing zeros.
void appendHundredths(QByteArray &out, qint64 v)
{
    if (v < 0) {
        out += '-';
        v = -v;
    }
    appendInt(out, v / 100);
    const int frac = int(v % 100);
    if (frac) {
        out += '.';
        out += char('0' + frac / 10);
        if (frac % 10)
            out += char('0' + frac % 10);
    }
}

qint64 hundredths(double v) { return std::llround(v * 100); }

void appendNumber(QByteArray &out, double v) { appendHundredths(out, hundredths(v)); }

void appendHex4(QByteArray &out, quint32 v)
{
    static const char digits[] = "0123456789ABCDEF";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += digits[(v >> shift) & 0xF];
}

// A text string: UTF-16 with its byte-order mark, in hex.
QByteArray textString(const QString &s)
{
    QByteArray out = "<FEFF";
    for (QChar c : s)
        appendHex4(out, c.unicode());
    return out + '>';
}

void appendUtf16Hex(QByteArray &out, char32_t ch)
{
    if (ch > 0xFFFF) {
        ch -= 0x10000;
        appendHex4(out, 0xD800 + (ch >> 10));
        appendHex4(out, 0xDC00 + (ch & 0x3FF));
    } else {
        appendHex4(out, ch);
    }
}

// A name a reader accepts: letters, digits and hyphens.
QByteArray fontName(const QString &postScript, int index)
{
    QByteArray name;
    for (QChar c : postScript)
        if (c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('-')))
            name += char(c.unicode());
    // the six capitals that mark a subset
    QByteArray tag = "AAAAAA";
    for (int i = 5, v = index; i >= 0; --i, v /= 26)
        tag[i] = char('A' + v % 26);
    return tag + '+' + (name.isEmpty() ? QByteArray("Font") : name);
}

} // namespace

PdfWriter::PdfWriter(QIODevice &out, QSizeF pageSize, QMarginsF margins)
    : m_out(out), m_page(pageSize), m_margins(margins),
      m_printable(pageSize.width() - margins.left() - margins.right(),
                  pageSize.height() - margins.top() - margins.bottom())
{
    m_xref.resize(4); // 1 catalog, 2 page tree, 3 resources
    QByteArray start = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
    m_offset += m_out.write(start);
    beginObject(1);
    m_offset += m_out.write("<< /Type /Catalog /Pages 2 0 R >>\nendobj\n");
}

int PdfWriter::reserve(int count)
{
    const int first = int(m_xref.size());
    m_xref.resize(m_xref.size() + size_t(count));
    return first;
}

void PdfWriter::beginObject(int object)
{
    m_xref[size_t(object)] = m_offset;
    QByteArray head;
    appendInt(head, object);
    m_offset += m_out.write(head + " 0 obj\n");
}

void PdfWriter::writeStream(int object, const QByteArray &dict, const QByteArray &data, qsizetype length1)
{
    beginObject(object);
    QByteArray head = "<< " + dict + " /Length ";
    appendInt(head, data.size());
    if (length1 >= 0) {
        head += " /Length1 ";
        appendInt(head, length1);
    }
    head += " /Filter /FlateDecode >>\nstream\n";
    m_offset += m_out.write(head);
    m_offset += m_out.write(data);
    m_offset += m_out.write("\nendstream\nendobj\n");
}

int PdfWriter::addFont(const QRawFont &font, bool thicken, bool slant)
{
    const QString name = postScriptName(font);
    for (size_t i = 0; i < m_fonts.size(); ++i) {
        const Font &f = m_fonts[i];
        if (f.name == name && f.thicken == thicken && f.slant == slant)
            return int(i);
    }
    if (!TrueType(font).embeddable()) // reads the outlines: once per font
        return -1;
    Font f;
    f.raw = font;
    f.name = name;
    f.thicken = thicken;
    f.slant = slant;
    m_fonts.push_back(std::move(f));
    return int(m_fonts.size() - 1);
}

void PdfWriter::mapGlyph(int font, quint32 glyph, char32_t ch, double width)
{
    Font &f = m_fonts[size_t(font)];
    if (f.text.size() <= glyph) {
        f.text.resize(glyph + 1, 0);
        f.widths.resize(glyph + 1, -1);
    }
    if (!f.text[glyph])
        f.text[glyph] = ch;
    f.widths[glyph] = float(width);
}

void PdfWriter::beginPage()
{
    m_content.clear();
    m_fill = -1;
    // thin lines as thin as asked, joined cleanly
    m_content += "0 J 0 j\n";
}

void PdfWriter::setFill(double gray)
{
    if (gray == m_fill)
        return;
    m_fill = gray;
    appendNumber(m_content, gray);
    m_content += " g\n";
}

void PdfWriter::point(double x, double y)
{
    appendNumber(m_content, m_margins.left() + x);
    m_content += ' ';
    appendNumber(m_content, m_page.height() - m_margins.top() - y);
}

void PdfWriter::fillRect(const QRectF &rect, double gray)
{
    setFill(gray);
    point(rect.left(), rect.bottom());
    m_content += ' ';
    appendNumber(m_content, rect.width());
    m_content += ' ';
    appendNumber(m_content, rect.height());
    m_content += " re f\n";
}

void PdfWriter::strokeLines(const QLineF *lines, qsizetype count, double gray, double width)
{
    appendNumber(m_content, gray);
    m_content += " G ";
    appendNumber(m_content, width);
    m_content += " w\n";
    for (qsizetype i = 0; i < count; ++i) {
        point(lines[i].x1(), lines[i].y1());
        m_content += " m ";
        point(lines[i].x2(), lines[i].y2());
        m_content += " l\n";
    }
    m_content += "S\n";
}

void PdfWriter::beginText(int font, double size)
{
    m_textFont = &m_fonts[size_t(font)];
    if (!m_textFont->object)
        m_textFont->object = reserve(5); // a font is written only once a page uses it
    m_lineSet = false;
    setFill(0);
    m_content += "q BT /F";
    appendInt(m_content, font);
    m_content += ' ';
    appendNumber(m_content, size);
    m_content += " Tf\n";
    if (m_textFont->thicken) {
        m_content += "0 G 2 Tr ";
        appendNumber(m_content, size * kMadeUpStroke);
        m_content += " w\n";
    }
}

void PdfWriter::showGlyphs(QPointF origin, const quint32 *glyphs, qsizetype count)
{
    if (count <= 0)
        return;
    const qint64 x = hundredths(m_margins.left() + origin.x());
    const qint64 y = hundredths(m_page.height() - m_margins.top() - origin.y());
    if (m_textFont->slant || !m_lineSet) {
        // a slanted font leans about each string's own origin
        m_content += "1 0 ";
        appendNumber(m_content, m_textFont->slant ? kMadeUpSlant : 0);
        m_content += " 1 ";
        appendHundredths(m_content, x);
        m_content += ' ';
        appendHundredths(m_content, y);
        m_content += " Tm(";
        m_lineSet = true;
    } else {
        appendHundredths(m_content, x - m_lastX);
        m_content += ' ';
        appendHundredths(m_content, y - m_lastY);
        m_content += " Td(";
    }
    m_lastX = x;
    m_lastY = y;
    Font &f = *m_textFont;
    for (qsizetype i = 0; i < count; ++i) {
        const quint32 g = glyphs[i];
        if (f.used.size() <= g)
            f.used.resize(g + 1, false);
        f.used[g] = true;
        for (const char b : {char(g >> 8), char(g & 0xFF)}) {
            switch (b) {
            case '(': case ')': case '\\': m_content += '\\'; m_content += b; break;
            case '\r': m_content += "\\r"; break;
            case '\n': m_content += "\\n"; break;
            default: m_content += b;
            }
        }
    }
    m_content += ")Tj\n";
}

void PdfWriter::endText()
{
    m_content += "ET Q\n";
    m_textFont = nullptr;
    m_fill = -1; // restored by Q to what it was, which this writer no longer knows
}

void PdfWriter::endPage()
{
    const int contents = reserve(2);
    writeStream(contents, QByteArray(), deflate(m_content, 1));
    beginObject(contents + 1);
    if (m_pages.size() % kPagesPerNode == 0)
        m_nodes.push_back(reserve());
    QByteArray page = "<< /Type /Page /Parent ";
    appendInt(page, m_nodes.back());
    page += " 0 R /MediaBox [0 0 ";
    appendNumber(page, m_page.width());
    page += ' ';
    appendNumber(page, m_page.height());
    page += "] /Resources 3 0 R /Contents ";
    appendInt(page, contents);
    page += " 0 R >>\nendobj\n";
    m_offset += m_out.write(page);
    m_pages.push_back(contents + 1);
    m_content.clear();
}

QByteArray PdfWriter::toUnicode(const Font &font) const
{
    std::vector<std::pair<quint32, char32_t>> map;
    for (size_t g = 0; g < font.used.size(); ++g)
        if (font.used[g] && g < font.text.size() && font.text[g])
            map.emplace_back(quint32(g), font.text[g]);
    QByteArray out = "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
                     "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
                     "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
                     "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n";
    for (size_t from = 0; from < map.size(); from += 100) {
        const size_t to = std::min(map.size(), from + 100);
        appendInt(out, qint64(to - from));
        out += " beginbfchar\n";
        for (size_t i = from; i < to; ++i) {
            out += '<';
            appendHex4(out, map[i].first);
            out += "> <";
            appendUtf16Hex(out, map[i].second);
            out += ">\n";
        }
        out += "endbfchar\n";
    }
    out += "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
    return out;
}

void PdfWriter::writeFont(const Font &font, int index)
{
    const TrueType tt(font.raw);
    const double k = tt.scale();
    const QByteArray name = fontName(font.name, index);
    const int type0 = font.object, cid = font.object + 1, descriptor = font.object + 2, file = font.object + 3,
              unicode = font.object + 4;

    QByteArray d = "<< /Type /Font /Subtype /Type0 /BaseFont /" + name + " /Encoding /Identity-H /DescendantFonts [";
    appendInt(d, cid);
    d += " 0 R] /ToUnicode ";
    appendInt(d, unicode);
    d += " 0 R >>\nendobj\n";
    beginObject(type0);
    m_offset += m_out.write(d);

    d = "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /" + name
        + " /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >> /FontDescriptor ";
    appendInt(d, descriptor);
    d += " 0 R /CIDToGIDMap /Identity /DW 0 /W [";
    // runs of glyphs: first [w w w]
    for (size_t g = 0; g < font.used.size();) {
        if (!font.used[g]) {
            ++g;
            continue;
        }
        appendInt(d, qint64(g));
        d += " [";
        for (; g < font.used.size() && font.used[g]; ++g) {
            appendNumber(d, g < font.widths.size() && font.widths[g] >= 0 ? font.widths[g] : tt.advance(quint32(g)) * k);
            d += ' ';
        }
        d += "] ";
    }
    d += "] >>\nendobj\n";
    beginObject(cid);
    m_offset += m_out.write(d);

    d = "<< /Type /FontDescriptor /FontName /" + name + " /Flags 4 /FontBBox [";
    for (int at : {36, 38, 40, 42}) {
        appendNumber(d, s16(tt.head, at) * k);
        d += ' ';
    }
    d += "] /ItalicAngle ";
    d += fileStyle(font.raw).italic ? "-12" : "0";
    d += " /Ascent ";
    appendNumber(d, s16(tt.hhea, 4) * k);
    d += " /Descent ";
    appendNumber(d, s16(tt.hhea, 6) * k);
    d += " /CapHeight ";
    appendNumber(d, s16(tt.hhea, 4) * k);
    d += " /StemV 80 /FontFile2 ";
    appendInt(d, file);
    d += " 0 R >>\nendobj\n";
    beginObject(descriptor);
    m_offset += m_out.write(d);

    const QByteArray program = tt.subset(font.used);
    writeStream(file, QByteArray(), deflate(program, 6), program.size());
    writeStream(unicode, QByteArray(), deflate(toUnicode(font), 6));
}

void PdfWriter::finish(const QString &title)
{
    for (size_t i = 0; i < m_fonts.size(); ++i)
        if (m_fonts[i].object)
            writeFont(m_fonts[i], int(i));

    QByteArray d = "<< /Font << ";
    for (size_t i = 0; i < m_fonts.size(); ++i) {
        if (!m_fonts[i].object)
            continue;
        d += "/F";
        appendInt(d, qint64(i));
        d += ' ';
        appendInt(d, m_fonts[i].object);
        d += " 0 R ";
    }
    d += ">> /ProcSet [/PDF /Text] >>\nendobj\n";
    beginObject(3);
    m_offset += m_out.write(d);

    // The page tree in two levels, so that no array grows with the pages
    // past what every reader takes.
    const auto writeNode = [this](int object, int parent, const int *kids, size_t count, qint64 pages) {
        beginObject(object);
        QByteArray node = "<< /Type /Pages";
        if (parent) {
            node += " /Parent ";
            appendInt(node, parent);
            node += " 0 R";
        }
        node += " /Count ";
        appendInt(node, pages);
        node += " /Kids [";
        for (size_t i = 0; i < count; ++i) {
            appendInt(node, kids[i]);
            node += (i + 1) % 10 ? " 0 R " : " 0 R\n";
        }
        node += "] >>\nendobj\n";
        m_offset += m_out.write(node);
    };
    for (size_t n = 0; n < m_nodes.size(); ++n) {
        const size_t first = n * kPagesPerNode, count = std::min(kPagesPerNode, m_pages.size() - first);
        writeNode(m_nodes[n], 2, m_pages.data() + first, count, qint64(count));
    }
    writeNode(2, 0, m_nodes.data(), m_nodes.size(), qint64(m_pages.size()));

    const int info = reserve();
    beginObject(info);
    d = "<< /Title " + textString(title) + " /Creator (tkQuarv) /Producer (tkQuarv) /CreationDate (D:"
        + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddHHmmss")).toLatin1() + "Z) >>\nendobj\n";
    m_offset += m_out.write(d);

    const qint64 xref = m_offset;
    d = "xref\n0 ";
    appendInt(d, qint64(m_xref.size()));
    d += "\n0000000000 65535 f \n";
    for (size_t i = 1; i < m_xref.size(); ++i) {
        char line[24];
        std::snprintf(line, sizeof line, "%010lld 00000 n \n", static_cast<long long>(m_xref[i]));
        d += line;
    }
    d += "trailer\n<< /Size ";
    appendInt(d, qint64(m_xref.size()));
    d += " /Root 1 0 R /Info ";
    appendInt(d, info);
    d += " 0 R >>\nstartxref\n";
    appendInt(d, xref);
    d += "\n%%EOF\n";
    m_offset += m_out.write(d);
}

} // namespace paper
