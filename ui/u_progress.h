#pragma once
// The watcher of long work done for a window (a run, an export): from half a
// second into the work a small modal window over it says what happens and how
// far ("Se citesc datele... 412.000 randuri", "Se scrie fisierul... 35%"),
// with "Renunta" (Esc) to stop it. The program paints and answers all along;
// while the window is up the other windows take no input, and before it is
// up input waits until it is. Work shorter than the delay shows nothing.

#include "db/u_busy.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QString>

class QDialog;
class QLabel;
class QPushButton;
class QWidget;

namespace ui {

class ProgressWatch : public db::busy::Watcher {
public:
    // Installs itself as the watcher until destroyed.
    explicit ProgressWatch(QWidget *owner);
    ~ProgressWatch() override;
    ProgressWatch(const ProgressWatch &) = delete;
    ProgressWatch &operator=(const ProgressWatch &) = delete;

    void pulse(const db::busy::Progress &progress) override;
    // "Renunta" was pressed (the work may have ended before it could stop).
    bool stopAsked() const { return m_stop; }

    // The progress window up now, nullptr when none ("frmProgres").
    static QDialog *window();
    // How long work runs before the window shows (ms); for tests and benchmarks.
    static void setShowDelay(int ms);
    static int showDelay();

    static QString fetchText(qsizetype rows);
    static QString writeText(qsizetype done, qsizetype total);

private:
    void showWindow();
    void stop();

    QPointer<QWidget> m_owner;
    QElapsedTimer m_clock;
    QPointer<QDialog> m_window;
    QLabel *m_label = nullptr;
    QPushButton *m_cancel = nullptr;
    bool m_stop = false;
    db::busy::WatchScope m_scope;
};

} // namespace ui
