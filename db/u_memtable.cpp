#include "db/u_memtable.h"

#include "db/u_error.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <charconv>

// The file: <quarvTable version="1"> with <fields> (one <field> per column:
// name, type, size, required, readOnly) and <rows> (one <row> per row, one <v>
// per field in field order). A null is <v null="1"/>, an empty text <v/>.
// Text that XML cannot carry as it is (control characters, a carriage
// return) and bytes are stored in base64 with enc="b64".

namespace db {

namespace {

const QString kRoot = QStringLiteral("quarvTable");

FieldType typeFromName(const QString &name, bool *ok)
{
    static const FieldType all[] = {FieldType::String, FieldType::Text,  FieldType::Date,
                                    FieldType::DateTime, FieldType::Float, FieldType::Int32,
                                    FieldType::Int64,  FieldType::Bool,  FieldType::Bytes};
    for (FieldType t : all)
        if (fieldTypeName(t) == name) {
            *ok = true;
            return t;
        }
    *ok = false;
    return FieldType::Text;
}

bool xmlSafe(QStringView s)
{
    for (QChar c : s) {
        const char16_t u = c.unicode();
        if ((u < 0x20 && u != u'\t' && u != u'\n') || u == 0xFFFE || u == 0xFFFF)
            return false;
    }
    return true;
}

// The text of a stored (non-null) cell; b64 set when it must travel in base64.
QString cellText(const Column &c, qsizetype row, bool *b64)
{
    *b64 = false;
    switch (c.type()) {
    case FieldType::String:
    case FieldType::Text: {
        QString s = c.asString(row);
        if (!xmlSafe(s)) {
            *b64 = true;
            return QString::fromLatin1(c.bytes(row).toByteArray().toBase64());
        }
        return s;
    }
    case FieldType::Bytes:
        *b64 = true;
        return QString::fromLatin1(c.bytes(row).toByteArray().toBase64());
    case FieldType::Float: {
        char buf[64];
        const auto r = std::to_chars(buf, buf + sizeof buf, c.asDouble(row));
        return QString::fromLatin1(buf, r.ptr - buf);
    }
    case FieldType::Date: return c.asDate(row).toString(Qt::ISODate);
    case FieldType::DateTime: return c.asDateTime(row).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz"));
    case FieldType::Int32:
    case FieldType::Int64: return QString::number(c.asInt64(row));
    case FieldType::Bool: return c.asBool(row) ? QStringLiteral("true") : QStringLiteral("false");
    }
    return {};
}

// A cell read back; false when the text does not fit the type.
bool parseCell(FieldType t, const QString &text, bool b64, QVariant *out)
{
    if (b64) {
        const auto r = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!r)
            return false;
        *out = t == FieldType::Bytes ? QVariant(r.decoded) : QVariant(QString::fromUtf8(r.decoded));
        return t == FieldType::Bytes || isTextual(t);
    }
    switch (t) {
    case FieldType::String:
    case FieldType::Text: *out = text; return true;
    case FieldType::Bytes: return false;
    case FieldType::Float: {
        const QByteArray b = text.toLatin1();
        double d = 0;
        const auto r = std::from_chars(b.constData(), b.constData() + b.size(), d);
        *out = d;
        return r.ec == std::errc() && r.ptr == b.constData() + b.size();
    }
    case FieldType::Int32:
    case FieldType::Int64: {
        bool ok = false;
        const qlonglong v = text.toLongLong(&ok);
        *out = t == FieldType::Int32 ? QVariant(int(v)) : QVariant(v);
        return ok && (t == FieldType::Int64 || (v >= INT_MIN && v <= INT_MAX));
    }
    case FieldType::Bool:
        *out = text == u"true";
        return text == u"true" || text == u"false";
    case FieldType::Date: {
        const QDate d = QDate::fromString(text, Qt::ISODate);
        *out = d;
        return d.isValid();
    }
    case FieldType::DateTime: {
        const QDateTime d = QDateTime::fromString(text, Qt::ISODateWithMs);
        *out = d;
        return d.isValid();
    }
    }
    return false;
}

// Reads a table file: its field list, then its rows. The first problem met is
// the one reported, with the place where the reader stopped.
class TableReader {
public:
    explicit TableReader(QIODevice &device) : x(&device) {}

    std::vector<FieldDef> defs;
    std::vector<QVariantList> rows;

