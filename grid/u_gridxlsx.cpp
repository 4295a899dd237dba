// The grid as a workbook (.xlsx): native cells with the columns' formats,
// groups as outline levels, built in a temporary file and put in place whole.

#include "grid/u_gridexport.h"

#include "db/u_busy.h"
#include "grid/u_gridexport_p.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <xlsxwriter.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace grid {

namespace {

constexpr qint64 kExcelEpochJulianDay = 2415019; // 1899-12-30, day 0 of spreadsheet dates


class XlsxWriter {
public:
    XlsxWriter(const ExportSource &src, const QString &path, const XlsxOptions &opt) : m_src(src), m_path(path), m_opt(opt)
    {
        const QFileInfo fi(path);
        m_tmp.setFileTemplate(fi.absoluteDir().filePath(QStringLiteral(".%1.XXXXXX.tmp").arg(fi.fileName())));
        if (!m_tmp.open())
            writeFailed(path, m_tmp.errorString());
        m_tmp.close();
        m_tmpName = QFile::encodeName(m_tmp.fileName());
        lxw_workbook_options o{};
        o.constant_memory = LXW_TRUE;
        o.use_zip64 = LXW_TRUE;
        m_wb = workbook_new_opt(m_tmpName.constData(), &o);
        if (!m_wb)
            writeFailed(path, QStringLiteral("nu se poate crea registrul"));
        m_bold = workbook_add_format(m_wb);
        format_set_bold(m_bold);
        m_levels = int(src.d.groupCols.size());
        for (int i = 0; i < src.cols.size(); ++i)
            m_colFormats.push_back(cellFormat(src.col(i), false));
        // A date-time with milliseconds shows them, as the grid does; whole seconds do not.
        m_msFormat = format(spreadsheetDateFormat(QStringLiteral("dd.MM.yyyy hh:mm:ss.zzz")), false);
    }
    ~XlsxWriter()
    {
        // Only after a failure or a stop: freed without packing what was
        // written (seconds for a large grid); the temporary file is dropped.
        if (m_wb)
            freeUnpacked(m_wb);
    }

    void run()
    {
        const int nc = int(m_src.cols.size());
        newSheet();
        forEachExportRow(m_src.d, m_src.groupFooters, [&](RowKind kind, qint32 idx) {
            switch (kind) {
            case RowKind::Data: {
                beginRow(m_levels);
                const qint32 row = m_src.d.records[size_t(idx)];
                for (int i = 0; i < nc; ++i)
                    writeCell(i, row);
                db::busy::beat(idx + 1);
                break;
            }
            case RowKind::Group: {
                const int level = m_src.d.nodes[size_t(idx)].level;
                beginRow(level);
                if (nc > 0)
                    writeString(0, m_src.groupText(idx).toUtf8(), m_bold);
                break;
            }
            case RowKind::GroupFooter:
                // At its group row's level: folding the group keeps its sums in sight.
                beginRow(m_src.d.nodes[size_t(idx)].level);
                writeSummaries(idx);
                break;
            }
        });
        if (m_src.footer) {
            beginRow(0);
            writeSummaries(-1);
        }
        lxw_workbook *wb = m_wb;
        m_wb = nullptr;
        const lxw_error err = closeWorkbook(wb);
        if (err != LXW_NO_ERROR)
            writeFailed(m_path, QString::fromUtf8(lxw_strerror(err)));
        // Copied into place through QSaveFile rather than renamed: the
        // workbook then gets the mode every other export gets (the temporary
        // file is readable by its owner only) and still appears whole or not at all.
        QFile built(m_tmp.fileName());
        if (!built.open(QIODevice::ReadOnly))
            writeFailed(m_path, built.errorString());
        QSaveFile out(m_path);
        if (!out.open(QIODevice::WriteOnly))
            writeFailed(m_path, out.errorString());
        QByteArray chunk;
        while (!(chunk = built.read(kFlushAt)).isEmpty()) {
            if (out.write(chunk) != chunk.size())
                writeFailed(m_path, out.errorString());
            db::busy::pulseNow();
        }
        if (built.error() != QFileDevice::NoError)
            writeFailed(m_path, built.errorString());
        commitAside(out, m_path);
    }

private:
    // Closing packs the whole workbook in one call of the library, seconds
    // for a large grid: watched, it runs on a thread of its own while the
    // windows are served. A stop asked meanwhile does not wait for it: the
    // thread is left to finish packing into the temporary file, which is
    // removed at once (the thread keeps writing to the removed file and
    // frees the workbook when it is done).
    lxw_error closeWorkbook(lxw_workbook *wb)
    {
        if (!db::busy::watched())
            return workbook_close(wb);
        struct Shared {
            std::atomic<bool> done{false};
            lxw_error err = LXW_NO_ERROR;
        };
        auto shared = std::make_shared<Shared>();
        std::thread packer([wb, shared] {
            shared->err = workbook_close(wb);
            shared->done.store(true);
        });
        try {
            while (!shared->done.load()) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                db::busy::tick();
            }
        } catch (...) {
            // Left only once it writes into the temporary file: removed
            // before the library opens it, the file would come back.
            const QString tmp = m_tmp.fileName();
            while (!shared->done.load() && QFileInfo(tmp).size() == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            packer.detach();
            throw;
        }
        packer.join();
        return shared->err;
    }

