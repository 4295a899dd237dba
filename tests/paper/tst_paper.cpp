// Grids on paper: the PDF read back with pdftotext and pdfinfo (what is on
// every page, the grid as shown, columns continued across pages, wrapped
// text, a stopped run), the grid's menu and Ctrl+P, a report form's page
// header, and the exporter's PDF of the same run.

#include "db/u_busy.h"
#include "grid/u_gridmodel.h"
#include "paper/u_canvas.h"
#include "paper/u_fonts.h"
#include "paper/u_gridpaper.h"
#include "paper/u_truetype.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/gridcore/u_testdataset.h"
#include "tests/support/u_testsession.h"
#include "ui/u_buttonedit.h"
#include "ui/u_dateedit.h"
#include "ui/u_filedialog.h"
#include "ui/u_grid.h"
#include "ui/u_printdialog.h"

#include <QAction>
#include <QFile>
#include <QFontDatabase>
#include <QImage>
#include <QPdfWriter>
#include <QLabel>
#include <QMenu>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using db::FieldType;

namespace {

// The text of each page, as pdftotext lays it out.
QStringList pdfPages(const QString &path)
{
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), QStringLiteral("-enc"), QStringLiteral("UTF-8"), path,
                                          QStringLiteral("-")});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return {};
    QStringList pages = QString::fromUtf8(p.readAllStandardOutput()).split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    return pages;
}

int pdfPageCount(const QString &path)
{
    QProcess p;
    p.start(QStringLiteral("pdfinfo"), {path});
    p.waitForFinished(60000);
    const QRegularExpressionMatch m =
        QRegularExpression(QStringLiteral("^Pages:\\s+(\\d+)"), QRegularExpression::MultilineOption)
            .match(QString::fromUtf8(p.readAllStandardOutput()));
    return m.hasMatch() ? m.captured(1).toInt() : -1;
}

paper::PageHeader header()
{
    return {QStringLiteral("Registru de proba fiscal"), QStringLiteral("Perioada de la : 01.01.2025 pana la : 31.01.2025"),
            QStringLiteral("DEMO"), QDateTime(QDate(2026, 11, 24), QTime(9, 30))};
}

// Postings of three partners (Romanian letters in both spellings), grouped
// by partner with sums per group and in the footer; the memo column hidden.
struct Ledger {
    TestDataSet ds{{{QStringLiteral("partener"), FieldType::Text},
                    {QStringLiteral("explicatie"), FieldType::Text},
                    {QStringLiteral("valoare"), FieldType::Float},
                    {QStringLiteral("nota"), FieldType::Text}}};
    grid::GridModel m;
    explicit Ledger(int rows)
    {
        const QStringList partners = {QStringLiteral("Ăsta Îmbrăcăminte"), QStringLiteral("Șină și Țeavă"),
                                      QStringLiteral("Şcoala Ţării")};
        for (int r = 0; r < rows; ++r)
            ds.add({partners[r % 3], QStringLiteral("plata %1").arg(r), 1000.5 + r, QStringLiteral("ascuns%1").arg(r)});
        m.setLocale(QLocale(QLocale::Romanian, QLocale::Romania));
        m.setDataSet(&ds);
        m.addColumn(QStringLiteral("partener"), QStringLiteral("Partener"), 160);
        m.addColumn(QStringLiteral("explicatie"), QStringLiteral("Explicatie"), 200);
        m.addColumn(QStringLiteral("valoare"), QStringLiteral("Valoare"), 100);
        m.addColumn(QStringLiteral("nota"), QStringLiteral("Nota"), 100);
        m.setColumnDisplayFormat(m.columnIndex(QStringLiteral("valoare")), QStringLiteral("#,##0.00"));
        m.setColumnVisible(m.columnIndex(QStringLiteral("nota")), false);
        m.setGroupSummaries({{QStringLiteral("valoare"), grid::SummaryKind::Sum, QStringLiteral("#,##0.00")}});
        m.setFooterSummaries({{QStringLiteral("valoare"), grid::SummaryKind::Sum, QStringLiteral("#,##0.00")}});
        ds.openNow();
    }
};