    void read()
    {
        if (!x.readNextStartElement() || x.name() != kRoot) {
            bad(QStringLiteral("lipseste elementul %1").arg(kRoot));
        } else if (const QStringView version = x.attributes().value(QStringLiteral("version")); version != u"1") {
            bad(version.isEmpty() ? QStringLiteral("lipseste versiunea fisierului")
                                  : QStringLiteral("versiunea %1 a fisierului nu este cunoscuta").arg(version.left(20)));
        } else {
            readBody();
        }
    }

    void throwIfBad(const QString &path) const
    {
        if (!x.hasError())
            return;
        const QString why = problem.isEmpty() ? x.errorString() : problem;
        throw QuarvError(QStringLiteral("Fisierul %1 nu este un tabel XML valid (linia %2, coloana %3): %4")
                             .arg(path)
                             .arg(x.lineNumber())
                             .arg(x.columnNumber())
                             .arg(why));
    }

private:
    QXmlStreamReader x;
    QString problem;
    bool sawFields = false;
    bool sawRows = false;

    void bad(const QString &why)
    {
        if (problem.isEmpty())
            problem = why;
        x.raiseError(why);
    }

    void readBody()
    {
        while (!x.hasError() && x.readNextStartElement()) {
            if (x.name() == u"fields")
                readFields();
            else if (x.name() == u"rows")
                readRows();
            else
                x.skipCurrentElement();
        }
        if (!x.hasError() && defs.empty())
            bad(QStringLiteral("lipsesc definitiile campurilor"));
        if (!x.hasError() && !sawRows)
            bad(QStringLiteral("lipsesc randurile"));
        // Whatever follows the root must be nothing but the end of the document.
        while (!x.hasError() && !x.atEnd())
            x.readNext();
    }

    void readFields()
    {
        if (sawFields)
            return bad(QStringLiteral("lista de campuri apare de doua ori"));
        sawFields = true;
        while (x.readNextStartElement()) {
            if (x.name() != u"field")
                return bad(QStringLiteral("element neasteptat <%1>").arg(x.name()));
            const QXmlStreamAttributes a = x.attributes();
            FieldDef def;
            def.name = a.value(QStringLiteral("name")).toString();
            bool ok = false;
            def.type = typeFromName(a.value(QStringLiteral("type")).toString(), &ok);
            if (def.name.isEmpty() || !ok)
                return bad(QStringLiteral("definitie de camp incorecta"));
            def.size = a.value(QStringLiteral("size")).toInt();
            def.required = a.value(QStringLiteral("required")) == u"1";
            def.readOnly = a.value(QStringLiteral("readOnly")) == u"1";
            defs.push_back(def);
            x.skipCurrentElement();
        }
    }

    void readRows()
    {
        if (!sawFields)
            return bad(QStringLiteral("randurile apar inaintea listei de campuri"));
        if (sawRows)
            return bad(QStringLiteral("lista de randuri apare de doua ori"));
        sawRows = true;
        while (!x.hasError() && x.readNextStartElement()) {
            if (x.name() != u"row")
                return bad(QStringLiteral("element neasteptat <%1>").arg(x.name()));
            QVariantList row;
            if (!readRow(row))
                return;
            rows.push_back(std::move(row));
        }
    }

    // False when the reader stopped on an error.
    bool readRow(QVariantList &row)
    {
        while (!x.hasError() && x.readNextStartElement()) {
            if (x.name() != u"v" || row.size() >= qsizetype(defs.size())) {
                bad(QStringLiteral("randul %1 are prea multe valori").arg(rows.size() + 1));
                return false;
            }
            const FieldDef &def = defs[size_t(row.size())];
            const bool isNull = x.attributes().value(QStringLiteral("null")) == u"1";
            const bool b64 = x.attributes().value(QStringLiteral("enc")) == u"b64";
            const QString text = x.readElementText();
            if (x.hasError())
                return false;
            QVariant v;
            if (!isNull && !parseCell(def.type, text, b64, &v)) {
                bad(QStringLiteral("valoare incorecta '%1' pentru campul %2").arg(text.left(40), def.name));
                return false;
            }
            row.append(v);
        }
        if (x.hasError())
            return false;
        if (row.size() != qsizetype(defs.size())) {
            bad(QStringLiteral("randul %1 are %2 valori in loc de %3").arg(rows.size() + 1).arg(row.size()).arg(defs.size()));
            return false;
        }
        return true;
    }
};

} // namespace

