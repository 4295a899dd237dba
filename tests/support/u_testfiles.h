#pragma once
// Reading back what an export wrote: a text file without its byte-order
// mark, and an .xlsx unpacked through python3's zipfile.

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

inline QString readTextFile(const QString &path)
{
    QFile f(path);
    QString s = f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    if (s.startsWith(QChar(0xFEFF)))
        s.remove(0, 1);
    return s;
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
