// The grid's logic without widgets: rows after filter, sort and grouping;
// summaries; the layout store; the exports.

#include "db/u_busy.h"
#include "db/u_error.h"
#include "db/u_textmover.h"
#include "tests/gridcore/u_testdataset.h"
#include "tests/support/u_testfiles.h"
#include "grid/u_gridexport.h"
#include "grid/u_gridformat.h"
#include "grid/u_gridlayout.h"
#include "grid/u_gridmodel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <map>

using namespace grid;
using db::FieldType;

namespace {

const QLocale kC = QLocale::c();

std::vector<db::FieldDef> ledgerFields()
{
    return {{QStringLiteral("conts"), FieldType::Text},     {QStringLiteral("partener"), FieldType::String, 50},
            {QStringLiteral("data_doc"), FieldType::Date},  {QStringLiteral("valoare_lei"), FieldType::Float},
            {QStringLiteral("scv"), FieldType::Int32},      {QStringLiteral("da_nu_contare"), FieldType::Bool}};
}

// A deterministic ledger; cents kept as integers for independent sums.
struct Ledger {
    TestDataSet ds{ledgerFields()};
    std::vector<qint64> cents;
    explicit Ledger(int rows, quint32 seed = 7)
    {
        QRandomGenerator rng(seed);
        const QStringList conts = {QStringLiteral("401"), QStringLiteral("4111"), QStringLiteral("5121"),
                                   QStringLiteral("628"), QStringLiteral("704")};
        const QStringList parts = {QStringLiteral("Alfa SRL"), QStringLiteral("Beta SA"), QStringLiteral("Ştefan PFA"),
                                   QStringLiteral("Ţesătoria"), QStringLiteral("omega")};
        for (int i = 0; i < rows; ++i) {
            const qint64 c = qint64(rng.bounded(2000000)) - 500000; // -5,000.00 .. 15,000.00
            cents.push_back(c);
            ds.add({conts[int(rng.bounded(conts.size()))], parts[int(rng.bounded(parts.size()))],
                    QDate(2024, 1, 1).addDays(rng.bounded(366)), double(c) / 100.0, i % 17, rng.bounded(2) == 1});
        }
        ds.openNow();
    }
    QString text(int row, int field) const { return ds.column(field).asString(row); }
};

void bind(GridModel &m, db::DataSet &ds)
{
    m.setLocale(kC);
    m.setDataSet(&ds);
    m.createDefaultColumns();
}

QString fmtCents(qint64 c)
{
    return NumberFormat(QStringLiteral(",0.00;-,0.00")).format(double(c) / 100.0, kC);
}

const QLocale kRo(QLocale::Romanian, QLocale::Romania);

// Dataset rows shown, top to bottom, as "0,2,5".
QString shownRows(const GridModel &m)
{
    QStringList out;
    for (qsizetype i = 0; i < m.rowCount(); ++i)
        if (m.rowKind(i) == RowKind::Data)
            out << QString::number(m.dataRow(i));
    return out.join(QLatin1Char(','));
}

// What the filters are tried on: partners written with both forms of ş and ţ,
// amounts of both signs, a leap day, a moment before 1970, identifiers that
// floating point cannot tell apart, and a row of nulls.
void fillFilterLedger(TestDataSet &ds)
{
    ds.add({QStringLiteral("Ştefan Cel Mare"), 150.0, QDate(2024, 3, 1), QDateTime(QDate(2024, 3, 1), QTime(8, 30)), false,
            qint64(3000000000)});
    ds.add({QStringLiteral("ștefan vodă"), 0.0, QDate(2024, 3, 15), QDateTime(QDate(2024, 3, 15), QTime(23, 59, 59, 500)), true,
            qint64(3000000001)});
    ds.add({QStringLiteral("Ţară Nouă"), -20.5, QDate(2024, 4, 1), QDateTime(QDate(2024, 4, 1), QTime(0, 0)), false,
            qint64(9007199254740993)});
    ds.add({QStringLiteral("țara veche"), 100.0, QDate(2023, 12, 31), QDateTime(QDate(1969, 12, 31), QTime(23, 0)), QVariant(),
            qint64(9007199254740992)});
    ds.add({QVariant(), QVariant(), QVariant(), QVariant(), true, QVariant()});
    ds.add({QStringLiteral("SC ÎNCASĂRI SRL"), 1234.56, QDate(2024, 2, 29), QDateTime(QDate(2024, 2, 29), QTime(12, 0)), true,
            qint64(17)});
    ds.openNow();
}

std::vector<db::FieldDef> filterLedgerFields()
{
    return {{QStringLiteral("partener"), FieldType::Text},   {QStringLiteral("valoare"), FieldType::Float},
            {QStringLiteral("data_doc"), FieldType::Date},   {QStringLiteral("moment"), FieldType::DateTime},
            {QStringLiteral("da_nu"), FieldType::Bool},      {QStringLiteral("doc_id"), FieldType::Int64}};
}


} // namespace

class TstGridCore : public QObject {
    Q_OBJECT
private slots:
    void cellTexts_data();
    void cellTexts();
    void groupsAndSummaries();
    void multiLevelGroupsCollapsed();
    void filterTexts_data();
    void filterTexts();
    void programConditions_data();
    void programConditions();
    void filters();
    void sorting();
    void collationTies_data();
    void collationTies();
    void dictionaryGrowth_data();
    void dictionaryGrowth();
    void focusAndRefresh();
    void layoutRoundTripAndRestoreRules();
    void damagedLayouts_data();
    void damagedLayouts();
    void manyLayoutSections();
    void textExports();
    void xlsxExport();
    void emptyGridAndFailures();
    void longWorkServedAndStopped();
};

void TstGridCore::cellTexts_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("romanian");   // the grid's locale: Romanian, else C
    QTest::addColumn<QString>("shown");     // the cell
    QTest::addColumn<QString>("exported");  // exportText and the CSV file

    const int F = int(FieldType::Float), I64 = int(FieldType::Int64);
    const int D = int(FieldType::Date), DT = int(FieldType::DateTime);
    const QString money = QStringLiteral(",0.00;-,0.00");
    auto row = [](const char *name, int type, const QVariant &v, const QString &fmt, bool ro, const char *shown,
                  const char *exported = nullptr) {
        QTest::newRow(name) << type << v << fmt << ro << QString::fromUtf8(shown)
                            << QString::fromUtf8(exported ? exported : shown);
    };
    row("money", F, 1234567.891, money, false, "1,234,567.89");
    row("money, Romanian", F, 1234567.891, money, true, "1.234.567,89");
    row("money rounds what was typed", F, 2.675, money, false, "2.68");
    row("money, half a ban up", F, 999.995, money, false, "1,000.00");
    row("money, a negative that rounds to zero", F, -0.004, money, false, "0.00");
    row("whole lei", F, 1234.5, QStringLiteral("0"), false, "1235");
    row("optional decimals and a suffix", F, 1234.5, QStringLiteral("#,##0.0# lei"), false, "1,234.5 lei");
    row("negative in parentheses", F, -3.0, QStringLiteral("0.00;(0.00)"), false, "(3.00)");
    row("plain amount", F, 0.1 + 0.2, QString(), false, "0.3");
    row("plain amount, Romanian", F, 1234.5, QString(), true, "1234,5");
    row("plain large amount", F, -1e20, QString(), false, "-100000000000000000000");
    row("integer with separators", I64, qlonglong(1234567), QStringLiteral(",0"), true, "1.234.567");
    row("empty amount", F, QVariant(), money, true, "");
    row("date", D, QDate(2024, 3, 5), QString(), true, "05.03.2024");
    row("moment", DT, QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9)), QString(), true, "05.03.2024 14:07:09");
    row("moment with milliseconds", DT, QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9, 250)), QString(), true,
        "05.03.2024 14:07:09.250");
    row("moment, own format", DT, QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9, 250)), QStringLiteral("dd.MM.yyyy hh:mm"),
        true, "05.03.2024 14:07");
    row("moment before 1970", DT, QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59)), QString(), true,
        "31.12.1969 23:59:59");
    row("check box, ticked", int(FieldType::Bool), true, QString(), true, "", "True");
    row("check box, clear", int(FieldType::Bool), false, QString(), true, "", "False");
    row("text", int(FieldType::Text), QStringLiteral("Ştefan SRL"), QString(), true, "Ştefan SRL");
    row("binary", int(FieldType::Bytes), QByteArray("\x01\x02", 2), QString(), true, "(binar)");
}

