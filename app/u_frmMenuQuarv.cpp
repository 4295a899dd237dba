#include "app/u_frmMenuQuarv.h"

#include "session/u_dmQuarv.h"
#include "app/u_frmLogin.h"
#include "db/u_error.h"
#include "reports/u_frmAnalizaContabilaDetaliata.h"
#include "reports/u_frmAnalizaPostcalcul.h"
#include "reports/u_frmAnalizaRegistruJurnal.h"
#include "reports/u_frmAnaliza_Profitabilitate.h"
#include "reports/u_frmCheltVenPeComenziFaraRegii.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "reports/u_frmVerifDecontTurism.h"
#include "ui/u_messages.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

TfrmMenuQUARV *frmMenuQUARV = nullptr;

namespace {

// Brings the one existing instance of a form on screen. A form that was
// never created is an access to a missing object: the default error report
// says so and nothing opens.
void showForm(QWidget *form, const char *name)
{
    if (!form)
        throw QuarvError(QStringLiteral("Formularul %1 nu exista (acces la un obiect inexistent)")
                             .arg(QString::fromLatin1(name)));
    if (form->isMinimized())
        form->setWindowState(form->windowState() & ~Qt::WindowMinimized);
    form->show();
    form->raise();
    form->activateWindow();
}

} // namespace

TfrmMenuQUARV::TfrmMenuQUARV(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmMenuQUARV"));
    setWindowTitle(QStringLiteral("frmMenuQUARV"));
    setFont(QFont(QStringLiteral("Tahoma"), 8));
    resize(398, 353);

    auto button = [](QWidget *owner, const char *name, const QString &caption, int width) {
        auto *b = new QPushButton(caption, owner);
        b->setObjectName(QString::fromLatin1(name));
        b->setAccessibleName(caption);
        // The designed width, unless the caption would be cut off in the
        // font this desktop has.
        b->setFixedSize(qMax(width, b->sizeHint().width()), 25);
        return b;
    };

    btnLog = button(this, "btnLog", QStringLiteral("LogIn"), 75);
    // In the window's own font, as every label of the window.
    lblUser = new QLabel(this);
    lblUser->setObjectName(QStringLiteral("lblUser"));

    Shape1 = new QFrame(this);
    Shape1->setObjectName(QStringLiteral("Shape1"));
    Shape1->setFixedHeight(1);
    Shape1->setFrameShape(QFrame::NoFrame);
    Shape1->setAutoFillBackground(true);
    QPalette red = Shape1->palette();
    red.setColor(QPalette::Window, Qt::red);
    Shape1->setPalette(red);

    cxGroupBoxMenu = new QGroupBox(QStringLiteral("Menu"), this);
    cxGroupBoxMenu->setObjectName(QStringLiteral("cxGroupBoxMenu"));
    btnFisaCont = button(cxGroupBoxMenu, "btnFisaCont", QStringLiteral("Fisa de Cont"), 123);
    btnAnalizaProfitabilitate =
        button(cxGroupBoxMenu, "btnAnalizaProfitabilitate", QStringLiteral("Analiza Profitabilitate"), 123);
    btnAnalizaRegJurn = button(cxGroupBoxMenu, "btnAnalizaRegJurn", QStringLiteral("Analiza Registru Jurnal"), 123);
    btnContareDoc = button(cxGroupBoxMenu, "btnContareDoc", QStringLiteral("Contare Documente"), 123);
    cxButton1 = button(cxGroupBoxMenu, "cxButton1",
                       QStringLiteral("Chelt/Ven Pe Comenzi(fara regii repartizate)"), 227);
    btnAnalizaContabilaDetaliata = button(cxGroupBoxMenu, "btnAnalizaContabilaDetaliata",
                                          QStringLiteral("Analiza Contabila Detaliata"), 147);
    cxButton2 = button(cxGroupBoxMenu, "cxButton2", QStringLiteral("Verificare Decont Turism"), 147);
    cxButton3 = button(cxGroupBoxMenu, "cxButton3", QStringLiteral("Analiza Postcalcul"), 147);

    auto *menuLay = new QVBoxLayout(cxGroupBoxMenu);
    menuLay->setContentsMargins(8, 8, 8, 8);
    menuLay->setSpacing(5);
    for (QPushButton *b : {btnFisaCont, btnAnalizaProfitabilitate, btnAnalizaRegJurn, btnContareDoc, cxButton1,
                           btnAnalizaContabilaDetaliata, cxButton2, cxButton3})
        menuLay->addWidget(b, 0, Qt::AlignLeft);
    menuLay->addStretch(1);
    cxGroupBoxMenu->hide();

    Label1 = new QLabel(QStringLiteral("v. 2025.02.10 10:30") + QString(8, QLatin1Char(' ')), this);
    Label1->setObjectName(QStringLiteral("Label1"));

    auto *top = new QHBoxLayout;
    top->setSpacing(12);
    top->addWidget(btnLog);
    top->addWidget(lblUser, 1);

    auto *lay = new QVBoxLayout(this);
    lay->setContentsMargins(8, 8, 8, 4);
    lay->setSpacing(6);
    lay->addLayout(top);
    lay->addWidget(Shape1);
    lay->addWidget(cxGroupBoxMenu, 1);
    // Holds the login row at the top while the group is hidden.
    lay->addStretch(0);
    lay->addWidget(Label1, 0, Qt::AlignLeft | Qt::AlignBottom);

    // Every handler runs under the default error report.
    auto wire = [this](QPushButton *b, void (TfrmMenuQUARV::*handler)()) {
        connect(b, &QPushButton::clicked, this, [this, handler] { ui::guarded([&] { (this->*handler)(); }); });
    };
    wire(btnLog, &TfrmMenuQUARV::btnLogClick);
    wire(btnFisaCont, &TfrmMenuQUARV::btnFisaContClick);
    wire(btnAnalizaProfitabilitate, &TfrmMenuQUARV::btnAnalizaProfitabilitateClick);
    wire(btnAnalizaRegJurn, &TfrmMenuQUARV::btnAnalizaRegJurnClick);
    wire(btnContareDoc, &TfrmMenuQUARV::btnContareDocClick);
    wire(cxButton1, &TfrmMenuQUARV::cxButton1Click);
    wire(btnAnalizaContabilaDetaliata, &TfrmMenuQUARV::btnAnalizaContabilaDetaliataClick);
    wire(cxButton2, &TfrmMenuQUARV::cxButton2Click);
    wire(cxButton3, &TfrmMenuQUARV::cxButton3Click);
}

