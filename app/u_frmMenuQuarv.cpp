#include "app/u_frmMenuQuarv.h"

#include "app/u_frmLogin.h"
#include "db/u_error.h"
#include "reports/common/u_reportform.h"
#include "reports/u_reportlist.h"
#include "app/u_startup.h"
#include "session/u_dmQuarv.h"
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
void showForm(QWidget *form, const QString &name)
{
    if (!form)
        throw QuarvError(QStringLiteral("Formularul %1 nu exista (acces la un obiect inexistent)").arg(name));
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

    auto button = [](QWidget *owner, const QString &name, const QString &caption, int width) {
        auto *b = new QPushButton(caption, owner);
        b->setObjectName(name);
        b->setAccessibleName(caption);
        // The designed width, unless the caption would be cut off in the
        // font this desktop has.
        b->setFixedSize(qMax(width, b->sizeHint().width()), 25);
        return b;
    };

    btnLog = button(this, QStringLiteral("btnLog"), QStringLiteral("LogIn"), 75);
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
    auto *menuLay = new QVBoxLayout(cxGroupBoxMenu);
    menuLay->setContentsMargins(8, 8, 8, 8);
    menuLay->setSpacing(5);
    // Every handler runs under the default error report.
    for (const rep::ReportForm &r : rep::reportForms()) {
        const rep::MenuButton &m = r.entry->menu;
        QPushButton *b = button(cxGroupBoxMenu, m.objectName, m.caption, m.width);
        menuLay->addWidget(b, 0, Qt::AlignLeft);
        const QString formName = r.entry->formName;
        connect(b, &QPushButton::clicked, this, [this, formName] { ui::guarded([&] { showReport(formName); }); });
    }
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

    connect(btnLog, &QPushButton::clicked, this, [this] { ui::guarded([this] { btnLogClick(); }); });
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

void TfrmMenuQUARV::showReport(const QString &formName)
{
    const rep::ReportForm *r = rep::reportForm(formName);
    showForm(r ? r->instance() : nullptr, formName);
}

QPushButton *TfrmMenuQUARV::reportButton(const QString &objectName) const
{
    return cxGroupBoxMenu->findChild<QPushButton *>(objectName, Qt::FindDirectChildrenOnly);
}
