#include "app/u_frmLogin.h"

#include "db/u_memtable.h"
#include "analyses/u_signin.h"
#include "app/u_startup.h"
#include "session/u_dmQuarv.h"
#include "ui/u_dbcontrols.h"
#include "ui/u_messages.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QShowEvent>
#include <QToolButton>
#include <QVBoxLayout>

TfrmLogin *frmLogin = nullptr;

namespace {

const QString kIp = QStringLiteral("ip");
const QString kPort = QStringLiteral("port");
const QString kDataBase = QStringLiteral("dataBase");
const QString kUser = QStringLiteral("user");

std::vector<db::FieldDef> profileFields()
{
    auto str = [](const QString &name) {
        db::FieldDef d;
        d.name = name;
        d.type = db::FieldType::String;
        d.size = 20;
        return d;
    };
    db::FieldDef port;
    port.name = kPort;
    port.type = db::FieldType::Int32;
    return {str(kIp), port, str(kDataBase), str(kUser)};
}

// The password box shows every character as "*", whatever the desktop's style.
class StarPasswordStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *ret) const override
    {
        if (hint == QStyle::SH_LineEdit_PasswordCharacter)
            return '*';
        return QProxyStyle::styleHint(hint, option, widget, ret);
    }
};

// Closes the login query on every way out of the sign-in check.
struct CloseOnExit {
    db::DataSet *ds;
    ~CloseOnExit()
    {
        try {
            ds->close();
        } catch (...) {
        }
    }
};

} // namespace

TfrmLogin::TfrmLogin(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmLogin"));
    setWindowTitle(QStringLiteral("frmLogin"));
    QFont formFont(QStringLiteral("Tahoma"), 8);
    setFont(formFont);
    resize(295, 257);

    FDMemTableConectare = new db::MemTable(this);
    FDMemTableConectare->setObjectName(QStringLiteral("FDMemTableConectare"));
    FDMemTableConectare->setFieldDefs(profileFields());

    lblTitle = new QLabel(QStringLiteral("Log In"), this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    QFont titleFont(QStringLiteral("Tahoma"), 14);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);
    QPalette pal = lblTitle->palette();
    pal.setColor(QPalette::WindowText, pal.color(QPalette::Highlight));
    lblTitle->setPalette(pal);

    createEditors();

    DBNavigator1 = new ui::DBNavigator(this);
    DBNavigator1->setObjectName(QStringLiteral("DBNavigator1"));
    DBNavigator1->setDataSet(FDMemTableConectare);

    btnConnect = new QPushButton(QStringLiteral("Conectare"), this);
    btnConnect->setObjectName(QStringLiteral("btnConnect"));
    btnConnect->setDefault(true);
    btnConnect->setAccessibleName(QStringLiteral("Conectare"));
    connect(btnConnect, &QPushButton::clicked, this, [this] { btnConnectClick(); });

    layOut();
    setKeyboardOrder();
}

// The profile's editors, the password box and their labels.
void TfrmLogin::createEditors()
{
    auto makeEdit = [this](const char *name, const QString &field) {
        auto *e = new ui::DBEdit(this);
        e->setObjectName(QString::fromLatin1(name));
        e->bind(FDMemTableConectare, field);
        return e;
    };
    auto makeLabel = [this](const char *name, const QString &text, QWidget *buddy) {
        auto *l = new QLabel(text, this);
        l->setObjectName(QString::fromLatin1(name));
        l->setBuddy(buddy);
        return l;
    };
    edtIp = makeEdit("edtIp", kIp);
    edtPort = makeEdit("edtPort", kPort);
    edtDataBase = makeEdit("edtDataBase", kDataBase);
    edtUser = makeEdit("edtUser", kUser);
    edtPassword = new QLineEdit(this);
    edtPassword->setObjectName(QStringLiteral("edtPassword"));
    edtPassword->setEchoMode(QLineEdit::Password);
    auto *stars = new StarPasswordStyle;
    stars->setParent(edtPassword);
    edtPassword->setStyle(stars);
    lblIp = makeLabel("lblIp", QStringLiteral("ip"), edtIp);
    lblPort = makeLabel("lblPort", QStringLiteral("port"), edtPort);
    lblDataBase = makeLabel("lblDataBase", QStringLiteral("dataBase"), edtDataBase);
    lblUser = makeLabel("lblUser", QStringLiteral("user"), edtUser);
    lblParola = makeLabel("lblParola", QStringLiteral("Parola"), edtPassword);
    // Accessible names as the labels read (the buddy link names them too on
    // most platforms; this makes it certain).
    edtIp->setAccessibleName(QStringLiteral("ip"));
    edtPort->setAccessibleName(QStringLiteral("port"));
    edtDataBase->setAccessibleName(QStringLiteral("dataBase"));
    edtUser->setAccessibleName(QStringLiteral("user"));
    edtPassword->setAccessibleName(QStringLiteral("Parola"));
    // The port box is narrow; the others follow the window's width. Only a
    // TCP port can be typed into it.
    edtPort->setFixedWidth(64);
    edtPort->setIntRange(1, 65535);
}

