#pragma once
// The save dialog of every export goes through one replaceable service, so
// tests answer it from a queue instead of blocking on a modal window.

#include <QQueue>
#include <QString>
#include <QStringList>

class QWidget;

namespace ui {

class FileDialogService {
public:
    virtual ~FileDialogService() = default;
    // filter: the bare pattern text ("*.csv"); proposedName: the full proposed
    // path. Returns the chosen path, or an empty string when cancelled.
    virtual QString saveFileName(const QString &filter, const QString &proposedName,
                                 QWidget *parent = nullptr) = 0;
};

class WidgetFileDialog : public FileDialogService {
public:
    QString saveFileName(const QString &filter, const QString &proposedName,
                         QWidget *parent = nullptr) override;
};

// Test double: answers from a queue (an empty answer is a cancel; an empty
// queue cancels too) and records what each call was asked.
class QueuedFileDialog : public FileDialogService {
public:
    QString saveFileName(const QString &filter, const QString &proposedName,
                         QWidget *parent = nullptr) override;
    QQueue<QString> answers;
    QStringList askedFilters;
    QStringList askedNames;
};

// The extension of a bare filter ("*.csv" -> "csv"); empty when it names none.
QString filterSuffix(const QString &filter);
// The chosen name with the extension added when it has none ("raport" ->
// "raport.csv"); a name with an extension of its own is kept as it stands.
QString withDefaultSuffix(const QString &path, const QString &suffix);

FileDialogService &fileDialog();
// Replaces the instance (nullptr restores the real dialog); returns the previous replacement.
FileDialogService *setFileDialog(FileDialogService *service);

class ScopedQueuedFileDialog : public QueuedFileDialog {
public:
    ScopedQueuedFileDialog() : m_previous(setFileDialog(this)) {}
    ~ScopedQueuedFileDialog() override { setFileDialog(m_previous); }
    ScopedQueuedFileDialog(const ScopedQueuedFileDialog &) = delete;
    ScopedQueuedFileDialog &operator=(const ScopedQueuedFileDialog &) = delete;

private:
    FileDialogService *m_previous;
};

} // namespace ui
