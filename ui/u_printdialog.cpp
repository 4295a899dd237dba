#include "ui/u_printdialog.h"

#include <QPrintDialog>
#include <QPrinter>

namespace ui {

namespace {
PrintDialogService *g_replacement = nullptr;
}

bool WidgetPrintDialog::choose(QPrinter &printer, QWidget *parent)
{
    QPrintDialog dlg(&printer, parent);
    // Every page is printed: how many there are is known only once they are laid out.
    dlg.setOption(QAbstractPrintDialog::PrintPageRange, false);
    dlg.setOption(QAbstractPrintDialog::PrintSelection, false);
    dlg.setOption(QAbstractPrintDialog::PrintCurrentPage, false);
    return dlg.exec() == QDialog::Accepted;
}

bool QueuedPrintDialog::choose(QPrinter &printer, QWidget *)
{
    ++asked;
    offeredLandscape = printer.pageLayout().orientation() == QPageLayout::Landscape;
    const QString file = answers.isEmpty() ? QString() : answers.dequeue();
    if (file.isEmpty())
        return false;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(file);
    return true;
}

PrintDialogService &printDialog()
{
    static WidgetPrintDialog real;
    return g_replacement ? *g_replacement : real;
}

PrintDialogService *setPrintDialog(PrintDialogService *service)
{
    PrintDialogService *previous = g_replacement;
    g_replacement = service;
    return previous;
}

} // namespace ui
