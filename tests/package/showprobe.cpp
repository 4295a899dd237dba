// Loaded into an installed desktop program with LD_PRELOAD: once its message
// loop runs, prints every shown top-level window ("shown NAME WxH") and closes
// them, which must end the program. Nothing of it is part of the program.

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

namespace {

void probe()
{
    // A zero timer started now fires in the first turn of the message loop,
    // after the program has shown what it shows at start.
    QTimer::singleShot(0, qApp, [] {
        QList<QWidget *> shown;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->isVisible())
                shown.append(w);
        for (QWidget *w : shown)
            std::printf("shown %s %dx%d\n", qPrintable(w->objectName()), w->width(), w->height());
        std::fflush(stdout);
        for (QWidget *w : shown)
            w->close();
        // The closed main window must have ended the loop before this fires.
        QTimer::singleShot(10000, [] { std::_Exit(3); });
    });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(probe)
