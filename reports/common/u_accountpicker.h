#pragma once
// What both account pickers share: a modal dialog with a grid of a read-only
// query (filter row applied as the operator types, navigator, indicator, the
// report sheet, no footer) and one "OK" button.

#include "db/u_query.h"
#include "grid/u_gridmodel.h"
#include "session/u_formsession.h"

#include <QDialog>

class QPushButton;
namespace ui { class Grid; }

class TAccountPicker : public QDialog {
    Q_OBJECT
public:
    // Shows the picker modally (exec) and returns the dialog's result.
    int pick();
    // The field of the query's current row (a focused group row leaves it on
    // the record focused last), "" when the filter leaves no record.
    QString chosen(const QString &field) const;

    db::Query *pickerQuery() const { return m_query; }
    grid::GridModel *gridModel() const { return m_model; }
    ui::Grid *grid() const { return m_grid; }
    QPushButton *btnOK = nullptr;

    // What each showing does: open the query, or re-read it keeping the position.
    void FormShow();

protected:
    TAccountPicker(const QString &formName, const QString &queryName, const char *sql,
                   const QStringList &columns, FormSession &session, QWidget *parent);
    void showEvent(QShowEvent *e) override;

private:
    db::Query *m_query = nullptr;
    grid::GridModel *m_model = nullptr;
    ui::Grid *m_grid = nullptr;
};
