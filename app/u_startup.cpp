#include "app/u_startup.h"

#include "session/u_dmQuarv.h"
#include "app/u_frmLogin.h"
#include "app/u_frmMenuQuarv.h"
#include "reports/common/u_frmConta_select.h"
#include "reports/common/u_frmConts_select.h"
#include "reports/common/u_frmGridStyle.h"
#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaPostcalcul.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "reports/u_frmVerifDecontTurism.h"
#include "analyses/u_platform.h"

#include <QApplication>
#include <QPointer>

namespace {

// The application owns every form; widgets cannot have the application as
// their Qt parent, so it keeps them here and frees them at exit.
QList<QObject *> g_created;
QPointer<QWidget> g_mainWindow;

template <class T>
T *create(T *&global)
{
    T *obj = new T();
    g_created.append(obj);
    global = obj;
    // Every later window is owned by the main window, which keeps the one
    // taskbar button; each stays a window of its own and as modal or
    // modeless as it was made.
    if (g_mainWindow && obj != g_mainWindow.data())
        obj->setParent(g_mainWindow.data(), obj->windowFlags() | Qt::Window);
    return obj;
}

} // namespace

void createForms()
{
    // The first form created is the main window: its closing ends the program.
    g_mainWindow = create(frmMenuQUARV);

    dmQuarv = new TdmQuarv(qApp);
    g_created.append(dmQuarv);
    create(frmCheltVenPeComenziFaraRegii);
    create(frmAnalizaContabilaDetaliata);
    create(frmGridStyle);
    create(frmVerifDecontTurism);

    // Only remembered: whether the folder exists or can be written is found
    // out when a file is written there.
    dmQuarv->caleDocumente = platform::documentsFolder();

    create(frmLogin);
    create(frmFisaDeContAnalitica);
    create(frmConta_select);
    create(frmAnaliza_Profitabilitate);
    create(frmAnalizaRegistruJurnal);
    create(frmContareDocumente);
    create(frmConts_select);

    // Second instances into the same globals: the menu the operator sees is
    // the first one, the login window and the account sheet it opens are the
    // second ones.
    create(frmMenuQUARV);
    create(frmLogin);
    create(frmFisaDeContAnalitica);

    // The post-calculation form is never created.
    frmAnalizaPostcalcul = nullptr;
}

void destroyForms()
{
    while (!g_created.isEmpty())
        delete g_created.takeLast();
    frmMenuQUARV = nullptr;
    dmQuarv = nullptr;
    frmCheltVenPeComenziFaraRegii = nullptr;
    frmAnalizaContabilaDetaliata = nullptr;
    frmGridStyle = nullptr;
    frmVerifDecontTurism = nullptr;
    frmLogin = nullptr;
    frmFisaDeContAnalitica = nullptr;
    frmConta_select = nullptr;
    frmAnaliza_Profitabilitate = nullptr;
    frmAnalizaRegistruJurnal = nullptr;
    frmContareDocumente = nullptr;
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
