// tkquarv-export run as a scheduled job would run it, against the test
// server: every report in every format it takes, the checks with their
// messages and exit codes, the period it writes, a saved layout applied, the
// password never taken from the arguments, and no half file on failure.

#include "db/u_connection.h"
#include "db/u_query.h"
#include "db/u_textmover.h"
#include "analyses/u_reports.h"
#include "tests/support/u_pgtestserver.h"
#include "tests/support/u_testfiles.h"
#include "grid/u_gridlayout.h"
#include "grid/u_gridmodel.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

struct Result {
    int code = -1;
    QString out, err;
};

} // namespace

class TestExportCli : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    PgTestServer *m_pg = nullptr;

    // The program with the given arguments; `input` on its standard input.
    Result run(const QStringList &args, const QByteArray &input = "secret\n")
    {
        QProcess p;
        p.start(QStringLiteral(QUARV_EXPORT_EXE), args);
        p.write(input);
        p.closeWriteChannel();
        p.waitForFinished(120000);
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardOutput()),
                QString::fromUtf8(p.readAllStandardError())};
    }
    QStringList signIn() const
    {
        return {QStringLiteral("--host"), m_pg->host(), QStringLiteral("--port"), QString::number(m_pg->port()),
                QStringLiteral("--database"), m_pg->database(), QStringLiteral("--issuer"), QStringLiteral("OP1"),
                QStringLiteral("--password-stdin")};
    }
    Result exportRun(const QString &report, const QString &format, const QString &file, const QStringList &more = {})
    {
        return run(signIn() + QStringList{QStringLiteral("--report"), report, QStringLiteral("--format"), format,
                                          QStringLiteral("--output"), m_dir.filePath(file), QStringLiteral("--quiet")}
                   + more);
    }
    // The register's all-data export, signed in, to a file of its own.
    QStringList registerArgs() const
    {
        return signIn() + QStringList{QStringLiteral("--report"), QStringLiteral("frmAnalizaRegistruJurnal"),
                                      QStringLiteral("--format"), QStringLiteral("csv-all"), QStringLiteral("--output"),
                                      m_dir.filePath(QStringLiteral("p"))};
    }
    QString period() const
    {
        return m_pg->scalar(QStringLiteral("select data_incep || ' ' || data_sf from data_list")).toString();
    }

