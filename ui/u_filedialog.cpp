#include "ui/u_filedialog.h"

#include <QFileDialog>

namespace ui {

namespace {
FileDialogService *g_replacement = nullptr;
}

QString WidgetFileDialog::saveFileName(const QString &filter, const QString &proposedName, QWidget *parent)
{
    QFileDialog dlg(parent);
    dlg.setAcceptMode(QFileDialog::AcceptSave);
    dlg.setFileMode(QFileDialog::AnyFile);
    dlg.setNameFilter(filter);
    dlg.selectFile(proposedName);
    // An existing file is replaced without asking, as every export expects.
    dlg.setOption(QFileDialog::DontConfirmOverwrite, true);
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty())
        return {};
    return dlg.selectedFiles().constFirst();
}

QString QueuedFileDialog::saveFileName(const QString &filter, const QString &proposedName, QWidget *)
{
    askedFilters.append(filter);
    askedNames.append(proposedName);
    return answers.isEmpty() ? QString() : answers.dequeue();
}

FileDialogService &fileDialog()
{
    static WidgetFileDialog real;
    return g_replacement ? *g_replacement : real;
}

FileDialogService *setFileDialog(FileDialogService *service)
{
    FileDialogService *previous = g_replacement;
    g_replacement = service;
    return previous;
}

} // namespace ui
