// The :name parameter parser: any text gives back a text with $1..$n for the
// names found, each name a well-formed identifier, none found twice.
#include "db/u_query.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString sql = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    QStringList names;
    const QByteArray out = db::Query::translateParams(sql, &names);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QString &n = names[i];
        if (n.isEmpty() || !(n[0].isLetter() || n[0] == u'_'))
            std::abort();
        for (qsizetype j = 0; j < i; ++j)
            if (names[j].compare(n, Qt::CaseInsensitive) == 0)
                std::abort();
    }
    // A text without parameters travels as written.
    if (names.isEmpty() && out != sql.toUtf8())
        std::abort();
    return 0;
}
