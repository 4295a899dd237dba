#pragma once
// psql's \copy of a report's SQL text into a CSV file: the baseline the
// export benchmarks measure against, on the database of the QUARV_BENCH_*
// variables.

#include <QString>

namespace db {
class Connection;
}

namespace benchlib {

// QUARV_BENCH_<name>, or the fallback.
QString env(const char *name, const char *fallback);
// The connection's settings from QUARV_BENCH_HOST, _PORT, _DB, _USER and _PASSWORD.
void configure(db::Connection &c);
// psql of the installed PostgreSQL client; empty when there is none.
QString psqlProgram();
// The \copy command of `sql` (as it stands, line breaks included: psql -c
// hands the whole text to the one command) into `file`, as CSV with a header line.
QString copyCommand(const QString &sql, const QString &file);
// psql running `command`, from its start to its exit, in milliseconds.
double runPsql(const QString &program, const QString &command);

} // namespace benchlib
