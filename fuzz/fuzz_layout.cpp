// The grid layout stream: any bytes either restore a layout that the grid can
// show and that saves and restores to itself, or are refused with QuarvError
// leaving the layout as it was.
#include "db/u_memtable.h"
#include "grid/u_gridlayout.h"
#include "grid/u_gridmodel.h"

#include <QDate>

#include <cstdint>
#include <cstdlib>

namespace {

db::MemTable &rows()
{
    static db::MemTable *t = [] {
        auto *m = new db::MemTable;
        m->setFieldDefs({{QStringLiteral("cont"), db::FieldType::String, 20},
                         {QStringLiteral("explicatie"), db::FieldType::Text},
                         {QStringLiteral("suma"), db::FieldType::Float},
                         {QStringLiteral("nr"), db::FieldType::Int32},
                         {QStringLiteral("data"), db::FieldType::Date},
                         {QStringLiteral("moment"), db::FieldType::DateTime},
                         {QStringLiteral("bifat"), db::FieldType::Bool}});
        m->open();
        const char *texts[] = {"Țuică", "șold", "ŞOLD", "", "4111", "a b"};
        for (int i = 0; i < 40; ++i)
            m->appendRow({QString(QString::fromUtf8(texts[i % 6]) + QString::number(i % 7)), QString::fromUtf8(texts[(i + 2) % 6]),
                          i % 5 == 0 ? QVariant() : QVariant((i - 20) * 1234.5), i % 9, QDate(2026, 1 + i % 12, 1 + i % 28),
                          QDateTime(QDate(2025, 3, 30), QTime(i % 24, 0)), i % 3 == 0});
        return m;
    }();
    return *t;
}

void show(const grid::GridModel &m)
{
    for (qsizetype r = 0; r < m.rowCount(); ++r)
        for (int c = 0; c < m.columnCount(); ++c)
            (void)m.cellText(r, c);
    for (int s = 0; s < int(m.footerSummaries().size()); ++s)
        (void)m.footerText(s);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    grid::GridModel m;
    m.setDataSet(&rows());
    m.createDefaultColumns();
    const QByteArray before = grid::saveGridLayout(m);
    try {
        grid::restoreGridLayout(m, QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    } catch (const QuarvError &) {
        if (grid::saveGridLayout(m) != before)
            std::abort(); // half applied
        return 0;
    }
    show(m);
    const QByteArray saved = grid::saveGridLayout(m);
    grid::GridModel again;
    again.setDataSet(&rows());
    again.createDefaultColumns();
    grid::restoreGridLayout(again, saved); // what we wrote we read
    if (grid::saveGridLayout(again) != saved)
        std::abort();
    return 0;
}