// A canvas that only remembers the fonts it was given.
struct FontRecorder : paper::Canvas {
    struct Font {
        QRawFont raw;
        bool thicken, slant;
    };
    std::vector<Font> fonts;
    double unit() const override { return 1; }
    QSizeF size() const override { return {800, 600}; }
    void begin() override {}
    void startPage(int) override {}
    void finishPage() override {}
    void end() override {}
    void fillRect(const QRectF &, int) override {}
    void strokeLines(const QLineF *, qsizetype, int, double) override {}
    int addFont(const QRawFont &raw, bool thicken, bool slant) override
    {
        fonts.push_back({raw, thicken, slant});
        return int(fonts.size() - 1);
    }
    void mapGlyph(int, quint32, char32_t, double) override {}
    void drawGlyphs(int, double, const paper::GlyphStrings &) override {}
};

struct Stopper : db::busy::Watcher {
    qsizetype at;
    explicit Stopper(qsizetype done) : at(done) {}
    void pulse(const db::busy::Progress &p) override
    {
        if (p.phase == db::busy::Phase::Writing && p.done >= at)
            throw db::busy::Cancelled{};
    }
    db::busy::WatchScope scope{this};
};

} // namespace

class TestPaper : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString file(const QString &name) const { return m_dir.filePath(name); }

