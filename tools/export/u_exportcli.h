#pragma once
// tkquarv-export: an analysis run and exported without windows, exactly as
// its form's "Cauta" and export buttons would do it after the operator typed
// the dates into the two editors and left them.
//
//   tkquarv-export --host H --port P --database D --issuer CODE
//                  --report NAME --from DATE --to DATE [--account CONTS]
//                  [--style NAME] --format csv-grid|csv-all|text|xlsx|pdf --output FILE
//                  [--password-stdin] [--separator C] [--quiet]
//   tkquarv-export --list-reports
//   tkquarv-export --host ... --issuer CODE --report NAME --list-styles
//
// Exit codes: 0 done; 1 a check, sign-in, database or file error (its
// message on standard error); 2 a usage error (with the usage text); 130 or
// 143 stopped by Ctrl+C (SIGINT) or SIGTERM ("Anulat"): the statement is
// cancelled on the server and no partial file is left.

#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>

namespace cli {

struct Options {
    QString host;
    int port = 0;
    QString database;
    QString issuer;
    QString report;
    QDate from, to;          // null: the editor left empty
    std::optional<QString> account;
    std::optional<QString> style;
    QString format;          // csv-grid, csv-all, text, xlsx, pdf
    QString output;
    bool passwordStdin = false;
    std::optional<QChar> separator;
    bool quiet = false;
    bool listReports = false;
    bool listStyles = false;
};

// A command line the program cannot take: exit 2 with the usage text.
struct UsageError {
    QString text;
};

QString usageText();
// Throws UsageError.
Options parseArguments(const QStringList &args);
// dd.MM.yyyy or yyyy-MM-dd; a null date when neither.
QDate parseDate(const QString &text);

// The whole program after the application object: returns the exit code.
int run(const QStringList &args);
// A PDF is laid out with fonts: the program then needs a QGuiApplication
// (offscreen where there is no screen) rather than a QCoreApplication.
bool needsFonts(int argc, char **argv);

} // namespace cli
