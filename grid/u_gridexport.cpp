#include "grid/u_gridexport.h"

#include "db/u_busy.h"
#include "db/u_error.h"
#include "grid/u_gridexport_p.h"

#include <QDir>
#include <QSaveFile>

namespace grid {

[[noreturn]] void writeFailed(const QString &path, const QString &why)
{
    throw QuarvError(QStringLiteral("Fisierul %1 nu poate fi scris: %2").arg(QDir::toNativeSeparators(path), why));
}

void commitAside(QSaveFile &file, const QString &path)
{
    bool ok = false;
    db::busy::aside([&] { ok = file.commit(); });
    if (!ok)
        writeFailed(path, file.errorString());
}

namespace {

// ---------------------------------------------------------------- text variants

class TextSink {
public:
    TextSink(const QString &path, QByteArray sep, bool quoteAll)
        : m_file(path), m_path(path), m_sep(std::move(sep)), m_quoteAll(quoteAll)
    {
        if (!m_file.open(QIODevice::WriteOnly))
            writeFailed(path, m_file.errorString());
        m_buf.reserve(kFlushAt + 4096);
        m_buf += "\xEF\xBB\xBF";
    }

    void beginField()
    {
        if (!m_first)
            m_buf += m_sep;
        m_first = false;
        m_start = m_buf.size();
    }
    QByteArray &buffer() { return m_buf; }
    void endField()
    {
        const char *p = m_buf.constData() + m_start;
        const qsizetype len = m_buf.size() - m_start;
        bool quote = m_quoteAll;
        if (!quote && len > 0) {
            if (p[0] == ' ' || p[len - 1] == ' ')
                quote = true;
            const char s0 = m_sep.size() == 1 ? m_sep[0] : '\0';
            for (qsizetype i = 0; i < len && !quote; ++i) {
                const char c = p[i];
                if (c == '"' || c == '\n' || c == '\r' || c == s0)
                    quote = true;
            }
            if (!quote && m_sep.size() > 1 && QByteArrayView(p, len).indexOf(QByteArrayView(m_sep)) >= 0)
                quote = true;
        }
        if (!quote)
            return;
        QByteArray cell = m_buf.mid(m_start);
        m_buf.truncate(m_start);
        m_buf += '"';
        m_buf += cell.replace("\"", "\"\"");
        m_buf += '"';
    }
    void field(const QString &text)
    {
        beginField();
        m_buf += text.toUtf8();
        endField();
    }
    void endLine()
    {
        m_buf += "\r\n";
        m_first = true;
        if (m_buf.size() >= kFlushAt)
            flush();
    }
    void flush()
    {
        if (m_file.write(m_buf) != m_buf.size())
            writeFailed(m_path, m_file.errorString());
        m_buf.clear();
    }
    void commit()
    {
        flush();
        commitAside(m_file, m_path);
    }

private:
    QSaveFile m_file;
    QString m_path;
    QByteArray m_sep;
    bool m_quoteAll;
    QByteArray m_buf;
    qsizetype m_start = 0;
    bool m_first = true;
};

void exportText(const GridModel &model, const QString &path, const QByteArray &sep, bool quoteAll)
{
    const ExportSource src(model);
    db::busy::Stretch stretch(db::busy::Phase::Writing, true, qsizetype(src.d.records.size()));
    TextSink out(path, sep, quoteAll);
    const int nc = int(src.cols.size());
    for (int i = 0; i < nc; ++i)
        out.field(src.col(i).c.headerText());
    out.endLine();
    forEachExportRow(src.d, src.groupFooters, [&](RowKind kind, qint32 idx) {
        switch (kind) {
        case RowKind::Data: {
            const qint32 row = src.d.records[size_t(idx)];
            for (int i = 0; i < nc; ++i) {
                out.beginField();
                src.d.appendUtf8(out.buffer(), row, src.col(i));
                out.endField();
            }
            db::busy::beat(idx + 1);
            break;
        }
        case RowKind::Group:
            for (int i = 0; i < nc; ++i)
                out.field(i == 0 ? src.groupText(idx) : QString());
            break;
        case RowKind::GroupFooter:
            for (int i = 0; i < nc; ++i)
                out.field(src.summaryCell(i, idx));
            break;
        }
        out.endLine();
    });
    if (src.footer) {
        for (int i = 0; i < nc; ++i)
            out.field(src.summaryCell(i, -1));
        out.endLine();
    }
    out.commit();
}

} // namespace

void exportGridCsv(const GridModel &model, const QString &path, QChar separator)
{
    exportText(model, path, QString(separator).toUtf8(), false);
}

void exportGridText(const GridModel &model, const QString &path)
{
    exportText(model, path, QByteArray("\t"), true);
}

} // namespace grid
