#pragma once
// Data-aware controls: a line edit bound to one field of a dataset, and a
// record navigator (first, prior, next, last, insert, delete, edit, post,
// cancel, refresh) over a dataset; its delete asks first.

#include <QLineEdit>
#include <QPointer>
#include <QWidget>

#include <array>
#include <limits>

class QToolButton;

#include "db/u_dataset.h"

namespace ui {

// Shows the field of the dataset's current row; typing puts the row in edit
// (or insert, on an empty table) and writes the field's edit buffer.
class DBEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit DBEdit(QWidget *parent = nullptr);
    void bind(db::DataSet *dataSet, const QString &fieldName);
    db::DataSet *dataSet() const { return m_dataSet; }
    const QString &fieldName() const { return m_field; }
    // The values an integer field accepts as typed (all of them unless set).
    void setIntRange(int bottom, int top);

private:
    void showValue();
    void writeValue(const QString &text);
    QPointer<db::DataSet> m_dataSet;
    QString m_field;
    bool m_writing = false;
    int m_intBottom = std::numeric_limits<int>::min();
    int m_intTop = std::numeric_limits<int>::max();
};

class DBNavigator : public QWidget {
    Q_OBJECT
public:
    enum Button { First, Prior, Next, Last, Insert, Delete, Edit, Post, Cancel, Refresh, ButtonCount };

    explicit DBNavigator(QWidget *parent = nullptr);
    void setDataSet(db::DataSet *dataSet);
    db::DataSet *dataSet() const { return m_dataSet; }

    QToolButton *button(Button b) const { return m_buttons[size_t(b)]; }
    // Hiding removes the button from the bar; disallowing keeps it greyed
    // whatever the dataset's state.
    void setButtonVisible(Button b, bool visible);
    void setButtonAllowed(Button b, bool allowed);
    bool isButtonAllowed(Button b) const { return m_allowed[size_t(b)]; }

    // Runs a button's action as a click would.
    void click(Button b);

private:
    void updateButtons();
    QPointer<db::DataSet> m_dataSet;
    std::array<QToolButton *, ButtonCount> m_buttons{};
    std::array<bool, ButtonCount> m_allowed{};
};

} // namespace ui
