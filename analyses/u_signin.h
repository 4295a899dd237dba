#pragma once
// Signing in, as the desktop login and the command-line exporter both do it:
// the connection uses the one database account of the books; the operator's
// own identity is the issuer, checked with its password against emitent.

#include "db/u_query.h"

namespace rep {

QString databaseUser();
QString databasePassword();
// The issuer check: one row of emitent for :pEmitent and :pParola.
QString issuerCheckSql();

// Runs the check on `check` (a query with issuerCheckSql() on an open
// connection) and closes it again. Unknown issuer, wrong password and
// duplicate rows are refused alike: QuarvError("Eroare la conectare").
void checkIssuer(db::Query &check, const QString &issuer, const QString &password);

} // namespace rep