void TstGridCore::cellTexts()
{
    QFETCH(int, type);
    QFETCH(QVariant, value);
    QFETCH(QString, format);
    QFETCH(bool, romanian);
    QFETCH(QString, shown);
    QFETCH(QString, exported);
    TestDataSet ds({{QStringLiteral("v"), FieldType(type)}});
    ds.add({value});
    ds.openNow();
    GridModel m;
    bind(m, ds);
    m.setLocale(romanian ? kRo : kC);
    m.setColumnDisplayFormat(0, format);
    QCOMPARE(m.cellText(0, 0), shown);
    QCOMPARE(m.exportText(0, 0), exported);
    // the CSV export writes the same text by a road of its own
    QTemporaryDir dir;
    const QString csv = dir.filePath(QStringLiteral("v.csv"));
    exportGridCsv(m, csv, QLatin1Char(';'));
    QCOMPARE(readLines(csv), QStringList({QStringLiteral("v"), exported}));
}

void TstGridCore::groupsAndSummaries()
{
    Ledger L(3000);
    GridModel m;
    bind(m, L.ds);
    const QString fmt = QStringLiteral(",0.00;-,0.00");
    // val_mon_cr is not a field of the data: its summaries stay empty
    m.setFooterSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, fmt},
                          {QStringLiteral("val_mon_cr"), SummaryKind::Sum, fmt},
                          {QStringLiteral("valoare_lei"), SummaryKind::Count, {}, QStringLiteral("scv")}});
    m.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, fmt},
                         {QStringLiteral("val_mon_cr"), SummaryKind::Sum, fmt},
                         {QStringLiteral("valoare_lei"), SummaryKind::Max}});
    m.addColumn(QStringLiteral("val_mon_cr"));
    const int colVal = m.columnIndex(QStringLiteral("valoare_lei"));
    const int colMissing = m.columnIndex(QStringLiteral("val_mon_cr"));
    QCOMPARE(m.columnKind(colMissing), ColumnKind::Missing);

    qint64 total = 0;
    for (qint64 c : L.cents)
        total += c;
    QCOMPARE(m.footerText(0), fmtCents(total));
    QCOMPARE(m.footerTextForColumn(colVal), fmtCents(total));
    QVERIFY(!m.footerValue(1).isValid());
    QCOMPARE(m.footerTextForColumn(colMissing), QString());
    QCOMPARE(m.footerTextForColumn(m.columnIndex(QStringLiteral("scv"))), QStringLiteral("3000"));
    QCOMPARE(m.recordCount(), qsizetype(3000));

    m.groupByColumn(m.columnIndex(QStringLiteral("conts")));
    // grouping opens the focused record's group; close them all to read the footers
    QVERIFY(m.isExpanded(0));
    QCOMPARE(m.focusedDataRow(), qsizetype(0));
    m.collapseAll();
    std::map<QString, std::pair<qint64, qint64>> expect; // conts -> (sum cents, max cents)
    std::map<QString, int> counts;
    for (int r = 0; r < 3000; ++r) {
        auto &e = expect.try_emplace(L.text(r, 0), 0, std::numeric_limits<qint64>::min()).first->second;
        e.first += L.cents[size_t(r)];
        e.second = std::max(e.second, L.cents[size_t(r)]);
        ++counts[L.text(r, 0)];
    }
    // collapsed groups: a group row and its (always shown) footer per group, keys in order
    QCOMPARE(m.rowCount(), qsizetype(expect.size() * 2));
    auto it = expect.begin();
    for (qsizetype i = 0; i < m.rowCount(); i += 2, ++it) {
        QCOMPARE(m.rowKind(i), RowKind::Group);
        QCOMPARE(m.rowKind(i + 1), RowKind::GroupFooter);
        const GroupInfo gi = m.groupInfo(i);
        QCOMPARE(gi.valueText, it->first);
        QCOMPARE(gi.rowCount, qsizetype(counts[it->first]));
        QCOMPARE(m.groupRowText(i), QStringLiteral("conts: %1 (%2)").arg(it->first).arg(counts[it->first]));
        QCOMPARE(m.groupFooterTextForColumn(i + 1, colVal),
                 fmtCents(it->second.first) + QLatin1Char('\n') + plainNumberText(double(it->second.second) / 100.0, kC));
        QCOMPARE(m.groupSummaryValue(int(i + 1), 2).toDouble(), double(it->second.second) / 100.0);
        QVERIFY(!m.groupSummaryValue(int(i + 1), 1).isValid());
        QCOMPARE(m.groupFooterTextForColumn(i + 1, colMissing), QString());
    }
    // the footer does not change with grouping
    QCOMPARE(m.footerText(0), fmtCents(total));
    // a filter changes footer and groups alike
    m.setFilterText(m.columnIndex(QStringLiteral("partener")), QStringLiteral("beta"));
    qint64 betaTotal = 0;
    for (int r = 0; r < 3000; ++r)
        if (L.text(r, 1) == QLatin1String("Beta SA"))
            betaTotal += L.cents[size_t(r)];
    QCOMPARE(m.footerText(0), fmtCents(betaTotal));
}

void TstGridCore::multiLevelGroupsCollapsed()
{
    Ledger L(500, 11);
    GridModel m;
    bind(m, L.ds);
    m.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, QStringLiteral("0.00")}});
    m.groupByColumn(m.columnIndex(QStringLiteral("conts")));
    m.groupByColumn(m.columnIndex(QStringLiteral("partener")));
    QCOMPARE(m.groupColumns().size(), 2);
    m.collapseAll();
    const qsizetype topGroups = m.rowCount() / 2;
    QCOMPARE(topGroups, qsizetype(5));
    // expand the first top group: its sub-groups appear, each with its footer, before the group's own footer
    m.setExpanded(0, true);
    QCOMPARE(m.rowKind(1), RowKind::Group);
    QCOMPARE(m.rowLevel(1), 1);
    qsizetype i = 1;
    qsizetype subRows = 0;
    std::map<QString, qint64> subSums;
    while (m.rowKind(i) != RowKind::GroupFooter || m.rowLevel(i) != 0) {
        QCOMPARE(m.rowKind(i), RowKind::Group);
        QCOMPARE(m.rowKind(i + 1), RowKind::GroupFooter);
        QCOMPARE(m.rowLevel(i + 1), 1);
        subRows += m.groupInfo(i).rowCount;
        i += 2;
    }
    QCOMPARE(subRows, m.groupInfo(0).rowCount);
    const QString first = m.groupInfo(0).valueText;
    qint64 firstSum = 0;
    for (int r = 0; r < 500; ++r)
        if (L.text(r, 0) == first)
            firstSum += L.cents[size_t(r)];
    QCOMPARE(m.groupSummaryText(int(i), 0), QString::number(double(firstSum) / 100.0, 'f', 2));
    // expanding a sub-group shows its data rows, all of that pair
    m.setExpanded(1, true);
    const GroupInfo sub = m.groupInfo(1);
    for (qsizetype k = 2; k < 2 + sub.rowCount; ++k) {
        QCOMPARE(m.rowKind(k), RowKind::Data);
        QCOMPARE(m.cellText(k, 0), first);
        QCOMPARE(m.cellText(k, 1), sub.valueText);
    }
    QCOMPARE(m.rowKind(2 + sub.rowCount), RowKind::GroupFooter);
    m.collapseAll();
    QCOMPARE(m.rowCount(), topGroups * 2);
    m.expandAll();
    qsizetype data = 0, groups = 0, footers = 0;
    for (qsizetype k = 0; k < m.rowCount(); ++k) {
        data += m.rowKind(k) == RowKind::Data;
        groups += m.rowKind(k) == RowKind::Group;
        footers += m.rowKind(k) == RowKind::GroupFooter;
    }
    QCOMPARE(data, qsizetype(500));
    QCOMPARE(footers, groups);
    QVERIFY(groups > 5);
    // grouping off: plain data rows again
    m.clearGrouping();
    QCOMPARE(m.rowCount(), qsizetype(500));
}

