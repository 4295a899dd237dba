#pragma once
// The main window: "LogIn" and, once an issuer is signed in, one button per
// analysis, each bringing that analysis's single form to the front.

#include <QWidget>

class QFrame;
class QGroupBox;
class QLabel;
class QPushButton;

class TfrmMenuQUARV : public QWidget {
    Q_OBJECT
public:
    explicit TfrmMenuQUARV(QWidget *parent = nullptr);

    void btnLogClick();
    void btnFisaContClick();
    void btnAnalizaProfitabilitateClick();
    void btnAnalizaRegJurnClick();
    void btnContareDocClick();
    void cxButton1Click();
    void btnAnalizaContabilaDetaliataClick();
    void cxButton2Click();
    void cxButton3Click();

    QPushButton *btnLog;
    QLabel *lblUser;
    QFrame *Shape1;
    QGroupBox *cxGroupBoxMenu;
    QPushButton *btnFisaCont;
    QPushButton *btnAnalizaProfitabilitate;
    QPushButton *btnAnalizaRegJurn;
    QPushButton *btnContareDoc;
    QPushButton *cxButton1;
    QPushButton *btnAnalizaContabilaDetaliata;
    QPushButton *cxButton2;
    QPushButton *cxButton3;
    QLabel *Label1;

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
};

extern TfrmMenuQUARV *frmMenuQUARV;
