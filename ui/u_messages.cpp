#include "ui/u_messages.h"

#include "db/u_busy.h"
#include "db/u_error.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace ui {

namespace {
MessageService *g_replacement = nullptr;

// Texts of several lines are joined with a bare carriage return; the box
// shows each as a line of its own.
QString shown(const QString &text)
{
    QString t = text;
    t.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    t.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return t;
}

QWidget *boxParent(QWidget *parent)
{
    return parent ? parent : QApplication::activeWindow();
}
} // namespace

void WidgetMessages::information(const QString &text, QWidget *parent)
{
    QMessageBox box(QMessageBox::NoIcon, QCoreApplication::applicationName(), shown(text), QMessageBox::Ok,
                    boxParent(parent));
    box.exec();
}

void WidgetMessages::error(const QString &text, QWidget *parent)
{
    QMessageBox box(QMessageBox::Critical, QCoreApplication::applicationName(), shown(text), QMessageBox::Ok,
                    boxParent(parent));
    box.exec();
}

bool WidgetMessages::question(const QString &text, QWidget *parent)
{
    QMessageBox box(QMessageBox::Question, QCoreApplication::applicationName(), shown(text),
                    QMessageBox::Yes | QMessageBox::No, boxParent(parent));
    box.button(QMessageBox::Yes)->setText(QStringLiteral("Da"));
    box.button(QMessageBox::No)->setText(QStringLiteral("Nu"));
    // A stray Enter keeps the record.
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void RecordingMessages::information(const QString &text, QWidget *)
{
    informations.append(text);
    all.append(text);
}

void RecordingMessages::error(const QString &text, QWidget *)
{
    errors.append(text);
    all.append(text);
}

bool RecordingMessages::question(const QString &text, QWidget *)
{
    questions.append(text);
    all.append(text);
    return answers.isEmpty() ? true : answers.dequeue();
}

void RecordingMessages::clear()
{
    informations.clear();
    errors.clear();
    questions.clear();
    answers.clear();
    all.clear();
}

MessageService &messages()
{
    static WidgetMessages real;
    return g_replacement ? *g_replacement : real;
}

MessageService *setMessages(MessageService *service)
{
    MessageService *previous = g_replacement;
    g_replacement = service;
    return previous;
}

QString deleteQuestionText()
{
    return QStringLiteral("Stergeti inregistrarea selectata?");
}

bool confirmDelete(QWidget *parent)
{
    return messages().question(deleteQuestionText(), parent);
}

QString exceptionText(std::exception_ptr e)
{
    try {
        std::rethrow_exception(e);
    } catch (const QuarvError &err) {
        return err.text();
    } catch (const std::exception &err) {
        return QString::fromLocal8Bit(err.what());
    } catch (...) {
        return QStringLiteral("Eroare necunoscuta");
    }
}

void reportException(std::exception_ptr e) noexcept
{
    try {
        messages().error(exceptionText(e));
    } catch (...) {
        // The error box itself failed: nothing sensible is left to show.
    }
}

void guarded(const std::function<void()> &handler) noexcept
{
    try {
        handler();
    } catch (const db::busy::Cancelled &) {
        // Work the operator stopped: nothing to report.
    } catch (...) {
        reportException(std::current_exception());
    }
}

} // namespace ui
