#pragma once
// The frame every analysis form shares, built from its ReportDesc: the
// parameter strip (bold title, editors, "Cauta"), the style button at the top
// right, the grid cxGrid1 with its table view cxGrid1DBTableView1 filling the
// form, the export buttons at the bottom left, the optional one-panel status
// bar StatusBar1, the save dialog SaveDialog1 (the file-dialog service) and
// the grid's popup menu.
//
// A report unit subclasses it only to hand over its description and for what
// is truly its own (a picker behind an editor's button, a custom run step).
//
// Handlers that throw (Cauta, exportKind, ...) are what tests call
// directly; the buttons run them under the default error report.

#include "analyses/u_reportdesc.h"

#include "db/u_query.h"
#include "grid/u_gridmodel.h"
#include "paper/u_gridpaper.h"
#include "session/u_formsession.h"

#include <QPointer>
#include <QWidget>

class QBoxLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;
class QVBoxLayout;

namespace ui {
class DateEdit;
class ButtonEdit;
class Grid;
class GridTableView;
}

class TReportForm : public QWidget {
    Q_OBJECT
public:
    // Throws std::logic_error naming the report and the fault when the
    // description does not validate.
    TReportForm(rep::ReportDesc desc, FormSession &session, QWidget *parent = nullptr);
    ~TReportForm() override;

    const rep::ReportDesc &desc() const { return m_desc; }
    FormSession &session() const { return m_session; }

    // ----- components (also found by objectName)
    QLabel *titleLabel() const { return m_title; }
    QWidget *editor(const QString &objectName) const;        // nullptr when absent
    ui::DateEdit *dateEdit(const QString &objectName) const;
    ui::ButtonEdit *buttonEdit(const QString &objectName) const;
    // Text of a text or button editor (trimmed of nothing: as typed).
    QString editorText(const QString &objectName) const;
    QDate editorDate(const QString &objectName) const;       // null when empty
    QPushButton *runButton() const { return m_run; }
    QPushButton *styleButton() const { return m_style; }     // nullptr without a style key
    QPushButton *exportButton(rep::ExportKind kind) const;   // nullptr when the form has none
    db::Query *query() const { return m_query; }              // objectName desc().queryName
    db::Query *ownDataList() const { return m_ownDataList; }  // nullptr unless the form has one
    ui::Grid *grid() const { return m_grid; }                 // "cxGrid1"
    ui::GridTableView *gridView() const { return m_gridView; } // "cxGrid1DBTableView1"
    grid::GridModel *gridModel() const { return m_model; }      // the grid's model (rows, sums, layout)
    QStatusBar *statusBar() const { return m_statusBar; }     // "StatusBar1" or nullptr
    QString statusText() const;                                // "" without a status bar
    void setStatusText(const QString &text);

    // ----- run ("Cauta"): the description's steps in order. A long run shows
    // its progress and can be stopped ("Renunta"): the grid is then empty and
    // the status bar (or a box, without one) says so.
    void Cauta();
    db::Query &periodRow(rep::PeriodSource source) const;
    static QString cancelledText() { return QStringLiteral("Cautarea a fost anulata."); }

    // ----- exports; nothing happens when the dialog is cancelled. A long
    // export shows its progress; stopped, it leaves no file.
    void exportKind(rep::ExportKind kind);
    // caleDocumente + the export's file name (backslash rule of platform::documentsFile).
    QString proposedFileName(const QString &fileName) const;

    // ----- on paper (the grid's header menu and Ctrl+P): every page's header
    // holds the title label, the parameters as the editors show them, the
    // issuer and the time it was asked.
    paper::PageHeader pageHeader() const;

    // ----- style button: the session's style manager, retargeted to this grid.
    void styleButtonClick();

    // All the query's data before any run: the query is closed and there is nothing to move.
    static QString notRunText() { return QStringLiteral("Apasati intai Cauta!"); }

protected:
    // A step of kind Custom.
    virtual void runCustomStep(const QString &name);
    // Each time the form is shown / closed (hidden). The default applies the
    // editors' DateOnShow values.
    virtual void FormShow();
    virtual void FormClose();

    void showEvent(QShowEvent *e) override;
    void closeEvent(QCloseEvent *e) override;

private:
    class FormRunHost;
    void buildForm();
    void buildParamStrip(QVBoxLayout *outer);
    void addEditors(QWidget *editorHost, QHBoxLayout *strip);
    void buildGrid();
    void addExportButtons(QBoxLayout *into);
    void wireEditor(const rep::EditorDesc &e, QWidget *w);
    void doExport(const rep::ExportDesc &e);

    rep::ReportDesc m_desc;
    FormSession &m_session;
    QLabel *m_title = nullptr;
    QPushButton *m_run = nullptr;
    QPushButton *m_style = nullptr;
    QList<QPushButton *> m_exports;
    QList<QWidget *> m_editors;
    db::Query *m_query = nullptr;
    db::Query *m_ownDataList = nullptr;
    ui::Grid *m_grid = nullptr;
    ui::GridTableView *m_gridView = nullptr;
    grid::GridModel *m_model = nullptr;
    QStatusBar *m_statusBar = nullptr;
};
