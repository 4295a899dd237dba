#include "reports/common/u_wrapbutton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

WrapButton::WrapButton(const QString &caption, QWidget *parent) : QPushButton(caption, parent)
{
    setAccessibleName(caption);
}

QSize WrapButton::sizeHint() const
{
    const QFontMetrics fm(font());
    return {150, 2 * fm.height() + 12};
}

void WrapButton::paintEvent(QPaintEvent *)
{
    QStylePainter p(this);
    QStyleOptionButton opt;
    initStyleOption(&opt);
    opt.text.clear(); // the bevel only; the caption is drawn wrapped below
    p.drawControl(QStyle::CE_PushButton, opt);
    const QRect r = style()->subElementRect(QStyle::SE_PushButtonContents, &opt, this).adjusted(2, 0, -2, 0);
    p.drawItemText(r, Qt::AlignCenter | Qt::TextWordWrap, palette(), isEnabled(), text(), QPalette::ButtonText);
}