void TstGridCore::filterTexts_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("rows");   // dataset rows that remain
    QTest::addColumn<bool>("error");     // the text cannot be read
    auto row = [](const char *name, const char *field, const char *text, const char *rows, bool error = false) {
        QTest::newRow(name) << QString::fromLatin1(field) << QString::fromUtf8(text) << QString::fromLatin1(rows) << error;
    };
    // text: contains, in any case, ş/ș and ţ/ț alike; never an empty cell
    row("text, comma-below capitals", "partener", "ȘTEFAN", "0,1");
    row("text, cedilla", "partener", "şte", "0,1");
    row("text, T comma-below and a space", "partener", "Țara v", "3");
    row("text, Î and Ă in lower case", "partener", "încasări", "5");
    row("text, one letter", "partener", "a", "0,1,2,3,5");
    row("text, nothing found", "partener", "x", "");
    row("text, blank clears", "partener", "   ", "0,1,2,3,4,5");
    // amounts (the grid's locale is Romanian); an empty amount never matches
    row("amount, greater", "valoare", ">100", "0,5");
    row("amount, at least", "valoare", ">=100", "0,3,5");
    row("amount, negative", "valoare", "<0", "2");
    row("amount, not zero", "valoare", "<>0", "0,2,3,5");
    row("amount, not zero with !=", "valoare", "!=0", "0,2,3,5");
    row("amount, equal", "valoare", "=100", "3");
    row("amount, bare", "valoare", "100", "3");
    row("amount, zero is not empty", "valoare", "0", "1");
    row("amount, decimal comma", "valoare", "-20,5", "2");
    row("amount, thousands and decimals", "valoare", "1.234,56", "5");
    row("amount, unreadable", "valoare", ">abc", "", true);
    // dates in the usual forms; comparisons by day
    row("date", "data_doc", "15.03.2024", "1");
    row("date, ISO", "data_doc", "2024-03-15", "1");
    row("date, slashes", "data_doc", "15/03/2024", "1");
    row("date, two-digit year", "data_doc", "15.03.24", "1");
    row("date, from", "data_doc", ">=2024-03-15", "1,2");
    row("date, before", "data_doc", "<01.03.2024", "3,5");
    row("date, not that day", "data_doc", "<>15.03.2024", "0,2,3,5");
    row("date, leap day", "data_doc", "29.02.2024", "5");
    row("date, no such day", "data_doc", "31.02.2024", "", true);
    // moments: by the day they fall in
    row("moment, its day", "moment", "15.03.2024", "1");
    row("moment before 1970", "moment", "31.12.1969", "3");
    row("moment, up to a day", "moment", "<=01.03.2024", "0,3,5");
    // check boxes: yes/no words; an empty box is neither
    row("check, da", "da_nu", "da", "1,4,5");
    row("check, Nu", "da_nu", "Nu", "0,2");
    row("check, 1", "da_nu", "1", "1,4,5");
    row("check, fals", "da_nu", "fals", "0,2");
    row("check, unreadable", "da_nu", "poate", "", true);
    // whole-number identifiers compare exactly, past 2^53 too
    row("identifier", "doc_id", "=3000000001", "1");
    row("identifier above 2^53", "doc_id", "9007199254740993", "2");
    row("identifier, not its neighbour", "doc_id", "<>9007199254740992", "0,1,2,5");
    row("identifier, at most", "doc_id", "<=3000000001", "0,1,5");
    row("identifier, thousands by a space", "doc_id", "3 000 000 001", "1");
    row("identifier, a fraction", "doc_id", "<17,5", "5");
    row("identifier, Romanian thousands", "doc_id", "<=3.000.000.000", "0,5");
    // a column the data lacks lets nothing through, without an error
    row("missing field", "lipsa", "x", "");
}

void TstGridCore::filterTexts()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, rows);
    QFETCH(bool, error);
    TestDataSet ds(filterLedgerFields());
    fillFilterLedger(ds);
    GridModel m;
    bind(m, ds);
    m.setLocale(kRo);
    m.addColumn(QStringLiteral("lipsa"));
    const int col = m.columnIndex(field);
    m.setFilterText(col, text);
    QCOMPARE(shownRows(m), rows);
    QCOMPARE(m.filterError(col), error);
    m.clearFilter(col);
    QCOMPARE(m.recordCount(), qsizetype(6));
}

void TstGridCore::programConditions_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("rows");
    auto row = [](const char *name, const char *field, const QVariant &v, const char *rows) {
        QTest::newRow(name) << QString::fromLatin1(field) << v << QString::fromLatin1(rows);
    };
    const QVariant null;
    // field = value: equal, not "contains"; text in any case, ş/ș and ţ/ț alike
    row("text", "partener", QStringLiteral("ȘTEFAN VODĂ"), "1");
    row("text, null", "partener", null, "4");
    row("amount", "valoare", 100, "3");
    row("amount as Romanian text", "valoare", QStringLiteral("-20,5"), "2");
    row("amount, unreadable", "valoare", QStringLiteral("abc"), "");
    row("date", "data_doc", QDate(2024, 3, 15), "1");
    row("date from a moment", "data_doc", QDateTime(QDate(2024, 3, 15), QTime(10, 0)), "1");
    row("date, no such day", "data_doc", QStringLiteral("31.02.2024"), "");
    row("moment by its day", "moment", QDate(2024, 3, 15), "1");
    row("moment to the millisecond", "moment", QDateTime(QDate(2024, 3, 15), QTime(23, 59, 59, 500)), "1");
    row("moment, another second", "moment", QDateTime(QDate(2024, 3, 15), QTime(23, 59, 59)), "");
    row("check", "da_nu", true, "1,4,5");
    row("check as a Romanian word", "da_nu", QStringLiteral("nu"), "0,2");
    row("check, null", "da_nu", null, "3");
    row("identifier above 2^53", "doc_id", qint64(9007199254740993), "2");
    row("identifier as text", "doc_id", QStringLiteral("3000000001"), "1");
    row("check, unreadable", "da_nu", QStringLiteral("poate"), "");
    row("missing field", "lipsa", QStringLiteral("x"), "");
}

void TstGridCore::programConditions()
{
    QFETCH(QString, field);
    QFETCH(QVariant, value);
    QFETCH(QString, rows);
    TestDataSet ds(filterLedgerFields());
    fillFilterLedger(ds);
    GridModel m;
    bind(m, ds);
    m.setLocale(kRo);
    m.addFilterCondition(field, value);
    m.setProgramFilterActive(true);
    QCOMPARE(shownRows(m), rows);
}

