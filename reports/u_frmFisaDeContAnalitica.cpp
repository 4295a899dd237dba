#include "reports/u_frmFisaDeContAnalitica.h"

#include "reports/common/u_frmConts_select.h"
#include "ui/u_buttonedit.h"
#include "ui/u_messages.h"

#include <QBoxLayout>
#include <QFrame>

TfrmFisaDeContAnalitica *frmFisaDeContAnalitica = nullptr;

TfrmFisaDeContAnalitica::TfrmFisaDeContAnalitica(FormSession &session, QWidget *parent)
    : TReportForm(rep::FisaDeContAnalitica::description(), session, parent)
{
    dsFisaContAnalitic = query();

    Shape1 = new QFrame(this);
    Shape1->setObjectName(QStringLiteral("Shape1"));
    Shape1->setFixedHeight(2);
    Shape1->setStyleSheet(QStringLiteral("background-color: #FF0000;"));
    if (auto *outer = qobject_cast<QBoxLayout *>(layout()))
        outer->insertWidget(1, Shape1);

    if (ui::ButtonEdit *e = buttonEdit(QStringLiteral("cxButtonEdit1")))
        connect(e, &ui::ButtonEdit::buttonClicked, this,
                [this] { ui::guarded([this] { cxButtonEdit1PropertiesButtonClick(); }); });
}

void TfrmFisaDeContAnalitica::cxButtonEdit1PropertiesButtonClick()
{
    if (!frmConts_select)
        return;
    if (frmConts_select->pick() == QDialog::Accepted)
        buttonEdit(QStringLiteral("cxButtonEdit1"))->setText(frmConts_select->chosen(QStringLiteral("conts")));
}
