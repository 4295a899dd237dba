#pragma once
// The grid layouts saved in grid_style under a report's style key: the style
// manager's query, and a read-only look at them for programs without windows.

#include "db/u_connection.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

namespace rep {

// The style manager's query over grid_style, by :pGrid (the style key).
QString gridStyleSql();

struct SavedStyle {
    QString name;
    QString issuer;
    QDate created;
    bool inactive = false;
    QByteArray layout; // the grid's layout stream
};

// Every layout saved under the key, any issuer's, by name.
QList<SavedStyle> savedStyles(db::Connection &conn, const QString &styleKey);

} // namespace rep