void TstGridCore::filters()
{
    TestDataSet ds(filterLedgerFields());
    fillFilterLedger(ds);
    GridModel m;
    bind(m, ds);
    m.setFilterText(0, QStringLiteral("Țara v"));
    QCOMPARE(shownRows(m), QStringLiteral("3"));
    QCOMPARE(ds.currentRow(), qsizetype(3)); // the dataset's current row follows the focus the filter moved
    QCOMPARE(m.recordCount(), qsizetype(1));
    // several columns combine with AND; clearing all brings every row back
    m.setFilterText(0, QStringLiteral("ţar"));
    m.setFilterText(1, QStringLiteral("<0"));
    QCOMPARE(shownRows(m), QStringLiteral("2"));
    QVERIFY(m.hasFilterRowConditions());
    m.clearAllFilters();
    QVERIFY(!m.hasFilterRowConditions());
    QCOMPARE(m.recordCount(), qsizetype(6));
    m.setBoolFilter(4, BoolFilter::True);
    QCOMPARE(shownRows(m), QStringLiteral("1,4,5"));
    QCOMPARE(m.boolFilter(4), BoolFilter::True);
    m.setBoolFilter(4, BoolFilter::False);
    QCOMPARE(shownRows(m), QStringLiteral("0,2"));
    m.setBoolFilter(4, BoolFilter::Any);
    QCOMPARE(m.recordCount(), qsizetype(6));

    // the programmatic filter of the styles grid: discontinued = "False" / "True",
    // ANDed with the filter row and with its other conditions
    m.addFilterCondition(QStringLiteral("da_nu"), QStringLiteral("False"));
    QCOMPARE(m.recordCount(), qsizetype(6)); // not on yet
    m.setProgramFilterActive(true);
    QCOMPARE(shownRows(m), QStringLiteral("0,2"));
    m.setFilterText(0, QStringLiteral("nou"));
    QCOMPARE(shownRows(m), QStringLiteral("2"));
    m.clearFilter(0);
    m.addFilterCondition(QStringLiteral("valoare"), 150);
    QCOMPARE(shownRows(m), QStringLiteral("0"));
    m.setFilterText(0, QStringLiteral("nou"));
    QCOMPARE(shownRows(m), QString());
    m.clearProgramFilter();
    QVERIFY(!m.programFilterActive());
    QCOMPARE(shownRows(m), QStringLiteral("2"));
    m.clearAllFilters();
    m.addFilterCondition(QStringLiteral("da_nu"), QStringLiteral("True"));
    m.setProgramFilterActive(true);
    QCOMPARE(shownRows(m), QStringLiteral("1,4,5"));
    m.setProgramFilterActive(false);
    QCOMPARE(m.recordCount(), qsizetype(6));
}

void TstGridCore::sorting()
{
    TestDataSet ds({{QStringLiteral("nume"), FieldType::Text},
                    {QStringLiteral("suma"), FieldType::Float},
                    {QStringLiteral("zi"), FieldType::Date},
                    {QStringLiteral("nr"), FieldType::Int64}});
    ds.add({QStringLiteral("b"), 10.0, QDate(2024, 1, 2), 1});
    ds.add({QStringLiteral("ăb"), 9.0, QVariant(), 2});
    ds.add({QVariant(), -1.0, QDate(2023, 1, 2), 3});
    ds.add({QStringLiteral("ac"), QVariant(), QDate(2024, 1, 1), 4});
    ds.add({QStringLiteral("ab"), 10.0, QDate(2022, 5, 5), 5});
    ds.add({QStringLiteral("Zeta"), 9.0, QDate(2024, 1, 2), 6});
    ds.openNow();
    GridModel m;
    m.setDataSet(&ds);
    m.setLocale(QLocale(QLocale::Romanian, QLocale::Romania));
    m.createDefaultColumns();
    auto col = [&](int c) {
        QStringList out;
        for (qsizetype i = 0; i < m.rowCount(); ++i)
            out << m.cellText(i, c);
        return out.join(QLatin1Char('|'));
    };
    m.clickSort(0, false); // text by collation: a < ac < ă < b < Z, null first
    QCOMPARE(col(0), QStringLiteral("|ab|ac|ăb|b|Zeta"));
    m.clickSort(0, false); // again: reversed
    QCOMPARE(col(0), QStringLiteral("Zeta|b|ăb|ac|ab|"));
    m.clickSort(1, false); // numbers typed, null first; ties keep the data order
    QCOMPARE(col(3), QStringLiteral("4|3|2|6|1|5"));
    m.clickSort(2, true);  // Shift: then by date
    QCOMPARE(m.sortColumns(), QList<int>({1, 2}));
    QCOMPARE(col(3), QStringLiteral("4|3|2|6|5|1"));
    m.clickSort(2, true);  // Shift on a sorted key reverses only it
    QCOMPARE(col(3), QStringLiteral("4|3|6|2|1|5"));
    m.setSortOrder(1, SortOrder::Descending, false);
    QCOMPARE(m.sortColumns(), QList<int>({1}));
    QCOMPARE(col(3), QStringLiteral("1|5|2|6|3|4"));
    m.clickSort(2, false);
    QCOMPARE(col(2), QStringLiteral("|05.05.2022|02.01.2023|01.01.2024|02.01.2024|02.01.2024"));
    m.clearSorting();
    QCOMPARE(col(3), QStringLiteral("1|2|3|4|5|6"));
    // grouping orders the groups the same typed way; the group's direction follows its column
    m.groupByColumn(1);
    m.expandAll();
    QCOMPARE(m.groupInfo(0).valueText, QString());
    QCOMPARE(m.groupInfo(2).valueText, QStringLiteral("-1"));
    m.clickSort(1, false);
    QCOMPARE(m.groupInfo(0).valueText, QStringLiteral("10"));

    // amounts far apart, of both signs, with ties and a null; the integer
    // column's extremes too (their keys span more than a signed integer holds)
    TestDataSet wide({{QStringLiteral("suma"), FieldType::Float}, {QStringLiteral("nr"), FieldType::Int64}});
    const QVariantList sums = {2.0, -1e300, 0.5, 1e300, -2.0, QVariant(), 2.0, -0.5, 0.0, -1e-300};
    const qint64 big = std::numeric_limits<qint64>::max();
    const QVariantList nrs = {big, -big, 0, 1, -1, 2, -2, big - 1, -big + 1, 3};
    for (qsizetype i = 0; i < sums.size(); ++i)
        wide.add({sums[i], nrs[i]});
    wide.openNow();
    GridModel w;
    w.setDataSet(&wide);
    w.setLocale(kC);
    w.createDefaultColumns();
    auto order = [&] {
        QStringList out;
        for (qsizetype i = 0; i < w.rowCount(); ++i)
            out << QString::number(w.dataRow(i));
        return out.join(QLatin1Char('|'));
    };
    w.clickSort(0, false);
    QCOMPARE(order(), QStringLiteral("5|1|4|7|9|8|2|0|6|3"));
    w.clickSort(0, false);
    QCOMPARE(order(), QStringLiteral("3|0|6|2|8|9|7|4|1|5"));
    w.clickSort(1, false);
    QCOMPARE(order(), QStringLiteral("1|8|6|4|2|3|5|9|7|0"));
    w.clickSort(1, false);
    QCOMPARE(order(), QStringLiteral("0|7|9|5|3|2|4|6|8|1"));
}

void TstGridCore::collationTies_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<QString>("rows");   // dataset rows in the order shown
    QTest::addColumn<int>("groups");     // groups when grouped by the names
    auto row = [](const char *name, const QStringList &names, bool desc, const char *rows, int groups) {
        QTest::newRow(name) << names << desc << QString::fromLatin1(rows) << groups;
    };
    auto L = [](std::initializer_list<const char *> l) {
        QStringList out;
        for (const char *s : l)
            out << QString::fromUtf8(s);
        return out;
    };
    row("equal names keep the data order", L({"b", "a", "b", "a"}), false, "1,3,0,2", 2);
    row("equal names keep the data order, descending", L({"b", "a", "b", "a"}), true, "0,2,1,3", 2);
    row("ş and ș are one letter", L({"Ștefan", "Sorin", "Ştefan", "Tudor"}), false, "1,0,2,3", 3);
    row("ţ and ț are one letter, descending", L({"ţară", "Ţara", "țară", "tara"}), true, "0,2,1,3", 3);
    row("a composed and a decomposed ș", L({"Ștefan", "Ana", "S\u0326tefan"}), false, "1,0,2", 2);
    row("capitals do not sort first", L({"beta", "Gama", "alfa", "Delta"}), false, "2,0,3,1", 4);
    row("the Romanian alphabet", L({"ţol", "ăla", "ala", "îmi", "inel", "şir", "sar", "zar", "alb"}), false,
        "2,8,1,4,3,6,5,0,7", 9);
    row("account codes", L({"4111", "401", "5121", "4011", "411"}), false, "1,3,4,0,2", 5);
    row("account codes with an analytic", L({"4111", "401.01", "401", "4011", "411"}), false, "2,1,3,4,0", 5);
    row("codes before names", L({"Casa", "5121", "401"}), false, "2,1,0", 3);
}

