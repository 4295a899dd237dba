#include "analyses/u_platform.h"

#include <QDir>
#include <QLocale>
#include <QStandardPaths>

#include <cstdio>
#include <iostream>
#include <string>

#ifdef Q_OS_WIN
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <io.h>
#  include <windows.h>
#  include <shlobj.h>
#  define QUARV_ISATTY _isatty
#  define QUARV_FILENO _fileno
#else
#  include <termios.h>
#  include <unistd.h>
#  define QUARV_ISATTY isatty
#  define QUARV_FILENO fileno
#endif

namespace platform {

namespace {
std::optional<QString> g_documents;
std::optional<QChar> g_separator;

QString withoutTrailingSeparator(QString path)
{
    while (path.size() > 1 && (path.endsWith(QLatin1Char('/')) || path.endsWith(QLatin1Char('\\'))))
        path.chop(1);
    return path;
}
} // namespace

QString documentsFolder()
{
    if (g_documents)
        return *g_documents;
#ifdef Q_OS_WIN
    wchar_t buf[MAX_PATH] = {};
    // Without CSIDL_FLAG_CREATE: the folder is looked up, never created.
    if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, buf)))
        return withoutTrailingSeparator(QString::fromWCharArray(buf));
    return QString();
#else
    // writableLocation only names the folder; it does not create it.
    const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (path.isEmpty())
        return QString();
    return withoutTrailingSeparator(QDir::toNativeSeparators(path));
#endif
}

QString documentsFile(const QString &folder, const QString &nameWithBackslash)
{
    QString name = nameWithBackslash;
#ifndef Q_OS_WIN
    // The forms name their files with a Windows separator; here it is the path separator.
    if (name.startsWith(QLatin1Char('\\')))
        name[0] = QLatin1Char('/');
#endif
    return folder + name;
}

QChar listSeparator()
{
    if (g_separator)
        return *g_separator;
#ifdef Q_OS_WIN
    wchar_t buf[8] = {};
    if (GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SLIST, buf, int(sizeof buf / sizeof buf[0])) > 1
        && buf[0] != 0)
        return QChar(char16_t(buf[0]));
    return QLatin1Char(',');
#else
    // No list separator setting here: locales that write 1,5 separate lists with ';'.
    const QString decimal = QLocale::system().decimalPoint();
    return decimal == QLatin1String(",") ? QLatin1Char(';') : QLatin1Char(',');
#endif
}

void setDocumentsFolderOverride(std::optional<QString> folder)
{
    g_documents = std::move(folder);
}

void setListSeparatorOverride(std::optional<QChar> separator)
{
    g_separator = separator;
}

bool stdinIsTerminal()
{
    return QUARV_ISATTY(QUARV_FILENO(stdin)) != 0;
}

bool stderrIsTerminal()
{
    return QUARV_ISATTY(QUARV_FILENO(stderr)) != 0;
}

std::optional<QString> readLineUnechoed()
{
#ifdef Q_OS_WIN
    HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
    DWORD mode = 0;
    const bool hide = GetConsoleMode(in, &mode) != 0;
    if (hide)
        SetConsoleMode(in, mode & ~DWORD(ENABLE_ECHO_INPUT));
#else
    termios saved{};
    const bool hide = stdinIsTerminal() && tcgetattr(STDIN_FILENO, &saved) == 0;
    if (hide) {
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
#endif
    std::string line;
    const bool got = bool(std::getline(std::cin, line));
#ifdef Q_OS_WIN
    if (hide)
        SetConsoleMode(in, mode);
#else
    if (hide)
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
#endif
    if (hide)
        std::fputc('\n', stderr);
    if (!got)
        return std::nullopt;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return QString::fromStdString(line);
}

} // namespace platform
