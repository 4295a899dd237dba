// Reading a layout stream: its lines, then its sections, into LayoutData.

#include "grid/u_gridlayout_p.h"

#include "db/u_error.h"

namespace grid::layout {

namespace {

bool unescapeValue(const QString &v, QString &out)
{
    out.clear();
    for (int i = 0; i < v.size(); ++i) {
        const QChar c = v[i];
        if (c != QLatin1Char('\\')) {
            out += c;
            continue;
        }
        if (++i >= v.size())
            return false;
        const QChar e = v[i];
        if (e == QLatin1Char('\\'))
            out += QLatin1Char('\\');
        else if (e == QLatin1Char('n'))
            out += QLatin1Char('\n');
        else if (e == QLatin1Char('r'))
            out += QLatin1Char('\r');
        else if (e == QLatin1Char(']'))
            out += QLatin1Char(']');
        else
            return false;
    }
    return true;
}

// The [View] switches besides Version and ProgramFilter.
const char *const kViewOptions[] = {"GroupByBox", "Footer", "FilterRow", "GroupFooters", "Indicator"};

[[noreturn]] void malformed(int line, const QString &why)
{
    throw QuarvError(QStringLiteral("Modul de prezentare al gridului nu poate fi citit (linia %1): %2").arg(line).arg(why));
}

bool parseBool(const QString &v, bool &out)
{
    if (v == QLatin1String("1") || v.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        out = true;
        return true;
    }
    if (v == QLatin1String("0") || v.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        out = false;
        return true;
    }
    return false;
}

int parseInt(const QString &v, int line, const QString &key)
{
    bool ok = false;
    const int i = v.toInt(&ok);
    if (!ok)
        malformed(line, QStringLiteral("valoare nenumerica pentru %1").arg(key));
    return i;
}

// One meaningful line of a stream: a section header or a key=value pair.
struct LayoutLine {
    int number = 0;
    bool section = false;
    QString name;  // the section's name, or the key
    QString value; // unescaped
};

// The stream's meaningful lines, one at a time and in order: blank lines and
// comments (";" or "#") skipped, a byte-order mark and carriage returns
// dropped, values unescaped. Throws on a line that is neither a section nor
// key=value, when it comes to it.
class LayoutTokenizer {
public:
    explicit LayoutTokenizer(const QByteArray &stream)
    {
        const QString text = QString::fromUtf8(stream);
        if (text.contains(QChar::ReplacementCharacter))
            malformed(1, QStringLiteral("textul nu este UTF-8"));
        m_lines = text.split(QLatin1Char('\n'));
    }

    bool next(LayoutLine &l)
    {
        while (m_i < m_lines.size()) {
            const int i = int(m_i++);
            const int ln = i + 1;
            QString line = m_lines[i];
            if (line.endsWith(QLatin1Char('\r')))
                line.chop(1);
            if (i == 0 && line.startsWith(QChar(0xfeff)))
                line.remove(0, 1);
            const QString t = line.trimmed();
            if (t.isEmpty() || t.startsWith(QLatin1Char(';')) || t.startsWith(QLatin1Char('#')))
                continue;
            l = LayoutLine{};
            l.number = ln;
            if (t.startsWith(QLatin1Char('['))) {
                if (!t.endsWith(QLatin1Char(']')) || t.endsWith(QLatin1String("\\]")))
                    malformed(ln, QStringLiteral("sectiune neinchisa"));
                if (!unescapeValue(t.mid(1, t.size() - 2), l.name))
                    malformed(ln, QStringLiteral("nume de sectiune invalid"));
                l.section = true;
            } else {
                const int eq = line.indexOf(QLatin1Char('='));
                if (eq <= 0)
                    malformed(ln, QStringLiteral("linia nu are forma cheie=valoare"));
                l.name = line.left(eq).trimmed();
                if (!unescapeValue(line.mid(eq + 1), l.value))
                    malformed(ln, QStringLiteral("secventa \\ invalida"));
            }
            return true;
        }
        return false;
    }

private:
    QStringList m_lines;
    qsizetype m_i = 0;
};

// Reads the lines into a LayoutData: one handler per kind of section, then
// the checks that need the whole stream.
class LayoutParser {
public:
    LayoutData parse(const QByteArray &stream)
    {
        LayoutTokenizer lines(stream);
        LayoutLine l;
        while (lines.next(l)) {
            if (!m_firstLine)
                m_firstLine = l.number;
            if (l.section) {
                openSection(l.name, l.number);
                continue;
            }
            switch (m_sec) {
            case Sec::None: malformed(l.number, QStringLiteral("valoare inaintea primei sectiuni"));
            case Sec::View: viewKey(l); break;
            case Sec::Column: columnKey(l); break;
            case Sec::Footer:
            case Sec::Group: summaryKey(l); break;
            case Sec::Condition: conditionKey(l); break;
            }
        }
        finish();
        return std::move(L);
    }

private:
    enum class Sec { None, View, Column, Footer, Group, Condition };