void TstGridCore::collationTies()
{
    QFETCH(QStringList, names);
    QFETCH(bool, descending);
    QFETCH(QString, rows);
    QFETCH(int, groups);
    TestDataSet ds({{QStringLiteral("nume"), FieldType::Text}, {QStringLiteral("nr"), FieldType::Int32}});
    for (int i = 0; i < names.size(); ++i)
        ds.add({names[i], i});
    ds.openNow();
    GridModel m;
    m.setLocale(kRo);
    m.setDataSet(&ds);
    m.createDefaultColumns();
    m.setSortOrder(0, descending ? SortOrder::Descending : SortOrder::Ascending);
    QCOMPARE(shownRows(m), rows);
    // grouped, the groups follow the same order and the names the collation
    // holds equal share one group
    m.groupByColumn(0);
    m.expandAll();
    QCOMPARE(shownRows(m), rows);
    m.collapseAll();
    QCOMPARE(m.rowCount(), qsizetype(groups));
}

void TstGridCore::dictionaryGrowth_data()
{
    QTest::addColumn<int>("filler");         // distinct names loaded before the others
    QTest::addColumn<QStringList>("names");  // loaded
    QTest::addColumn<QStringList>("changes"); // "+name" appends a row, "N=name" edits row N of names
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("shown");      // the names shown afterwards, sorted
    QTest::addColumn<int>("groups");
    auto L = [](std::initializer_list<const char *> l) {
        QStringList out;
        for (const char *s : l)
            out << QString::fromUtf8(s);
        return out;
    };
    auto row = [](const char *name, int filler, const QStringList &names, const QStringList &changes, const char *filter,
                  const char *shown, int groups) {
        QTest::newRow(name) << filler << names << changes << QString::fromUtf8(filter) << QString::fromUtf8(shown) << groups;
    };
    row("an added name takes its place", 0, L({"Delta", "Beta"}), L({"+Alfa"}), "", "Alfa|Beta|Delta", 3);
    row("an added ă comes after a", 0, L({"ala", "Zeta"}), L({"+ăla"}), "", "ala|ăla|Zeta", 3);
    row("an added name with ş is found by ș", 0, L({"Beta"}), L({"+Ştefan"}), "ștef", "Ştefan", 1);
    row("the same name with ţ and with ț", 0, L({"ţesătorie"}), L({"+țesătorie"}), "ȚES", "ţesătorie|țesătorie", 1);
    row("an edited name moves", 0, L({"Alfa", "Beta", "Gama"}), L({"0=Zeta"}), "", "Beta|Gama|Zeta", 3);
    row("an edited name is no longer found", 0, L({"Alfa", "Beta"}), L({"0=Gama"}), "alfa", "", 0);
    row("an edit joins an existing group", 0, L({"Alfa", "Beta"}), L({"1=Alfa"}), "", "Alfa|Alfa", 1);
    row("a name among account codes", 0, L({"4111", "401"}), L({"+Casa"}), "", "401|4111|Casa", 3);
    // a column whose values are mostly distinct keeps each new one apart, even a repeat
    row("a repeat in a column of distinct values", 20000, {}, L({"+Alfa", "+Beta", "+Alfa"}), "alfa", "Alfa|Alfa", 1);
}

void TstGridCore::dictionaryGrowth()
{
    QFETCH(int, filler);
    QFETCH(QStringList, names);
    QFETCH(QStringList, changes);
    QFETCH(QString, filter);
    QFETCH(QString, shown);
    QFETCH(int, groups);
    TestDataSet ds({{QStringLiteral("nume"), FieldType::Text}});
    for (int i = 0; i < filler; ++i)
        ds.add({QStringLiteral("F%1").arg(i, 5, 10, QLatin1Char('0'))});
    for (const QString &n : names)
        ds.add({n});
    ds.openNow();
    GridModel m;
    m.setLocale(kRo);
    m.setDataSet(&ds);
    m.createDefaultColumns();
    // the dictionary is built, ranked and folded before the data changes
    m.clickSort(0, false);
    m.setFilterText(0, QStringLiteral("a"));
    m.clearFilter(0);
    for (const QString &c : changes) {
        if (c.startsWith(QLatin1Char('+'))) {
            ds.append();
        } else {
            ds.setCurrentRow(filler + c.section(QLatin1Char('='), 0, 0).toInt());
            ds.edit();
        }
        ds.setFieldValue(0, c.startsWith(QLatin1Char('+')) ? c.mid(1) : c.section(QLatin1Char('='), 1));
        ds.post();
    }
    if (filler > 0) {
        // what the case is about: the column numbered the repeat as a new value
        QVERIFY(ds.column(0).textId(filler) != ds.column(0).textId(filler + 2));
    }
    m.setFilterText(0, filter);
    QStringList texts;
    for (qsizetype i = 0; i < m.rowCount(); ++i)
        texts << m.cellText(i, 0);
    QCOMPARE(texts.join(QLatin1Char('|')), shown);
    m.groupByColumn(0);
    m.collapseAll();
    QCOMPARE(m.rowCount(), qsizetype(groups));
}

void TstGridCore::focusAndRefresh()
{
    Ledger L(200, 3);
    GridModel m;
    bind(m, L.ds);
    m.setColumnWidth(1, 167);
    m.setFilterText(0, QStringLiteral("4"));
    m.clickSort(2, false);
    const qsizetype target = m.recordDataRow(m.recordCount() / 2);
    QVERIFY(m.focusDataRow(target));
    QCOMPARE(m.focusedDataRow(), target);
    QCOMPARE(L.ds.currentRow(), target); // the dataset follows the grid
    const qsizetype number = m.recordNumber();
    QCOMPARE(m.recordDataRow(number - 1), target);
    // regrouping keeps the focused record, in sight
    m.groupByColumn(1);
    QCOMPARE(m.focusedDataRow(), target);
    QCOMPARE(m.dataRow(m.focusedRow()), target);
    const qsizetype n0 = m.recordNumber();
    QVERIFY(n0 > 0 && n0 < m.recordCount());
    m.nextRecord();
    QCOMPARE(m.recordNumber(), n0 + 1);
    QCOMPARE(m.dataRow(m.focusedRow()), m.recordDataRow(n0));
    m.priorRecord();
    QCOMPARE(m.focusedDataRow(), target);
    // the dataset moving moves the focus
    L.ds.setCurrentRow(m.recordDataRow(0));
    QCOMPARE(m.recordNumber(), qsizetype(1));
    m.lastRecord();
    QCOMPARE(m.recordNumber(), m.recordCount());
    m.firstRecord();
    QCOMPARE(m.recordNumber(), qsizetype(1));

    // a refresh with new rows keeps the whole layout
    const QByteArray before = saveGridLayout(m);
    QList<QVariantList> rows;
    for (int i = 0; i < 50; ++i)
        rows << QVariantList{QStringLiteral("4%1").arg(i % 3), QStringLiteral("P%1").arg(i % 4), QDate(2024, 2, 1 + i % 28),
                             double(i), i, false};
    L.ds.reload(rows);
    QCOMPARE(saveGridLayout(m), before);
    QCOMPARE(m.column(1).width, 167);
    QCOMPARE(m.groupColumns(), QList<int>({1}));
    QCOMPARE(m.recordCount(), qsizetype(50));
    QCOMPARE(m.groupInfo(0).valueText, QStringLiteral("P0"));
    // and a row the dataset loses is no longer shown
    L.ds.reload({});
    QCOMPARE(m.rowCount(), qsizetype(0));
    QCOMPARE(m.recordNumber(), qsizetype(0));
}

