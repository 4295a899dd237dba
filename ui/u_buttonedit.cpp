#include "ui/u_buttonedit.h"

#include <QKeyEvent>
#include <QStyle>
#include <QToolButton>

namespace ui {

ButtonEdit::ButtonEdit(QWidget *parent) : QLineEdit(parent), m_button(new QToolButton(this))
{
    m_button->setObjectName(QStringLiteral("btnEllipsis"));
    m_button->setText(QStringLiteral("..."));
    m_button->setAccessibleName(QStringLiteral("..."));
    m_button->setCursor(Qt::ArrowCursor);
    m_button->setFocusPolicy(Qt::NoFocus);
    connect(m_button, &QToolButton::clicked, this, &ButtonEdit::buttonClicked);
    setTextMargins(0, 0, 22, 0);
}

void ButtonEdit::clickButton()
{
    emit buttonClicked();
}

void ButtonEdit::resizeEvent(QResizeEvent *e)
{
    QLineEdit::resizeEvent(e);
    const int h = height() - 4;
    m_button->setGeometry(width() - h - 2, 2, h, h);
}

void ButtonEdit::keyPressEvent(QKeyEvent *e)
{
    if (e->key() == Qt::Key_F4
        || ((e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter) && (e->modifiers() & Qt::ControlModifier))) {
        emit buttonClicked();
        return;
    }
    QLineEdit::keyPressEvent(e);
}

} // namespace ui
