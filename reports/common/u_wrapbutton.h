#pragma once
// A push button whose caption wraps onto several lines (the style button is
// as tall as two rows). text() is the caption as given.

#include <QPushButton>

class WrapButton : public QPushButton {
    Q_OBJECT
public:
    explicit WrapButton(const QString &caption, QWidget *parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *e) override;
};
