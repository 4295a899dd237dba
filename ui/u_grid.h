#pragma once
// The data grid's widgets: a container (Grid) holding one table view
// (GridTableView) and its record navigator (GridNavigator, u_gridnavigator.h).
//
// The table view paints what its GridModel (grid/) says: the group-by box,
// the header, the filter row, the rows (data, group and group footer rows),
// the footer with the grand summaries. Rows are painted by the view itself,
// only those on screen, all of one height; no widget per row. The strips
// above and below the rows are children of the view kept aligned with the
// columns on scroll and resize.
//
// The display is read-only except for columns marked editable: a text column
// edits in place (F2, Enter, a typed character or a double click), a boolean
// column toggles its check box (click or Space). Changes go to the dataset's
// edit buffer through DataSet::setFieldValue and are posted when the focus
// leaves the row.

#include "grid/u_gridmodel.h"
#include "paper/u_gridpaper.h"
#include "ui/u_gridnavigator.h"
#include "ui/u_gridstylesheet.h"

#include <QAbstractScrollArea>
#include <QPointer>
#include <QSet>
#include <QWidget>

class QLabel;
class QLineEdit;
class QMenu;
class QToolButton;

namespace ui {

class GridGroupByBox;
class GridHeader;
class GridFilterRow;
class GridFooter;

// What lies under a point of the row area.
struct GridHit {
    qsizetype row = -1;        // display row, -1 when none
    int column = -1;           // model column, -1 when none (indicator, indent, empty space)
    bool expandButton = false; // the [+]/[-] of a group row
};

class GridTableView : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit GridTableView(QWidget *parent = nullptr);
    ~GridTableView() override;

    grid::GridModel *model() const { return m_model; }
    void setDataSet(db::DataSet *ds);
    db::DataSet *dataSet() const;

    // ----- options (the view options live in the model and its layout)
    void setFilterRowVisible(bool v) { m_model->setFilterRowVisible(v); }
    void setFooterVisible(bool v) { m_model->setFooterVisible(v); }
    void setGroupFootersVisible(bool v) { m_model->setGroupFootersVisible(v); }
    void setIndicatorVisible(bool v) { m_model->setIndicatorVisible(v); }
    void setGroupByBoxVisible(bool v) { m_model->setGroupByBoxVisible(v); }

    // A column whose field is editable (by field name, case-insensitive).
    void setColumnEditable(const QString &fieldName, bool editable);
    bool isColumnEditable(int col) const;

    const GridStyleSheet &gridStyleSheet() const { return m_sheet; }
    void setGridStyleSheet(const GridStyleSheet &sheet);
    // The style of an element with the view's defaults filled in.
    // The room kept free inside a cell on each side of its text, so a number
    // ending at a cell's right edge never reads as one with the text of the
    // next column.
    static constexpr int kCellPadding = 6;
    CellStyle resolvedStyle(GridElement e) const;
    // A data row's look: the even or odd rows' where the sheet has them.
    CellStyle dataRowStyle(qsizetype row) const;
    // The focused row's look over a row otherwise drawn in `ordinary`.
    CellStyle focusedRowStyle(const CellStyle &ordinary) const;

    // ----- geometry (view coordinates of the row area = viewport)
    int rowHeight() const { return m_rowHeight; }
    int indicatorWidth() const;
    int indentWidth() const;               // all group levels together
    // Left edge of a visible column in viewport coordinates (scrolled), -1 when hidden.
    int columnLeft(int col) const;
    int columnWidth(int col) const;
    int columnAtX(int x) const;            // viewport x -> model column, -1 when none
    qsizetype topRow() const;
    int visibleRowCount() const;           // rows that fit the viewport (last may be partial)
    QRect rowRect(qsizetype displayRow) const;
    QRect cellRect(qsizetype displayRow, int col) const;
    GridHit hitTest(const QPoint &viewportPos) const;
    // Where a group row's caption is drawn: after its [+], kept at the left
    // edge of the rows when scrolled to the right. Empty for other rows.
    QRect groupCaptionRect(qsizetype displayRow) const;
    // The in-place editor over its cell.
    void placeEditor();
    // The left edge of a group row's [+]/[-] cell.
    int groupBoxX(qsizetype displayRow) const;
    void scrollToRow(qsizetype displayRow);

    // ----- the row being inserted: while the dataset inserts, one more row
    // under the last one shows (and edits) its edit buffer.
    bool insertRowShown() const;
    qsizetype insertRow() const;           // its display index (model rows), -1 when not shown
    qsizetype totalRows() const;           // model rows plus the row being inserted
    // The row the operator is on: the row being inserted, else the model's focused row.
    qsizetype currentRow() const;

    // ----- focus
    int focusedColumn() const { return m_focusColumn; }
    void setFocusedColumn(int col);
    // Moves the focus to a display row, posting a pending edit of the dataset
    // first; false (focus unchanged) when the post is refused.
    bool moveFocusTo(qsizetype displayRow);

    // ----- header popup menu: built on demand and returned, never executed here.
    // Its object name is "cxGridPopupMenu1"; actions carry object names
    // (actSortAsc, actSortDesc, actClearSort, actGroupBy, actGroupByBox,
    // actFooter, actRemoveColumn, actFieldChooser (a sub-menu), actBestFit,
    // actBestFitAll, and on paper actPrint, actExportPdf).
    QMenu *createHeaderMenu(int col, QWidget *parent = nullptr);
    void bestFit(int col);
    void bestFitAll();
    int bestFitWidth(int col) const;

