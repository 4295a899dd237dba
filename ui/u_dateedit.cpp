#include "ui/u_dateedit.h"

#include <QAction>
#include <QCalendarWidget>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QStyle>

namespace ui {

DateEdit::DateEdit(QWidget *parent) : QLineEdit(parent)
{
    setPlaceholderText(QString());
    setMaxLength(10);
    m_button = addAction(style()->standardIcon(QStyle::SP_ArrowDown), QLineEdit::TrailingPosition);
    m_button->setObjectName(QStringLiteral("actCalendar"));
    m_button->setText(QStringLiteral("Calendar"));
    m_button->setToolTip(QStringLiteral("Calendar (Alt+Jos)"));
    connect(m_button, &QAction::triggered, this, &DateEdit::showCalendar);
    connect(this, &QLineEdit::editingFinished, this, &DateEdit::commitText);
    const QFontMetrics fm(font());
    setMinimumWidth(fm.horizontalAdvance(QStringLiteral("00.00.00000")) + 36);
}

QDate DateEdit::parse(const QString &text)
{
    static const QRegularExpression re(QStringLiteral(R"(^\s*(\d{1,2})[./-](\d{1,2})[./-](\d{2}|\d{4})\s*$)"));
    const QRegularExpressionMatch m = re.match(text);
    if (!m.hasMatch())
        return {};
    int year = m.captured(3).toInt();
    if (m.captured(3).size() == 2)
        year += year < 50 ? 2000 : 1900;
    const QDate d(year, m.captured(2).toInt(), m.captured(1).toInt());
    return d.isValid() ? d : QDate();
}

void DateEdit::setDate(const QDate &d)
{
    const QDate v = d.isValid() ? d : QDate();
    const bool changed = v != m_date;
    m_date = v;
    showValue();
    if (changed)
        emit valueChanged(m_date);
}

void DateEdit::showValue()
{
    const QString t = m_date.isNull() ? QString() : m_date.toString(format());
    if (text() != t)
        setText(t);
}

void DateEdit::commitText()
{
    const QString t = text().trimmed();
    if (t.isEmpty()) {
        setDate(QDate());
        return;
    }
    const QDate d = parse(t);
    if (d.isValid())
        setDate(d);
    else
        showValue(); // not a date: the last value stays, nothing is lost
}

QCalendarWidget *DateEdit::calendar()
{
    if (!m_calendar) {
        m_calendar = new QCalendarWidget(this);
        m_calendar->setObjectName(QStringLiteral("calendarPopup"));
        m_calendar->setWindowFlags(Qt::Popup);
        m_calendar->setFirstDayOfWeek(Qt::Monday);
        m_calendar->setGridVisible(true);
        connect(m_calendar, &QCalendarWidget::clicked, this, [this](const QDate &d) {
            m_calendar->hide();
            setDate(d);
            setFocus();
        });
        connect(m_calendar, &QCalendarWidget::activated, this, [this](const QDate &d) {
            m_calendar->hide();
            setDate(d);
            setFocus();
        });
    }
    return m_calendar;
}

void DateEdit::showCalendar()
{
    commitText();
    QCalendarWidget *c = calendar();
    c->setSelectedDate(m_date.isNull() ? QDate::currentDate() : m_date);
    c->adjustSize();
    c->move(mapToGlobal(QPoint(0, height())));
    c->show();
    c->setFocus();
}

void DateEdit::focusOutEvent(QFocusEvent *e)
{
    QLineEdit::focusOutEvent(e);
    if (m_calendar && m_calendar->isVisible())
        return; // the focus went to our own popup
    commitText();
    emit exited();
}

void DateEdit::keyPressEvent(QKeyEvent *e)
{
    if ((e->modifiers() & Qt::AltModifier) && e->key() == Qt::Key_Down) {
        showCalendar();
        return;
    }
    if (e->key() == Qt::Key_Delete && selectedText() == text()) {
        clear();
        commitText();
        return;
    }
    QLineEdit::keyPressEvent(e);
}

} // namespace ui
