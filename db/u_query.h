#pragma once
// A query on the session connection. The SQL text travels exactly as written;
// :name parameters (outside comments, literals, quoted identifiers and ::
// casts) are bound as values, never spliced into the text. Rows arrive into
// typed columns as they stream from the server.
//
// With an update table the query becomes an editable dataset over that one
// table: a posted edit or delete touches exactly the row that was read (by the
// table's primary key when it has one, else by all of the row's original
// values) and fails with a clear error when that matches no row or several.

#include "db/u_connection.h"
#include "db/u_dataset.h"
#include "db/u_pgvalue.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace db {

class Query : public DataSet {
    Q_OBJECT
public:
    explicit Query(QObject *parent = nullptr);
    ~Query() override;

    void setConnection(Connection *c) { m_connection = c; }
    Connection *connection() const { return m_connection; }

    void setSql(const QString &sql);
    const QString &sql() const { return m_sql; }
    const QStringList &paramNames() const { return m_paramNames; }

    // Values: QString, QDate, QDateTime, double, int, qlonglong, bool,
    // QByteArray; an invalid QVariant binds NULL. Unknown names throw.
    void setParam(const QString &name, const QVariant &value);
    QVariant param(const QString &name) const;

    // Called with the rows fetched so far, every 65,536 rows of a fetch, and
    // with 0 when a dropped link makes the statement run again.
    void setFetchProgress(std::function<void(qsizetype)> progress) { m_progress = std::move(progress); }

    // Makes the dataset editable over one table.
    void setUpdateTable(const QString &table);
    const QString &updateTable() const { return m_updateTable; }
    // bytea columns are not kept by the fetch; a value is read by key when touched.
    void setDeferredBlobs(bool on) { m_deferredBlobs = on; }

    void open() override;
    void close() override;
    void refresh() override;

    // Splits :name parameters out of SQL; returns the text with $1..$n in their
    // place (the same name maps to the same number) and the names in order.
    static QByteArray translateParams(const QString &sql, QStringList *names);

protected:
    void applyPost(qsizetype row, const QVariantList &oldValues, const QVariantList &newValues) override;
    void applyDelete(qsizetype row, const QVariantList &oldValues) override;
    QVariant loadDeferred(qsizetype row, int field) const override;
    bool isDeferred(qsizetype row, int field) const override;

private:
    // Reading the statement's rows (u_query.cpp).
    Connection &conn() const;
    void fetch();
    void buildFields(const PGresult *r);
    // Editing over the update table (u_queryedit.cpp).
    pg::ResultPtr execParams(const QString &sql, const std::vector<pg::Param> &params) const;
    pg::ResultPtr execOneRow(const QString &sql, const std::vector<pg::Param> &params);
    void ensureMeta() const;
    void mapFields() const;
    QString whereClause(const QVariantList &values, std::vector<pg::Param> *params) const;
    QString returningList() const;

    struct Private;
    std::unique_ptr<Private> d;
    Connection *m_connection = nullptr;
    QString m_sql;
    QStringList m_paramNames;
    QVariantList m_params; // one per name
    QString m_updateTable;
    bool m_deferredBlobs = false;
    std::function<void(qsizetype)> m_progress;
};

} // namespace db