void TfrmMenuQUARV::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    if (event->isAccepted())
        emit closed();
}

void TfrmMenuQUARV::btnLogClick()
{
    // The previous sign-in is dropped before the new one is attempted.
    dmQuarv->emitent.clear();
    lblUser->setText(dmQuarv->emitent);
    cxGroupBoxMenu->hide();
    frmLogin->exec();
    if (dmQuarv->emitent.isEmpty())
        throw QuarvError(QStringLiteral("Trebuie sa va autentificati..."));
    lblUser->setText(dmQuarv->emitent);
    cxGroupBoxMenu->show();
}

void TfrmMenuQUARV::btnFisaContClick() { showForm(frmFisaDeContAnalitica, "frmFisaDeContAnalitica"); }
void TfrmMenuQUARV::btnAnalizaProfitabilitateClick()
{
    showForm(frmAnaliza_Profitabilitate, "frmAnaliza_Profitabilitate");
}
void TfrmMenuQUARV::btnAnalizaRegJurnClick() { showForm(frmAnalizaRegistruJurnal, "frmAnalizaRegistruJurnal"); }
void TfrmMenuQUARV::btnContareDocClick() { showForm(frmContareDocumente, "frmContareDocumente"); }
void TfrmMenuQUARV::cxButton1Click() { showForm(frmCheltVenPeComenziFaraRegii, "frmCheltVenPeComenziFaraRegii"); }
void TfrmMenuQUARV::btnAnalizaContabilaDetaliataClick()
{
    showForm(frmAnalizaContabilaDetaliata, "frmAnalizaContabilaDetaliata");
}
void TfrmMenuQUARV::cxButton2Click() { showForm(frmVerifDecontTurism, "frmVerifDecontTurism"); }
void TfrmMenuQUARV::cxButton3Click() { showForm(frmAnalizaPostcalcul, "frmAnalizaPostcalcul"); }
