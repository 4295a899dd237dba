#include "analyses/u_stylestore.h"

#include "db/u_query.h"

namespace rep {

QString gridStyleSql()
{
    return QStringLiteral("select grid_name,\n"
                          "       style_name,\n"
                          "       data_creare,\n"
                          "       emitent,\n"
                          "       grid_style_string,\n"
                          "       discontinued,\n"
                          "       grid_style_bytea,\n"
                          "       grid_Style_lo\n"
                          "from grid_style \n"
                          "where grid_name = :pGrid \n"
                          "order by style_name\n"
                          ";");
}

QList<SavedStyle> savedStyles(db::Connection &conn, const QString &styleKey)
{
    db::Query q;
    q.setConnection(&conn);
    q.setSql(gridStyleSql());
    q.setParam(QStringLiteral("pGrid"), styleKey);
    q.open();
    const int name = q.fieldIndex(QStringLiteral("style_name")), issuer = q.fieldIndex(QStringLiteral("emitent")),
              created = q.fieldIndex(QStringLiteral("data_creare")),
              inactive = q.fieldIndex(QStringLiteral("discontinued")),
              layout = q.fieldIndex(QStringLiteral("grid_style_bytea"));
    QList<SavedStyle> out;
    for (qsizetype r = 0; r < q.rowCount(); ++r)
        out << SavedStyle{q.value(r, name).toString(), q.value(r, issuer).toString(), q.value(r, created).toDate(),
                          q.value(r, inactive).toBool(), q.value(r, layout).toByteArray()};
    q.close();
    return out;
}

} // namespace rep
