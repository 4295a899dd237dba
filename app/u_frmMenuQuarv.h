#pragma once
// The main window: "LogIn" and, once an issuer is signed in, one button per
// analysis (from the registry of analyses), each bringing that analysis's
// single form to the front.

#include <QList>
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
    // An analysis' button: brings its one form to the front.
    void showReport(const QString &formName);
    // The analysis buttons, one per row of the registry, in its order.
    QPushButton *reportButton(const QString &objectName) const;

    QPushButton *btnLog;
    QLabel *lblUser;
    QFrame *Shape1;
    QGroupBox *cxGroupBoxMenu;
    QLabel *Label1;

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
};

extern TfrmMenuQUARV *frmMenuQUARV;
