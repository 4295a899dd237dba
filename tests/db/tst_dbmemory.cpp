// The in-memory table with its XML file, and the delimited-text mover.
#include "db/u_memtable.h"
#include "db/u_textmover.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

using db::FieldDef;
using db::FieldType;
using db::MemTable;

namespace {

std::vector<FieldDef> allTypes()
{
    auto f = [](const char *n, FieldType t, int size = 0) {
        FieldDef d;
        d.name = QString::fromLatin1(n);
        d.type = t;
        d.size = size;
        return d;
    };
    return {f("ip", FieldType::String, 20), f("nota", FieldType::Text), f("zi", FieldType::Date),
            f("moment", FieldType::DateTime), f("suma", FieldType::Float), f("port", FieldType::Int32),
            f("mare", FieldType::Int64), f("activ", FieldType::Bool), f("date", FieldType::Bytes)};
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(data);
}

// Reads a CSV the way a spreadsheet of a locale with the decimal point `dp`
// does when it opens the file by double click: the byte-order mark decides
// UTF-8 (without it the bytes are read as Latin-1), fields split on `sep`
// outside quotes, a quoted field is unquoted and then read like any other;
// a number is an optional minus, digits and at most one decimal point (no
// exponent, no other separator), anything else stays text.
QList<QVariantList> readLikeSpreadsheet(const QByteArray &file, QChar sep, QChar dp)
{
    QString text;
    if (file.startsWith("\xEF\xBB\xBF"))
        text = QString::fromUtf8(file.mid(3));
    else
        text = QString::fromLatin1(file);
    const QRegularExpression number(QStringLiteral("^-?\\d+(%1\\d+)?$").arg(QRegularExpression::escape(QString(dp))));
    QList<QVariantList> rows;
    for (const QString &line : text.split(u"\r\n"_s, Qt::SkipEmptyParts)) {
        QVariantList row;
        QString cell;
        bool quoted = false;
        auto flush = [&] {
            if (number.match(cell).hasMatch())
                row << QString(cell).replace(dp, u'.').toDouble();
            else
                row << cell;
            cell.clear();
        };
        for (qsizetype i = 0; i < line.size(); ++i) {
            const QChar c = line[i];
            if (quoted) {
                if (c == u'"' && i + 1 < line.size() && line[i + 1] == u'"')
                    cell += line[++i];
                else if (c == u'"')
                    quoted = false;
                else
                    cell += c;
            } else if (c == u'"') {
                quoted = true;
            } else if (c == sep) {
                flush();
            } else {
                cell += c;
            }
        }
        flush();
        rows << row;
    }
    return rows;
}

} // namespace

class TstDbMemory : public QObject {
    Q_OBJECT
private slots:
    void editingAndRoundTrip();
    void badFilesLeaveTableClosedAndEmpty_data();
    void badFilesLeaveTableClosedAndEmpty();
    void missingFileAndUnwritableFolder();
    void numbersAnIntegerFieldCannotHold();
    void textMover();
    void columnAgainstModel();
};