void TfrmLogin::layOut()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(5);
    grid->addWidget(lblIp, 0, 0);
    grid->addWidget(edtIp, 0, 1);
    grid->addWidget(lblPort, 1, 0);
    grid->addWidget(edtPort, 1, 1, Qt::AlignLeft);
    grid->addWidget(lblDataBase, 2, 0);
    grid->addWidget(edtDataBase, 2, 1);
    grid->addWidget(lblUser, 3, 0);
    grid->addWidget(edtUser, 3, 1);
    grid->addWidget(lblParola, 4, 0);
    grid->addWidget(edtPassword, 4, 1);
    grid->setColumnStretch(1, 1);

    auto *lay = new QVBoxLayout(this);
    lay->setContentsMargins(12, 6, 12, 10);
    lay->setSpacing(8);
    lay->addWidget(lblTitle, 0, Qt::AlignLeft);
    lay->addLayout(grid);
    lay->addWidget(DBNavigator1);
    lay->addStretch(1);
    lay->addWidget(btnConnect);
}

void TfrmLogin::setKeyboardOrder()
{
    // Keyboard order: the profile, the password, "Conectare", then the navigator.
    setTabOrder(edtIp, edtPort);
    setTabOrder(edtPort, edtDataBase);
    setTabOrder(edtDataBase, edtUser);
    setTabOrder(edtUser, edtPassword);
    setTabOrder(edtPassword, btnConnect);
    QWidget *prev = btnConnect;
    for (int b = 0; b < ui::DBNavigator::ButtonCount; ++b) {
        QWidget *w = DBNavigator1->button(ui::DBNavigator::Button(b));
        setTabOrder(prev, w);
        prev = w;
    }
}

QString TfrmLogin::portRangeText()
{
    return QStringLiteral("Portul trebuie sa fie un numar intre 1 si 65535!");
}

QString TfrmLogin::settingsFilePath()
{
    const QString folder = dmQuarv ? dmQuarv->caleDocumente : QString();
    return folder + QStringLiteral("/conectareQUARV.xml");
}

void TfrmLogin::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        ui::guarded([this] { FormShow(); });
}

void TfrmLogin::FormShow()
{
    dmQuarv->emitent.clear();
    loadProfiles();
    edtPassword->setFocus(Qt::OtherFocusReason);
}

// Reads the settings file into the profile table. Any failure is silent: the
// table is then opened as it stands (empty the first time; with the rows the
// operator typed when an earlier save failed).
void TfrmLogin::loadProfiles()
{
    db::MemTable file;
    bool loaded = false;
    try {
        file.loadFromFile(settingsFilePath());
        loaded = file.isActive();
    } catch (...) {
        loaded = false;
    }

    if (loaded) {
        // The file's columns are matched to the designed ones by name, so a
        // file with a column missing or extra still yields the four fields.
        std::vector<int> map;
        for (const db::FieldDef &d : FDMemTableConectare->designedFields())
            map.push_back(file.fieldIndex(d.name));
        FDMemTableConectare->close();
        FDMemTableConectare->open();
        for (qsizetype r = 0; r < file.rowCount(); ++r) {
            QVariantList row;
            for (int src : map)
                row.append(src >= 0 ? file.value(r, src) : QVariant());
            FDMemTableConectare->appendRow(row);
        }
        FDMemTableConectare->first();
        return;
    }
    if (!FDMemTableConectare->isActive())
        FDMemTableConectare->open();
}

void TfrmLogin::postPendingEdit()
{
    if (FDMemTableConectare->isEditing())
        FDMemTableConectare->post();
}

QVariant TfrmLogin::profileValue(const QString &field) const
{
    const int i = FDMemTableConectare->fieldIndex(field);
    return i >= 0 ? FDMemTableConectare->fieldValue(i) : QVariant();
}

void TfrmLogin::btnConnectClick()
{
    try {
        // What is used must be what gets saved.
        postPendingEdit();

        // An empty cell is port 0 (the client library's default); a port
        // outside 1..65535 is refused before anything is assigned.
        const QVariant port = profileValue(kPort);
        if (port.isValid() && (port.toInt() < 1 || port.toInt() > 65535))
            throw QuarvError(portRangeText());

        db::Connection *conn = dmQuarv->pgConn;
        conn->setHost(profileValue(kIp).toString());
        conn->setPort(port.toInt());
        conn->setDatabase(profileValue(kDataBase).toString());
        conn->setUserName(rep::databaseUser());
        conn->setPassword(rep::databasePassword());
        conn->open();

        {
            CloseOnExit closer{dmQuarv->dsEmitent};
            rep::checkIssuer(*dmQuarv->dsEmitent, profileValue(kUser).toString(), edtPassword->text());
            dmQuarv->emitent = profileValue(kUser).toString();
            accept();
        }

        try {
            postPendingEdit();
            FDMemTableConectare->saveToFile(settingsFilePath());
            FDMemTableConectare->close();
        } catch (...) {
            throw QuarvError(QStringLiteral("Nu se poate crea fisierul conectareQUARV.xml") + QChar(13)
                             + QStringLiteral("in directorul ") + dmQuarv->caleDocumente);
        }
    } catch (...) {
        // The window reports its own errors, in a plain box with an OK
        // button, and stays where it is.
        ui::messages().information(ui::exceptionText(std::current_exception()), this);
    }
}
