#pragma once
// What a window sees of the signed-in session: the connection its queries are
// bound to, the period row, who is signed in, where files go, the style
// sheets, and the one grid style manager. Windows get it when they are built;
// only the program's shell knows the session module behind it.

#include <QString>

namespace db { class Connection; class Query; }
namespace grid { class GridModel; }
namespace ui { class GridStyleSheet; }

class FormSession {
public:
    virtual ~FormSession() = default;

    virtual db::Connection *connection() const = 0;
    // The session's period row over data_list (written by a run, read by the views).
    virtual db::Query *periodRow() const = 0;
    // The issuer signed in; empty: nobody.
    virtual QString issuer() const = 0;
    // The Documents folder without a trailing separator; empty when unknown.
    virtual QString documentsFolder() const = 0;
    // The report grids' sheet and the style manager's own.
    virtual const ui::GridStyleSheet &reportSheet() const = 0;
    virtual const ui::GridStyleSheet &listSheet() const = 0;
    // Retargets the grid style manager to a report grid and shows it.
    virtual void showStyleManager(const QString &styleKey, grid::GridModel *target) = 0;
};