    // A workbook never packed: the library frees it without closing the
    // temporary files its worksheets write their rows to (hundreds of
    // megabytes for a large grid), so they are closed here.
    static void freeUnpacked(lxw_workbook *wb)
    {
        lxw_worksheet *ws = nullptr;
        STAILQ_FOREACH(ws, wb->worksheets, list_pointers)
        {
            if (ws->optimize_tmpfile) {
                std::fclose(ws->optimize_tmpfile);
                ws->optimize_tmpfile = nullptr;
            }
        }
        lxw_workbook_free(wb);
    }

    lxw_format *cellFormat(const ColState &cs, bool bold)
    {
        QByteArray fmt;
        if (cs.kind == ColumnKind::Date)
            fmt = spreadsheetDateFormat(cs.c.displayFormat.isEmpty() ? QStringLiteral("dd.MM.yyyy") : cs.c.displayFormat);
        else if (cs.kind == ColumnKind::DateTime)
            fmt = spreadsheetDateFormat(cs.c.displayFormat.isEmpty() ? QStringLiteral("dd.MM.yyyy hh:mm:ss")
                                                                     : cs.c.displayFormat);
        else if (cs.kind == ColumnKind::Number)
            fmt = cs.numFmt.spreadsheetFormat();
        return format(fmt, bold);
    }
    lxw_format *format(const QByteArray &numFmt, bool bold)
    {
        if (numFmt.isEmpty())
            return bold ? m_bold : nullptr;
        const QByteArray key = numFmt + (bold ? "\x01" : "");
        auto it = m_formats.find(key);
        if (it != m_formats.end())
            return it.value();
        lxw_format *f = workbook_add_format(m_wb);
        format_set_num_format(f, numFmt.constData());
        if (bold)
            format_set_bold(f);
        m_formats.insert(key, f);
        return f;
    }

    void newSheet()
    {
        ++m_sheetNo;
        const QByteArray name = "Sheet" + QByteArray::number(m_sheetNo);
        m_ws = workbook_add_worksheet(m_wb, name.constData());
        if (!m_ws)
            writeFailed(m_path, QStringLiteral("nu se poate adauga foaia %1").arg(m_sheetNo));
        for (int i = 0; i < m_src.cols.size(); ++i) {
            const double chars = std::max(1.0, (m_src.col(i).c.width - 5) / 7.0);
            worksheet_set_column(m_ws, lxw_col_t(i), lxw_col_t(i), chars, nullptr);
        }
        worksheet_freeze_panes(m_ws, 1, 0);
        worksheet_outline_settings(m_ws, LXW_TRUE, LXW_FALSE, LXW_FALSE, LXW_FALSE);
        m_row = 0;
        for (int i = 0; i < m_src.cols.size(); ++i)
            writeString(i, m_src.col(i).c.headerText().toUtf8(), m_bold);
        m_row = 1;
        m_rowOpen = false;
    }

    void beginRow(int level)
    {
        if (m_rowOpen)
            ++m_row;
        if (m_row >= lxw_row_t(std::max(2, m_opt.maxRowsPerSheet)))
            newSheet();
        m_rowOpen = true;
        level = std::min(level, 7);
        if (level > 0) {
            lxw_row_col_options o{};
            o.level = uint8_t(level);
            worksheet_set_row_opt(m_ws, m_row, LXW_DEF_ROW_HEIGHT, nullptr, &o);
        }
    }

    void writeString(int col, const QByteArray &utf8, lxw_format *f)
    {
        worksheet_write_string(m_ws, m_row, lxw_col_t(col), utf8.constData(), f);
    }