    // ----- on paper: "Tipareste..." (also Ctrl+P) and "Export PDF..." in the
    // header menu. A report grid says what its pages' header holds and where
    // the PDF is proposed; a grid without that offers neither.
    struct PaperSource {
        std::function<paper::PageHeader()> header;
        std::function<QString()> pdfPath;
    };
    void setPaperSource(PaperSource source) { m_paper = std::move(source); }
    bool onPaper() const { return bool(m_paper.header); }
    // The print dialog, then the pages; the save dialog, then the PDF. A
    // cancelled dialog or a stopped run leaves nothing; failures throw.
    void printGrid();
    void exportPdf();

    // ----- in-place editing
    bool isEditing() const;
    QLineEdit *cellEditor() const { return m_editor; }
    bool startEdit(const QString &initialText = {});
    void commitEdit();
    void cancelEdit();
    // Toggles a boolean editable cell of the focused row (the click on its check).
    bool toggleCheck(int col);

    // Incremental search: characters typed on a read-only column move the
    // focus to the next row whose cell starts with them (case-insensitive);
    // the matched part is painted with the incremental-search style.
    QString incrementalSearchText() const { return m_incSearch; }
    bool incrementalSearch(const QString &text);

    // The strips, for tests and forms.
    GridGroupByBox *groupByBox() const { return m_groupBox; }
    GridHeader *header() const { return m_header; }
    GridFilterRow *filterRow() const { return m_filterRow; }
    GridFooter *footer() const { return m_footer; }

    // Text of a display row's cell as the operator reads it (accessibility):
    // data cells as shown (checks as "True"/"False"), the group text in the
    // first column of group rows, the group summaries in group footer rows.
    QString accessibleCellText(qsizetype displayRow, int col) const;

    // Lays the strips and the scroll bars out again (after a change of columns or options).
    void updateGeometries();

protected:
    void paintEvent(QPaintEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *e) override;
    void mouseDoubleClickEvent(QMouseEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;
    void focusInEvent(QFocusEvent *e) override;
    void focusOutEvent(QFocusEvent *e) override;
    bool eventFilter(QObject *o, QEvent *e) override;
    void changeEvent(QEvent *e) override;
    bool viewportEvent(QEvent *e) override;

private:
    friend class GridHeader;
    friend class GridGroupByBox;
    friend class GridFilterRow;
    friend class GridFooter;

    void onColumnsChanged();
    void onRowsChanged();
    void onFocusChanged(qsizetype row);
    void updateScrollBars();
    void placeVerticalScrollBar();
    void updateRowHeight();
    bool moveKey(QKeyEvent *e, qsizetype row, bool onGroup);
    bool clearKey(QKeyEvent *e);
    bool typingKey(QKeyEvent *e, qsizetype row, grid::RowKind kind);
    void paintRow(QPainter &p, qsizetype row, const QRect &r, const QRect &clip);
    void paintDataRow(QPainter &p, qsizetype row, const QRect &r, const QRect &clip, bool focused);
    void paintDataCell(QPainter &p, qsizetype row, int col, const QRect &cr, const CellStyle &ts, bool focused);
    void paintGroupRow(QPainter &p, qsizetype row, const QRect &r, int level, const CellStyle &groupSt, bool focused);
    void paintGroupFooterRow(QPainter &p, qsizetype row, const QRect &r, int level, bool focused);
    void paintCellText(QPainter &p, const QRect &r, const QString &text, int col, const CellStyle &st) const;
    void paintCheck(QPainter &p, const QRect &r, int state) const;
    void paintIndicator(QPainter &p, const QRect &r, bool focused) const;
    void moveFocusBy(qsizetype delta);
    void closeEditor();
    QString editValueText(qsizetype row, int col, bool *fromBuffer = nullptr) const;
    bool isDataRow(qsizetype row) const;
    void onDataSetState();
    int firstColumnX() const;             // viewport x of the first visible column's left edge

    grid::GridModel *m_model = nullptr;
    GridGroupByBox *m_groupBox = nullptr;
    GridHeader *m_header = nullptr;
    GridFilterRow *m_filterRow = nullptr;
    GridFooter *m_footer = nullptr;
    QLineEdit *m_editor = nullptr;
    qsizetype m_editRow = -1;
    int m_editColumn = -1;
    GridStyleSheet m_sheet;
    QSet<QString> m_editable;             // lower-case field names
    int m_rowHeight = 18;
    int m_focusColumn = -1;
    QString m_incSearch;
    bool m_wasInserting = false;
    bool m_searching = false;
    mutable QHash<int, CellStyle> m_styleCache;  // resolved styles by element
    QList<int> m_visible;                 // visible columns, display order
    QList<int> m_left;                    // unscrolled left of each visible column (after indicator and indent)
    int m_totalWidth = 0;
    PaperSource m_paper;
};

// The container: one table view over its navigator.
class Grid : public QWidget {
    Q_OBJECT
public:
    explicit Grid(QWidget *parent = nullptr);

    GridTableView *view() const { return m_view; }
    GridNavigator *navigator() const { return m_navigator; }
    void setNavigatorVisible(bool v);
    bool navigatorVisible() const;

private:
    GridTableView *m_view;
    GridNavigator *m_navigator;
};

// Installs the accessible table interface of the grid (once per program; the
// view does it itself when constructed).
void installGridAccessibility();

} // namespace ui
