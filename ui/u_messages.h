#pragma once
// Message boxes of the whole program go through one replaceable service, so
// tests read what the operator would have seen instead of blocking on a
// modal window.

#include <QQueue>
#include <QString>
#include <QStringList>

#include <exception>
#include <functional>

class QWidget;

namespace ui {

class MessageService {
public:
    virtual ~MessageService() = default;
    // A plain box, no icon, with a single OK button ("ok" after exports, the
    // login's refusals).
    virtual void information(const QString &text, QWidget *parent = nullptr) = 0;
    // The box of the default error report (and of handlers that report themselves).
    virtual void error(const QString &text, QWidget *parent = nullptr) = 0;
    // A question with the buttons "Da" and "Nu"; true for "Da". Closing the
    // box answers "Nu".
    virtual bool question(const QString &text, QWidget *parent = nullptr) = 0;
};

// The real boxes.
class WidgetMessages : public MessageService {
public:
    void information(const QString &text, QWidget *parent = nullptr) override;
    void error(const QString &text, QWidget *parent = nullptr) override;
    bool question(const QString &text, QWidget *parent = nullptr) override;
};

// Test double: records every text, never shows a window. Questions are
// answered from a queue; an empty queue answers "Da".
class RecordingMessages : public MessageService {
public:
    void information(const QString &text, QWidget *parent = nullptr) override;
    void error(const QString &text, QWidget *parent = nullptr) override;
    bool question(const QString &text, QWidget *parent = nullptr) override;
    void clear();
    QStringList informations;
    QStringList errors;
    QStringList questions;
    QQueue<bool> answers;
    // Every text in the order shown.
    QStringList all;
};

// The program's instance (a WidgetMessages until replaced).
MessageService &messages();
// Replaces the instance (nullptr restores the real boxes); the caller keeps
// ownership. Returns the previous replacement, if any.
MessageService *setMessages(MessageService *service);

// RAII replacement for tests: installs a RecordingMessages, restores on exit.
class ScopedRecordingMessages : public RecordingMessages {
public:
    ScopedRecordingMessages() : m_previous(setMessages(this)) {}
    ~ScopedRecordingMessages() override { setMessages(m_previous); }
    ScopedRecordingMessages(const ScopedRecordingMessages &) = delete;
    ScopedRecordingMessages &operator=(const ScopedRecordingMessages &) = delete;

private:
    MessageService *m_previous;
};

// The question every navigator asks before it deletes the current record;
// true when the operator answers "Da".
QString deleteQuestionText();
bool confirmDelete(QWidget *parent = nullptr);

// The application's default error report: the text of the exception
// (QuarvError, any std::exception, or a generic text for anything else) in
// the error box. Never throws.
void reportException(std::exception_ptr e) noexcept;
// Text the default error report shows for an exception.
QString exceptionText(std::exception_ptr e);

// Runs a UI handler under the default error report: an exception ends the
// handler and is shown; it never leaves this call.
void guarded(const std::function<void()> &handler) noexcept;

} // namespace ui
