// db::Query over its update table: posting an edit or an insert, deleting,
// and reading deferred blobs back by the row's key.
#include "db/u_query.h"

#include "db/u_pgvalue.h"
#include "db/u_query_p.h"

#include <libpq-fe.h>

namespace db {

using pg::ResultPtr;

namespace {

const char *kChangedMeanwhile = "Inregistrarea a fost modificata sau stearsa de alt utilizator";

QString quoteIdent(const QString &name)
{
    QString q = name;
    q.replace(u'"', QStringLiteral("\"\""));
    return u'"' + q + u'"';
}

// Types whose values can be compared with "=" as they are; others are
// compared through their text.
bool comparable(unsigned oid)
{
    switch (oid) {
    case 16: case 18: case 19: case 20: case 21: case 23: case 25: case 26:
    case 700: case 701: case 1042: case 1043: case 1082: case 1114: case 1184: case 1700:
        return true;
    default:
        return false;
    }
}

bool sameValue(const QVariant &a, const QVariant &b)
{
    const bool na = !a.isValid() || a.isNull();
    const bool nb = !b.isValid() || b.isNull();
    if (na || nb)
        return na == nb;
    if (a.typeId() == b.typeId())
        return a == b;
    return a.toString() == b.toString();
}

} // namespace

void Query::setUpdateTable(const QString &table)
{
    if (table == m_updateTable)
        return;
    m_updateTable = table;
    d->metaReady = false;
}

bool Query::isDeferred(qsizetype row, int field) const
{
    return d->isDeferredField(field) && row >= 0 && size_t(row) < d->loaded[size_t(field)].size()
        && !d->loaded[size_t(field)][size_t(row)];
}

ResultPtr Query::execParams(const QString &sql, const std::vector<pg::Param> &params) const
{
    Connection &c = conn();
    const QByteArray text = sql.toUtf8();
    return c.recovering([&](int) { return c.exec(text, params); });
}

void Query::ensureMeta() const
{
    if (d->metaReady) {
        if (!d->mapped)
            mapFields();
        return;
    }
    if (m_updateTable.isEmpty())
        throw QuarvError(QStringLiteral("Setul de date nu poate fi modificat (nu are tabela de actualizare)"));
    pg::Param name;
    name.isNull = false;
    name.data = m_updateTable.toUtf8();
    ResultPtr t = execParams(QStringLiteral("select c.oid, c.oid::regclass::text from pg_class c where c.oid = $1::regclass"),
                             {name});
    d->tableOid = QByteArray(PQgetvalue(t.get(), 0, 0)).toUInt();
    d->tableName = QString::fromUtf8(PQgetvalue(t.get(), 0, 1));
    d->metaReady = true;
    mapFields();
}

void Query::mapFields() const
{
    pg::Param oid;
    oid.isNull = false;
    oid.data = QByteArray::number(d->tableOid);
    ResultPtr a = execParams(QStringLiteral("select a.attnum, a.attname, "
                                            "coalesce(a.attnum = any(i.indkey::int2[]), false) "
                                            "from pg_attribute a left join pg_index i "
                                            "on i.indrelid = a.attrelid and i.indisprimary "
                                            "where a.attrelid = $1::oid and a.attnum > 0 and not a.attisdropped"),
                             {oid});
    struct Att { int num; QString name; bool key; };
    std::vector<Att> atts;
    for (int i = 0; i < PQntuples(a.get()); ++i)
        atts.push_back({QByteArray(PQgetvalue(a.get(), i, 0)).toInt(), QString::fromUtf8(PQgetvalue(a.get(), i, 1)),
                        PQgetvalue(a.get(), i, 2)[0] == 't'});
    const int nf = fieldCount();
    d->mapped = true;
    d->colName.assign(size_t(nf), QString());
    d->keyFields.clear();
    int mapped = 0;
    for (int f = 0; f < nf; ++f)
        if (size_t(f) < d->srcTable.size() && d->srcTable[size_t(f)] == d->tableOid)
            for (const Att &att : atts)
                if (att.num == d->srcColumn[size_t(f)]) {
                    d->colName[size_t(f)] = quoteIdent(att.name);
                    ++mapped;
                }
    if (mapped == 0) {
        // Rows read through a view of the table: match the columns by name.
        for (int f = 0; f < nf; ++f)
            for (const Att &att : atts)
                if (att.name == fieldDef(f).name)
                    d->colName[size_t(f)] = quoteIdent(att.name);
    }
    int keyCols = 0;
    for (const Att &att : atts) {
        if (!att.key)
            continue;
        ++keyCols;
        for (int f = 0; f < nf; ++f)
            if (d->colName[size_t(f)] == quoteIdent(att.name)) {
                d->keyFields.push_back(f);
                break;
            }
    }
    if (keyCols == 0 || int(d->keyFields.size()) != keyCols)
        d->keyFields.clear();
}

QString Query::whereClause(const QVariantList &values, std::vector<pg::Param> *params) const
{
    QStringList terms;
    auto bind = [&](int f) -> QString {
        params->push_back(pg::encodeAs(values.value(f), fieldDef(f).type, QStringLiteral("Campul '%1'").arg(fieldDef(f).name)));
        return u'$' + QString::number(params->size());
    };
    if (!d->keyFields.empty()) {
        for (int f : d->keyFields)
            terms << d->colName[size_t(f)] + QStringLiteral(" = ") + bind(f);
    } else {
        for (int f = 0; f < fieldCount(); ++f) {
            const QString &col = d->colName[size_t(f)];
            const FieldDef &def = fieldDef(f);
            // Blobs and large-object ids are left out of the match.
            if (col.isEmpty() || def.type == FieldType::Bytes || def.pgType == 26)
                continue;
            if (!comparable(def.pgType)) {
                terms << col + QStringLiteral("::text is not distinct from ") + bind(f);
                params->back().typeOid = 25;
            } else if (def.type == FieldType::DateTime) {
                terms << QStringLiteral("date_trunc('milliseconds', ") + col + QStringLiteral(") is not distinct from ") + bind(f);
            } else {
                terms << col + QStringLiteral(" is not distinct from ") + bind(f);
            }
        }
    }
    if (terms.isEmpty())
        throw QuarvError(QStringLiteral("Inregistrarea nu poate fi identificata in tabela %1").arg(m_updateTable));
    return terms.join(QStringLiteral(" and "));
}

QString Query::returningList() const
{
    QStringList cols;
    for (int f = 0; f < fieldCount(); ++f)
        if (!d->colName[size_t(f)].isEmpty() && !d->isDeferredField(f))
            cols << d->colName[size_t(f)];
    return cols.isEmpty() ? QStringLiteral("1") : cols.join(QStringLiteral(", "));
}

ResultPtr Query::execOneRow(const QString &sql, const std::vector<pg::Param> &params)
{
    // The statement runs in a transaction of its own, so that a statement
    // that would touch several rows changes nothing; its outcome is known
    // even when the reply to COMMIT is lost.
    Connection &c = conn();
    const QByteArray text = sql.toUtf8();
    return c.recovering([&](int) {
        const qint64 txid = c.begin();
        ResultPtr r;
        try {
            r = c.exec(text, params);
        } catch (...) {
            c.rollbackQuietly();
            throw;
        }
        const int n = PQntuples(r.get());
        if (n != 1) {
            c.rollbackQuietly();
            if (n == 0)
                throw QuarvError(QString::fromUtf8(kChangedMeanwhile));
            throw QuarvError(QStringLiteral("Inregistrarea nu poate fi identificata in mod unic: "
                                            "comanda ar modifica %1 inregistrari; nu s-a modificat nimic")
                                 .arg(n));
        }
        c.commit(txid);
        return r;
    });
}

void Query::applyPost(qsizetype row, const QVariantList &oldValues, const QVariantList &newValues)
{
    ensureMeta();
    const bool inserting = oldValues.isEmpty();
    std::vector<pg::Param> params;
    QString sql;
    if (inserting) {
        QStringList cols, marks;
        for (int f = 0; f < fieldCount(); ++f) {
            const QVariant &v = newValues.value(f);
            if (d->colName[size_t(f)].isEmpty() || !v.isValid() || v.isNull())
                continue;
            params.push_back(pg::encodeAs(v, fieldDef(f).type, QStringLiteral("Campul '%1'").arg(fieldDef(f).name)));
            cols << d->colName[size_t(f)];
            marks << u'$' + QString::number(params.size());
        }
        sql = cols.isEmpty() ? QStringLiteral("insert into %1 default values").arg(d->tableName)
                             : QStringLiteral("insert into %1 (%2) values (%3)")
                                   .arg(d->tableName, cols.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    } else {
        QStringList sets;
        for (int f = 0; f < fieldCount(); ++f) {
            if (d->colName[size_t(f)].isEmpty() || sameValue(oldValues.value(f), newValues.value(f)))
                continue;
            params.push_back(pg::encodeAs(newValues.value(f), fieldDef(f).type, QStringLiteral("Campul '%1'").arg(fieldDef(f).name)));
            sets << d->colName[size_t(f)] + QStringLiteral(" = $") + QString::number(params.size());
        }
        if (sets.isEmpty())
            return; // nothing changed
        sql = QStringLiteral("update %1 set %2 where ").arg(d->tableName, sets.join(QStringLiteral(", ")));
        sql += whereClause(oldValues, &params);
    }
    sql += QStringLiteral(" returning ") + returningList();
    ResultPtr r = execOneRow(sql, params);

    // What the server stored (defaults, triggers) is what the row shows.
    QVariantList &buffer = editBuffer();
    int col = 0;
    for (int f = 0; f < fieldCount(); ++f) {
        if (d->colName[size_t(f)].isEmpty() || d->isDeferredField(f))
            continue;
        buffer[f] = PQgetisnull(r.get(), 0, col)
                      ? QVariant()
                      : pg::variantFromText(fieldDef(f).type, PQgetvalue(r.get(), 0, col), PQgetlength(r.get(), 0, col));
        ++col;
    }
    for (auto &l : d->loaded)
        if (!l.empty()) {
            if (size_t(row) >= l.size())
                l.resize(size_t(row) + 1, 0);
            l[size_t(row)] = 1;
        }
}

void Query::applyDelete(qsizetype row, const QVariantList &oldValues)
{
    ensureMeta();
    std::vector<pg::Param> params;
    QString sql = QStringLiteral("delete from %1 where ").arg(d->tableName);
    sql += whereClause(oldValues, &params);
    sql += QStringLiteral(" returning 1");
    execOneRow(sql, params);
    for (auto &l : d->loaded)
        if (!l.empty() && size_t(row) < l.size())
            l.erase(l.begin() + row);
}

QVariant Query::loadDeferred(qsizetype row, int field) const
{
    ensureMeta();
    if (d->colName[size_t(field)].isEmpty())
        return {};
    QVariantList values;
    for (int f = 0; f < fieldCount(); ++f)
        values.append(d->isDeferredField(f) ? QVariant() : column(f).value(row));
    std::vector<pg::Param> params;
    const QString sql = QStringLiteral("select %1 from %2 where %3")
                            .arg(d->colName[size_t(field)], d->tableName, whereClause(values, &params));
    ResultPtr r = execParams(sql, params);
    if (PQntuples(r.get()) != 1)
        return {}; // the row is gone (or no longer single): nothing to show
    QVariant v;
    if (!PQgetisnull(r.get(), 0, 0))
        v = pg::variantFromText(fieldDef(field).type, PQgetvalue(r.get(), 0, 0), PQgetlength(r.get(), 0, 0));
    auto *self = const_cast<Query *>(this);
    self->mutableColumn(field).set(row, v);
    d->loaded[size_t(field)][size_t(row)] = 1;
    return v;
}

} // namespace db