void TstDbMemory::editingAndRoundTrip()
{
    QTemporaryDir dir;
    MemTable t;
    t.setFieldDefs(allTypes());
    t.open();
    QVERIFY(t.isActive());
    QCOMPARE(t.rowCount(), 0);
    QCOMPARE(t.fieldCount(), 9);

    // Insert through the edit buffer, with a default from the new-row hook.
    t.onNewRecord = [](db::DataSet &ds) { ds.setFieldValue(QStringLiteral("port"), 5432); };
    t.edit(); // empty table: becomes an insert
    QCOMPARE(t.state(), db::DataSet::State::Insert);
    t.setFieldValue(QStringLiteral("ip"), QStringLiteral("192.168.0.7"));
    t.setFieldValue(QStringLiteral("nota"), QStringLiteral("Ștefan & <țară> \"â\"\r\n\ttab\x01"));
    t.setFieldValue(QStringLiteral("zi"), QDate(2024, 2, 29));
    t.setFieldValue(QStringLiteral("moment"), QDateTime(QDate(2023, 12, 31), QTime(23, 59, 59, 999)));
    t.setFieldValue(QStringLiteral("suma"), 0.1 + 0.2);
    t.setFieldValue(QStringLiteral("mare"), qlonglong(-9007199254740993));
    t.setFieldValue(QStringLiteral("activ"), false);
    t.setFieldValue(QStringLiteral("date"), QByteArray("\x00<\xff", 3));
    t.post();
    QCOMPARE(t.rowCount(), 1);
    QCOMPARE(t.fieldValue(QStringLiteral("port")).toInt(), 5432);
    // A second row: empty text, every other value null.
    t.append();
    t.setFieldValue(QStringLiteral("ip"), QString(u""_s));
    t.setFieldValue(QStringLiteral("port"), QVariant());
    t.post();
    t.appendRow({QStringLiteral("de sters")});
    QCOMPARE(t.rowCount(), 3);
    t.last();
    t.deleteCurrent();
    QCOMPARE(t.rowCount(), 2);

    // A refusing hook keeps the edit and the table unchanged.
    t.first();
    t.beforePost = [](db::DataSet &) { throw QuarvError(QStringLiteral("refuzat")); };
    t.setFieldValue(QStringLiteral("ip"), QStringLiteral("x"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, t.post());
    QVERIFY(t.isEditing());
    t.cancel();
    t.beforePost = nullptr;
    QCOMPARE(t.fieldValue(QStringLiteral("ip")).toString(), QStringLiteral("192.168.0.7"));

    const QString path = dir.filePath(QStringLiteral("conectareQUARV.xml"));
    t.saveToFile(path);
    t.close();
    QCOMPARE(t.rowCount(), 0);

    MemTable u; // no designed fields: the file describes itself
    QSignalSpy reset(&u, &MemTable::rowsReset);
    u.loadFromFile(path);
    QVERIFY(u.isActive());
    QVERIFY(reset.count() >= 1);
    QCOMPARE(u.rowCount(), 2);
    QCOMPARE(u.currentRow(), 0);
    QCOMPARE(u.fieldCount(), 9);
    QCOMPARE(u.fieldDef(0).size, 20);
    QCOMPARE(u.fieldDef(6).type, FieldType::Int64);
    QCOMPARE(u.fieldValue(QStringLiteral("nota")).toString(), QStringLiteral("Ștefan & <țară> \"â\"\r\n\ttab\x01"));
    QCOMPARE(u.fieldValue(QStringLiteral("zi")).toDate(), QDate(2024, 2, 29));
    QCOMPARE(u.fieldValue(QStringLiteral("moment")).toDateTime(), QDateTime(QDate(2023, 12, 31), QTime(23, 59, 59, 999)));
    QCOMPARE(u.fieldValue(QStringLiteral("suma")).toDouble(), 0.1 + 0.2);
    QCOMPARE(u.fieldValue(QStringLiteral("mare")).toLongLong(), qlonglong(-9007199254740993));
    QCOMPARE(u.fieldValue(QStringLiteral("activ")), QVariant(false));
    QCOMPARE(u.fieldValue(QStringLiteral("date")).toByteArray(), QByteArray("\x00<\xff", 3));
    u.next();
    QVERIFY(!u.isFieldNull(QStringLiteral("ip")));
    QCOMPARE(u.fieldValue(QStringLiteral("ip")).toString(), QString());
    for (int f = 1; f < u.fieldCount(); ++f)
        QVERIFY2(u.isFieldNull(u.fieldDef(f).name), qPrintable(u.fieldDef(f).name));

    // Saving again gives the same file: nothing drifts through a round trip.
    const QString again = dir.filePath(QStringLiteral("again.xml"));
    u.saveToFile(again);
    QCOMPARE(readAll(again), readAll(path));
}

// A good profiles file of two rows, as saved.
static QByteArray goodTableFile()
{
    QTemporaryDir dir;
    MemTable good;
    good.setFieldDefs(allTypes());
    good.appendRow({QStringLiteral("10.0.0.1"), QStringLiteral("a"), QDate(2024, 1, 1)});
    good.appendRow({QStringLiteral("10.0.0.2")});
    const QString path = dir.filePath(QStringLiteral("good.xml"));
    good.saveToFile(path);
    return readAll(path);
}

// A damaged or foreign file is refused with its name; the table is left
// closed and empty, and opens again as designed.
void TstDbMemory::badFilesLeaveTableClosedAndEmpty_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray xml = goodTableFile();
    QVERIFY(xml.contains("quarvTable"));
    auto block = [&](const char *open, const char *close) {
        const qsizetype from = xml.indexOf(open), to = xml.indexOf(close);
        return xml.mid(from, to + qsizetype(qstrlen(close)) - from);
    };
    const QByteArray fieldsBlock = block("<fields>", "</fields>"), rowsBlock = block("<rows>", "</rows>");
    QVERIFY(!fieldsBlock.isEmpty() && !rowsBlock.isEmpty());
    QByteArray rowsFirst = xml;
    rowsFirst.remove(rowsFirst.indexOf(rowsBlock), rowsBlock.size());
    rowsFirst.insert(rowsFirst.indexOf("<fields>"), rowsBlock);
    QTest::newRow("truncated") << xml.left(xml.size() * 2 / 3);
    QTest::newRow("truncated after rows") << xml.left(xml.lastIndexOf("</quarvTable>"));
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not xml") << QByteArray("ip;port\n1;2\n");
    QTest::newRow("other root") << QByteArray("<?xml version=\"1.0\"?><table/>");
    QTest::newRow("bad date") << QByteArray(xml).replace("2024-01-01", "2024-13-45");
    QTest::newRow("unknown type") << QByteArray(xml).replace("type=\"int64\"", "type=\"blob\"");
    QTest::newRow("extra value") << QByteArray(xml).replace("<row>", "<row><v>1</v>");
    QTest::newRow("garbage after") << xml + "<x/>";
    QTest::newRow("unknown version") << QByteArray(xml).replace("version=\"1\"", "version=\"2\"");
    QTest::newRow("no version") << QByteArray(xml).replace(" version=\"1\"", "");
    QTest::newRow("rows before fields") << rowsFirst;
    QTest::newRow("second field list") << QByteArray(xml).replace("<rows>", QByteArray(fieldsBlock + "<rows>"));
}

