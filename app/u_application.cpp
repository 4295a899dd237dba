#include "app/u_application.h"

#include "ui/u_messages.h"
#include "paper/u_fonts.h"

TQuarvApplication::TQuarvApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    paper::installFontSubstitutes();
}

bool TQuarvApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        ui::reportException(std::current_exception());
        return false;
    }
}
