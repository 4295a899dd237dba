// The dictionary of a text field: each distinct value once, with its
// collation rank (ordering, grouping) and its folded form (filtering).
// Built on first use after a data load, so a refresh, an edit or an added
// row is met with a dictionary of the rows as they are now.

#include "grid/u_gridmodel_p.h"

#include <QCollatorSortKey>

#include <numeric>

namespace grid {

namespace {

// Folds UTF-8 the way foldText does, for ASCII and the Romanian letters; false
// (with nothing appended) for any other character, which takes the slow path.
bool appendFolded(QByteArray &out, QByteArrayView v)
{
    const qsizetype start = out.size();
    const char *p = v.data();
    const qsizetype n = v.size();
    for (qsizetype i = 0; i < n; ++i) {
        const auto b = static_cast<unsigned char>(p[i]);
        if (b < 0x80) {
            out += char(b >= 'A' && b <= 'Z' ? b + 32 : b);
            continue;
        }
        if (i + 1 >= n) {
            out.truncate(start);
            return false;
        }
        const auto b2 = static_cast<unsigned char>(p[i + 1]);
        const unsigned cp = (unsigned(b & 0x1f) << 6) | (b2 & 0x3f);
        unsigned folded = 0;
        switch (cp) {
        case 0x015e: case 0x015f: case 0x0218: case 0x0219: folded = 0x0219; break; // s cedilla / comma below
        case 0x0162: case 0x0163: case 0x021a: case 0x021b: folded = 0x021b; break; // t cedilla / comma below
        case 0x0102: case 0x0103: folded = 0x0103; break;                             // a breve
        case 0x00c2: case 0x00e2: folded = 0x00e2; break;                             // a circumflex
        case 0x00ce: case 0x00ee: folded = 0x00ee; break;                             // i circumflex
        default: break;
        }
        if ((b & 0xe0) != 0xc0 || !folded) {
            out.truncate(start);
            return false;
        }
        out += char(0xc0 | (folded >> 6));
        out += char(0x80 | (folded & 0x3f));
        ++i;
    }
    return true;
}

} // namespace

QString foldText(const QString &in)
{
    QString s = in;
    for (QChar c : in) {
        if (c.unicode() >= 0x300 && c.unicode() <= 0x36f) {
            s = in.normalized(QString::NormalizationForm_C);
            break;
        }
    }
    s = s.toLower();
    for (QChar &c : s) {
        if (c.unicode() == 0x015f)      // s with cedilla
            c = QChar(0x0219);
        else if (c.unicode() == 0x0163) // t with cedilla
            c = QChar(0x021b);
    }
    return s;
}

namespace {

quint64 fastHash(const char *p, qsizetype len)
{
    quint64 h = 0x9e3779b97f4a7c15ull ^ quint64(len);
    qsizetype i = 0;
    for (; i + 8 <= len; i += 8) {
        quint64 w;
        std::memcpy(&w, p + i, 8);
        h = (h ^ w) * 0xff51afd7ed558ccdull;
        h ^= h >> 32;
    }
    quint64 w = 0;
    std::memcpy(&w, p + i, size_t(len - i));
    h = (h ^ w) * 0xc4ceb9fe1a85ec53ull;
    h ^= h >> 29;
    return h;
}

// Distinct byte strings numbered 0, 1, ... in the order first met, each kept
// once in a compact heap so the comparisons stay in cache. An open-addressing
// table of (hash tag << 32) | (id + 1), 0 for a free slot.
class ByteInterner {
public:
    explicit ByteInterner(QByteArray &heap) : m_heap(heap) {}

    // The id of v, numbered anew when first met.
    inline qint32 intern(QByteArrayView v)
    {
        const quint64 h = fastHash(v.data(), v.size());
        const quint64 tag = h >> 32;
        size_t s = size_t(h) & m_mask;
        for (;;) {
            const quint64 slot = m_table[s];
            if (slot == 0)
                return add(v, s, tag);
            if ((slot >> 32) == tag) {
                const qint32 id = qint32(slot & 0xffffffffu) - 1;
                if (value(id) == v)
                    return id;
            }
            s = (s + 1) & m_mask;
        }
    }

    size_t count() const { return m_offsets.size() - 1; }
    QByteArrayView value(qint32 id) const
    {
        return QByteArrayView(m_heap.constData() + m_offsets[size_t(id)],
                              qsizetype(m_offsets[size_t(id) + 1] - m_offsets[size_t(id)]));
    }

private:
    qint32 add(QByteArrayView v, size_t s, quint64 tag)
    {
        const qint32 id = qint32(count());
        m_heap.append(v.data(), v.size());
        m_offsets.push_back(quint64(m_heap.size()));
        m_table[s] = (tag << 32) | quint64(id + 1);
        if (count() * 2 > m_table.size())
            grow();
        return id;
    }