void TstDbMemory::badFilesLeaveTableClosedAndEmpty()
{
    QFETCH(QByteArray, content);
    QTemporaryDir dir;
    const QString good = dir.filePath(QStringLiteral("good.xml")), bad = dir.filePath(QStringLiteral("bad.xml"));
    writeFile(good, goodTableFile());
    writeFile(bad, content);
    MemTable t;
    t.setFieldDefs({allTypes()[0]});
    t.loadFromFile(good);
    QCOMPARE(t.rowCount(), 2);
    try {
        t.loadFromFile(bad);
        QFAIL("a damaged file was loaded");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(bad), qPrintable(e.text()));
    }
    QVERIFY(!t.isActive());
    QCOMPARE(t.rowCount(), 0);
    t.open(); // the designed, empty table
    QCOMPARE(t.fieldCount(), 1);
    QCOMPARE(t.rowCount(), 0);
}

void TstDbMemory::missingFileAndUnwritableFolder()
{
    QTemporaryDir dir;
    MemTable t;
    t.setFieldDefs(allTypes());
    try {
        t.loadFromFile(dir.filePath(QStringLiteral("missing.xml")));
        QFAIL("loaded a missing file");
    } catch (const QuarvError &e) {
        QVERIFY(e.text().contains(QStringLiteral("nu exista")));
    }
    QVERIFY(!t.isActive());
    t.appendRow({QStringLiteral("10.0.0.1")});
    QVERIFY_THROWS_EXCEPTION(QuarvError, t.saveToFile(dir.filePath(QStringLiteral("no/such/dir/x.xml"))));
}

