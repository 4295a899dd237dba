#pragma once
// The session data module: the one connection every form's queries are bound
// to, the session values (the signed-in issuer, the Documents folder), the
// login and period queries, and the grid style repositories.

#include "db/u_connection.h"
#include "db/u_query.h"
#include "session/u_formsession.h"
#include "ui/u_gridstylesheet.h"

#include <QObject>
#include <QString>

#include <functional>

class TdmQuarv : public QObject, public FormSession {
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

    // What the windows see of it.
    db::Connection *connection() const override { return pgConn; }
    db::Query *periodRow() const override { return dsDataList; }
    QString issuer() const override { return emitent; }
    QString documentsFolder() const override { return caleDocumente; }
    const ui::GridStyleSheet &reportSheet() const override { return GridTableViewStyleSheetReport(); }
    const ui::GridStyleSheet &listSheet() const override { return StandardQUARV(); }
    // Runs styleManager; without one the style buttons do nothing.
    void showStyleManager(const QString &styleKey, grid::GridModel *target) override;
    // Set by whoever creates the style manager.
    std::function<void(const QString &styleKey, grid::GridModel *target)> styleManager;

private:
    void buildStyles();
};