private slots:
    void initTestCase()
    {
        m_pg = &PgTestServer::instance();
        m_pg->exec(QStringLiteral(R"(
insert into emitent (emitent, operator_parola, loc) values ('OP1', 'secret', '01.01');
insert into data_list (data_incep, data_sf) values ('2000-01-01', '2000-01-31');
insert into tip_doc (tip_doc, den_tip_doc) values ('FACT', 'Factura');
insert into conts (conts, den_conts) values ('4111', 'Clienti'), ('707', 'Venituri'), ('627', 'Banca'), ('5121', 'Banca');
insert into conta (conts, conta, den_conta) values ('4111', 'A', 'A'), ('707', 'V', 'V'), ('627', 'C', 'C'), ('5121', 'B', 'B');
insert into comanda (com_int, gr_com_int) values ('T1', 'Turism intern'), ('CMD1', 'Productie');
insert into doc (data_doc, tip_doc, nr_doc, partener) values ('2024-03-05', 'FACT', '1', 'ACME');
insert into doc_poz (data_doc, tip_doc, nr_doc, scv, articol, com_int, chelt_ven, valoare, valoare_lei) values
  ('2024-03-05', 'FACT', '1', 1, 'Pachet', 'T1', 'Venituri', 100, 100);
insert into reg_jurnal (data_reg_jurnal, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db, val_mon_db,
                        valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie) values
  ('2024-03-05', '2024-03-05', 'FACT', '1', '4111', 'A', 'RON', 100, 100, '707', 'V', 'RON', 100, 'vanzare'),
  ('2024-03-06', '2024-03-05', 'FACT', '1', '627', 'C', 'RON', 5, 5, '5121', 'B', 'RON', 5, 'comision');
insert into doc_contare (data_doc, tip_doc, nr_doc, scv, scv_contare, conts, conta, conts_coresp, conta_coresp,
                         moneda, moneda_coresp, valoare, valoare_lei, valoare_coresp, deb_cred, data_contare,
                         da_nu_in_postcalcul, com_int, explicatie) values
  ('2024-03-05', 'FACT', '1', 1, 1, '707', 'V', '4111', 'A', 'RON', 'RON', 100, 100, 100, 'C', '2024-03-05', true, 'CMD1', 'vanzare'),
  ('2024-03-06', 'FACT', '1', 2, 1, '627', 'C', '5121', 'B', 'RON', 'RON', 5, 5, 5, 'D', '2024-03-06', true, 'CMD1', 'comision');
)"));
    }

    // Every report in every format, whatever buttons its form has; the files
    // hold its rows (the columns against the query are checked with the descriptions).
    void everyReportEveryFormat()
    {
        const Result list = run({QStringLiteral("--list-reports")});
        QCOMPARE(list.code, 0);
        QCOMPARE(list.out.trimmed().split(u'\n').size(), rep::catalog().size());
        for (const QString &line : list.out.trimmed().split(u'\n')) {
            const QStringList cols = line.split(u'\t');
            QCOMPARE(cols.size(), 4);
            const QString report = cols[0];
            const QStringList more = cols[2].contains(QStringLiteral("--account"))
                                         ? QStringList{QStringLiteral("--account"), QStringLiteral("4111")}
                                         : QStringList{};
            for (const char *name : {"csv-grid", "csv-all", "text", "xlsx"}) {
                const QString format = QString::fromLatin1(name);
                const QString file = report + u'.' + format;
                const Result r = exportRun(report, format, file,
                                           QStringList{QStringLiteral("--from"), QStringLiteral("01.03.2024"),
                                                       QStringLiteral("--to"), QStringLiteral("2024-03-31")}
                                               + more);
                QVERIFY2(r.code == 0, qPrintable(report + u' ' + format + u' ' + r.err));
                QFile f(m_dir.filePath(file));
                QVERIFY(f.open(QIODevice::ReadOnly));
                const QByteArray bytes = f.readAll();
                if (format == QLatin1String("xlsx")) {
                    QVERIFY(bytes.startsWith("PK"));
                } else {
                    // A header and at least one row of March.
                    QVERIFY2(bytes.count('\n') >= 2, qPrintable(report + u' ' + format));
                }
            }
        }
        // --list-reports still names the export buttons of each form.
        QVERIFY(list.out.contains(QStringLiteral("frmContareDocumente\t")));
        for (const QString &line : list.out.split(u'\n'))
            if (line.startsWith(QLatin1String("frmContareDocumente\t")))
                QVERIFY2(!line.section(u'\t', 3).contains(QStringLiteral("csv-all")), qPrintable(line));
        // The post-calculation analysis, which the menu cannot open, gives its rows.
        const QString post = readTextFile(m_dir.filePath(QStringLiteral("frmAnalizaPostcalcul.text")));
        QVERIFY2(post.contains(QStringLiteral("\"comision\"")), qPrintable(post));
        QVERIFY(post.contains(QStringLiteral("\"-\""))); // no object: a dash
        QVERIFY(readTextFile(m_dir.filePath(QStringLiteral("frmFisaDeContAnalitica.csv-grid"))).contains(QStringLiteral("Sold Initial")));
    }

    // The checks of each report, in its order, with its messages; exit 1,
    // nothing written (also by the all-data export that writes while rows
    // arrive) and the period row untouched.
    void reportChecks_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QStringList>("dates");
        QTest::addColumn<QString>("message");
        QTest::newRow("months apart") << u"frmContareDocumente"_s << u"text"_s
                                      << QStringList{u"--from"_s, u"31.05.2024"_s, u"--to"_s, u"01.06.2024"_s}
                                      << rep::sameMonthText();
        QTest::newRow("no period") << u"frmContareDocumente"_s << u"text"_s << QStringList{}
                                   << u"Alegeti Perioada Dorita!"_s;
        QTest::newRow("one date") << u"frmAnalizaContabilaDetaliata"_s << u"csv-all"_s
                                  << QStringList{u"--from"_s, u"01.03.2024"_s} << u"Selectati perioada dorita!"_s;
        QTest::newRow("no account") << u"frmFisaDeContAnalitica"_s << u"csv-grid"_s
                                    << QStringList{u"--from"_s, u"01.03.2024"_s, u"--to"_s, u"31.03.2024"_s}
                                    << u"Alegeti Conts!"_s;
    }
    void reportChecks()
    {
        QFETCH(QString, report);
        QFETCH(QString, format);
        QFETCH(QStringList, dates);
        QFETCH(QString, message);
        m_pg->exec(QStringLiteral("update data_list set data_incep = '2000-01-01', data_sf = '2000-01-31'"));
        const Result r = exportRun(report, format, QStringLiteral("refuzat"), dates);
        QCOMPARE(r.code, 1);
        QCOMPARE(r.err.trimmed(), message);
        QCOMPARE(period(), QStringLiteral("2000-01-01 2000-01-31"));
        QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("refuzat*")}, QDir::Files | QDir::Hidden), QStringList());
    }

    // The dates as the editors hold them once typed and left: snapped on
    // exit for the detailed analysis, widened at run time for the orders.
    void periodWritten()
    {
        Result r = exportRun(QStringLiteral("frmAnalizaContabilaDetaliata"), QStringLiteral("csv-all"), QStringLiteral("cd.csv"),
                             {u"--from"_s, u"17.03.2024"_s, u"--to"_s, u"05.03.2024"_s});
        QCOMPARE(r.code, 0);
        QCOMPARE(period(), QStringLiteral("2024-03-01 2024-03-31"));
        r = exportRun(QStringLiteral("frmCheltVenPeComenziFaraRegii"), QStringLiteral("text"), QStringLiteral("cv.txt"),
                      {u"--from"_s, u"2024-02-15"_s, u"--to"_s, u"2024-02-20"_s});
        QCOMPARE(r.code, 0);
        QCOMPARE(period(), QStringLiteral("2024-02-01 2024-02-29"));
    }

    // Usage errors: exit 2; a later value replaces an earlier one.
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("bad");
        QTest::newRow("negative port") << QStringList{u"--port"_s, u"-5"_s};
        QTest::newRow("unknown report") << QStringList{u"--report"_s, u"frmNimic"_s};
        QTest::newRow("no such date") << QStringList{u"--from"_s, u"31.02.2024"_s};
        QTest::newRow("unknown format") << QStringList{u"--format"_s, u"ods"_s};
        QTest::newRow("password as argument") << QStringList{u"--password"_s, u"secret"_s};
    }
    void usageErrors()
    {
        QFETCH(QStringList, bad);
        const Result r = run(registerArgs() + bad);
        QCOMPARE(r.code, 2);
        if (bad.first() == QLatin1String("--password"))
            QVERIFY(r.err.contains(QStringLiteral("--password-stdin")));
    }

    // The password only from standard input: without a terminal and without
    // --password-stdin there is no way to ask (a usage error); a wrong or
    // missing one is a refused sign-in with the login's own message.
    void passwordFromStandardInput()
    {
        QStringList noStdin = registerArgs();
        noStdin.removeAll(QStringLiteral("--password-stdin"));
        QCOMPARE(run(noStdin).code, 2);
        const Result r = run(registerArgs(), "gresit\n");
        QCOMPARE(r.code, 1);
        QCOMPARE(r.err.trimmed(), QStringLiteral("Eroare la conectare"));
        QCOMPARE(run(registerArgs(), "").code, 1);
    }

    // A saved layout changes the grid's exports, not the query's; a failed
    // export leaves the file it would have replaced.
    void stylesAndFailures()
    {
        // A layout of the register: only conts_db 627, explicatie hidden.
        const rep::ReportDesc d = rep::AnalizaRegistruJurnal::description();
        grid::GridModel m;
        rep::setUpGrid(d, m);
        m.setFilterText(m.columnIndex(QStringLiteral("conts_db")), QStringLiteral("627"));
        m.setColumnVisible(m.columnIndex(QStringLiteral("explicatie")), false);
        const QByteArray layout = grid::saveGridLayout(m);
        m_pg->exec(QStringLiteral("insert into grid_style (grid_name, style_name, data_creare, emitent, grid_style_bytea) "
                                  "values ('QUARV AnalizaRegJurnal', 'Doar banca', '2024-04-01', 'ALTUL', decode('%1', 'hex'))")
                       .arg(QString::fromLatin1(layout.toHex())));

        const QStringList march{QStringLiteral("--from"), QStringLiteral("01.03.2024"), QStringLiteral("--to"),
                                QStringLiteral("31.03.2024"), QStringLiteral("--separator"), QStringLiteral(";")};
        const QStringList styled = march + QStringList{QStringLiteral("--style"), QStringLiteral("Doar banca")};
        QCOMPARE(exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-grid"), QStringLiteral("g0"), march).code, 0);
        QCOMPARE(exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-grid"), QStringLiteral("g1"), styled).code, 0);
        QCOMPARE(exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-all"), QStringLiteral("a1"), styled).code, 0);
        const QString plain = readTextFile(m_dir.filePath(QStringLiteral("g0"))), grid = readTextFile(m_dir.filePath(QStringLiteral("g1")));
        QVERIFY(plain.contains(QStringLiteral("vanzare")) && plain.contains(QStringLiteral("explicatie")));
        QVERIFY(!grid.contains(QStringLiteral("vanzare")) && !grid.contains(QStringLiteral("explicatie")));
        QVERIFY(grid.contains(QStringLiteral("627;")));
        const QString all = readTextFile(m_dir.filePath(QStringLiteral("a1")));
        QVERIFY(all.contains(QStringLiteral("vanzare")) && all.contains(QStringLiteral("explicatie")));

        // Listing and an unknown name.
        const Result styles = run(signIn() + QStringList{QStringLiteral("--report"), QStringLiteral("frmAnalizaRegistruJurnal"),
                                                         QStringLiteral("--list-styles")});
        QCOMPARE(styles.code, 0);
        QCOMPARE(styles.out.trimmed(), QStringLiteral("Doar banca\tALTUL\t01.04.2024\tactiv"));
        const Result unknown = exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-grid"),
                                         QStringLiteral("g2"), march + QStringList{QStringLiteral("--style"), QStringLiteral("Nu")});
        QCOMPARE(unknown.code, 1);
        QVERIFY(unknown.err.contains(QStringLiteral("Doar banca")));

        // A failing query: exit 1, the file it would have replaced untouched.
        const QString kept = m_dir.filePath(QStringLiteral("g0"));
        m_pg->exec(QStringLiteral("alter table reg_jurnal rename to reg_jurnal_x"));
        const Result failed = exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-grid"),
                                        QStringLiteral("g0"), march);
        m_pg->exec(QStringLiteral("alter table reg_jurnal_x rename to reg_jurnal"));
        QCOMPARE(failed.code, 1);
        QVERIFY(!failed.err.isEmpty());
        QCOMPARE(readTextFile(kept), plain);
        // A file that cannot be written: exit 1 with the file system's message.
        QCOMPARE(exportRun(QStringLiteral("frmAnalizaRegistruJurnal"), QStringLiteral("csv-grid"),
                           QStringLiteral("nu/exista/g.csv"), march).code, 1);
    }

    // Ctrl+C or SIGTERM while the register waits on the server (here on a
    // lock the test holds): the statement cancelled on the server, no file
    // (an existing one keeps its bytes), "Anulat", 128 + the signal.
    void interrupted()
    {
        db::Connection locker;
        m_pg->configure(locker);
        locker.execCommand(QStringLiteral("begin; lock table reg_jurnal in access exclusive mode"));
        const QString waiting = QStringLiteral("select count(*) from pg_locks where not granted and relation = 'reg_jurnal'::regclass");
        const QString file = m_dir.filePath(QStringLiteral("oprit.csv"));
        for (const auto &[sig, code] : {std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}}) {
            if (sig == SIGTERM) {
                QFile old(file);
                QVERIFY(old.open(QIODevice::WriteOnly));
                old.write("vechi");
            }
            QProcess p;
            p.start(QStringLiteral(QUARV_EXPORT_EXE),
                    signIn() + QStringList{QStringLiteral("--report"), QStringLiteral("frmAnalizaRegistruJurnal"),
                                           QStringLiteral("--from"), QStringLiteral("01.03.2024"), QStringLiteral("--to"),
                                           QStringLiteral("31.03.2024"), QStringLiteral("--format"), QStringLiteral("csv-all"),
                                           QStringLiteral("--output"), file, QStringLiteral("--quiet")});
            p.write("secret\n");
            p.closeWriteChannel();
            QTRY_COMPARE_WITH_TIMEOUT(m_pg->scalar(waiting).toInt(), 1, 20000);
            QCOMPARE(::kill(pid_t(p.processId()), sig), 0);
            QVERIFY(p.waitForFinished(10000));
            QCOMPARE(p.exitStatus(), QProcess::NormalExit);
            QCOMPARE(p.exitCode(), code);
            QCOMPARE(QString::fromUtf8(p.readAllStandardError()).trimmed(), QStringLiteral("Anulat"));
            // Cancelled, not merely left: a statement left waiting would still wait.
            QCOMPARE(m_pg->scalar(waiting).toInt(), 0);
            QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("*oprit*")}, QDir::Files | QDir::Hidden),
                     sig == SIGTERM ? QStringList{QStringLiteral("oprit.csv")} : QStringList{});
        }
        QFile kept(file);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("vechi"));
        locker.execCommand(QStringLiteral("rollback"));
    }

    // All the data of a result larger than one write: written while the rows
    // arrive, the file is the same as the one written after the fetch.
    void largeAllData()
    {
        m_pg->exec(QStringLiteral(
            "insert into doc_contare (data_doc, tip_doc, nr_doc, scv, scv_contare, conts, conta, conts_coresp, "
            "conta_coresp, moneda, moneda_coresp, valoare, valoare_lei, valoare_coresp, deb_cred, data_contare, explicatie) "
            "select date '2024-04-01' + (i % 30), 'FACT', 'N' || i, 1, 1, '707', 'V', '4111', 'A', 'RON', 'RON', "
            "i / 7.0, i / 7.0, i / 7.0, 'C', date '2024-04-01', 'linia ' || i from generate_series(1, 140000) as i"));
        const QString streamed = m_dir.filePath(QStringLiteral("mare.csv"));
        const Result r = run(signIn() + QStringList{QStringLiteral("--report"), QStringLiteral("frmAnalizaContabilaDetaliata"),
                                                    QStringLiteral("--from"), QStringLiteral("01.04.2024"),
                                                    QStringLiteral("--to"), QStringLiteral("30.04.2024"),
                                                    QStringLiteral("--format"), QStringLiteral("csv-all"),
                                                    QStringLiteral("--separator"), QStringLiteral(","),
                                                    QStringLiteral("--output"), streamed, QStringLiteral("--quiet")});
        QCOMPARE(r.code, 0);
        db::Connection conn;
        m_pg->configure(conn);
        db::Query q;
        q.setConnection(&conn);
        q.setSql(rep::AnalizaContabilaDetaliata::sql());
        q.open();
        QCOMPARE(q.rowCount(), 140000);
        const QString whole = m_dir.filePath(QStringLiteral("mare-intreg.csv"));
        db::moveToText(q, whole, u',');
        QFile a(streamed), b(whole);
        QVERIFY(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
        const QByteArray bytesA = a.readAll();
        QCOMPARE(bytesA.count('\n'), 140001);
        QVERIFY(bytesA == b.readAll());
        m_pg->exec(QStringLiteral("delete from doc_contare where nr_doc like 'N%'"));
    }
};

QTEST_GUILESS_MAIN(TestExportCli)
#include "tst_exportcli.moc"