void TstGridCore::layoutRoundTripAndRestoreRules()
{
    Ledger L(100);
    GridModel a;
    bind(a, L.ds);
    a.moveColumn(3, 0);                                       // valoare_lei first
    a.setColumnWidth(0, 70);
    a.setColumnVisible(a.columnIndex(QStringLiteral("scv")), false);
    a.setColumnCaption(a.columnIndex(QStringLiteral("partener")), QStringLiteral("Partener\\[x]=y"));
    a.setColumnDisplayFormat(0, QStringLiteral(",0.00;-,0.00"));
    a.clickSort(a.columnIndex(QStringLiteral("data_doc")), false);
    a.setSortOrder(a.columnIndex(QStringLiteral("scv")), SortOrder::Descending, true);
    a.groupByColumn(a.columnIndex(QStringLiteral("conts")));
    a.setFilterText(a.columnIndex(QStringLiteral("partener")), QStringLiteral("ş\nx"));
    a.setFooterSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, QStringLiteral(",0.00;-,0.00")},
                          {QStringLiteral("val_mon_db"), SummaryKind::Sum, {}}});
    a.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Average, {}, QStringLiteral("scv")}});
    a.addFilterCondition(QStringLiteral("da_nu_contare"), true);
    a.addFilterCondition(QStringLiteral("data_doc"), QDate(2024, 5, 6));
    a.setProgramFilterActive(true);
    a.setGroupByBoxVisible(false);
    a.addColumn(QStringLiteral("lipsa"), QStringLiteral("Lipsa"), 90);  // a column the data lacks
    const QByteArray stream = saveGridLayout(a);

    // b has a column a lacks, and lacks two of a's
    GridModel b;
    bind(b, L.ds);
    b.removeColumn(b.columnIndex(QStringLiteral("partener")));
    b.addColumn(QStringLiteral("extra_col"));
    restoreGridLayout(b, stream);
    QCOMPARE(b.columnIndex(QStringLiteral("extra_col")), -1);  // removed
    QCOMPARE(b.columnCount(), a.columnCount());
    for (int i = 0; i < a.columnCount(); ++i) {
        const GridColumn &x = a.column(i), &y = b.column(i);
        QCOMPARE(y.fieldName, x.fieldName);
        QCOMPARE(y.caption, x.caption);
        QCOMPARE(y.width, x.width);
        QCOMPARE(y.visible, x.visible);
        QCOMPARE(y.sortOrder, x.sortOrder);
        QCOMPARE(y.sortIndex, x.sortIndex);
        QCOMPARE(y.groupIndex, x.groupIndex);
        QCOMPARE(y.displayFormat, x.displayFormat);
        QCOMPARE(y.filterText, x.filterText);
    }
    QCOMPARE(b.footerSummaries(), a.footerSummaries());
    QCOMPARE(b.groupSummaries(), a.groupSummaries());
    QCOMPARE(b.filterConditions().size(), 2);
    QCOMPARE(b.filterConditions()[1].value.toDate(), QDate(2024, 5, 6));
    QVERIFY(b.programFilterActive());
    QVERIFY(!b.groupByBoxVisible());
    QCOMPARE(b.recordCount(), a.recordCount());
    QCOMPARE(saveGridLayout(b), stream);

    // an empty stream keeps the layout
    restoreGridLayout(b, QByteArray());
    restoreGridLayout(b, QByteArray(" \n\r\n"));
    QCOMPARE(saveGridLayout(b), stream);

    // the file form
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("grid.ini"));
    saveGridLayoutToFile(a, path);
    GridModel c;
    bind(c, L.ds);
    restoreGridLayoutFromFile(c, path);
    QCOMPARE(saveGridLayout(c), stream);
    QVERIFY_THROWS_EXCEPTION(QuarvError, restoreGridLayoutFromFile(c, dir.filePath(QStringLiteral("nu-exista.ini"))));
}

// A damaged layout raises, names the line it comes from (also when found
// once the whole stream is read), and leaves the grid's layout as it was.
void TstGridCore::damagedLayouts_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("line"); // 0: any
    QTest::newRow("garbage") << QByteArray("garbage") << 0;
    QTest::newRow("width not a number") << QByteArray("[View]\nVersion=1\n[Column:x]\nWidth=abc\n") << 0;
    QTest::newRow("unknown version") << QByteArray("[View]\nVersion=99\n") << 0;
    QTest::newRow("no view") << QByteArray("[Column:x]\nWidth=5\n") << 0;
    QTest::newRow("duplicate column") << QByteArray("[View]\nVersion=1\n[Column:x]\n[Column:X]\n") << 0;
    QTest::newRow("unknown summary") << QByteArray("[View]\nVersion=1\n[FooterSummary:0]\nField=a\nKind=Median\n") << 0;
    QTest::newRow("unclosed section") << QByteArray("[View]\nVersion=1\n[Column:x\n") << 0;
    QTest::newRow("bad date") << QByteArray("[View]\nVersion=1\n[FilterCondition:0]\nField=d\nType=Date\nValue=31.31.2024\n") << 6;
    QTest::newRow("bad flag") << QByteArray("[View]\nVersion=1\nGroupByBox=maybe\n") << 0;
    QTest::newRow("footer without field") << QByteArray("[View]\nVersion=1\n\n[FooterSummary:0]\nKind=Sum\n") << 4;
    QTest::newRow("group without field") << QByteArray("[View]\nVersion=1\n[GroupSummary:3]\nField=a\n[GroupSummary:4]\nFormat=x\n") << 5;
    QTest::newRow("condition without field") << QByteArray("[View]\nVersion=1\n[FilterCondition:0]\nType=Date\nValue=2024-01-01\n") << 3;
    QTest::newRow("unknown type") << QByteArray("[View]\nVersion=1\n[FilterCondition:0]\nField=d\nType=Blob\nValue=x\n") << 5;
    QTest::newRow("view without version") << QByteArray("; comentariu\n\n[View]\nGroupByBox=1\n") << 3;
    QTest::newRow("view missing") << QByteArray("\n# x\n[Column:a]\nWidth=5\n") << 3;
    QTest::newRow("unknown view key") << QByteArray("[View]\nVersion=1\nGroupByBox=1\nZoom=1\n") << 4;
    QTest::newRow("duplicate after a good layout") << QByteArray("[View]\nVersion=1\n[Column:conts]\n[Column:conts]\n") << 0;
}

void TstGridCore::damagedLayouts()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, line);
    Ledger L(10);
    GridModel b;
    bind(b, L.ds);
    b.setColumnWidth(0, 70);
    b.groupByColumn(b.columnIndex(QStringLiteral("conts")));
    const QByteArray before = saveGridLayout(b);
    try {
        restoreGridLayout(b, stream);
        QFAIL("a damaged layout was accepted");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().startsWith(QStringLiteral("Modul de prezentare al gridului nu poate fi citit")), qPrintable(e.text()));
        if (line)
            QVERIFY2(e.text().contains(QStringLiteral("(linia %1)").arg(line)), qPrintable(e.text()));
    }
    QCOMPARE(saveGridLayout(b), before);
}

// Thousands of column sections, a duplicate at the end found and placed (a
// quadratic search would keep this test running for minutes).
void TstGridCore::manyLayoutSections()
{
    Ledger L(1);
    GridModel b;
    bind(b, L.ds);
    QByteArray many = "[View]\nVersion=1\n";
    const int sections = 60000;
    for (int i = 0; i < sections; ++i)
        many += "[Column:c" + QByteArray::number(i) + "]\nWidth=5\n";
    many += "[Column:C" + QByteArray::number(sections - 1) + "]\n";
    try {
        restoreGridLayout(b, many);
        QFAIL("a duplicate column was accepted");
    } catch (const QuarvError &e) {
        QVERIFY2(e.text().contains(QStringLiteral("(linia %1)").arg(2 + 2 * sections + 1)), qPrintable(e.text()));
    }
}

