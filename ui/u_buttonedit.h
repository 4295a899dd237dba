#pragma once
// A line edit with an ellipsis button at its right end (also Ctrl+Enter or
// F4 from the keyboard) that asks the form for a value, e.g. from a pick list.

#include <QLineEdit>

class QToolButton;

namespace ui {

class ButtonEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit ButtonEdit(QWidget *parent = nullptr);
    QToolButton *button() const { return m_button; }
    void clickButton(); // as a click would

signals:
    void buttonClicked();

protected:
    void resizeEvent(QResizeEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;

private:
    QToolButton *m_button;
};

} // namespace ui
