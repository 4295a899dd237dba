#include "analyses/u_signin.h"

#include "db/u_error.h"

namespace rep {

QString databaseUser() { return QStringLiteral("quarv"); }
QString databasePassword() { return QStringLiteral("kadrim"); }

QString issuerCheckSql()
{
    return QStringLiteral("select *\n"
                          "from emitent\n"
                          "where emitent = :pEmitent\n"
                          "  and operator_parola  = :pParola\n"
                          ";");
}

void checkIssuer(db::Query &check, const QString &issuer, const QString &password)
{
    check.setParam(QStringLiteral("pEmitent"), issuer);
    check.setParam(QStringLiteral("pParola"), password);
    check.open();
    const bool accepted = check.rowCount() == 1;
    check.close();
    if (!accepted)
        throw QuarvError(QStringLiteral("Eroare la conectare"));
}

} // namespace rep
