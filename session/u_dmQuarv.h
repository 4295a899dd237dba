#pragma once
// The session data module: the one connection every form's queries are bound
// to, the session values (the signed-in issuer, the Documents folder), the
// login and period queries, and the grid style repositories.

#include "db/u_connection.h"
#include "db/u_query.h"
#include "ui/u_gridstylesheet.h"

#include <QObject>
#include <QString>

class TdmQuarv : public QObject {
    Q_OBJECT
public:
    explicit TdmQuarv(QObject *parent = nullptr);
    ~TdmQuarv() override;

    // Components, in their design order.
    db::Connection *pgConn;
    ui::StyleRepository cxStyles{QStringLiteral("cxStyles")};
    ui::StyleRepository cxStyleRepositoryQUARV{QStringLiteral("cxStyleRepositoryQUARV")};
    db::Query *pgMenuQuarv;   // the issuer's menu tree; kept, never opened
    db::DataSet *dsMenuQuarv; // its data source
    db::Query *dsEmitent;     // the login check (opened and closed by the login only)
    db::Query *dsDataList;    // the session's period row, editable over data_list

    // Session values.
    QString emitent;       // issuer signed in; empty: nobody
    QString caleDocumente; // Documents folder without trailing separator; empty when unknown

    // The sheets the grids use.
    const ui::GridStyleSheet &GridTableViewStyleSheetReport() const;
    const ui::GridStyleSheet &cxGridTableViewStyleSheetAlbastru() const;
    const ui::GridStyleSheet &StandardQUARV() const;

private:
    void buildStyles();
};

extern TdmQuarv *dmQuarv;
