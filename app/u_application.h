#pragma once
// The application object with the program's one default error report: an
// exception that escapes any handler ends that handler, its text is shown in
// the error box, and the program goes on. Nothing crosses the event loop.

#include <QApplication>

class TQuarvApplication : public QApplication {
    Q_OBJECT
public:
    TQuarvApplication(int &argc, char **argv);
    bool notify(QObject *receiver, QEvent *event) override;
};