    void grow()
    {
        std::vector<quint64> old(m_table.size() * 2, 0);
        old.swap(m_table);
        m_mask = m_table.size() - 1;
        for (quint64 o : old) {
            if (!o)
                continue;
            const QByteArrayView k = value(qint32(o & 0xffffffffu) - 1);
            size_t t = size_t(fastHash(k.data(), k.size())) & m_mask;
            while (m_table[t])
                t = (t + 1) & m_mask;
            m_table[t] = o;
        }
    }

    QByteArray &m_heap;
    std::vector<quint64> m_table = std::vector<quint64>(1024, 0);
    std::vector<quint64> m_offsets{0};
    size_t m_mask = 1023;
};

} // namespace

TextDict &GridModel::Impl::dict(int field)
{
    auto it = dicts.find(field);
    if (it != dicts.end())
        return *it->second;
    auto td = std::make_unique<TextDict>();
    const db::Column &c = column(field);
    const qsizetype rows = n();
    td->ids.resize(size_t(rows));
    // The column numbers its pooled values (equal numbers, equal values): each
    // number is looked up once. Values it did not pool are merged by their
    // bytes.
    std::vector<qint32> byEntry;
    ByteInterner interner(td->ownBytes);
    for (qsizetype r = 0; r < rows; ++r) {
        db::busy::beat();
        if (c.isNull(r)) {
            td->ids[size_t(r)] = -1;
            continue;
        }
        const quint32 e = c.textId(r);
        if (e < byEntry.size() && byEntry[e] >= 0) {
            td->ids[size_t(r)] = byEntry[e];
            continue;
        }
        const qint32 id = interner.intern(c.bytes(r));
        if (e >= byEntry.size())
            byEntry.resize(std::max<size_t>(size_t(e) + 1, byEntry.size() * 2), -1);
        byEntry[e] = id;
        td->ids[size_t(r)] = id;
    }
    td->values.reserve(interner.count());
    for (size_t k = 0; k < interner.count(); ++k) {
        const QByteArrayView v = interner.value(qint32(k));
        td->values.emplace_back(v.data(), v.size());
    }
    TextDict &ref = *td;
    dicts.emplace(field, std::move(td));
    return ref;
}

void GridModel::Impl::rankDict(TextDict &td)
{
    if (td.rank.size() == td.values.size() && !td.values.empty())
        return;
    const size_t m = td.values.size();
    std::vector<qint32> order(m);
    std::iota(order.begin(), order.end(), 0);
    std::vector<qint32> rank(m);
    bool allDigits = true;
    for (const QByteArrayView &v : td.values) {
        for (char ch : v) {
            const auto u = static_cast<unsigned char>(ch);
            if (!((u >= '0' && u <= '9'))) {
                allDigits = false;
                break;
            }
        }
        if (!allDigits)
            break;
    }
    if (allDigits) {
        // digits only (account codes, numbers kept as text): the collation
        // orders them as bytes do
        servedSort(order.begin(), order.end(),
                   [&](qint32 a, qint32 b) { return td.values[size_t(a)] < td.values[size_t(b)]; });
        for (size_t i = 0; i < m; ++i)
            rank[size_t(order[i])] = qint32(i);
    } else {
        QCollator coll(locale);
        coll.setNumericMode(false);
        std::vector<QCollatorSortKey> keys;
        keys.reserve(m);
        for (const QByteArrayView &v : td.values) {
            keys.push_back(coll.sortKey(QString::fromUtf8(v)));
            db::busy::beat();
        }
        servedSort(order.begin(), order.end(), [&](qint32 a, qint32 b) {
            const int c = keys[size_t(a)].compare(keys[size_t(b)]);
            if (c != 0)
                return c < 0;
            return td.values[size_t(a)] < td.values[size_t(b)];
        });
        // values the collation holds equal share a rank, so they group together
        qint32 r = -1;
        for (size_t i = 0; i < m; ++i) {
            if (i == 0 || keys[size_t(order[i - 1])].compare(keys[size_t(order[i])]) != 0)
                ++r;
            rank[size_t(order[i])] = r;
        }
    }
    td.rank = std::move(rank);
}

void GridModel::Impl::foldDict(TextDict &td)
{
    if (td.foldOffsets.size() == td.values.size() + 1)
        return;
    td.foldHeap.clear();
    td.foldOffsets.clear();
    td.foldOffsets.reserve(td.values.size() + 1);
    td.foldOffsets.push_back(0);
    for (const QByteArrayView &v : td.values) {
        if (!appendFolded(td.foldHeap, v))
            td.foldHeap += foldText(QString::fromUtf8(v)).toUtf8();
        td.foldOffsets.push_back(quint32(td.foldHeap.size()));
    }
}

} // namespace grid
