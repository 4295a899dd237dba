#include "db/u_query.h"

#include "db/u_busy.h"
#include "db/u_pgvalue.h"
#include "db/u_query_p.h"

#include <libpq-fe.h>

namespace db {

using pg::ResultPtr;

Query::Query(QObject *parent) : DataSet(parent), d(std::make_unique<Private>()) {}

Query::~Query() = default;

Connection &Query::conn() const
{
    if (!m_connection)
        throw QuarvError(QStringLiteral("Interogarea nu are o conexiune la baza de date"));
    m_connection->ensureOpen();
    return *m_connection;
}

void Query::open()
{
    if (isActive())
        return;
    fetch();
    setActiveState(true);
    emit rowsReset();
    setCurrentRow(0);
}

void Query::close()
{
    DataSet::close();
    d->loaded.clear();
}

void Query::refresh()
{
    if (!isActive()) {
        open();
        return;
    }
    if (isEditing())
        post();
    const qsizetype keep = currentRow();
    try {
        fetch();
    } catch (...) {
        close();
        throw;
    }
    emit rowsReset();
    placeCursor(-1);
    setCurrentRow(qMax<qsizetype>(keep, 0));
}

void Query::fetch()
{
    if (m_sql.trimmed().isEmpty())
        throw QuarvError(QStringLiteral("Interogarea nu are text SQL"));
    Connection &c = conn();
    const QByteArray text = translateParams(m_sql, nullptr);
    std::vector<pg::Param> params;
    for (qsizetype k = 0; k < m_params.size(); ++k)
        params.push_back(pg::encode(m_params[k], QStringLiteral("Parametrul '%1'").arg(m_paramNames.value(k))));

    auto forgetRows = [this] {
        setFields({});
        setRowCount(0);
        d->loaded.clear();
    };
    // A fetch may be stopped; a watcher sees the rows so far.
    busy::Stretch stretch(busy::Phase::Fetching, true);
    c.recovering([&](int attempt) {
        // A re-run starts from no rows: whoever follows the progress starts anew too.
        if (attempt > 0 && m_progress)
            m_progress(0);
        busy::beat(0);
        // Old rows go first: a large result should not live twice.
        forgetRows();
        // While windows are served during the fetch, a grid over the old rows
        // must not read them any longer.
        if (isActive() && busy::watched())
            emit rowsReset();
        c.send(text, params, Connection::Send::Rows);
        std::unique_ptr<QuarvError> error;
        bool haveFields = false;
        qsizetype rows = 0;
        std::vector<Column> *cols = nullptr;
        try {
            // Each row's result is freed as soon as it is converted.
            while (const ResultPtr r = c.nextResult()) {
                const ExecStatusType st = PQresultStatus(r.get());
                if (st == PGRES_SINGLE_TUPLE || st == PGRES_TUPLES_OK) {
                    if (!haveFields && !error) {
                        buildFields(r.get());
                        cols = &mutableColumns();
                        haveFields = true;
                    }
                    if (st == PGRES_SINGLE_TUPLE && !error) {
                        const int nf = int(cols->size());
                        for (int f = 0; f < nf; ++f) {
                            Column &col = (*cols)[size_t(f)];
                            if (PQgetisnull(r.get(), 0, f) || d->isDeferredField(f))
                                col.appendNull();
                            else
                                pg::appendText(col, PQgetvalue(r.get(), 0, f), PQgetlength(r.get(), 0, f));
                        }
                        ++rows;
                        if (m_progress && (rows & 0xFFFF) == 0)
                            m_progress(rows);
                        busy::beat(rows);
                    }
                } else if (st != PGRES_COMMAND_OK && st != PGRES_EMPTY_QUERY && !error) {
                    error = std::make_unique<QuarvError>(c.resultError(r.get()));
                }
            }
        } catch (...) {
            // Out of memory, say: stop the server and leave the link idle.
            c.abandonStatement();
            forgetRows();
            throw;
        }
        if (error) {
            forgetRows();
            throw *error;
        }
        setRowCount(rows);
        for (auto &l : d->loaded)
            if (!l.empty())
                l.assign(size_t(rows) + 1, 0);
    });
}

void Query::buildFields(const PGresult *r)
{
    const int nf = PQnfields(r);
    std::vector<FieldDef> defs;
    defs.reserve(size_t(nf));
    d->srcTable.assign(size_t(nf), 0);
    d->srcColumn.assign(size_t(nf), 0);
    d->loaded.assign(size_t(nf), {});
    for (int f = 0; f < nf; ++f) {
        FieldDef def;
        def.name = QString::fromUtf8(PQfname(r, f));
        def.pgType = PQftype(r, f);
        def.type = pg::fieldTypeFor(def.pgType, PQfmod(r, f), &def.size);
        d->srcTable[size_t(f)] = PQftable(r, f);
        d->srcColumn[size_t(f)] = PQftablecol(r, f);
        // A blob of a table column can be read back by the row's key later.
        if (m_deferredBlobs && !m_updateTable.isEmpty() && def.type == FieldType::Bytes && d->srcTable[size_t(f)] != 0)
            d->loaded[size_t(f)].assign(1, 0);
        defs.push_back(def);
    }
    setFields(std::move(defs));
    d->mapped = false;
}

} // namespace db
