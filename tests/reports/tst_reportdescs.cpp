// Every report's description, validated and built into its form offscreen:
// its names hold together, its SQL is the text it must be (by digest, kept
// here once), and its columns and sums read fields its query returns.
// Then the validation itself: the mistakes a newcomer makes are caught and
// named.

#include "reports/common/u_reportform.h"
#include "reports/u_reportlist.h"
#include "session/u_dmQuarv.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testsession.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"

#include <QCryptographicHash>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <memory>
#include <stdexcept>

namespace {

// SHA-256 of each report's SQL text as it must travel (trailing blanks and
// empty lines included). A changed text must be checked against the design
// and its digest changed here, nowhere else.
struct SqlDigest {
    const char *form;
    const char *sha256;
};
const SqlDigest kDigests[] = {
    {"frmFisaDeContAnalitica", "62d98a5e58c45837fd8ee825f0647a1778cde838be0bb9bebd33e6a426e8f318"},
    {"frmAnalizaRegistruJurnal", "ac7dbf899841a95f07b27255d3133ed3168f1b9be3c6b42936cc2b1a464a5efa"},
    {"frmAnalizaContabilaDetaliata", "e115bb40637f2661783389cb79e6894c4ee13d3b2b38c160721835430a58cdf4"},
    {"frmContareDocumente", "3d4f8d9593f3a7bde77eb2f9d888f715c666dd8074b1f39a4073c8469fda8369"},
    {"frmCheltVenPeComenziFaraRegii", "370b485774420565e28ebb6d156b64cbce187fee6bfa27c3e3548d1c26c70c85"},
    {"frmAnaliza_Profitabilitate", "b15d628ef5385c80d4ba409ef2075a807241f963c9df331a4693723e64f39ba8"},
    {"frmVerifDecontTurism", "94e3806112b2c8e0f8c94486f5ccb411cf7281d1653c597fcc4f03d3a6a9502e"},
    {"frmAnalizaPostcalcul", "1625b977e9003f64ac7ca92a814e5830984af3ff0bcb5a266968c80246bb77fd"},
};

QString digestOf(const QString &sql)
{
    return QString::fromLatin1(QCryptographicHash::hash(sql.toUtf8(), QCryptographicHash::Sha256).toHex());
}

bool anyContains(const QStringList &faults, const QString &a, const QString &b)
{
    for (const QString &f : faults)
        if (f.contains(a) && f.contains(b))
            return true;
    return false;
}

} // namespace

class TestReportDescs : public QObject {
    Q_OBJECT
    std::unique_ptr<TestSession> m_session;

private slots:
    void initTestCase()
    {
        m_session = std::make_unique<TestSession>();
        // An empty period: every view answers with its fields and no rows.
        PgTestServer::instance().exec(QStringLiteral(
            "delete from data_list; insert into data_list (data_incep, data_sf) values ('1900-01-01', '1900-01-31')"));
    }

    void cleanupTestCase()
    {
        m_session.reset();
    }

    void everyReport_data()
    {
        QTest::addColumn<QString>("form");
        for (const rep::ReportForm &e : rep::reportForms())
            QTest::newRow(qPrintable(e.entry->formName)) << e.entry->formName;
    }

