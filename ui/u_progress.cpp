#include "ui/u_progress.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ui {

namespace {
int g_showDelay = 500;
QPointer<QDialog> g_window;
} // namespace

ProgressWatch::ProgressWatch(QWidget *owner) : m_owner(owner), m_scope(this)
{
    m_clock.start();
}

ProgressWatch::~ProgressWatch()
{
    delete m_window.data();
}

QDialog *ProgressWatch::window() { return g_window; }
void ProgressWatch::setShowDelay(int ms) { g_showDelay = ms; }
int ProgressWatch::showDelay() { return g_showDelay; }

QString ProgressWatch::fetchText(qsizetype rows)
{
    // Thousands grouped as the operator writes them: 412.000
    return QStringLiteral("Se citesc datele... %1 randuri").arg(QLocale(QLocale::Romanian).toString(qlonglong(rows)));
}

QString ProgressWatch::writeText(qsizetype done, qsizetype total)
{
    const int percent = total > 0 ? int(std::clamp<qsizetype>(done * 100 / total, 0, 100)) : 0;
    return QStringLiteral("Se scrie fisierul... %1%").arg(percent);
}

void ProgressWatch::showWindow()
{
    QWidget *over = m_owner ? m_owner->window() : nullptr;
    auto *w = new QDialog(over, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    w->setObjectName(QStringLiteral("frmProgres"));
    w->setWindowTitle(over ? over->windowTitle() : QString());
    w->setWindowModality(Qt::ApplicationModal);
    w->setAttribute(Qt::WA_DeleteOnClose, false);
    auto *lay = new QVBoxLayout(w);
    m_label = new QLabel(w);
    m_label->setObjectName(QStringLiteral("lblProgres"));
    m_label->setMinimumWidth(260);
    lay->addWidget(m_label);
    m_cancel = new QPushButton(QStringLiteral("Renunta"), w);
    m_cancel->setObjectName(QStringLiteral("btnRenunta"));
    m_cancel->setAccessibleName(m_cancel->text());
    lay->addWidget(m_cancel, 0, Qt::AlignHCenter);
    // Esc and the title bar's close ask the same as the button.
    QObject::connect(m_cancel, &QPushButton::clicked, w, [this] { stop(); });
    QObject::connect(w, &QDialog::rejected, w, [this] { stop(); });
    m_window = w;
    g_window = w;
    w->adjustSize();
    if (over)
        w->move(over->geometry().center() - w->rect().center());
    w->show();
    m_cancel->setFocus();
}

void ProgressWatch::stop()
{
    m_stop = true;
    if (m_cancel)
        m_cancel->setEnabled(false);
    // A rejected dialog hides itself; the window stays up until the work ends.
    if (m_window && !m_window->isVisible())
        m_window->show();
}

void ProgressWatch::pulse(const db::busy::Progress &p)
{
    if (!m_window && m_clock.elapsed() >= g_showDelay)
        showWindow();
    if (m_window) {
        if (p.phase == db::busy::Phase::Fetching)
            m_label->setText(fetchText(p.done));
        else if (p.phase == db::busy::Phase::Writing)
            m_label->setText(writeText(p.done, p.total));
        else if (m_label->text().isEmpty())
            m_label->setText(fetchText(0));
    }
    // Before the window is up the input waits (and then meets the window).
    QCoreApplication::processEvents(m_window ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    if (m_stop && p.stoppable)
        throw db::busy::Cancelled{};
}

} // namespace ui