MemTable::MemTable(QObject *parent) : DataSet(parent) {}

void MemTable::setFieldDefs(std::vector<FieldDef> defs)
{
    m_designed = std::move(defs);
    if (!isActive())
        setFields(m_designed);
}

void MemTable::open()
{
    if (isActive())
        return;
    if (fieldCount() == 0)
        setFields(m_designed);
    setActiveState(true);
    emit rowsReset();
    setCurrentRow(0);
}

void MemTable::close()
{
    DataSet::close();
}

void MemTable::appendRow(const QVariantList &values)
{
    if (!isActive())
        open();
    if (isEditing())
        post();
    for (int f = 0; f < fieldCount(); ++f)
        column(f).check(values.value(f), fieldDef(f).name);
    for (int f = 0; f < fieldCount(); ++f)
        mutableColumn(f).append(values.value(f));
    setRowCount(rowCount() + 1);
    emit rowInserted(rowCount() - 1);
    if (currentRow() < 0)
        setCurrentRow(0);
}

void MemTable::saveToFile(const QString &path) const
{
    const std::vector<FieldDef> &defs = fieldCount() > 0 ? fieldDefs() : m_designed;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, file.errorString()));
    QXmlStreamWriter w(&file);
    w.setAutoFormatting(true);
    w.writeStartDocument();
    w.writeStartElement(kRoot);
    w.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    w.writeStartElement(QStringLiteral("fields"));
    for (const FieldDef &f : defs) {
        w.writeEmptyElement(QStringLiteral("field"));
        w.writeAttribute(QStringLiteral("name"), f.name);
        w.writeAttribute(QStringLiteral("type"), fieldTypeName(f.type));
        if (f.size > 0)
            w.writeAttribute(QStringLiteral("size"), QString::number(f.size));
        if (f.required)
            w.writeAttribute(QStringLiteral("required"), QStringLiteral("1"));
        if (f.readOnly)
            w.writeAttribute(QStringLiteral("readOnly"), QStringLiteral("1"));
    }
    w.writeEndElement();
    w.writeStartElement(QStringLiteral("rows"));
    for (qsizetype r = 0; r < rowCount(); ++r) {
        w.writeStartElement(QStringLiteral("row"));
        for (int f = 0; f < fieldCount(); ++f) {
            const Column &c = column(f);
            if (c.isNull(r)) {
                w.writeEmptyElement(QStringLiteral("v"));
                w.writeAttribute(QStringLiteral("null"), QStringLiteral("1"));
                continue;
            }
            bool b64 = false;
            const QString text = cellText(c, r, &b64);
            if (text.isEmpty() && !b64) {
                w.writeEmptyElement(QStringLiteral("v"));
                continue;
            }
            w.writeStartElement(QStringLiteral("v"));
            if (b64)
                w.writeAttribute(QStringLiteral("enc"), QStringLiteral("b64"));
            w.writeCharacters(text);
            w.writeEndElement();
        }
        w.writeEndElement();
    }
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndDocument();
    if (w.hasError() || !file.commit())
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(path, file.errorString()));
}

void MemTable::loadFromFile(const QString &path)
{
    close();
    // A failed load leaves the designed, empty table behind.
    setFields(m_designed);
    if (!QFileInfo::exists(path))
        throw QuarvError(QStringLiteral("Fisierul %1 nu exista").arg(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi citit: %2").arg(path, file.errorString()));
    load(file, path);
}

void MemTable::loadFromXml(const QByteArray &xml)
{
    close();
    setFields(m_designed);
    QBuffer buffer;
    buffer.setData(xml);
    buffer.open(QIODevice::ReadOnly);
    load(buffer, QStringLiteral("(memorie)"));
}

void MemTable::load(QIODevice &device, const QString &path)
{
    TableReader reader(device);
    reader.read();
    reader.throwIfBad(path);

    setFields(reader.defs);
    for (const QVariantList &row : reader.rows)
        for (int f = 0; f < fieldCount(); ++f)
            mutableColumn(f).append(row.value(f));
    setRowCount(qsizetype(reader.rows.size()));
    setActiveState(true);
    emit rowsReset();
    setCurrentRow(0);
}

void MemTable::applyPost(qsizetype, const QVariantList &, const QVariantList &) {}
void MemTable::applyDelete(qsizetype, const QVariantList &) {}

} // namespace db
