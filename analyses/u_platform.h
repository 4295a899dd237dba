#pragma once
// What the programs ask of the desktop they run on: the user's Documents
// folder and the list separator of the user's locale (Qt Core only), and for
// the command-line exporter, its terminal. Windows calls on Windows, the
// nearest equivalent elsewhere; tests can pin the folder and the separator.

#include <QChar>
#include <QString>

#include <optional>

namespace platform {

// Full path of the current user's Documents folder without a trailing
// separator, not created when missing; empty when the system cannot say.
QString documentsFolder();

// A file in a folder named the way the forms name theirs: folder + name, where
// name starts with a backslash ("\\grid.ini"); outside Windows that backslash
// is the path separator. An empty folder gives the root ("/grid.ini").
QString documentsFile(const QString &folder, const QString &nameWithBackslash);

// First character of the user locale's list separator (',' when unknown).
// Outside Windows: ';' when the locale's decimal point is ',', else ','.
QChar listSeparator();

// Whether standard input, or standard error, is a terminal.
bool stdinIsTerminal();
bool stderrIsTerminal();
// One line of standard input without its line end; typed at a terminal it is
// not shown (and the line end is echoed once read). nullopt at the end of input.
std::optional<QString> readLineUnechoed();

// Test hooks: a value pins the answer, std::nullopt asks the system again.
void setDocumentsFolderOverride(std::optional<QString> folder);
void setListSeparatorOverride(std::optional<QChar> separator);

} // namespace platform
