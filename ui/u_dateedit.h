#pragma once
// A date editor: typed as dd.MM.yyyy or picked from a calendar popup, with an
// empty state that stands for the null date (a report counts it as unset).
// valueChanged fires for every new value, typed, picked or set by code;
// exited fires when the editor loses the focus, after a typed value is taken.

#include <QDate>
#include <QLineEdit>

class QCalendarWidget;

namespace ui {

class DateEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit DateEdit(QWidget *parent = nullptr);

    QDate date() const { return m_date; }      // null when empty
    bool isEmpty() const { return m_date.isNull(); }
    void setDate(const QDate &d);             // a null or invalid date empties the editor
    void clearDate() { setDate(QDate()); }

    // Takes what was typed: a valid date becomes the value, an empty text
    // empties the editor, anything else puts back the text of the last value.
    void commitText();

    // The calendar popup (created on first use); shown by the button or Alt+Down.
    QCalendarWidget *calendar();
    void showCalendar();

    static QString format() { return QStringLiteral("dd.MM.yyyy"); }
    static QDate parse(const QString &text); // dd.MM.yyyy, d.M.yyyy, dd.MM.yy; null when not a date

signals:
    void valueChanged(const QDate &date);
    void exited();

protected:
    void focusOutEvent(QFocusEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;

private:
    void showValue();
    QDate m_date;
    QCalendarWidget *m_calendar = nullptr;
    QAction *m_button = nullptr;
};

} // namespace ui
