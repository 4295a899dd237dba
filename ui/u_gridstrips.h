#pragma once
// The strips of a grid table view above and below its rows: the group-by box,
// the header, the filter row and the footer. Each one is a child of the view,
// as wide as the row area, and follows the view's horizontal scroll.

#include "grid/u_gridmodel.h"

#include <QHash>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QToolButton;

namespace ui {

class GridTableView;

// Group-by box: the grouped columns as buttons, one step lower per level.
// Headers are dropped here to group; a button dragged out ungroups, dragged
// along changes its level; a click on it sorts that column.
class GridGroupByBox : public QWidget {
    Q_OBJECT
public:
    explicit GridGroupByBox(GridTableView *view);
    int preferredHeight() const;
    // The button of a grouping level in this strip's coordinates.
    QRect itemRect(int level) const;
    // The level a header dropped at x would take.
    int levelAtX(int x) const;
    static QString emptyText();
    // Where a header being dragged over the box would land (-1: not over it).
    void setDropHint(int level);
    int dropHint() const { return m_dropHint; }

protected:
    void paintEvent(QPaintEvent *e) override;
    void mousePressEvent(QMouseEvent *e) override;
    void mouseMoveEvent(QMouseEvent *e) override;
    void mouseReleaseEvent(QMouseEvent *e) override;

private:
    GridTableView *m_view;
    int m_pressLevel = -1;
    QPoint m_pressPos;
    bool m_dragging = false;
    int m_dropHint = -1;
};

// The column headers: click sorts (Shift adds), drag moves or groups (drop on
// the group-by box), the edge resizes, a double click on the edge fits the
// width, right click raises the header popup menu.
class GridHeader : public QWidget {
    Q_OBJECT
public:
    explicit GridHeader(GridTableView *view);
    // The model column whose right edge is near x (for resizing), -1 when none.
    int edgeAt(int x) const;
    QRect sectionRect(int col) const;  // in this strip's coordinates
    // The display position a column dropped at x would take.
    int dropPositionAtX(int x) const;

protected:
    void paintEvent(QPaintEvent *e) override;
    void mousePressEvent(QMouseEvent *e) override;
    void mouseMoveEvent(QMouseEvent *e) override;
    void mouseReleaseEvent(QMouseEvent *e) override;
    void mouseDoubleClickEvent(QMouseEvent *e) override;
    void contextMenuEvent(QContextMenuEvent *e) override;

private:
    GridTableView *m_view;
    int m_resizeCol = -1;
    int m_resizeStartX = 0;
    int m_resizeStartWidth = 0;
    int m_pressCol = -1;
    QPoint m_pressPos;
    bool m_dragging = false;
    QPoint m_dragPos;
};

// The filter row: one editor per visible column (a line edit, or a tri-state
// check for booleans) applied as the operator types, after a short pause; a
// button at the left clears every filter.
class GridFilterRow : public QWidget {
    Q_OBJECT
public:
    explicit GridFilterRow(GridTableView *view);
    // The editor of a model column (QLineEdit or QCheckBox), nullptr when none.
    QWidget *editor(int col) const;
    QToolButton *clearButton() const { return m_clear; }
    // Applies the typed texts waiting for the pause at once.
    void applyPending();
    static constexpr int debounceMs = 150;

    void rebuild();        // editors for the visible columns
    void layoutEditors();  // follow widths and the horizontal scroll
    void syncFromModel();  // show the model's filters (restore, clear)

protected:
    void paintEvent(QPaintEvent *e) override;

private:
    GridTableView *m_view;
    QHash<QString, QWidget *> m_editors;   // by lower-case field name
    QHash<QString, QString> m_pending;     // typed, not applied yet
    QTimer m_timer;
    QToolButton *m_clear = nullptr;
    bool m_syncing = false;
};

// The footer: the grand summaries under their columns.
class GridFooter : public QWidget {
    Q_OBJECT
public:
    explicit GridFooter(GridTableView *view);
    int preferredHeight() const;

protected:
    void paintEvent(QPaintEvent *e) override;

private:
    GridTableView *m_view;
};

} // namespace ui
