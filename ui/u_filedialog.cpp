#include "ui/u_filedialog.h"

#include <QFileDialog>
#include <QFileInfo>

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
    // A name typed without an extension gets the filter's.
    dlg.setDefaultSuffix(filterSuffix(filter));
    dlg.selectFile(proposedName);
    // An existing file is replaced without asking, as every export expects.
    dlg.setOption(QFileDialog::DontConfirmOverwrite, true);
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty())
        return {};
    return dlg.selectedFiles().constFirst();
}

QString filterSuffix(const QString &filter)
{
    const qsizetype dot = filter.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return {};
    const QString ext = filter.mid(dot + 1).trimmed();
    return ext.contains(QLatin1Char('*')) || ext.contains(QLatin1Char('?')) ? QString() : ext;
}

QString withDefaultSuffix(const QString &path, const QString &suffix)
{
    if (path.isEmpty() || suffix.isEmpty())
        return path;
    const QString name = QFileInfo(path).fileName();
    if (name.isEmpty() || !QFileInfo(path).suffix().isEmpty())
        return path;
    if (path.endsWith(QLatin1Char('.')))
        return path + suffix;
    return path + QLatin1Char('.') + suffix;
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