void TstDbMemory::numbersAnIntegerFieldCannotHold()
{
    MemTable t;
    t.setFieldDefs(allTypes());
    t.appendRow({QStringLiteral("a"), {}, QDate(2024, 1, 1), {}, {}, 5432});
    const int port = t.fieldIndex(QStringLiteral("port"));
    const int mare = t.fieldIndex(QStringLiteral("mare"));
    const int zi = t.fieldIndex(QStringLiteral("zi"));
    const double inf = std::numeric_limits<double>::infinity();
    const QList<QPair<int, QVariant>> refused = {
        {port, u"nan"_s}, {port, u"inf"_s}, {port, u"1e300"_s}, {port, u"1e10"_s}, {port, u"-2147483649"_s},
        {port, std::nan("")}, {port, inf}, {port, -1e300}, {port, 1e10}, {port, 2147483648.0},
        {port, qlonglong(1) << 40}, {mare, 9.3e18}, {mare, -inf}, {mare, u"1e19"_s}, {zi, QDate(99999999, 1, 1)},
    };
    for (const auto &[field, v] : refused) {
        const QByteArray what = (t.fieldDef(field).name + u' ' + v.toString()).toUtf8();
        QVariantList row = {QStringLiteral("b"), {}, {}, {}, {}, 1, 1};
        row[field] = v;
        try {
            t.appendRow(row);
            QFAIL(what.constData());
        } catch (const QuarvError &e) {
            QVERIFY2(e.text().contains(u"'"_s + t.fieldDef(field).name + u"'"_s), qPrintable(e.text()));
        }
        QCOMPARE(t.rowCount(), 1); // no column took a value
        t.first();
        QVERIFY_THROWS_EXCEPTION(QuarvError, t.setFieldValue(field, v));
        QCOMPARE(t.fieldValue(port).toInt(), 5432);
        t.cancel();
    }
    // the limits themselves, and a fraction as before (text cut, number rounded)
    t.appendRow({QStringLiteral("c"), {}, {}, {}, {}, 2147483647, -9.2e18});
    t.appendRow({QStringLiteral("d"), {}, {}, {}, {}, -2147483648.0, u"-9223372036854775808"_s});
    t.appendRow({QStringLiteral("e"), {}, {}, {}, {}, u"12.7"_s, 12.7});
    QCOMPARE(t.rowCount(), 4);
    QCOMPARE(t.column(port).value(1), QVariant(2147483647));
    QCOMPARE(t.column(mare).value(1), QVariant(qlonglong(-9200000000000000000)));
    QCOMPARE(t.column(port).value(2), QVariant(-2147483647 - 1));
    QCOMPARE(t.column(mare).value(2), QVariant(std::numeric_limits<qlonglong>::min()));
    QCOMPARE(t.column(port).value(3), QVariant(12));
    QCOMPARE(t.column(mare).value(3), QVariant(qlonglong(13)));

    // a profile file whose port column is written as a float: loads as it is,
    // and its copy into the integer port field is refused
    QTemporaryDir dir;
    MemTable f;
    f.setFieldDefs({allTypes()[0], FieldDef{QStringLiteral("port"), FieldType::Float}});
    f.appendRow({QStringLiteral("10.0.0.1"), 1e300});
    const QString path = dir.filePath(QStringLiteral("p.xml"));
    f.saveToFile(path);
    MemTable loaded;
    loaded.loadFromFile(path);
    MemTable profile;
    profile.setFieldDefs({allTypes()[0], allTypes()[5]});
    QVERIFY_THROWS_EXCEPTION(QuarvError, profile.appendRow({loaded.value(0, 0), loaded.value(0, 1)}));
    QCOMPARE(profile.rowCount(), 0);
}

void TstDbMemory::textMover()
{
    QTemporaryDir dir;
    MemTable t;
    t.setFieldDefs(allTypes());
    t.appendRow({QStringLiteral("a;\"b\""), QStringLiteral("șț"), QDate(2024, 3, 1), QDateTime(QDate(2024, 3, 1), QTime(8, 5)),
                 1234567.891, 7, qlonglong(1) << 40, true, QByteArray("\x01\xab", 2)});
    t.appendRow({QString(u""_s), QVariant(), QVariant(), QVariant(), 0.1, -1, 0, false});
    const QString path = dir.filePath(QStringLiteral("out.csv"));
    writeFile(path, "old content that must go away, longer than the new one ............................................");
    // A desktop whose lists use ";" writes decimal commas.
    const QLocale ro(QLocale::Romanian, QLocale::Romania);
    db::moveToText(t, path, u';', ro);
    const QByteArray expected =
        "\xEF\xBB\xBF"
        "ip;nota;zi;moment;suma;port;mare;activ;date\r\n"
        "\"a;\"\"b\"\"\";\"\xc8\x99\xc8\x9b\";2024-03-01;2024-03-01 08:05:00;1234567,891;7;1099511627776;True;\"01ab\"\r\n"
        "\"\";;;;0,1;-1;0;False;\r\n";
    QCOMPARE(readAll(path), expected);

    // Values a shortest-form writer gets wrong, read back as a ";" spreadsheet reads them.
    MemTable n;
    n.setFieldDefs({FieldDef{QStringLiteral("oras"), FieldType::Text}, FieldDef{QStringLiteral("suma"), FieldType::Float}});
    const QList<double> values = {1e-7, -0.005, 1025.35, 123456789012.5, -0.0, 2.5e15};
    for (double v : values)
        n.appendRow({QStringLiteral("Brașov"), v});
    db::moveToText(n, path, u';', ro);
    const QByteArray bytes = readAll(path);
    QVERIFY(!bytes.contains('e'));
    const QList<QVariantList> read = readLikeSpreadsheet(bytes, u';', u',');
    QCOMPARE(read.size(), values.size() + 1);
    QCOMPARE(read[0], (QVariantList{u"oras"_s, u"suma"_s}));
    for (qsizetype i = 0; i < values.size(); ++i) {
        QCOMPARE(read[i + 1].value(0).toString(), QStringLiteral("Brașov"));
        QCOMPARE(read[i + 1].value(1).typeId(), QMetaType::Double);
        QCOMPARE(read[i + 1].value(1).toDouble(), values[i] == 0 ? 0.0 : values[i]);
    }
    // Separated by commas with a decimal comma: the number is quoted and still read whole.
    db::moveToText(n, path, u',', ro);
    const QList<QVariantList> commas = readLikeSpreadsheet(readAll(path), u',', u',');
    QCOMPARE(commas.value(3), (QVariantList{u"Brașov"_s, 1025.35}));
    // With a decimal point: plain digits too.
    db::moveToText(n, path, u',', QLocale::c());
    QCOMPARE(readLikeSpreadsheet(readAll(path), u',', u'.').value(1), (QVariantList{u"Brașov"_s, 1e-7}));
    QVERIFY(readAll(path).contains("\r\n\"Bra\xc8\x99ov\",0.0000001\r\n"));

    db::moveToText(t, path, u'\t');
    QVERIFY(readAll(path).startsWith("\xEF\xBB\xBFip\tnota\tzi"));

    // Written while the rows arrive, read anew from the start part way: the
    // same file as a move of the whole; nothing replaced until it finishes.
    const QByteArray whole = readAll(path);
    {
        db::TextMover mover(t, path, u'\t');
        mover.writeRows(1);
        QCOMPARE(readAll(path), whole); // not replaced yet
        mover.writeRows(0); // the rows come again from the first
        mover.writeRows(1);
        mover.finish();
    }
    QCOMPARE(readAll(path), whole);
    {
        db::TextMover abandoned(n, path, u'\t');
        abandoned.writeRows(2);
    }
    QCOMPARE(readAll(path), whole);
    QVERIFY_THROWS_EXCEPTION(QuarvError, db::moveToText(t, dir.filePath(QStringLiteral("nodir/x.csv")), u','));
}

