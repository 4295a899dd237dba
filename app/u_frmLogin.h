#pragma once
// The login window: keeps the connection profiles in a per-user XML file and
// signs the operator in (session connection opened with the program's own
// database account, issuer and password checked against emitent).

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace db { class MemTable; }
namespace ui { class DBEdit; class DBNavigator; }

class TfrmLogin : public QDialog {
    Q_OBJECT
public:
    explicit TfrmLogin(QWidget *parent = nullptr);

    // Handlers (public so the steps can be driven one by one).
    void FormShow();
    void btnConnectClick();

    // caleDocumente + "/conectareQUARV.xml"
    static QString settingsFilePath();
    // The refusal of a port outside 1..65535.
    static QString portRangeText();

    db::MemTable *FDMemTableConectare;
    QLabel *lblTitle;
    QLabel *lblIp;
    QLabel *lblPort;
    QLabel *lblDataBase;
    QLabel *lblUser;
    QLabel *lblParola;
    ui::DBEdit *edtIp;
    ui::DBEdit *edtPort;
    ui::DBEdit *edtDataBase;
    ui::DBEdit *edtUser;
    QLineEdit *edtPassword;
    ui::DBNavigator *DBNavigator1;
    QPushButton *btnConnect;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void createEditors();
    void layOut();
    void setKeyboardOrder();
    void loadProfiles();
    void postPendingEdit();
    QVariant profileValue(const QString &field) const;
};

extern TfrmLogin *frmLogin;
