#pragma once
// The grid style manager: named layouts of a report grid kept in grid_style
// under the grid's style key. One instance, retargeted by each report's style
// button through the session (showFor: styleKey and targetModel, then shown
// modelessly); the list is read
// when the dialog is shown and closed with it. Only the issuer who created a
// style may change or delete it; every style is restorable.

#include "db/u_query.h"
#include "grid/u_gridmodel.h"
#include "session/u_formsession.h"

#include <QDialog>
#include <QPointer>

class QButtonGroup;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QRadioButton;

namespace ui { class Grid; class GridNavigator; class GridTableView; }

class TfrmGridStyle : public QDialog {
    Q_OBJECT
public:
    explicit TfrmGridStyle(FormSession &session, QWidget *parent = nullptr);
    ~TfrmGridStyle() override;

    // Set by the caller before showing.
    QString styleKey;                  // grid_name listed and stamped on new rows
    QPointer<grid::GridModel> targetModel; // the report grid's model
    // Sets both, re-reads the list when it is open, shows and raises it.
    void showFor(const QString &key, grid::GridModel *target);

    // Components.
    db::Query *ds_style = nullptr;     // editable over grid_style, deferred blobs
    ui::Grid *cxGrid1 = nullptr;
    ui::GridTableView *cxGrid1DBTableView1 = nullptr; // the styles list
    grid::GridModel *stylesModel() const;                // the list grid's model
    ui::GridNavigator *navigator() const;              // Post hidden and disabled
    QLabel *lblGrid = nullptr;         // "Grid"
    QLabel *lblGridName = nullptr;     // the style key
    QGroupBox *rgFiltru = nullptr;     // " Filtru ": active / inactive / toate
    QPushButton *btnSalveaza = nullptr;
    QPushButton *btnRestaureaza = nullptr;

    static QString sql();              // ds_style's statement, verbatim
    // caleDocumente + "\grid.ini" (the backslash is the separator outside Windows).
    QString layoutFilePath() const;

    // Handlers (throwing; the buttons run them under the default error report).
    void FormShow();
    void FormClose();
    // Every way the dialog ends (its close box, Esc) runs FormClose.
    void done(int r) override;
    void btnSalveazaClick();
    void btnRestaureazaClick();
    int filterIndex() const;
    void setFilterIndex(int index);    // 0 active, 1 inactive, 2 toate (as a click)
    void rgFiltruClick();

protected:
    void showEvent(QShowEvent *e) override;

private:
    void createQuery();
    void createGrid();
    QHBoxLayout *createButtonRow();

    FormSession &m_session;
    QButtonGroup *m_filterGroup = nullptr;
    bool m_placed = false;
};