    void writeCell(int i, qint32 row)
    {
        const ColState &cs = m_src.col(i);
        if (cs.field < 0)
            return;
        const db::Column &c = m_src.d.column(cs.field);
        if (c.isNull(row))
            return;
        lxw_format *f = m_colFormats[size_t(i)];
        switch (cs.type) {
        case db::FieldType::String:
        case db::FieldType::Text: {
            const QByteArrayView b = c.bytes(row);
            m_scratch.assign(b.data(), size_t(b.size()));
            worksheet_write_string(m_ws, m_row, lxw_col_t(i), m_scratch.c_str(), f);
            return;
        }
        case db::FieldType::Float:
        case db::FieldType::Int32: worksheet_write_number(m_ws, m_row, lxw_col_t(i), c.asDouble(row), f); return;
        case db::FieldType::Int64: {
            // A spreadsheet number is a double: past 2^53 it would round, so
            // such an identifier is written as its exact digits.
            const qint64 v = c.asInt64(row);
            constexpr qint64 kExact = qint64(1) << 53;
            if (v > kExact || v < -kExact) {
                m_scratch = std::to_string(v);
                worksheet_write_string(m_ws, m_row, lxw_col_t(i), m_scratch.c_str(), f);
            } else {
                worksheet_write_number(m_ws, m_row, lxw_col_t(i), double(v), f);
            }
            return;
        }
        case db::FieldType::Date:
            worksheet_write_number(m_ws, m_row, lxw_col_t(i), double(c.asInt64(row) - kExcelEpochJulianDay), f);
            return;
        case db::FieldType::DateTime: {
            const qint64 ms = c.asInt64(row);
            if (ms % 1000 != 0 && cs.c.displayFormat.isEmpty())
                f = m_msFormat;
            worksheet_write_number(m_ws, m_row, lxw_col_t(i),
                                   double(kUnixEpochJulianDay - kExcelEpochJulianDay) + double(ms) / double(kMsPerDay), f);
            return;
        }
        case db::FieldType::Bool: worksheet_write_boolean(m_ws, m_row, lxw_col_t(i), c.asBool(row), f); return;
        case db::FieldType::Bytes: writeString(i, "(binar)", f); return;
        }
    }

    void writeSummaries(qint32 node)
    {
        for (int i = 0; i < m_src.cols.size(); ++i) {
            const auto list = m_src.summariesUnder(i, node);
            if (list.isEmpty())
                continue;
            const ColState &cs = m_src.col(i);
            if (list.size() == 1) {
                const GridSummary &s = *list[0].first;
                const QVariant &v = list[0].second;
                if (!v.isValid())
                    continue;
                const NumberFormat sf(s.format);
                switch (v.typeId()) {
                case QMetaType::Double:
                case QMetaType::LongLong: {
                    QByteArray nf = sf.spreadsheetFormat();
                    if (nf.isEmpty() && v.typeId() == QMetaType::Double && cs.kind == ColumnKind::Number)
                        nf = cs.numFmt.spreadsheetFormat();
                    worksheet_write_number(m_ws, m_row, lxw_col_t(i), v.toDouble(), format(nf, true));
                    continue;
                }
                case QMetaType::QDate:
                    worksheet_write_number(m_ws, m_row, lxw_col_t(i), double(v.toDate().toJulianDay() - kExcelEpochJulianDay),
                                           cellFormat(cs, true));
                    continue;
                default: break;
                }
            }
            const QString text = m_src.summaryCell(i, node);
            if (!text.isEmpty())
                writeString(i, text.toUtf8(), m_bold);
        }
    }

    const ExportSource &m_src;
    QString m_path;
    XlsxOptions m_opt;
    QTemporaryFile m_tmp;
    QByteArray m_tmpName;
    lxw_workbook *m_wb = nullptr;
    lxw_worksheet *m_ws = nullptr;
    lxw_format *m_bold = nullptr;
    std::vector<lxw_format *> m_colFormats;
    lxw_format *m_msFormat = nullptr;
    QHash<QByteArray, lxw_format *> m_formats;
    std::string m_scratch;
    lxw_row_t m_row = 0;
    bool m_rowOpen = false;
    int m_sheetNo = 0;
    int m_levels = 0;
};

} // namespace

void exportGridXlsx(const GridModel &model, const QString &path, const XlsxOptions &options)
{
    const ExportSource src(model);
    db::busy::Stretch stretch(db::busy::Phase::Writing, true, qsizetype(src.d.records.size()));
    XlsxWriter w(src, path, options);
    w.run();
}

} // namespace grid
