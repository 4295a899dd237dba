#pragma once
// What the programs ask of the desktop they run on: the user's Documents
// folder and the list separator of the user's locale (Qt Core only). Windows calls on
// Windows, the nearest equivalent elsewhere; tests can pin both.

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

// Test hooks: a value pins the answer, std::nullopt asks the system again.
void setDocumentsFolderOverride(std::optional<QString> folder);
void setListSeparatorOverride(std::optional<QChar> separator);

} // namespace platform
