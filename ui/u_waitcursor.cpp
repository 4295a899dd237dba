#include "ui/u_waitcursor.h"

#include <QCursor>
#include <QGuiApplication>

namespace ui {

WaitCursor::WaitCursor()
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
        m_set = true;
    }
}

WaitCursor::~WaitCursor()
{
    if (m_set)
        QGuiApplication::restoreOverrideCursor();
}

} // namespace ui