    void openSection(const QString &name, int ln)
    {
        m_col = nullptr;
        m_sum = nullptr;
        m_cond = nullptr;
        if (name == QLatin1String("View")) {
            if (m_sawView)
                malformed(ln, QStringLiteral("sectiunea [View] apare de doua ori"));
            m_sawView = true;
            m_viewLine = ln;
            m_sec = Sec::View;
        } else if (name.startsWith(QLatin1String("Column:"))) {
            const QString field = name.mid(7);
            if (field.isEmpty())
                malformed(ln, QStringLiteral("coloana fara nume de camp"));
            const QString folded = field.toCaseFolded();
            if (m_columnNames.contains(folded))
                malformed(ln, QStringLiteral("coloana %1 apare de doua ori").arg(field));
            m_columnNames.insert(folded);
            L.columns.push_back(ColumnData{});
            m_col = &L.columns.back();
            m_col->field = field;
            m_col->line = ln;
            m_sec = Sec::Column;
        } else if (name.startsWith(QLatin1String("FooterSummary:")) || name.startsWith(QLatin1String("GroupSummary:"))) {
            const bool isFooter = name.startsWith(QLatin1String("Footer"));
            const int idx = parseInt(name.mid(name.indexOf(QLatin1Char(':')) + 1), ln, name);
            auto &m = isFooter ? L.footer : L.group;
            if (m.count(idx))
                malformed(ln, QStringLiteral("sectiunea %1 apare de doua ori").arg(name));
            m_sum = &m[idx];
            (isFooter ? m_footerLines : m_groupLines)[idx] = ln;
            m_sec = isFooter ? Sec::Footer : Sec::Group;
        } else if (name.startsWith(QLatin1String("FilterCondition:"))) {
            m_condIndex = parseInt(name.mid(16), ln, name);
            if (L.conditions.count(m_condIndex))
                malformed(ln, QStringLiteral("sectiunea %1 apare de doua ori").arg(name));
            m_cond = &L.conditions[m_condIndex];
            m_condTypes[m_condIndex] = QStringLiteral("String");
            m_condLines[m_condIndex] = m_condTypeLines[m_condIndex] = m_condValueLines[m_condIndex] = ln;
            m_sec = Sec::Condition;
        } else {
            malformed(ln, QStringLiteral("sectiune necunoscuta [%1]").arg(name));
        }
    }

    void viewKey(const LayoutLine &l)
    {
        const QString &key = l.name;
        if (key == QLatin1String("Version")) {
            const int v = parseInt(l.value, l.number, key);
            if (v < 1 || v > kLayoutVersion)
                malformed(l.number, QStringLiteral("versiune necunoscuta %1").arg(v));
            m_sawVersion = true;
            return;
        }
        // as in every other section, a key this version does not write is an error
        const bool known = key == QLatin1String("ProgramFilter")
                        || std::any_of(std::begin(kViewOptions), std::end(kViewOptions),
                                       [&](const char *k) { return key == QLatin1String(k); });
        if (!known)
            malformed(l.number, QStringLiteral("cheie necunoscuta %1").arg(key));
        bool b;
        if (!parseBool(l.value, b))
            malformed(l.number, QStringLiteral("valoare invalida pentru %1").arg(key));
        if (key == QLatin1String("ProgramFilter"))
            L.programFilter = b;
        else
            L.options.insert(key, b);
    }

    void columnKey(const LayoutLine &l)
    {
        const QString &key = l.name;
        const QString &value = l.value;
        const int ln = l.number;
        if (key == QLatin1String("Index")) {
            m_col->index = parseInt(value, ln, key);
        } else if (key == QLatin1String("Width")) {
            m_col->width = parseInt(value, ln, key);
            if (m_col->width <= 0)
                malformed(ln, QStringLiteral("latime invalida"));
        } else if (key == QLatin1String("Visible")) {
            if (!parseBool(value, m_col->visible))
                malformed(ln, QStringLiteral("valoare invalida pentru Visible"));
        } else if (key == QLatin1String("Caption")) {
            m_col->caption = value;
        } else if (key == QLatin1String("Sort")) {
            if (value == QLatin1String("Ascending"))
                m_col->sort = SortOrder::Ascending;
            else if (value == QLatin1String("Descending"))
                m_col->sort = SortOrder::Descending;
            else if (value == QLatin1String("None"))
                m_col->sort = SortOrder::None;
            else
                malformed(ln, QStringLiteral("ordine de sortare necunoscuta %1").arg(value));
        } else if (key == QLatin1String("SortIndex")) {
            m_col->sortIndex = parseInt(value, ln, key);
        } else if (key == QLatin1String("GroupIndex")) {
            m_col->groupIndex = parseInt(value, ln, key);
        } else if (key == QLatin1String("Format")) {
            m_col->format = value;
        } else if (key == QLatin1String("Filter")) {
            m_col->filter = value;
        } else {
            malformed(ln, QStringLiteral("cheie necunoscuta %1").arg(key));
        }
    }

