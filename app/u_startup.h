#pragma once
// Program start-up: every form and the session data module are created once,
// in a fixed order, before the message loop; the Documents folder goes into
// the session. No database is touched here.

#include <QList>

class QApplication;
class QObject;
class QWidget;
class TdmQuarv;
class TfrmGridStyle;

// The session module and the one grid style manager. Only the shell knows
// them: every window is handed the session (FormSession) when it is built,
// and the style buttons reach the manager through it.
extern TdmQuarv *dmQuarv;
extern TfrmGridStyle *frmGridStyle;

// Creates the forms and the data module into their global variables (the
// menu, the login and the analytic account sheet a second time: the globals
// then name the second instances, the first ones stay alive and hidden).
// Every window after the first menu is owned by it (the main window): one
// taskbar button for the program.
void createForms();
// Deletes every instance createForms made, latest first, and clears the globals.
void destroyForms();
// The first menu instance: the program's main window (nullptr before createForms).
QWidget *mainWindow();
// Everything createForms made, in creation order.
const QList<QObject *> &createdForms();

// Creates the forms, shows the main window, runs the message loop until the
// main window closes, then frees the forms. Returns the loop's exit code.
int runProgram(QApplication &app);
