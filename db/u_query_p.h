#pragma once
// What db::Query's reading and its editing of the update table share: where
// each field comes from, the table's columns and key, the deferred blobs.

#include "db/u_query.h"

#include <QString>
#include <QtGlobal>

#include <vector>

namespace db {

struct Query::Private {
    // Where each field comes from (PQftable / PQftablecol), by field.
    std::vector<unsigned> srcTable;
    std::vector<int> srcColumn;
    // The update table, resolved from the catalog on first need.
    bool metaReady = false;
    bool mapped = false;          // colName and keyFields fit the current fields
    unsigned tableOid = 0;
    QString tableName;            // as the server quotes it
    std::vector<QString> colName; // quoted table column per field; empty when not of the table
    std::vector<int> keyFields;   // the primary key's fields; empty without a (complete) key
    // Deferred blobs: per field, 1 for rows whose value has been read (empty
    // for fields that are not deferred).
    std::vector<std::vector<quint8>> loaded;

    bool isDeferredField(int f) const { return size_t(f) < loaded.size() && !loaded[size_t(f)].empty(); }
};

} // namespace db