void TstDbMemory::columnAgainstModel()
{
    // Random appends, overwrites, inserts and removals against a plain list,
    // over enough rows to cross many null-bitmap words and to make a column
    // of distinct values give up looking for repeats.
    quint32 seed = 12345;
    auto rnd = [&](quint32 n) {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 8) % n;
    };
    for (FieldType t : {FieldType::Text, FieldType::Float, FieldType::Int32, FieldType::Int64, FieldType::Date,
                        FieldType::Bytes}) {
        db::Column c(t);
        QVariantList model;
        auto make = [&](int i) -> QVariant {
            if (rnd(10) == 0)
                return {};
            switch (t) {
            case FieldType::Text: return rnd(16) == 0 ? QString::number(rnd(20)) : QStringLiteral("u%1ș").arg(i);
            case FieldType::Float: return double(rnd(1000)) / 8;
            case FieldType::Int32: return int(rnd(100000)) - 50000;
            case FieldType::Int64: return qlonglong(rnd(100000)) << 33;
            case FieldType::Date: return QDate(2020, 1, 1).addDays(rnd(4000));
            default: return rnd(3) ? QByteArray(int(rnd(5)), char(rnd(256))) : QByteArray();
            }
        };
        // Text runs past 65,536 distinct values: its entry numbers widen twice.
        const int rows = t == FieldType::Text ? 70000 : 20000;
        for (int i = 0; i < rows; ++i) {
            const QVariant v = make(i);
            c.append(v);
            model.append(v.isValid() && t == FieldType::Bytes ? QVariant(v.toByteArray()) : v);
        }
        for (int i = 0; i < 3000; ++i) {
            const int op = int(rnd(3));
            const qsizetype row = qsizetype(rnd(quint32(model.size())));
            if (op == 0) {
                const QVariant v = make(i);
                c.set(row, v);
                model[row] = v;
            } else if (op == 1) {
                c.insertNull(row);
                model.insert(row, QVariant());
            } else {
                c.removeAt(row);
                model.removeAt(row);
            }
        }
        QCOMPARE(c.size(), model.size());
        for (qsizetype r = 0; r < model.size(); ++r) {
            const QVariant &want = model[r];
            if (!want.isValid()) {
                QVERIFY2(c.isNull(r), qPrintable(QStringLiteral("%1 row %2").arg(db::fieldTypeName(t)).arg(r)));
                continue;
            }
            QVERIFY(!c.isNull(r));
            QCOMPARE(c.value(r), want);
        }
        // Equal pooled numbers mean equal text.
        if (t == FieldType::Text)
            for (qsizetype r = 1; r < model.size(); ++r)
                if (c.textId(r) == c.textId(r - 1))
                    QCOMPARE(c.bytes(r), c.bytes(r - 1));
        db::Column copy = c;
        QCOMPARE(copy.value(model.size() - 1), c.value(model.size() - 1));
        c.clear();
        QCOMPARE(c.size(), 0);
    }
}

QTEST_GUILESS_MAIN(TstDbMemory)
#include "tst_dbmemory.moc"
