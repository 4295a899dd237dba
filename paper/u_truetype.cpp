#include "paper/u_truetype.h"

#include <QtEndian>

#include <algorithm>
#include <set>

namespace paper {

quint16 u16(const QByteArray &t, qsizetype at)
{
    return at + 2 <= t.size() ? qFromBigEndian<quint16>(t.constData() + at) : 0;
}
qint16 s16(const QByteArray &t, qsizetype at) { return qint16(u16(t, at)); }

static quint32 u32(const QByteArray &t, qsizetype at)
{
    return at + 4 <= t.size() ? qFromBigEndian<quint32>(t.constData() + at) : 0;
}

FileStyle fileStyle(const QRawFont &raw)
{
    const QByteArray head = raw.fontTable("head"), os2 = raw.fontTable("OS/2");
    const quint16 macStyle = u16(head, 44);
    FileStyle s;
    s.bold = (macStyle & 1) || u16(os2, 4) >= 600;
    s.italic = (macStyle & 2) || (u16(os2, 62) & 0x0201); // italic, oblique
    return s;
}

QString postScriptName(const QRawFont &raw)
{
    const QByteArray t = raw.fontTable("name");
    const int count = u16(t, 2), strings = u16(t, 4);
    for (int i = 0; i < count; ++i) {
        const qsizetype at = 6 + 12 * i;
        const int platform = u16(t, at), id = u16(t, at + 6), length = u16(t, at + 8);
        const qsizetype from = strings + u16(t, at + 10);
        if (id != 6 || from + length > t.size())
            continue;
        if (platform == 1)
            return QString::fromLatin1(t.constData() + from, length);
        if (platform == 3 || platform == 0) {
            QString name;
            for (int k = 0; k + 1 < length; k += 2)
                name += QChar(u16(t, from + k));
            return name;
        }
    }
    return raw.familyName() + QLatin1Char('-') + raw.styleName();
}

TrueType::TrueType(const QRawFont &raw)
    : head(raw.fontTable("head")), hhea(raw.fontTable("hhea")), maxp(raw.fontTable("maxp")),
      hmtx(raw.fontTable("hmtx")), loca(raw.fontTable("loca")), glyf(raw.fontTable("glyf")),
      cvt(raw.fontTable("cvt ")), fpgm(raw.fontTable("fpgm")), prep(raw.fontTable("prep"))
{
    unitsPerEm = std::max<int>(16, u16(head, 18));
    longLoca = s16(head, 50) == 1;
    glyphs = u16(maxp, 4);
    hMetrics = u16(hhea, 34);
}

bool TrueType::embeddable() const
{
    return head.size() >= 54 && !glyf.isEmpty() && glyphs > 0 && hMetrics > 0 && hmtx.size() >= hMetrics * 4
        && loca.size() >= (glyphs + 1) * (longLoca ? 4 : 2);
}

int TrueType::advance(quint32 g) const { return u16(hmtx, 4 * std::min<qsizetype>(g, hMetrics - 1)); }

qsizetype TrueType::glyphStart(quint32 g) const
{
    return longLoca ? u32(loca, 4 * g) : 2 * qsizetype(u16(loca, 2 * g));
}

QByteArray TrueType::glyph(quint32 g) const
{
    const qsizetype from = glyphStart(g), to = glyphStart(g + 1);
    return to > from && to <= glyf.size() ? glyf.mid(from, to - from) : QByteArray();
}

std::vector<quint32> TrueType::components(quint32 g) const
{
    std::vector<quint32> parts;
    const QByteArray data = glyph(g);
    if (data.size() < 10 || s16(data, 0) >= 0)
        return parts;
    qsizetype at = 10;
    for (;;) {
        const quint16 flags = u16(data, at);
        parts.push_back(u16(data, at + 2));
        at += 4 + ((flags & 0x0001) ? 4 : 2);                                      // arguments: words or bytes
        at += (flags & 0x0008) ? 2 : (flags & 0x0040) ? 4 : (flags & 0x0080) ? 8 : 0; // scale, x and y, 2 by 2
        if (!(flags & 0x0020) || at >= data.size())                                // more components
            return parts;
    }
}

namespace {

QByteArray sfnt(const std::vector<std::pair<const char *, QByteArray>> &tables)
{
    const int n = int(tables.size());
    int power = 1, log2 = 0;
    while (power * 2 <= n) {
        power *= 2;
        ++log2;
    }
    QByteArray out(12 + 16 * n, '\0');
    char *d = out.data();
    qToBigEndian<quint32>(0x00010000, d);
    qToBigEndian<quint16>(quint16(n), d + 4);
    qToBigEndian<quint16>(quint16(power * 16), d + 6);
    qToBigEndian<quint16>(quint16(log2), d + 8);
    qToBigEndian<quint16>(quint16(n * 16 - power * 16), d + 10);
    for (int i = 0; i < n; ++i) {
        QByteArray data = tables[size_t(i)].second;
        while (data.size() % 4)
            data += '\0';
        quint32 sum = 0;
        for (qsizetype at = 0; at < data.size(); at += 4)
            sum += qFromBigEndian<quint32>(data.constData() + at);
        char *entry = out.data() + 12 + 16 * i;
        std::copy_n(tables[size_t(i)].first, 4, entry);
        qToBigEndian<quint32>(sum, entry + 4);
        qToBigEndian<quint32>(quint32(out.size()), entry + 8);
        qToBigEndian<quint32>(quint32(tables[size_t(i)].second.size()), entry + 12);
        out += data;
    }
    return out;
}

} // namespace

QByteArray TrueType::subset(const std::vector<bool> &used) const
{
    std::set<quint32> keep;
    std::vector<quint32> todo = {0};
    for (size_t g = 0; g < used.size(); ++g)
        if (used[g])
            todo.push_back(quint32(g));
    while (!todo.empty()) {
        const quint32 g = todo.back();
        todo.pop_back();
        if (g >= quint32(glyphs) || !keep.insert(g).second)
            continue;
        for (quint32 part : components(g))
            todo.push_back(part);
    }
    QByteArray newGlyf, newLoca;
    for (int g = 0; g <= glyphs; ++g) {
        const quint32 at = quint32(newGlyf.size());
        newLoca.append(char(at >> 24)).append(char(at >> 16)).append(char(at >> 8)).append(char(at));
        if (g < glyphs && keep.count(quint32(g))) {
            newGlyf += glyph(quint32(g));
            while (newGlyf.size() % 4)
                newGlyf += '\0';
        }
    }
    QByteArray newHead = head;
    qToBigEndian<quint32>(0, newHead.data() + 8);  // checkSumAdjustment
    qToBigEndian<qint16>(1, newHead.data() + 50);  // long offsets
    // in the order of their tags; the hinting tables only where the font has them
    std::vector<std::pair<const char *, QByteArray>> tables;
    if (!cvt.isEmpty())
        tables.emplace_back("cvt ", cvt);
    if (!fpgm.isEmpty())
        tables.emplace_back("fpgm", fpgm);
    tables.emplace_back("glyf", newGlyf);
    tables.emplace_back("head", newHead);
    tables.emplace_back("hhea", hhea);
    tables.emplace_back("hmtx", hmtx);
    tables.emplace_back("loca", newLoca);
    tables.emplace_back("maxp", maxp);
    if (!prep.isEmpty())
        tables.emplace_back("prep", prep);
    return sfnt(tables);
}

} // namespace paper
