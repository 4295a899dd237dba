#pragma once
// Owners of the client library's handles (a connection, a result, a cancel
// request) and one bound parameter. Every handle of db/ lives in one of these;
// nothing else frees them. Internal to db/ (and the benchmarks).

#include <QByteArray>

#include <memory>

struct pg_conn;
typedef struct pg_conn PGconn;
struct pg_result;
typedef struct pg_result PGresult;
struct pg_cancel;
typedef struct pg_cancel PGcancel;

namespace db::pg {

struct ConnCloser { void operator()(PGconn *c) const noexcept; };
using ConnPtr = std::unique_ptr<PGconn, ConnCloser>;
struct ResultDeleter { void operator()(PGresult *r) const noexcept; };
using ResultPtr = std::unique_ptr<PGresult, ResultDeleter>;
struct CancelDeleter { void operator()(PGcancel *c) const noexcept; };
using CancelPtr = std::unique_ptr<PGcancel, CancelDeleter>;

// One bound parameter: its text (or raw bytes when binary), null when isNull.
struct Param {
    QByteArray data;
    bool isNull = true;
    bool binary = false;
    unsigned typeOid = 0;
};

} // namespace db::pg