void TstGridCore::textExports()
{
    TestDataSet ds({{QStringLiteral("conts"), FieldType::Text},
                    {QStringLiteral("explicatie"), FieldType::Text},
                    {QStringLiteral("data_doc"), FieldType::Date},
                    {QStringLiteral("valoare_lei"), FieldType::Float},
                    {QStringLiteral("scv"), FieldType::Int32},
                    {QStringLiteral("da_nu_contare"), FieldType::Bool}});
    ds.add({QStringLiteral("401"), QStringLiteral("plată; furnizor \"X\""), QDate(2024, 3, 5), 1234.5, 1, true});
    ds.add({QStringLiteral("4111"), QStringLiteral("încasare"), QDate(2024, 3, 6), -20.0, 2, false});
    ds.add({QStringLiteral("401"), QStringLiteral("șpagat"), QDate(2024, 3, 7), 100.25, 3, QVariant()});
    ds.add({QStringLiteral("5121"), QStringLiteral("ascuns de filtru"), QDate(2024, 3, 8), 7.0, 4, true});
    ds.openNow();
    GridModel m;
    bind(m, ds);
    const QString money = QStringLiteral(",0.00;-,0.00");
    m.setColumnDisplayFormat(3, money);
    m.setColumnCaption(1, QStringLiteral("Explicație"));
    m.setColumnVisible(4, false);                  // hidden: not exported
    m.moveColumn(2, 0);                            // data_doc first
    m.setFilterText(m.columnIndex(QStringLiteral("valoare_lei")), QStringLiteral("<>7"));
    m.setFooterSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, money}, {QStringLiteral("val_mon_cr"), SummaryKind::Sum, money}});
    m.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, money}});
    m.groupByColumn(m.columnIndex(QStringLiteral("conts")));  // collapsed on screen, expanded in the file

    QTemporaryDir dir;
    const QString csv = dir.filePath(QStringLiteral("grid.csv"));
    exportGridCsv(m, csv, QLatin1Char(';'));
    bool bom = false;
    QCOMPARE(readLines(csv, &bom),
             QStringList({QStringLiteral("data_doc;conts;Explicație;valoare_lei;da_nu_contare"),
                          QStringLiteral("conts: 401 (2);;;;"),
                          QStringLiteral("05.03.2024;401;\"plată; furnizor \"\"X\"\"\";1,234.50;True"),
                          QStringLiteral("07.03.2024;401;șpagat;100.25;"),
                          QStringLiteral(";;;1,334.75;"),
                          QStringLiteral("conts: 4111 (1);;;;"),
                          QStringLiteral("06.03.2024;4111;încasare;-20.00;False"),
                          QStringLiteral(";;;-20.00;"),
                          QStringLiteral(";;;1,314.75;")}));
    QVERIFY(bom);

    const QString txt = dir.filePath(QStringLiteral("grid.txt"));
    exportGridText(m, txt);
    const QStringList t = readLines(txt, &bom);
    QVERIFY(bom);
    QCOMPARE(t.size(), 9);
    QCOMPARE(t[0], QStringLiteral("\"data_doc\"\t\"conts\"\t\"Explicație\"\t\"valoare_lei\"\t\"da_nu_contare\""));
    QCOMPARE(t[2], QStringLiteral("\"05.03.2024\"\t\"401\"\t\"plată; furnizor \"\"X\"\"\"\t\"1,234.50\"\t\"True\""));
    QCOMPARE(t[4], QStringLiteral("\"\"\t\"\"\t\"\"\t\"1,334.75\"\t\"\""));
    // replacing an existing file
    m.clearGrouping();
    exportGridCsv(m, csv, QLatin1Char(','));
    QCOMPARE(readLines(csv).size(), 1 + 3 + 1);
}

void TstGridCore::xlsxExport()
{
    TestDataSet ds({{QStringLiteral("conts"), FieldType::Text},
                    {QStringLiteral("data_doc"), FieldType::Date},
                    {QStringLiteral("valoare_lei"), FieldType::Float},
                    {QStringLiteral("ok"), FieldType::Bool}});
    for (int i = 0; i < 9; ++i)
        ds.add({i < 5 ? QStringLiteral("401") : QStringLiteral("5121"), QDate(2024, 3, 1 + i), 1000.5 + i, i % 2 == 0});
    ds.openNow();
    GridModel m;
    bind(m, ds);
    m.setColumnDisplayFormat(2, QStringLiteral(",0.00;-,0.00"));
    m.setColumnWidth(2, 117);
    m.setFooterSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, {}}});
    m.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, {}}});
    m.groupByColumn(0);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("grid.xlsx"));
    // 1 header + 2 groups x (group row + footer) + 9 rows + footer = 14 rows; 8 per sheet -> two sheets
    exportGridXlsx(m, path, XlsxOptions{8});
    QVERIFY(QFile::exists(path));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1); // no temporary left
    const Unzipped z(path);
    const QByteArray s1 = z.entry(QStringLiteral("xl/worksheets/sheet1.xml"));
    const QByteArray s2 = z.entry(QStringLiteral("xl/worksheets/sheet2.xml"));
    const QByteArray styles = z.entry(QStringLiteral("xl/styles.xml"));
    QVERIFY2(!s1.isEmpty() && !s2.isEmpty(), "both worksheets present");
    QVERIFY(z.entry(QStringLiteral("xl/worksheets/sheet3.xml")).isEmpty());
    // frozen header on each sheet, the header repeated
    for (const QByteArray &s : {s1, s2}) {
        QVERIFY(s.contains("ySplit=\"1\"") && s.contains("state=\"frozen\""));
        QVERIFY(s.contains("<row r=\"1\""));
        QVERIFY(s.contains("<t>valoare_lei</t>"));
    }
    // width from pixels: (117 - 5) / 7 = 16 characters
    QVERIFY(s1.contains("width=\"16.7109375\"") || s1.contains("width=\"16"));
    // group row at level 0, details one level deeper, summaries above the details
    QVERIFY(s1.contains("<t>conts: 401 (5)</t>"));
    QVERIFY(s1.contains("outlineLevel=\"1\""));
    QVERIFY(s1.contains("summaryBelow=\"0\""));
    // native numbers: the first detail row holds 1000.5 and a date serial (2024-03-01 = 45352)
    const QRegularExpression numCell(QStringLiteral("<c r=\"C3\" s=\"(\\d+)\"><v>1000.5</v></c>"));
    QVERIFY2(numCell.match(QString::fromUtf8(s1)).hasMatch(), s1.constData());
    QVERIFY(s1.contains("<v>45352</v>"));
    QVERIFY(s1.contains("t=\"b\""));
    QVERIFY(styles.contains("formatCode=\"dd.mm.yyyy\""));
    QVERIFY(styles.contains("formatCode=\"#,##0.00;-#,##0.00\""));
    // the footer sums every row: 9 * 1000.5 + 36 = 9040.5, on the second sheet
    QVERIFY(s2.contains("<v>9040.5</v>"));

    // Two levels, one sheet: each group footer at its group row's outline
    // level, so folding a group leaves its sums in sight.
    m.groupByColumn(3);
    m.expandAll();
    const QString two = dir.filePath(QStringLiteral("doua.xlsx"));
    exportGridXlsx(m, two);
    const QByteArray sheet = Unzipped(two).entry(QStringLiteral("xl/worksheets/sheet1.xml"));
    QList<int> levels;      // the outline level of each row after the header
    QStringList firstCells; // what its first cell says ("" when empty)
    const QRegularExpression rowRe(QStringLiteral("<row r=\"(\\d+)\"([^>]*)>(.*?)</row>"));
    for (auto it = rowRe.globalMatch(QString::fromUtf8(sheet)); it.hasNext();) {
        const QRegularExpressionMatch r = it.next();
        if (r.captured(1) == QLatin1String("1"))
            continue;
        const QRegularExpressionMatch lv = QRegularExpression(QStringLiteral("outlineLevel=\"(\\d)\"")).match(r.captured(2));
        levels << (lv.hasMatch() ? lv.captured(1).toInt() : 0);
        const QRegularExpressionMatch a = QRegularExpression(QStringLiteral("<c r=\"A\\d+\"[^>]*>.*?<t>(.*?)</t>")).match(r.captured(3));
        firstCells << (a.hasMatch() ? a.captured(1) : QString());
    }
    // 2 accounts x (group + footer) + 4 inner groups x (group + footer) + 9 records + the grand footer
    QCOMPARE(levels.size(), 4 + 8 + 9 + 1);
    QList<int> expected;
    for (qsizetype r = 0; r < m.rowCount(); ++r)
        expected << (m.rowKind(r) == RowKind::Data ? 2 : m.rowLevel(r));
    expected << 0; // the grand footer
    QCOMPARE(levels, expected);
    // the footer of "401" (just before the group row of "5121") is not folded with it
    const qsizetype next = firstCells.indexOf(QStringLiteral("conts: 5121 (4)"));
    QVERIFY(next > 0);
    QCOMPARE(firstCells[next - 1], QString());
    QCOMPARE(levels[next - 1], 0);
    QCOMPARE(levels[next - 2], 1); // the inner group's footer, at the inner group's level

    // The workbook gets the mode every other export gets; a replaced file keeps its own.
    const QString csv = dir.filePath(QStringLiteral("doua.csv"));
    exportGridCsv(m, csv, QLatin1Char(';'));
    QCOMPARE(QFileInfo(two).permissions(), QFileInfo(csv).permissions());
    const QFileDevice::Permissions kept = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup
        | QFileDevice::ReadUser | QFileDevice::WriteUser;
    QVERIFY(QFile::setPermissions(two, kept));
    exportGridXlsx(m, two);
    QCOMPARE(QFileInfo(two).permissions(), kept);
    QCOMPARE(QDir(dir.path()).entryList({QStringLiteral(".*.tmp")}, QDir::Files | QDir::Hidden), QStringList());
}

