#pragma once
// The record navigator under a grid table view (u_grid.h).

#include <QSet>
#include <QWidget>

class QLabel;
class QToolButton;

namespace ui {

class GridTableView;

// The record navigator: first, previous, next, last, and "Inregistrarea N din M"
// of the rows passing the filter (on a group row, N is the group's first
// record; the text is also the panel's accessible name). Insert, delete, post
// and cancel buttons are there for grids that edit, hidden unless asked for;
// insert puts the keyboard in the new row, delete asks first.
class GridNavigator : public QWidget {
    Q_OBJECT
public:
    enum Button { First, Prior, Next, Last, Insert, Delete, Post, Cancel, ButtonCount };
    explicit GridNavigator(GridTableView *view, QWidget *parent = nullptr);

    QToolButton *button(Button b) const { return m_buttons[b]; }
    void setButtonVisible(Button b, bool v);
    void setButtonEnabled(Button b, bool v);
    QLabel *infoPanel() const { return m_info; }
    QString infoText() const;

private:
    void refresh();
    void press(Button b);

    GridTableView *m_view;
    QToolButton *m_buttons[ButtonCount] = {};
    QLabel *m_info = nullptr;
    QSet<int> m_disabled;
};

} // namespace ui