private slots:
    // The program's fonts, as the desktop program and the exporter install them.
    void initTestCase() { paper::installFontSubstitutes(); }

    // Every page carries the title, the period, the issuer, the time, the
    // column headers and its number; the rows are those shown: groups with
    // their captions and sums, a collapsed group as its group row only, no
    // hidden column, the grand total on the last page.
    void pdfIsTheGridAsShown()
    {
        Ledger l(300);
        l.m.groupByColumn(l.m.columnIndex(QStringLiteral("partener")));
        l.m.expandAll();
        for (qsizetype r = 0; r < l.m.rowCount(); ++r)
            if (l.m.rowKind(r) == grid::RowKind::Group && l.m.groupRowText(r).contains(QStringLiteral("Şcoala")))
                l.m.setExpanded(r, false);
        const QString pdf = file(QStringLiteral("asa.pdf"));
        paper::exportGridPdf(l.m, pdf, header());

        const QStringList pages = pdfPages(pdf);
        QVERIFY(pages.size() >= 3);
        QCOMPARE(pdfPageCount(pdf), int(pages.size()));
        for (int i = 0; i < pages.size(); ++i) {
            const QString &t = pages[i];
            // searchable as typed: no "fi" joined into one glyph
            QVERIFY2(t.contains(QStringLiteral("Registru de proba fiscal")), qPrintable(t));
            QVERIFY(t.contains(QStringLiteral("Perioada de la : 01.01.2025 pana la : 31.01.2025")));
            QVERIFY(t.contains(QStringLiteral("Emitent: DEMO")));
            QVERIFY(t.contains(QStringLiteral("24.11.2026 09:30")));
            QVERIFY(t.contains(QRegularExpression(QStringLiteral("Partener\\s+Explicatie\\s+Valoare"))));
            QVERIFY2(t.contains(QStringLiteral("Pagina %1 din %2").arg(i + 1).arg(pages.size())), qPrintable(t));
            QVERIFY(!t.contains(QStringLiteral("Nota")) && !t.contains(QStringLiteral("ascuns")));
        }
        const QString all = pages.join(QLatin1Char('\n'));
        // Group captions with their counts, the letters intact in both spellings.
        QVERIFY(all.contains(QStringLiteral("Partener: Ăsta Îmbrăcăminte (100)")));
        QVERIFY(all.contains(QStringLiteral("Partener: Șină și Țeavă (100)")));
        QVERIFY(all.contains(QStringLiteral("Partener: Şcoala Ţării (100)")));
        // Rows of expanded groups, none of the collapsed one.
        QVERIFY(all.contains(QRegularExpression(QStringLiteral("Șină și Țeavă\\s+plata 1\\s+1\\.001,50"))));
        QVERIFY(!all.contains(QRegularExpression(QStringLiteral("Şcoala Ţării\\s+plata"))));
        // Group footers and the grand total in their formats, as the grid shows them.
        for (qsizetype r = 0; r < l.m.rowCount(); ++r)
            if (l.m.rowKind(r) == grid::RowKind::GroupFooter)
                QVERIFY2(all.contains(l.m.groupFooterTextForColumn(r, 2)), qPrintable(l.m.groupFooterTextForColumn(r, 2)));
        QCOMPARE(l.m.footerTextForColumn(2), QStringLiteral("345.000,00"));
        QVERIFY(pages.last().contains(QStringLiteral("345.000,00")));
        QVERIFY(!pages.first().contains(QStringLiteral("345.000,00")));
    }

    // Too many columns for a readable size: they continue on following pages,
    // the first column repeated there; the pages of one stretch of rows
    // follow each other, numbered through.
    void wideGridContinues()
    {
        std::vector<db::FieldDef> fields;
        for (int c = 0; c < 30; ++c)
            fields.push_back({QStringLiteral("c%1").arg(c), FieldType::Text});
        TestDataSet ds(fields);
        for (int r = 0; r < 10; ++r) {
            QVariantList row;
            for (int c = 0; c < 30; ++c)
                row << QStringLiteral("r%1k%2").arg(r).arg(c);
            ds.add(row);
        }
        grid::GridModel m;
        m.setDataSet(&ds);
        for (int c = 0; c < 30; ++c)
            m.addColumn(QStringLiteral("c%1").arg(c), QStringLiteral("Col%1").arg(c), 120);
        ds.openNow();
        const QString pdf = file(QStringLiteral("lat.pdf"));
        paper::exportGridPdf(m, pdf, header());
        const QStringList pages = pdfPages(pdf);
        QVERIFY(pages.size() >= 2);
        QStringList seen;
        for (int i = 0; i < pages.size(); ++i) {
            QVERIFY(pages[i].contains(QStringLiteral("Col0 ")));
            QVERIFY(pages[i].contains(QStringLiteral("r9k0")));
            QVERIFY(pages[i].contains(QStringLiteral("Pagina %1 din %2").arg(i + 1).arg(pages.size())));
            for (int c = 1; c < 30; ++c)
                if (pages[i].contains(QStringLiteral("r9k%1 ").arg(c)) || pages[i].contains(QStringLiteral("r9k%1\n").arg(c)))
                    seen << QString::number(c);
        }
        seen.removeDuplicates();
        QCOMPARE(seen.size(), 29); // every column somewhere, each once
        QVERIFY(!pages.first().contains(QStringLiteral("Col29")));
        QVERIFY(pages.last().contains(QStringLiteral("Col29")));
    }

    // A long text wraps to a second line and ends with an ellipsis; numbers
    // keep one line.
    void longTextWraps()
    {
        TestDataSet ds({{QStringLiteral("explicatie"), FieldType::Text}, {QStringLiteral("valoare"), FieldType::Float}});
        QStringList words;
        for (int w = 0; w < 60; ++w)
            words << QStringLiteral("cuvant%1").arg(w);
        ds.add({words.join(QLatin1Char(' ')), 12.5});
        grid::GridModel m;
        m.setDataSet(&ds);
        m.addColumn(QStringLiteral("explicatie"), QStringLiteral("Explicatie"), 300);
        m.addColumn(QStringLiteral("valoare"), QStringLiteral("Valoare"), 1000);
        ds.openNow();
        const QString pdf = file(QStringLiteral("lung.pdf"));
        paper::exportGridPdf(m, pdf, header());
        const QString t = pdfPages(pdf).value(0);
        QVERIFY(t.contains(QStringLiteral("cuvant0 cuvant1")));
        QVERIFY(t.contains(QStringLiteral("…")));
        QVERIFY(!t.contains(QStringLiteral("cuvant59")));
        const QStringList lines = t.split(QLatin1Char('\n'));
        const auto first = std::find_if(lines.begin(), lines.end(), [](const QString &s) { return s.contains(QStringLiteral("cuvant0")); });
        QVERIFY(first != lines.end() && first + 1 != lines.end());
        QVERIFY((first + 1)->contains(QRegularExpression(QStringLiteral("cuvant\\d+"))));
    }

    // Whatever the books hold reads back as it was typed: every printable
    // ASCII character (the ones the file's strings escape among them), the
    // euro sign, quotes and dashes; a character no font has shows as "?".
    // The fonts are embedded, subset, with their map back to Unicode.
    void anyTextReadsBack()
    {
        QString ascii;
        for (char16_t c = 33; c < 127; ++c)
            ascii += QChar(c);
        const QStringList texts = {ascii, QStringLiteral("Pret 12,50 € „ghilimele” – liniuta"),
                                   QStringLiteral("inainte") + QString::fromUcs4(U"\U0010FFFD", 1) + QStringLiteral("dupa"),
                                   QStringLiteral("coloana\tdoi\r"), QStringLiteral("fara\u200Bspatiu"),
                                   // in neither of the program's fonts, but in one the system falls back to
                                   QStringLiteral("arc \u2312 gata")};
        TestDataSet ds({{QStringLiteral("text"), FieldType::Text}});
        for (const QString &t : texts)
            ds.add({t});
        grid::GridModel m;
        m.setDataSet(&ds);
        m.addColumn(QStringLiteral("text"), QStringLiteral("Text"), 900);
        ds.openNow();
        const QString pdf = file(QStringLiteral("text.pdf"));
        paper::exportGridPdf(m, pdf, header());
        const QString t = pdfPages(pdf).value(0);
        QVERIFY2(t.contains(ascii), qPrintable(t));
        QVERIFY(t.contains(texts[1]));
        QVERIFY(t.contains(QStringLiteral("inainte?dupa")));
        // control characters as blanks, invisible ones not at all
        QVERIFY(t.contains(QStringLiteral("coloana doi")) && t.contains(QStringLiteral("faraspatiu")));
        QVERIFY(t.contains(texts[5]));
        QCOMPARE(t.count(QLatin1Char('?')), 2);

        QProcess p;
        p.start(QStringLiteral("pdffonts"), {pdf});
        QVERIFY(p.waitForFinished());
        const QStringList fonts = QString::fromUtf8(p.readAllStandardOutput()).split(QLatin1Char('\n')).mid(2);
        QVERIFY(fonts.size() >= 2);
        for (const QString &f : fonts)
            QVERIFY2(f.isEmpty() || f.contains(QRegularExpression(QStringLiteral("yes\\s+yes\\s+yes"))), qPrintable(f));
    }

    // Bold and italic text comes out bold and slanted once: from the font's
    // own bold or italic file, or made so where the family has no such file.
    // Checked on the program's fonts and on every family of a single face.
    void facesKeepTheirStyle()
    {
        QStringList families = {QStringLiteral("Tahoma"), QStringLiteral("DejaVu Sans")};
        for (const QString &family : QFontDatabase::families())
            if (QFontDatabase::styles(family).size() == 1)
                families << family;
        for (const QString &family : families)
            for (const bool bold : {false, true})
                for (const bool italic : {false, true}) {
                    QFont f(family);
                    f.setPointSizeF(9);
                    f.setBold(bold);
                    f.setItalic(italic);
                    FontRecorder canvas;
                    try {
                        paper::Face face(f, canvas);
                    } catch (const QuarvError &) {
                        continue; // no font file to read
                    }
                    const FontRecorder::Font &used = canvas.fonts.at(0);
                    const QString file = paper::postScriptName(used.raw);
                    const bool boldFile = file.contains(QRegularExpression(QStringLiteral("Bold|Black|Heavy")));
                    const bool italicFile = file.contains(QRegularExpression(QStringLiteral("Italic|Oblique")));
                    const QString what = QStringLiteral("%1 bold=%2 italic=%3 from %4").arg(family).arg(bold).arg(italic).arg(file);
                    QVERIFY2(used.thicken == (bold && !boldFile), qPrintable(what));
                    QVERIFY2(used.slant == (italic && !italicFile), qPrintable(what));
                }

        // The printer makes up what the file lacks as the PDF does: plain,
        // thickened and slanted "IIII" on one page, read back as pixels.
        const QString pdf = file(QStringLiteral("fete.pdf"));
        {
            QPdfWriter printer(pdf);
            printer.setResolution(72);
            paper::PainterCanvas canvas(printer);
            canvas.begin();
            canvas.startPage(1);
            QRawFont raw = QRawFont::fromFont(QFont(QStringLiteral("DejaVu Sans")));
            raw.setPixelSize(40);
            const QList<quint32> glyphs = raw.glyphIndexesForString(QStringLiteral("IIII"));
            for (int k = 0; k < 3; ++k) {
                paper::GlyphStrings text;
                text.strings.push_back({QPointF(20, 60 + 80 * k), 0, glyphs.size()});
                for (quint32 g : glyphs) {
                    text.glyphs.push_back(g);
                    text.advances.push_back(30);
                }
                canvas.drawGlyphs(canvas.addFont(raw, k == 1, k == 2), 40, text);
            }
            canvas.end();
        }
        QVERIFY(QProcess::execute(QStringLiteral("pdftoppm"), {QStringLiteral("-gray"), QStringLiteral("-r"), QStringLiteral("72"),
                                                                QStringLiteral("-singlefile"), pdf, file(QStringLiteral("fete"))})
                == 0);
        const QImage page(file(QStringLiteral("fete.pgm")));
        QVERIFY(!page.isNull());
        // Per line of text: its ink, and how far right its upper half stands
        // of its lower half.
        auto measure = [&](int k) {
            const int baseline = 60 + 80 * k;
            double ink = 0, upper = 0, upperInk = 0, lower = 0, lowerInk = 0;
            for (int y = baseline - 40; y < baseline; ++y)
                for (int x = 0; x < 200; ++x) {
                    const double dark = 255 - qGray(page.pixel(x, y));
                    const bool high = y < baseline - 15;
                    ink += dark;
                    (high ? upper : lower) += dark * x;
                    (high ? upperInk : lowerInk) += dark;
                }
            return std::pair{ink, upper / upperInk - lower / lowerInk};
        };
        const auto [plainInk, plainLean] = measure(0);
        const auto [thickInk, thickLean] = measure(1);
        const auto [slantInk, slantLean] = measure(2);
        QVERIFY2(thickInk > 1.15 * plainInk, qPrintable(QStringLiteral("%1 %2").arg(thickInk).arg(plainInk)));
        QVERIFY2(slantLean > plainLean + 1 && qAbs(thickLean - plainLean) < 0.3,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(plainLean).arg(thickLean).arg(slantLean)));
        QVERIFY(qAbs(slantInk - plainInk) < 0.1 * plainInk);
    }

    // Stopped half way: no file, and a file of that name keeps its bytes.
    void stoppedLeavesNoFile()
    {
        Ledger l(20000);
        const QString pdf = file(QStringLiteral("oprit.pdf"));
        QFile old(pdf);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("vechi");
        old.close();
        {
            Stopper stop(25000);
            QVERIFY_THROWS_EXCEPTION(db::busy::Cancelled, paper::exportGridPdf(l.m, pdf, header()));
        }
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("vechi"));
        QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("oprit*")}, QDir::Files | QDir::Hidden).size(), 1);
    }

    // The header menu offers print and PDF after a separator on a report
    // grid only; the save dialog proposes the report's name, adds the
    // extension, and a cancel writes nothing; Ctrl+P asks the print dialog
    // (landscape offered) and prints.
    void viewMenuAndDialogs()
    {
        Ledger l(30);
        ui::Grid g;
        ui::GridTableView *v = g.view();
        v->setGridStyleSheet({});
        v->model()->setDataSet(&l.ds);
        v->model()->createDefaultColumns();
        std::unique_ptr<QMenu> plain(v->createHeaderMenu(0));
        QVERIFY(!plain->findChild<QAction *>(QStringLiteral("actPrint")));

        v->setPaperSource({[] { return header(); }, [this] { return file(QStringLiteral("Propus.pdf")); }});
        std::unique_ptr<QMenu> menu(v->createHeaderMenu(0));
        const QList<QAction *> actions = menu->actions();
        QCOMPARE(actions.size() >= 3, true);
        QVERIFY(actions[actions.size() - 3]->isSeparator());
        QCOMPARE(actions[actions.size() - 2]->objectName(), QStringLiteral("actPrint"));
        QCOMPARE(actions[actions.size() - 2]->text(), QStringLiteral("Tipareste..."));
        QCOMPARE(actions.last()->objectName(), QStringLiteral("actExportPdf"));
        QCOMPARE(actions.last()->text(), QStringLiteral("Export PDF..."));

        ui::ScopedQueuedFileDialog save;
        save.answers << QString() << file(QStringLiteral("ales"));
        actions.last()->trigger(); // cancelled
        QCOMPARE(save.askedFilters, QStringList{QStringLiteral("*.pdf")});
        QCOMPARE(save.askedNames, QStringList{file(QStringLiteral("Propus.pdf"))});
        QVERIFY(!QFile::exists(file(QStringLiteral("Propus.pdf"))) && !QFile::exists(file(QStringLiteral("ales.pdf"))));
        actions.last()->trigger();
        QVERIFY(pdfPages(file(QStringLiteral("ales.pdf"))).value(0).contains(QStringLiteral("Registru de proba")));

        ui::ScopedQueuedPrintDialog print;
        print.answers << QString() << file(QStringLiteral("tiparit.pdf"));
        g.show();
        v->setFocus();
        QTest::keyClick(v, Qt::Key_P, Qt::ControlModifier); // cancelled
        QCOMPARE(print.asked, 1);
        QVERIFY(print.offeredLandscape);
        QVERIFY(!QFile::exists(file(QStringLiteral("tiparit.pdf"))));
        QTest::keyClick(v, Qt::Key_P, Qt::ControlModifier);
        QCOMPARE(print.asked, 2);
        const QStringList printed = pdfPages(file(QStringLiteral("tiparit.pdf")));
        QCOMPARE(printed.size(), 1);
        QVERIFY(printed[0].contains(QStringLiteral("Pagina 1 din 1")));
        QVERIFY(printed[0].contains(QStringLiteral("plata 29")));
    }

    // A report form's pages: its title label, the account and the period as
    // the editors show them, the issuer signed in; the PDF proposed in the
    // Documents folder under the report's export name.
    void formPageHeader()
    {
        TestSession session(QStringLiteral("DEMO"));
        TfrmFisaDeContAnalitica f(*session.dm);
        f.buttonEdit(QStringLiteral("cxButtonEdit1"))->setText(QStringLiteral("4111"));
        f.dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2025, 1, 1));
        f.dateEdit(QStringLiteral("cxDateEdit2"))->setDate(QDate(2025, 1, 31));
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        const paper::PageHeader h = f.pageHeader();
        QCOMPARE(h.title, f.titleLabel()->text());
        QVERIFY2(h.period.contains(QStringLiteral("4111")), qPrintable(h.period));
        QVERIFY(h.period.indexOf(QStringLiteral("4111")) < h.period.indexOf(QStringLiteral("01.01.2025")));
        QVERIFY(h.period.indexOf(QStringLiteral("01.01.2025")) < h.period.indexOf(QStringLiteral("31.01.2025")));
        QCOMPARE(h.issuer, QStringLiteral("DEMO"));
        QVERIFY(h.printedAt >= before && h.printedAt <= QDateTime::currentDateTime());

        ui::ScopedQueuedFileDialog save;
        f.gridView()->exportPdf(); // cancelled
        QCOMPARE(save.askedNames.size(), 1);
        QVERIFY2(save.askedNames[0].startsWith(session.docs.path()), qPrintable(save.askedNames[0]));
        QVERIFY(save.askedNames[0].endsWith(QStringLiteral("FisaContAnalitic.pdf")));
    }

    // tkquarv-export --format pdf writes what "Export PDF..." writes after the
    // same run (the time of printing aside).
    void exporterWritesTheFormsPdf()
    {
        PgTestServer &pg = PgTestServer::instance();
        pg.exec(QStringLiteral(R"(
insert into emitent (emitent, operator_parola, loc) values ('OP1', 'secret', '01.01');
insert into tip_doc (tip_doc, den_tip_doc) values ('FACT', 'Factura');
insert into conts (conts, den_conts) values ('4111', 'Clienti'), ('707', 'Venituri');
insert into conta (conts, conta, den_conta) values ('4111', 'A', 'A'), ('707', 'V', 'V');
insert into doc (data_doc, tip_doc, nr_doc, partener) values ('2024-03-05', 'FACT', '1', 'Şcoala Ţării');
insert into reg_jurnal (data_reg_jurnal, data_doc, tip_doc, nr_doc, conts_db, conta_db, moneda_db, val_mon_db,
                        valoare_lei, conts_cr, conta_cr, moneda_cr, val_mon_cr, explicatie) values
  ('2024-03-05', '2024-03-05', 'FACT', '1', '4111', 'A', 'RON', 100, 100, '707', 'V', 'RON', 100, 'vânzare în rate');
)"));
        const QString fromExporter = file(QStringLiteral("export.pdf"));
        QProcess p;
        p.start(QStringLiteral(QUARV_EXPORT_EXE),
                {QStringLiteral("--host"), pg.host(), QStringLiteral("--port"), QString::number(pg.port()),
                 QStringLiteral("--database"), pg.database(), QStringLiteral("--issuer"), QStringLiteral("OP1"),
                 QStringLiteral("--password-stdin"), QStringLiteral("--report"), QStringLiteral("frmAnalizaRegistruJurnal"),
                 QStringLiteral("--from"), QStringLiteral("01.03.2024"), QStringLiteral("--to"), QStringLiteral("31.03.2024"),
                 QStringLiteral("--format"), QStringLiteral("pdf"), QStringLiteral("--output"), fromExporter,
                 QStringLiteral("--quiet")});
        p.write("secret\n");
        p.closeWriteChannel();
        QVERIFY(p.waitForFinished(120000));
        QVERIFY2(p.exitCode() == 0, p.readAllStandardError().constData());

        TestSession session(QStringLiteral("OP1"));
        TfrmAnalizaRegistruJurnal f(*session.dm);
        f.dateEdit(QStringLiteral("cxDateEdit1"))->setDate(QDate(2024, 3, 1));
        f.dateEdit(QStringLiteral("cxDateEdit2"))->setDate(QDate(2024, 3, 31));
        f.Cauta();
        ui::ScopedQueuedFileDialog save;
        const QString fromForm = file(QStringLiteral("form.pdf"));
        save.answers << fromForm;
        f.gridView()->exportPdf();

        auto withoutTime = [](QStringList pages) {
            for (QString &t : pages)
                t.remove(QRegularExpression(QStringLiteral("Tiparit: [0-9.: ]+")));
            return pages;
        };
        const QStringList expected = withoutTime(pdfPages(fromForm));
        QVERIFY(!expected.isEmpty());
        QVERIFY(expected[0].contains(QStringLiteral("vânzare în rate")));
        QVERIFY(expected[0].contains(QStringLiteral("Emitent: OP1")));
        QCOMPARE(withoutTime(pdfPages(fromExporter)), expected);
    }
};

QTEST_MAIN(TestPaper)
#include "tst_paper.moc"