void TstGridCore::emptyGridAndFailures()
{
    TestDataSet ds(ledgerFields());
    GridModel m;
    bind(m, ds);                           // closed dataset: no rows
    m.setFooterSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, {}}});
    m.groupByColumn(0);
    QCOMPARE(m.rowCount(), qsizetype(0));
    QCOMPARE(m.recordNumber(), qsizetype(0));
    QCOMPARE(m.footerText(0), QString());
    m.nextRecord();
    m.expandAll();
    QTemporaryDir dir;
    const QString csv = dir.filePath(QStringLiteral("gol.csv"));
    exportGridCsv(m, csv, QLatin1Char(';'));
    QCOMPARE(readLines(csv), QStringList({QStringLiteral("conts;partener;data_doc;valoare_lei;scv;da_nu_contare")}));
    const QString xlsx = dir.filePath(QStringLiteral("gol.xlsx"));
    exportGridXlsx(m, xlsx);
    QVERIFY(Unzipped(xlsx).entry(QStringLiteral("xl/worksheets/sheet1.xml")).contains("<t>conts</t>"));
    // a folder that does not exist: a clear error, no file
    const QString bad = dir.filePath(QStringLiteral("lipsa/x.csv"));
    QVERIFY_THROWS_EXCEPTION(QuarvError, exportGridCsv(m, bad, QLatin1Char(';')));
    QVERIFY_THROWS_EXCEPTION(QuarvError, exportGridXlsx(m, dir.filePath(QStringLiteral("lipsa/x.xlsx"))));
    QVERIFY(!QFile::exists(bad));
    // a column bound to nothing in a filled grid shows empty cells
    ds.add({QStringLiteral("401"), QStringLiteral("A"), QDate(2024, 1, 1), 1.0, 1, true});
    ds.openNow();
    m.addColumn(QStringLiteral("nu_exista"));
    m.clearGrouping();
    QCOMPARE(m.cellText(0, m.columnIndex(QStringLiteral("nu_exista"))), QString());
    m.setFilterText(m.columnIndex(QStringLiteral("nu_exista")), QStringLiteral("x"));
    QCOMPARE(m.recordCount(), qsizetype(0));
}

namespace {
struct Watch : db::busy::Watcher {
    std::function<void(const db::busy::Progress &)> onPulse;
    int calls = 0;
    void pulse(const db::busy::Progress &p) override
    {
        ++calls;
        if (onPulse)
            onPulse(p);
    }
    db::busy::WatchScope scope{this};
};
} // namespace

void TstGridCore::longWorkServedAndStopped()
{
    Ledger l(200000);
    GridModel m;
    bind(m, l.ds);
    m.setGroupSummaries({{QStringLiteral("valoare_lei"), SummaryKind::Sum, {}}});
    const int partner = m.columnIndex(QStringLiteral("partener"));
    {
        // A rebuild is served but never stopped, even inside work that can
        // stop; a change made meanwhile (a timer) waits for it and follows it.
        Watch w;
        bool servedWhileRebuilding = false;
        w.onPulse = [&](const db::busy::Progress &p) {
            if (p.stoppable)
                throw db::busy::Cancelled{};
            servedWhileRebuilding = servedWhileRebuilding || m.isRebuilding();
            if (m.isRebuilding() && m.column(partner).filterText.isEmpty())
                m.setFilterText(partner, QStringLiteral("beta"));
        };
        QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, [&] {
            db::busy::Stretch s(db::busy::Phase::Fetching, true);
            m.groupByColumn(m.columnIndex(QStringLiteral("conts")));
            db::busy::pulseNow();
        }());
        QVERIFY(servedWhileRebuilding);
        QVERIFY(!m.isRebuilding());
    }
    // Grouped by account and filtered on the partner as asked during the rebuild.
    qsizetype beta = 0;
    for (int r = 0; r < int(l.cents.size()); ++r)
        beta += l.text(r, 1) == QStringLiteral("Beta SA");
    QCOMPARE(m.recordCount(), beta);
    QCOMPARE(m.rowKind(0), RowKind::Group);

    // Every writer stopped half way leaves no file and no temporary file; a
    // file of that name keeps its bytes.
    QTemporaryDir dir;
    const QString old = dir.filePath(QStringLiteral("vechi"));
    m.clearAllFilters();
    const std::vector<std::pair<const char *, std::function<void()>>> writers = {
        {"csv", [&] { exportGridCsv(m, old, QLatin1Char(';')); }},
        {"text", [&] { exportGridText(m, old); }},
        {"xlsx", [&] { exportGridXlsx(m, old); }},
        {"all data", [&] { db::moveToText(l.ds, old, QLatin1Char(';')); }},
    };
    // Open files, to see that a stopped writer keeps none (the workbook's
    // worksheets write their rows to temporary files of their own).
    auto openFiles = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot).size();
    };
    for (const auto &[name, write] : writers) {
        const qsizetype filesBefore = openFiles();
        QFile f(old);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write("vechi");
        f.close();
        Watch w;
        qsizetype stoppedAt = 0;
        w.onPulse = [&](const db::busy::Progress &p) {
            if (p.phase == db::busy::Phase::Writing && p.done >= 20000) {
                QCOMPARE(p.total, qsizetype(l.cents.size()));
                stoppedAt = p.done;
                throw db::busy::Cancelled{};
            }
        };
        QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, write());
        QVERIFY2(stoppedAt >= 20000 && stoppedAt < qsizetype(l.cents.size()), name);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("vechi")});
        QCOMPARE(openFiles(), filesBefore);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), QByteArray("vechi"));
    }
}

QTEST_GUILESS_MAIN(TstGridCore)
#include "tst_gridcore.moc"
