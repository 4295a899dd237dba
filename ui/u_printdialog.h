#pragma once
// The print dialog goes through one replaceable service, as the save dialog
// does, so that tests answer it instead of blocking on a modal window.

#include <QQueue>
#include <QString>

class QPrinter;
class QWidget;

namespace ui {

class PrintDialogService {
public:
    virtual ~PrintDialogService() = default;
    // Lets the operator choose the printer and its settings; false when cancelled.
    virtual bool choose(QPrinter &printer, QWidget *parent = nullptr) = 0;
};

class WidgetPrintDialog : public PrintDialogService {
public:
    bool choose(QPrinter &printer, QWidget *parent = nullptr) override;
};

// Test double: each answer is a PDF file the "printer" writes to; an empty
// answer (or an empty queue) cancels. Records how many times it was asked
// and the orientation the printer was offered with.
class QueuedPrintDialog : public PrintDialogService {
public:
    bool choose(QPrinter &printer, QWidget *parent = nullptr) override;
    QQueue<QString> answers;
    int asked = 0;
    bool offeredLandscape = false;
};

PrintDialogService &printDialog();
// Replaces the instance (nullptr restores the real dialog); returns the previous replacement.
PrintDialogService *setPrintDialog(PrintDialogService *service);

class ScopedQueuedPrintDialog : public QueuedPrintDialog {
public:
    ScopedQueuedPrintDialog() : m_previous(setPrintDialog(this)) {}
    ~ScopedQueuedPrintDialog() override { setPrintDialog(m_previous); }
    ScopedQueuedPrintDialog(const ScopedQueuedPrintDialog &) = delete;
    ScopedQueuedPrintDialog &operator=(const ScopedQueuedPrintDialog &) = delete;

private:
    PrintDialogService *m_previous;
};

} // namespace ui
