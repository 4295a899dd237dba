// The connection-profile file: any bytes either load as a whole table or are
// refused with QuarvError, leaving the table closed and empty.
#include "db/u_memtable.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    db::MemTable t;
    t.setFieldDefs({{QStringLiteral("ip"), db::FieldType::String, 50},
                    {QStringLiteral("port"), db::FieldType::Int32},
                    {QStringLiteral("dataBase"), db::FieldType::String, 50},
                    {QStringLiteral("user"), db::FieldType::String, 50}});
    try {
        t.loadFromXml(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    } catch (const QuarvError &) {
        if (t.isActive() || t.rowCount() != 0)
            std::abort(); // half read
        return 0;
    }
    // Every value that loaded can be read back.
    for (qsizetype r = 0; r < t.rowCount(); ++r)
        for (int f = 0; f < t.fieldCount(); ++f)
            (void)t.value(r, f).toString();
    return 0;
}