    void summaryKey(const LayoutLine &l)
    {
        const QString &key = l.name;
        const QString &value = l.value;
        if (key == QLatin1String("Field")) {
            m_sum->fieldName = value;
        } else if (key == QLatin1String("Kind")) {
            static const std::pair<const char *, SummaryKind> kinds[] = {
                {"Sum", SummaryKind::Sum}, {"Count", SummaryKind::Count}, {"Min", SummaryKind::Min},
                {"Max", SummaryKind::Max}, {"Average", SummaryKind::Average}};
            bool found = false;
            for (const auto &[n, k] : kinds)
                if (value == QLatin1String(n)) {
                    m_sum->kind = k;
                    found = true;
                }
            if (!found)
                malformed(l.number, QStringLiteral("tip de sumar necunoscut %1").arg(value));
        } else if (key == QLatin1String("Format")) {
            m_sum->format = value;
        } else if (key == QLatin1String("Column")) {
            m_sum->columnField = value;
        } else {
            malformed(l.number, QStringLiteral("cheie necunoscuta %1").arg(key));
        }
    }

    void conditionKey(const LayoutLine &l)
    {
        const QString &key = l.name;
        if (key == QLatin1String("Field")) {
            m_cond->fieldName = l.value;
        } else if (key == QLatin1String("Type")) {
            m_condTypes[m_condIndex] = l.value;
            m_condTypeLines[m_condIndex] = l.number;
        } else if (key == QLatin1String("Value")) {
            m_condValues[m_condIndex] = l.value;
            m_condValueLines[m_condIndex] = l.number;
        } else {
            malformed(l.number, QStringLiteral("cheie necunoscuta %1").arg(key));
        }
    }

    // A condition's value read by its type.
    void readConditionValue(int idx, FilterCondition &c)
    {
        const QString type = m_condTypes[idx];
        const QString v = m_condValues[idx];
        bool ok = true;
        if (type == QLatin1String("Null")) {
            c.value = QVariant();
        } else if (type == QLatin1String("String")) {
            c.value = v;
        } else if (type == QLatin1String("Bool")) {
            bool b = false;
            ok = parseBool(v, b);
            c.value = b;
        } else if (type == QLatin1String("Int")) {
            c.value = v.toLongLong(&ok);
        } else if (type == QLatin1String("Double")) {
            c.value = v.toDouble(&ok);
        } else if (type == QLatin1String("Date")) {
            const QDate d = QDate::fromString(v, Qt::ISODate);
            ok = d.isValid();
            c.value = d;
        } else if (type == QLatin1String("DateTime")) {
            const QDateTime d = QDateTime::fromString(v, Qt::ISODateWithMs);
            ok = d.isValid();
            c.value = d;
        } else {
            malformed(m_condTypeLines[idx], QStringLiteral("tipul %1 al conditiei de filtru %2 este necunoscut").arg(type).arg(idx));
        }
        if (!ok)
            malformed(m_condValueLines[idx], QStringLiteral("valoarea conditiei de filtru %1 nu poate fi citita").arg(idx));
    }

    void finish()
    {
        // a [View] without Version is named by its own line, a missing one where it was due
        if (!m_sawView || !m_sawVersion)
            malformed(m_sawView ? m_viewLine : std::max(m_firstLine, 1), QStringLiteral("lipseste sectiunea [View] cu versiunea"));
        for (const auto &[idx, s] : L.footer)
            if (s.fieldName.isEmpty())
                malformed(m_footerLines[idx], QStringLiteral("sumarul de subsol %1 nu are camp").arg(idx));
        for (const auto &[idx, s] : L.group)
            if (s.fieldName.isEmpty())
                malformed(m_groupLines[idx], QStringLiteral("sumarul de grup %1 nu are camp").arg(idx));
        for (auto &[idx, c] : L.conditions) {
            if (c.fieldName.isEmpty())
                malformed(m_condLines[idx], QStringLiteral("conditia de filtru %1 nu are camp").arg(idx));
            readConditionValue(idx, c);
        }
        // display order: by Index, then as listed
        std::stable_sort(L.columns.begin(), L.columns.end(), [](const ColumnData &a, const ColumnData &b) {
            const int x = a.index < 0 ? std::numeric_limits<int>::max() : a.index;
            const int y = b.index < 0 ? std::numeric_limits<int>::max() : b.index;
            return x < y;
        });
    }

    LayoutData L;
    Sec m_sec = Sec::None;
    ColumnData *m_col = nullptr;
    GridSummary *m_sum = nullptr;
    FilterCondition *m_cond = nullptr;
    bool m_sawView = false, m_sawVersion = false;
    int m_viewLine = 0, m_firstLine = 0;
    int m_condIndex = -1;
    std::map<int, QString> m_condTypes, m_condValues;
    // where each section and value came from, for the checks at the end
    std::map<int, int> m_footerLines, m_groupLines, m_condLines, m_condTypeLines, m_condValueLines;
    QSet<QString> m_columnNames; // case-folded
};

} // namespace

LayoutData parse(const QByteArray &stream)
{
    return LayoutParser().parse(stream);
}

} // namespace grid::layout
