#include "app/u_startup.h"

#include "analyses/u_platform.h"
#include "app/u_frmLogin.h"
#include "app/u_frmMenuQuarv.h"
#include "reports/common/u_frmConta_select.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/common/u_frmGridStyle.h"
#include "reports/common/u_reportform.h"
#include "reports/u_reportlist.h"
#include "session/u_dmQuarv.h"

#include <QApplication>
#include <QHash>
#include <QPointer>

#include <algorithm>
#include <functional>
#include <utility>

TdmQuarv *dmQuarv = nullptr;
TfrmGridStyle *frmGridStyle = nullptr;

namespace {

// The application owns every form; widgets cannot have the application as
// their Qt parent, so it keeps them here and frees them at exit.
QList<QObject *> g_created;
QPointer<QWidget> g_mainWindow;

// Keeps a created window until exit. Every later window is owned by the
// main window, which keeps the one taskbar button; each stays a window of
// its own and as modal or modeless as it was made.
template <class T>
T *adopt(T *obj)
{
    g_created.append(obj);
    if (g_mainWindow && obj != g_mainWindow.data())
        obj->setParent(g_mainWindow.data(), obj->windowFlags() | Qt::Window);
    return obj;
}

template <class T, class... Args>
T *create(T *&global, Args &&...args)
{
    global = new T(std::forward<Args>(args)...);
    return adopt(global);
}

} // namespace

void createForms()
{
    const QList<rep::ReportForm> &reports = rep::reportForms();
    // The designed order of start-up: the forms of no analysis at their
    // places here, the analyses at the places their registry rows give.
    const QHash<int, std::function<void()>> others = {
        // The first form created is the main window: its closing ends the program.
        {1, [] { g_mainWindow = create(frmMenuQUARV); }},
        {2, [] {
             dmQuarv = new TdmQuarv(qApp);
             g_created.append(dmQuarv);
         }},
        {5, [] {
             create(frmGridStyle, *dmQuarv);
             dmQuarv->styleManager = [](const QString &key, grid::GridModel *target) {
                 if (frmGridStyle)
                     frmGridStyle->showFor(key, target);
             };
         }},
        // Only remembered: whether the folder exists or can be written is
        // found out when a file is written there.
        {7, [] {
             dmQuarv->caleDocumente = platform::documentsFolder();
             create(frmLogin);
         }},
        {9, [] { create(frmConta_select, *dmQuarv); }},
        {13, [] { create(frmConts_select, *dmQuarv); }},
        // Second instances into the same globals: the menu the operator sees
        // is the first one, the login window and the account sheet it opens
        // are the second ones.
        {14, [] { create(frmMenuQUARV); }},
        {15, [] { create(frmLogin); }},
    };
    int last = 0;
    for (const rep::ReportForm &r : reports)
        for (int place : r.entry->createdAt)
            last = std::max(last, place);
    for (auto it = others.begin(); it != others.end(); ++it)
        last = std::max(last, it.key());
    for (int place = 1; place <= last; ++place) {
        if (others.contains(place))
            others.value(place)();
        for (const rep::ReportForm &r : reports)
            if (r.entry->createdAt.contains(place))
                r.setInstance(adopt(r.create(*dmQuarv, nullptr)));
    }
}

void destroyForms()
{
    while (!g_created.isEmpty()) {
        QObject *last = g_created.takeLast();
        if (last == dmQuarv)
            dmQuarv = nullptr; // the forms deleted after it no longer reach it
        delete last;
    }
    for (const rep::ReportForm &r : rep::reportForms())
        r.setInstance(nullptr);
    frmMenuQUARV = nullptr;
    dmQuarv = nullptr;
    frmGridStyle = nullptr;
    frmLogin = nullptr;
    frmConta_select = nullptr;
    frmConts_select = nullptr;
}

QWidget *mainWindow()
{
    return g_mainWindow;
}

const QList<QObject *> &createdForms()
{
    return g_created;
}

int runProgram(QApplication &app)
{
    // Closing the main window ends the program even while report windows are
    // still open; closing the others never does.
    app.setQuitOnLastWindowClosed(false);
    createForms();
    auto *menu = static_cast<TfrmMenuQUARV *>(mainWindow());
    QObject::connect(menu, &TfrmMenuQUARV::closed, &app, &QCoreApplication::quit);
    // The main window owns the taskbar button: it is the one shown top-level
    // window the program starts with.
    menu->show();
    const int rc = app.exec();
    destroyForms();
    return rc;
}
