#pragma once
// Reading back what an export wrote: a text file without its byte-order
// mark, its CRLF lines, and an .xlsx unpacked through python3's zipfile.

#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

inline QString readTextFile(const QString &path)
{
    QFile f(path);
    QString s = f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    if (s.startsWith(QChar(0xFEFF)))
        s.remove(0, 1);
    return s;
}

// The lines of a CRLF text file (the last line break ends the last line);
// *bom says whether it started with a UTF-8 byte-order mark.
inline QStringList readLines(const QString &path, bool *bom = nullptr)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QByteArray all = f.readAll();
    if (bom)
        *bom = all.startsWith("\xEF\xBB\xBF");
    if (all.startsWith("\xEF\xBB\xBF"))
        all.remove(0, 3);
    QStringList lines = QString::fromUtf8(all).split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

struct Unzipped {
    QTemporaryDir dir;
    explicit Unzipped(const QString &zip)
    {
        QProcess p;
        p.start(QStringLiteral("python3"),
                {QStringLiteral("-c"), QStringLiteral("import sys,zipfile;zipfile.ZipFile(sys.argv[1]).extractall(sys.argv[2])"),
                 zip, dir.path()});
        p.waitForFinished(120000);
    }
    QByteArray entry(const QString &name) const
    {
        QFile f(dir.filePath(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    QByteArray entry(const char *name) const { return entry(QString::fromLatin1(name)); }
};