    void everyReport()
    {
        QFETCH(QString, form);
        const rep::ReportForm *entry = rep::reportForm(form);
        QVERIFY(entry);
        const rep::ReportDesc d = entry->entry->description();
        QCOMPARE(d.formName, form);
        const QStringList faults = rep::validate(d);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));

        // The text as it must travel.
        QString expected;
        for (const SqlDigest &g : kDigests)
            if (form == QLatin1String(g.form))
                expected = QString::fromLatin1(g.sha256);
        QVERIFY2(!expected.isEmpty(), "a report without a digest of its SQL");
        QCOMPARE(digestOf(d.sql), expected);

        // The form as the description says.
        std::unique_ptr<TReportForm> f(entry->create(*m_session->dm, nullptr));
        QCOMPARE(f->objectName(), form);
        QCOMPARE(f->windowTitle(), form);
        QCOMPARE(f->titleLabel()->text(), d.title);
        QCOMPARE(f->query()->objectName(), d.queryName);
        QCOMPARE(f->query()->sql(), d.sql);
        QCOMPARE(f->ownDataList() != nullptr, !d.ownDataListSql.isEmpty());
        QCOMPARE(f->runButton()->text(), QStringLiteral("Cauta"));
        QCOMPARE(f->styleButton() != nullptr, !d.styleKey.isEmpty());
        QCOMPARE(f->statusBar() != nullptr, d.statusBar);
        QCOMPARE(f->gridView()->objectName(), QStringLiteral("cxGrid1DBTableView1"));
        for (const rep::EditorDesc &e : d.editors) {
            QWidget *w = f->editor(e.objectName);
            QVERIFY2(w, qPrintable(e.objectName));
            if (!e.label.isEmpty()) {
                auto *lbl = f->findChild<QLabel *>(QStringLiteral("lbl") + e.objectName);
                QVERIFY(lbl && lbl->buddy() == w && lbl->text() == e.label);
            }
        }
        for (const rep::HiddenLabel &l : d.hiddenLabels) {
            auto *lbl = f->findChild<QLabel *>(l.objectName);
            QVERIFY(lbl && lbl->text() == l.text && !lbl->isVisibleTo(f.get()));
        }
        for (const rep::ExportDesc &e : d.exports) {
            QPushButton *b = f->exportButton(e.kind);
            QVERIFY(b && b->objectName() == e.objectName && b->text() == e.caption);
        }
        QCOMPARE(f->gridModel()->columnCount(), d.columns.size());

        // Columns and sums against what the query returns (no rows: an empty period).
        db::Query *q = f->query();
        for (const QString &p : q->paramNames())
            q->setParam(p, QVariant());
        q->open();
        QStringList fields;
        for (int i = 0; i < q->fieldCount(); ++i)
            fields << q->fieldDef(i).name;
        const QStringList fieldFaults = rep::validateFields(d, fields);
        QVERIFY2(fieldFaults.isEmpty(), qPrintable(fieldFaults.join(u'\n')));
        q->close();
    }

    // Each mistake is caught and named with the report and the name at fault.
    void mistakesAreNamed()
    {
        const rep::ReportDesc good = rep::catalog().first().description();
        const QString form = good.formName;

        rep::ReportDesc d = good;
        for (rep::RunStep &s : d.steps)
            if (s.kind == rep::StepKind::CheckFilled && s.editors.contains(rep::kFromEditor))
                s.editors.replace(s.editors.indexOf(rep::kFromEditor), QStringLiteral("cxDateEdt1"));
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("\"cxDateEdt1\"")));
        // The form refuses to be built from it.
        try {
            TReportForm f(d, *m_session->dm);
            QFAIL("a form was built from a misspelt description");
        } catch (const std::logic_error &e) {
            QVERIFY(QString::fromUtf8(e.what()).contains(QStringLiteral("cxDateEdt1")));
        }

        d = good;
        d.params.append({QStringLiteral("pNuExista"), rep::kFromEditor, rep::DateConv::AsIs});
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("\"pNuExista\"")));

        d = good;
        d.sql += QStringLiteral("\n-- :pComentariu is no parameter\nand x = :pUitat");
        const QStringList unbound = rep::validate(d);
        QVERIFY(anyContains(unbound, form, QStringLiteral("\"pUitat\"")));
        QVERIFY(!anyContains(unbound, form, QStringLiteral("pComentariu")));

        // A check after something changed: a refused run must leave nothing changed.
        d = good;
        d.steps.append(rep::RunStep::checkPeriodFilled(QStringLiteral("x")));
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("CheckFilled")));

        d = good;
        d.steps.prepend(rep::RunStep::postPeriodRow(rep::PeriodSource::Own, rep::DateConv::AsIs, rep::DateConv::AsIs));
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("own period row")));

        d = good;
        d.steps.prepend(rep::RunStep::custom(QStringLiteral("pasLipsa")));
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("\"pasLipsa\"")));

        d = good;
        d.steps.removeLast();
        QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("opens the query")));

        d = good;
        d.exports = {rep::exportExcel(QStringLiteral("cxButton9"), QStringLiteral("\\Raport.csv")),
                     rep::exportText(QStringLiteral("cxButton9"), QStringLiteral("Raport.csv"))};
        const QStringList exp = rep::validate(d);
        QVERIFY(anyContains(exp, form, QStringLiteral(".xlsx")));
        QVERIFY(anyContains(exp, form, QStringLiteral("\"cxButton9\"")));
        QVERIFY(anyContains(exp, form, QStringLiteral("backslash")));

        d = good;
        d.statusBar = false;
        if (!d.exports.isEmpty())
            QVERIFY(anyContains(rep::validate(d), form, QStringLiteral("status bar")));

        // Fields: a misspelt column, an undeclared sum on a missing field, a
        // declared-absent field the query does return.
        d = good;
        d.columns.append(rep::column("valoare_leii"));
        d.footerSummaries = rep::sums({"val_mon_cr", "explicatie"});
        d.absentSumFields = {QStringLiteral("explicatie")};
        const QStringList ff = rep::validateFields(d, {QStringLiteral("explicatie"), QStringLiteral("valoare_lei")});
        QVERIFY(anyContains(ff, form, QStringLiteral("\"valoare_leii\"")));
        QVERIFY(anyContains(ff, form, QStringLiteral("\"val_mon_cr\"")));
        QVERIFY(anyContains(ff, form, QStringLiteral("\"explicatie\" is declared absent")));
    }
};

QTEST_MAIN(TestReportDescs)
#include "tst_reportdescs.moc"
