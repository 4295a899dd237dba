#include "tools/export/u_exportcli.h"

#include "analyses/u_platform.h"
#include "analyses/u_reportexport.h"
#include "analyses/u_reportrun.h"
#include "analyses/u_reports.h"
#include "analyses/u_signin.h"
#include "analyses/u_stylestore.h"
#include "db/u_busy.h"
#include "db/u_connection.h"
#include "db/u_error.h"
#include "db/u_query.h"
#include "grid/u_gridlayout.h"
#include "grid/u_gridmodel.h"
#include "paper/u_gridpaper.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QHash>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace cli {

namespace {

const QString kProgram = QStringLiteral("tkquarv-export");

void printErr(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

void printOut(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fputc('\n', stdout);
}

// The formats and the export kinds each stands for (the account sheet's csv
// writes to its status bar on screen; here it is the same file). A new format
// is a row here.
struct FormatRow {
    const char *name;
    QList<rep::ExportKind> kinds; // none: the grid on paper (its header menu's "Export PDF...")
};

const std::vector<FormatRow> &formats()
{
    static const std::vector<FormatRow> table{
        {"csv-grid", {rep::ExportKind::GridCsv, rep::ExportKind::GridCsvStatus}},
        {"csv-all", {rep::ExportKind::AllDataCsv}},
        {"text", {rep::ExportKind::GridText}},
        {"xlsx", {rep::ExportKind::GridXlsx}},
        {"pdf", {}},
    };
    return table;
}

bool knownFormat(const QString &format)
{
    for (const FormatRow &f : formats())
        if (format == QLatin1String(f.name))
            return true;
    return false;
}

QList<rep::ExportKind> kindsOf(const QString &format)
{
    for (const FormatRow &f : formats())
        if (format == QLatin1String(f.name))
            return f.kinds;
    return {};
}

QStringList formatNames()
{
    QStringList out;
    for (const FormatRow &f : formats())
        out << QString::fromLatin1(f.name);
    return out;
}

// "a, b, c sau d"
QString spokenList(QStringList items)
{
    const QString last = items.takeLast();
    return items.isEmpty() ? last : items.join(QStringLiteral(", ")) + QStringLiteral(" sau ") + last;
}

// The formats of the export buttons the desktop form has (--list-reports).
QStringList formatsOf(const rep::ReportDesc &d)
{
    QStringList out;
    for (const FormatRow &f : formats()) {
        // Every grid prints from its header menu.
        bool has = f.kinds.isEmpty();
        for (rep::ExportKind k : f.kinds)
            has = has || d.exportOf(k);
        if (has)
            out << QString::fromLatin1(f.name);
    }
    return out;
}

const rep::EditorDesc *accountEditor(const rep::ReportDesc &d)
{
    for (const rep::EditorDesc &e : d.editors)
        if (e.kind != rep::EditorKind::Date)
            return &e;
    return nullptr;
}

// The password: the first line of standard input, or typed on the terminal
// without echo; never an argument.
QString readPassword(bool fromStdin)
{
    if (!fromStdin && !platform::stdinIsTerminal())
        throw UsageError{QStringLiteral("Parola nu poate fi ceruta: nu exista un terminal. "
                                        "Folositi --password-stdin si dati parola pe intrarea standard.")};
    if (!fromStdin) {
        std::fputs("Parola: ", stderr);
        std::fflush(stderr);
    }
    // Typed at a terminal, with or without --password-stdin, it is not shown.
    const std::optional<QString> line = platform::readLineUnechoed();
    if (!line)
        throw QuarvError(QStringLiteral("Parola lipseste de pe intrarea standard."));
    return *line;
}

// Progress on standard error, for a person watching a terminal.
class Progress {
public:
    explicit Progress(bool on) : m_on(on) { m_clock.start(); }
    void fetched(qsizetype rows)
    {
        if (m_on)
            std::fprintf(stderr, "\r%s: %lld randuri citite", qPrintable(kProgram), static_cast<long long>(rows));
    }
    void line(const QString &text)
    {
        if (m_on)
            std::fprintf(stderr, "\r%s: %s (%.1f s)\n", qPrintable(kProgram), text.toUtf8().constData(),
                         double(m_clock.elapsed()) / 1000.0);
    }

private:
    bool m_on;
    QElapsedTimer m_clock;
};

// Ctrl+C (SIGINT) or SIGTERM during a run: the statement is cancelled on the
// server, the partial file removed, and the program ends with 128 + the signal.
volatile std::sig_atomic_t g_signal = 0;

extern "C" void onStopSignal(int sig)
{
    g_signal = sig;
    // A second one ends the program at once, as it would without this handler.
    std::signal(sig, SIG_DFL);
}

struct Interrupted {
    int signal;
};

class SignalWatch : public db::busy::Watcher {
public:
    SignalWatch() : m_scope(this)
    {
        g_signal = 0;
        m_int = std::signal(SIGINT, onStopSignal);
        m_term = std::signal(SIGTERM, onStopSignal);
    }
    ~SignalWatch() override
    {
        std::signal(SIGINT, m_int);
        std::signal(SIGTERM, m_term);
    }
    SignalWatch(const SignalWatch &) = delete;
    SignalWatch &operator=(const SignalWatch &) = delete;
    // A signal met outside a stoppable stretch (the grid's rebuild) stops the next one.
    void pulse(const db::busy::Progress &p) override
    {
        if (g_signal && p.stoppable)
            throw db::busy::Cancelled{};
    }
    static int received() { return int(g_signal); }

private:
    using Handler = void (*)(int);
    Handler m_int = SIG_DFL;
    Handler m_term = SIG_DFL;
    db::busy::WatchScope m_scope;
};

// The run's editors: the dates as the editors hold them once typed and left.
class CliHost : public rep::RunHost {
public:
    CliHost(const rep::ReportDesc &d, const Options &o, db::Query &query, db::Query &sessionRow, db::Query &ownRow)
        : m_query(query), m_sessionRow(sessionRow), m_ownRow(ownRow)
    {
        for (const rep::EditorDesc &e : d.editors) {
            if (e.objectName == rep::kFromEditor)
                m_dates.insert(e.objectName, rep::enteredDate(e, o.from));
            else if (e.objectName == rep::kToEditor)
                m_dates.insert(e.objectName, rep::enteredDate(e, o.to));
            else if (e.kind != rep::EditorKind::Date)
                m_texts.insert(e.objectName, o.account.value_or(QString()));
        }
    }
    QDate date(const QString &editor) const override { return m_dates.value(editor); }
    QString text(const QString &editor) const override { return m_texts.value(editor); }
    bool isEmpty(const QString &editor) const override
    {
        return m_dates.contains(editor) ? !m_dates.value(editor).isValid() : m_texts.value(editor).isEmpty();
    }
    db::Query &query() override { return m_query; }
    db::Query &periodRow(rep::PeriodSource source) override
    {
        return source == rep::PeriodSource::Own ? m_ownRow : m_sessionRow;
    }
    // On screen a box and a silent stop; here the message and a failed run.
    void inform(const QString &message) override { throw QuarvError(message); }

private:
    db::Query &m_query;
    db::Query &m_sessionRow;
    db::Query &m_ownRow;
    QHash<QString, QDate> m_dates;
    QHash<QString, QString> m_texts;
};

// What the pages of "Export PDF..." would say after the same run: the title,
// the parameters as the editors would show them, the issuer, the time.
paper::PageHeader pageHeader(const rep::ReportDesc &d, const Options &o, const CliHost &host)
{
    paper::PageHeader h;
    h.title = d.title;
    h.period = rep::parametersText(d, [&host](const rep::EditorDesc &e) {
        if (e.kind != rep::EditorKind::Date)
            return host.text(e.objectName);
        const QDate date = host.date(e.objectName);
        return date.isValid() ? date.toString(QStringLiteral("dd.MM.yyyy")) : QString();
    });
    h.issuer = o.issuer;
    h.printedAt = QDateTime::currentDateTime();
    return h;
}

void listReports()
{
    for (const rep::CatalogEntry &e : rep::catalog()) {
        const rep::ReportDesc d = e.description();
        QStringList takes;
        if (accountEditor(d))
            takes << QStringLiteral("--account");
        if (!d.styleKey.isEmpty())
            takes << QStringLiteral("--style");
        printOut(e.formName + u'\t' + d.title + u'\t' + takes.join(u' ') + u'\t' + formatsOf(d).join(u','));
    }
}

void requireConnection(const Options &o)
{
    QStringList missing;
    if (o.host.isEmpty())
        missing << QStringLiteral("--host");
    if (o.port == 0)
        missing << QStringLiteral("--port");
    if (o.database.isEmpty())
        missing << QStringLiteral("--database");
    if (o.issuer.isEmpty())
        missing << QStringLiteral("--issuer");
    if (o.report.isEmpty())
        missing << QStringLiteral("--report");
    if (!missing.isEmpty())
        throw UsageError{QStringLiteral("Lipsesc optiunile: %1").arg(missing.join(QStringLiteral(", ")))};
}

void signIn(db::Connection &conn, const Options &o)
{
    const QString password = readPassword(o.passwordStdin);
    conn.setHost(o.host);
    conn.setPort(o.port);
    conn.setDatabase(o.database);
    conn.setUserName(rep::databaseUser());
    conn.setPassword(rep::databasePassword());
    // A dropped link is reconnected and the statement run again, as in the desktop program.
    conn.onConnectionLost = [] { return db::Connection::LostMode::ReconnectExecute; };
    conn.open();
    db::Query check;
    check.setConnection(&conn);
    check.setSql(rep::issuerCheckSql());
    rep::checkIssuer(check, o.issuer, password);
}

QByteArray styleLayout(db::Connection &conn, const rep::ReportDesc &d, const QString &name)
{
    const QList<rep::SavedStyle> styles = rep::savedStyles(conn, d.styleKey);
    QStringList names;
    for (const rep::SavedStyle &s : styles) {
        if (s.name == name)
            return s.layout;
        names << s.name;
    }
    throw QuarvError(QStringLiteral("Stilul \"%1\" nu exista pentru %2. Stilurile salvate: %3")
                         .arg(name, d.styleKey, names.isEmpty() ? QStringLiteral("(niciunul)") : names.join(QStringLiteral(", "))));
}

int exportReport(const Options &o)
{
    const rep::CatalogEntry *entry = rep::findReport(o.report);
    const rep::ReportDesc d = entry->description();
    db::Connection conn;
    signIn(conn, o);
    Progress progress(!o.quiet && platform::stderrIsTerminal());

    db::Query query;
    query.setObjectName(d.queryName);
    query.setConnection(&conn);
    query.setSql(d.sql);
    query.setFetchProgress([&progress](qsizetype rows) { progress.fetched(rows); });
    // The period rows: the session's, and the form's own where it has one.
    db::Query sessionRow, ownRow;
    for (auto [q, text] : {std::pair{&sessionRow, rep::sessionDataListSql()}, std::pair{&ownRow, d.ownDataListSql}}) {
        q->setObjectName(QStringLiteral("dsDataList"));
        q->setConnection(&conn);
        q->setSql(text);
        q->setUpdateTable(QStringLiteral("data_list"));
    }

    // The grid's logic under the report's layout, or the one saved by name.
    grid::GridModel model;
    rep::setUpGrid(d, model);
    if (o.style)
        grid::restoreGridLayout(model, styleLayout(conn, d, *o.style));
    // All the query's data needs no grid: its rows are not built for it.
    const QList<rep::ExportKind> kinds = kindsOf(o.format);
    const bool onPaper = kinds.isEmpty();
    const rep::ExportKind kind = onPaper ? rep::ExportKind::GridXlsx : kinds.constFirst();
    const bool allData = kind == rep::ExportKind::AllDataCsv;
    if (!allData)
        model.setDataSet(&query);

    rep::ReportExport out(kind, o.output, o.separator.value_or(platform::listSeparator()));
    if (!onPaper)
        out.streamFrom(query, [&progress](qsizetype rows) { progress.fetched(rows); });

    const SignalWatch stopSignals;
    try {
        CliHost host(d, o, query, sessionRow, ownRow);
        rep::runReport(d, host);
        progress.line(QStringLiteral("%1 randuri citite").arg(query.rowCount()));
        if (onPaper)
            paper::exportGridPdf(model, o.output, pageHeader(d, o, host));
        else
            out.write(model, query);
    } catch (const db::busy::Cancelled &) {
        throw Interrupted{SignalWatch::received()};
    }
    progress.line(QStringLiteral("%1 randuri scrise in %2")
                      .arg(allData ? query.rowCount() : model.recordCount())
                      .arg(o.output));
    return 0;
}

int listStyles(const Options &o)
{
    const rep::ReportDesc d = rep::findReport(o.report)->description();
    db::Connection conn;
    signIn(conn, o);
    for (const rep::SavedStyle &s : rep::savedStyles(conn, d.styleKey))
        printOut(s.name + u'\t' + s.issuer + u'\t' + s.created.toString(QStringLiteral("dd.MM.yyyy")) + u'\t'
                 + (s.inactive ? QStringLiteral("inactiv") : QStringLiteral("activ")));
    return 0;
}

} // namespace

QString usageText()
{
    return QStringLiteral(
        "Utilizare:\n"
        "  tkquarv-export --host H --port P --database D --issuer COD\n"
        "                 --report NUME --from DATA --to DATA [--account CONTS]\n"
        "                 [--style NUME] --format %1 --output FISIER\n"
        "                 [--password-stdin] [--separator C] [--quiet]\n"
        "  tkquarv-export --list-reports\n"
        "  tkquarv-export --host H --port P --database D --issuer COD --report NUME --list-styles\n"
        "\n"
        "DATA: zz.LL.aaaa sau aaaa-LL-zz; o data lipsa lasa editorul ei gol.\n"
        "Parola emitentului se citeste de pe terminal, fara ecou, sau cu --password-stdin\n"
        "din prima linie a intrarii standard; niciodata din argumente.\n"
        "Coduri de iesire: 0 reusit; 1 o verificare, conectarea, baza de date sau fisierul;\n"
        "2 o linie de comanda gresita; 130 sau 143 oprit cu Ctrl+C sau SIGTERM (Anulat).")
        .arg(formatNames().join(u'|'));
}

QDate parseDate(const QString &text)
{
    QDate d = QDate::fromString(text, QStringLiteral("dd.MM.yyyy"));
    if (!d.isValid())
        d = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    return d;
}

namespace {

// The options, in one place: a value-less option is a switch. Each takes its
// value into Options, or throws UsageError.
struct OptionRow {
    const char *name;
    const char *valueName; // nullptr: a switch
    void (*take)(Options &o, const QString &value);
};

QDate takeDate(const char *option, const QString &text)
{
    const QDate d = parseDate(text);
    if (!d.isValid())
        throw UsageError{
            QStringLiteral("--%1 \"%2\" nu este o data (zz.LL.aaaa sau aaaa-LL-zz).").arg(QLatin1String(option), text)};
    return d;
}

const std::vector<OptionRow> &optionRows()
{
    static const std::vector<OptionRow> table{
        {"host", "H", [](Options &o, const QString &v) { o.host = v; }},
        {"port", "P",
         [](Options &o, const QString &v) {
             bool ok = false;
             o.port = v.toInt(&ok);
             if (!ok || o.port < 1 || o.port > 65535)
                 throw UsageError{QStringLiteral("Portul \"%1\" nu este intre 1 si 65535.").arg(v)};
         }},
        {"database", "D", [](Options &o, const QString &v) { o.database = v; }},
        {"issuer", "COD", [](Options &o, const QString &v) { o.issuer = v; }},
        {"report", "NUME", [](Options &o, const QString &v) { o.report = v; }},
        {"from", "DATA", [](Options &o, const QString &v) { o.from = takeDate("from", v); }},
        {"to", "DATA", [](Options &o, const QString &v) { o.to = takeDate("to", v); }},
        {"account", "CONTS", [](Options &o, const QString &v) { o.account = v; }},
        {"style", "NUME", [](Options &o, const QString &v) { o.style = v; }},
        {"format", "FORMAT", [](Options &o, const QString &v) { o.format = v; }},
        {"output", "FISIER", [](Options &o, const QString &v) { o.output = v; }},
        {"separator", "C",
         [](Options &o, const QString &v) {
             if (v.size() != 1)
                 throw UsageError{QStringLiteral("Separatorul trebuie sa fie un singur caracter, nu \"%1\".").arg(v)};
             o.separator = v.at(0);
         }},
        {"password-stdin", nullptr, [](Options &o, const QString &) { o.passwordStdin = true; }},
        {"quiet", nullptr, [](Options &o, const QString &) { o.quiet = true; }},
        {"list-reports", nullptr, [](Options &o, const QString &) { o.listReports = true; }},
        {"list-styles", nullptr, [](Options &o, const QString &) { o.listStyles = true; }},
    };
    return table;
}

const OptionRow *findOption(QStringView name)
{
    for (const OptionRow &row : optionRows())
        if (name == QLatin1String(row.name))
            return &row;
    return nullptr;
}

// The first argument not written as the exporter takes it ("--name value" or
// "--name"), with its message and the count of options before it. The parser
// alone would also take --name=value, -name, "--", loose words and a value
// that looks like an option, and would say so in English.
struct Fault {
    qsizetype optionsBefore;
    QString text;
};

std::optional<Fault> firstFault(const QStringList &args)
{
    qsizetype options = 0;
    for (qsizetype i = 1; i < args.size(); ++i, ++options) {
        const QString &a = args.at(i);
        const OptionRow *row = a.startsWith(QLatin1String("--")) ? findOption(QStringView(a).mid(2)) : nullptr;
        if (!row && (a == QLatin1String("--password") || a.startsWith(QLatin1String("--password="))))
            return Fault{options, QStringLiteral("Parola nu se da in linia de comanda: folositi --password-stdin.")};
        if (!row)
            return Fault{options, QStringLiteral("Optiune necunoscuta: %1").arg(a)};
        if (!row->valueName)
            continue;
        if (i + 1 >= args.size() || args.at(i + 1).startsWith(QLatin1String("--")))
            return Fault{options, QStringLiteral("Optiunea %1 cere o valoare.").arg(a)};
        ++i;
    }
    return std::nullopt;
}

// The options as given, each taken in the order written, so that the first
// wrong one is the one reported.
Options readOptions(const QStringList &args)
{
    QCommandLineParser parser;
    for (const OptionRow &row : optionRows())
        parser.addOption(QCommandLineOption(QString::fromLatin1(row.name), QString(),
                                            row.valueName ? QString::fromLatin1(row.valueName) : QString()));
    const std::optional<Fault> fault = firstFault(args);
    // Up to the fault the arguments are as the parser reads them too; its
    // own verdict (in English) is not needed.
    parser.parse(args);
    const QStringList found = parser.optionNames();
    const qsizetype taken = fault ? fault->optionsBefore : found.size();
    Options o;
    QHash<QString, qsizetype> seen;
    for (qsizetype k = 0; k < taken; ++k) {
        const QString &name = found.at(k);
        const OptionRow *row = findOption(name);
        row->take(o, row->valueName ? parser.values(name).at(seen[name]++) : QString());
    }
    if (fault)
        throw UsageError{fault->text};
    return o;
}

// What the options ask must fit the report named.
void checkOptions(const Options &o)
{
    requireConnection(o);
    const rep::CatalogEntry *entry = rep::findReport(o.report);
    if (!entry)
        throw UsageError{QStringLiteral("Raport necunoscut: %1 (vezi --list-reports).").arg(o.report)};
    const rep::ReportDesc d = entry->description();
    if (o.style && d.styleKey.isEmpty())
        throw UsageError{QStringLiteral("Raportul %1 nu are stiluri de prezentare.").arg(o.report)};
    if (o.listStyles) {
        if (d.styleKey.isEmpty())
            throw UsageError{QStringLiteral("Raportul %1 nu are stiluri de prezentare.").arg(o.report)};
        return;
    }
    if (o.account && !accountEditor(d))
        throw UsageError{QStringLiteral("Raportul %1 nu are cont (--account).").arg(o.report)};
    if (o.format.isEmpty() || o.output.isEmpty())
        throw UsageError{QStringLiteral("Lipsesc --format sau --output.")};
    // Every report in every format, whatever export buttons its form has.
    if (!knownFormat(o.format))
        throw UsageError{QStringLiteral("Format necunoscut: \"%1\" (%2).").arg(o.format, spokenList(formatNames()))};
}

} // namespace

Options parseArguments(const QStringList &args)
{
    const Options o = readOptions(args);
    if (!o.listReports)
        checkOptions(o);
    return o;
}

bool needsFonts(int argc, char **argv)
{
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], "--format") == 0 && std::strcmp(argv[i + 1], "pdf") == 0)
            return true;
    return false;
}

int run(const QStringList &args)
{
    try {
        const Options o = parseArguments(args);
        if (o.listReports) {
            listReports();
            return 0;
        }
        return o.listStyles ? listStyles(o) : exportReport(o);
    } catch (const UsageError &e) {
        printErr(kProgram + QStringLiteral(": ") + e.text);
        printErr(usageText());
        return 2;
    } catch (const Interrupted &e) {
        printErr(QStringLiteral("Anulat"));
        return 128 + e.signal;
    } catch (const QuarvError &e) {
        printErr(e.text());
        return 1;
    } catch (const std::exception &e) {
        printErr(QString::fromLocal8Bit(e.what()));
        return 1;
    }
}

} // namespace cli
