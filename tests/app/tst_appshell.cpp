// The application shell against a real server: start-up state, the sign-in
// table, the profiles file after each path, the menu's states and buttons,
// and the default error report.

#include "app/u_application.h"
#include "session/u_dmQuarv.h"
#include "app/u_frmLogin.h"
#include "app/u_frmMenuQuarv.h"
#include "app/u_startup.h"
#include "db/u_memtable.h"
#include "db/u_query.h"
#include "reports/u_frmContareDocumente.h"
#include "reports/u_frmFisaDeContAnalitica.h"
#include "tests/support/u_leakpause.h"
#include "tests/support/u_pgtestserver.h"
#include "ui/u_dbcontrols.h"
#include "ui/u_messages.h"
#include "analyses/u_platform.h"

#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

const QString kBadLogin = QStringLiteral("Eroare la conectare");
const QString kMustLogin = QStringLiteral("Trebuie sa va autentificati...");

class Thrower : public QObject {
public:
    int kind = 0;
    bool event(QEvent *e) override
    {
        if (e->type() != QEvent::User)
            return QObject::event(e);
        if (kind == 0)
            throw QuarvError(QStringLiteral("Eroare de proba"));
        if (kind == 1)
            throw std::runtime_error("std failure");
        throw 42;
    }
};

} // namespace

class TestAppShell : public QObject {
    Q_OBJECT
    QTemporaryDir m_docs;
    ui::ScopedRecordingMessages *m_msg = nullptr;
    PgTestServer *m_pg = nullptr;
    qlonglong m_backend = 0;

    TfrmMenuQUARV *menu() const { return static_cast<TfrmMenuQUARV *>(mainWindow()); }
    QString settingsFile() const { return m_docs.path() + QStringLiteral("/conectareQUARV.xml"); }
    QByteArray settingsBytes() const
    {
        QFile f(settingsFile());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    // A fresh login window holding one typed profile, as the operator would type it.
    void typeProfile(const QString &ip, const QString &port, const QString &database, const QString &user,
                     const QString &password)
    {
        frmLogin->hide();
        QFile::remove(settingsFile());
        frmLogin->FDMemTableConectare->close();
        frmLogin->show();
        QVERIFY(frmLogin->FDMemTableConectare->isActive());
        QCOMPARE(frmLogin->FDMemTableConectare->rowCount(), 0);
        QTest::keyClicks(frmLogin->edtIp, ip);
        QTest::keyClicks(frmLogin->edtPort, port);
        QTest::keyClicks(frmLogin->edtDataBase, database);
        QTest::keyClicks(frmLogin->edtUser, user);
        frmLogin->edtPassword->setText(password);
    }
    void typeGoodProfile(const QString &user, const QString &password)
    {
        typeProfile(m_pg->host(), QString::number(m_pg->port()), m_pg->database(), user, password);
    }

    qlonglong backendPid() const
    {
        db::Query q;
        q.setConnection(dmQuarv->pgConn);
        q.setSql(QStringLiteral("select pg_backend_pid()"));
        q.open();
        return q.fieldValue(0).toLongLong();
    }

    // Presses "LogIn"; while the modal window is open, `during` runs and the
    // window is closed by its close box if still open.
    void pressLogIn(const std::function<void()> &during)
    {
        QTimer::singleShot(0, frmLogin, [&] {
            during();
            if (frmLogin->isVisible())
                frmLogin->reject();
        });
        QTest::mouseClick(menu()->btnLog, Qt::LeftButton);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_docs.isValid());
        m_msg = new ui::ScopedRecordingMessages;
        platform::setDocumentsFolderOverride(m_docs.path());
        m_pg = &PgTestServer::instance();
        m_pg->exec(QStringLiteral("delete from emitent"));
        m_pg->exec(QStringLiteral("insert into emitent (emitent, operator_parola) values ('DEMO', 'secret')"));
        m_pg->execAdmin(QStringLiteral("alter table emitent drop constraint if exists emitent_pkey cascade"));
        m_pg->exec(QStringLiteral("insert into emitent (emitent, operator_parola) values ('DUP', 'x'), ('DUP', 'x')"));
        createForms();
        menu()->show();
    }

    void cleanupTestCase()
    {
        destroyForms();
        delete m_msg;
    }

    void init() { m_msg->clear(); }

    // One taskbar button: the main window owns every other window, each a
    // window of its own; the report forms stay modeless.
    void startupWindows()
    {
        QCOMPARE(mainWindow(), createdForms().first());
        QVERIFY(!frmMenuQUARV->isVisible()); // the second menu is never shown
        QVERIFY(!mainWindow()->parentWidget());
        for (QObject *o : createdForms()) {
            auto *w = qobject_cast<QWidget *>(o);
            if (!w || w == mainWindow())
                continue;
            QVERIFY2(w->parentWidget() == mainWindow(), qPrintable(w->objectName()));
            QVERIFY2(w->isWindow(), qPrintable(w->objectName()));
        }
        for (QWidget *w : {static_cast<QWidget *>(frmContareDocumente), static_cast<QWidget *>(frmFisaDeContAnalitica)})
            QCOMPARE(w->windowModality(), Qt::NonModal);
    }

    void startupTouchesNoDatabase()
    {
        QVERIFY(!dmQuarv->pgConn->isOpen());
        QVERIFY(!dmQuarv->dsEmitent->isActive());
        QVERIFY(!dmQuarv->dsDataList->isActive());
        QVERIFY(!dmQuarv->pgMenuQuarv->isActive());
        QCOMPARE(dmQuarv->pgConn->onConnectionLost(), db::Connection::LostMode::ReconnectExecute);
        QCOMPARE(dmQuarv->caleDocumente, m_docs.path());
    }

    // Signed out: no issuer, no report buttons, only "LogIn".
    void startupMenuSignedOut()
    {
        QVERIFY(dmQuarv->emitent.isEmpty());
        QVERIFY(menu()->lblUser->text().isEmpty());
        QVERIFY(!menu()->cxGroupBoxMenu->isVisible());
        QCOMPARE(menu()->btnLog->text(), QStringLiteral("LogIn"));
    }

    void defaultErrorReport()
    {
        Thrower t;
        for (int kind = 0; kind < 3; ++kind) {
            t.kind = kind;
            QEvent ev(QEvent::User);
            QCoreApplication::sendEvent(&t, &ev); // must not throw
        }
        // A handler wired without a guard: the click ends, the text is shown.
        QPushButton b;
        int after = 0;
        connect(&b, &QPushButton::clicked, [] { throw QuarvError(QStringLiteral("Alegeti Perioada Dorita!")); });
        connect(&b, &QPushButton::pressed, [&] { ++after; });
        {
            const LeakCheckPause qtLeaksWhatItHeld;
            b.show();
            QTest::mouseClick(&b, Qt::LeftButton);
            QTest::mouseClick(&b, Qt::LeftButton);
        }
        QCOMPARE(after, 2);
        QCOMPARE(m_msg->errors, QStringList({u"Eroare de proba"_s, u"std failure"_s, u"Eroare necunoscuta"_s,
                                             u"Alegeti Perioada Dorita!"_s, u"Alegeti Perioada Dorita!"_s}));
    }

    void settingsFileReading()
    {
        db::MemTable *t = frmLogin->FDMemTableConectare;
        auto showWithFile = [&](const QByteArray *content) {
            frmLogin->hide();
            t->close();
            QFile::remove(settingsFile());
            if (content) {
                QFile f(settingsFile());
                QVERIFY(f.open(QIODevice::WriteOnly));
                f.write(*content);
            }
            frmLogin->show();
        };

        // A good file, two profiles: the first is current and shown.
        {
            db::MemTable src;
            src.setFieldDefs(t->designedFields());
            src.open();
            src.appendRow({QStringLiteral("srv1"), 5433, QStringLiteral("db1"), QStringLiteral("E1")});
            src.appendRow({QStringLiteral("srv2"), QVariant(), QStringLiteral("db2"), QStringLiteral("E2")});
            src.saveToFile(settingsFile());
        }
        const QByteArray good = settingsBytes();
        QVERIFY(!good.isEmpty());
        showWithFile(&good);
        QCOMPARE(t->rowCount(), 2);
        QCOMPARE(t->currentRow(), 0);
        QCOMPARE(frmLogin->edtIp->text(), QStringLiteral("srv1"));
        QCOMPARE(frmLogin->edtPort->text(), QStringLiteral("5433"));
        t->next();
        QCOMPARE(frmLogin->edtUser->text(), QStringLiteral("E2"));
        QVERIFY(frmLogin->edtPort->text().isEmpty());

        // Missing, empty, malformed and truncated files: silently an empty table.
        const QByteArray empty;
        const QByteArray malformed("<<not xml at all");
        const QByteArray truncated = good.left(good.size() / 2);
        const QByteArray *bad[] = {nullptr, &empty, &malformed, &truncated};
        for (const QByteArray *content : bad) {
            showWithFile(content);
            QVERIFY(t->isActive());
            QCOMPARE(t->rowCount(), 0);
            QCOMPARE(t->fieldCount(), 4);
            QVERIFY(m_msg->all.isEmpty());
            QCOMPARE(frmLogin->focusWidget(), frmLogin->edtPassword);
        }
        QCOMPARE(frmLogin->edtPassword->echoMode(), QLineEdit::Password);
        frmLogin->hide();
        QFile::remove(settingsFile());
    }

    // Unreachable server: the connection layer's own text in the plain box
    // with one OK button, not the error box; nothing saved.
    void signInUnreachableServer()
    {
        typeProfile(m_pg->host(), QString::number(PgTestServer::deadPort()), m_pg->database(), u"DEMO"_s, u"secret"_s);
        QTest::keyClick(frmLogin->edtDataBase, Qt::Key_Return); // Enter anywhere presses "Conectare"
        QVERIFY(m_msg->errors.isEmpty());
        QCOMPARE(m_msg->informations.size(), 1);
        QVERIFY(m_msg->informations.first() != kBadLogin && !m_msg->informations.first().isEmpty());
        QTest::keyClick(frmLogin->DBNavigator1->button(ui::DBNavigator::First), Qt::Key_Return);
        QCOMPARE(m_msg->informations.size(), 2);
        QVERIFY(frmLogin->isVisible());
        QVERIFY(dmQuarv->emitent.isEmpty());
        QVERIFY(!QFile::exists(settingsFile()));
        QCOMPARE(dmQuarv->pgConn->userName(), QStringLiteral("quarv"));
        QCOMPARE(dmQuarv->pgConn->password(), QStringLiteral("kadrim"));
        frmLogin->hide();
    }

    void signInWrongDatabase()
    {
        typeProfile(m_pg->host(), QString::number(m_pg->port()), u"nu_exista_db"_s, u"DEMO"_s, u"secret"_s);
        frmLogin->btnConnect->click();
        QCOMPARE(m_msg->informations.size(), 1);
        QVERIFY2(m_msg->informations.first().contains(u"nu_exista_db"_s), qPrintable(m_msg->informations.first()));
        QVERIFY(!dmQuarv->pgConn->isOpen());
        QVERIFY(!QFile::exists(settingsFile()));
        frmLogin->hide();
    }

    // Unknown issuer, wrong, empty or differently cased credentials, two
    // identical issuer rows: refused alike, the session's connection kept.
    void signInRefused_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::newRow("unknown issuer") << u"NOBODY"_s << u"secret"_s;
        QTest::newRow("wrong password") << u"DEMO"_s << u"gresit"_s;
        QTest::newRow("empty password") << u"DEMO"_s << QString();
        QTest::newRow("issuer in other case") << u"demo"_s << u"secret"_s;
        QTest::newRow("duplicate issuer") << u"DUP"_s << u"x"_s;
    }
    void signInRefused()
    {
        QFETCH(QString, user);
        QFETCH(QString, password);
        typeGoodProfile(user, password);
        frmLogin->btnConnect->click();
        // A retry against the same server keeps the session's connection.
        const qlonglong pid = backendPid();
        QVERIFY(m_backend == 0 || pid == m_backend);
        m_backend = pid;
        QCOMPARE(m_msg->all, QStringList{kBadLogin});
        QCOMPARE(m_msg->informations, QStringList{kBadLogin});
        QVERIFY(frmLogin->isVisible());
        QVERIFY(dmQuarv->emitent.isEmpty());
        QVERIFY(dmQuarv->pgConn->isOpen());
        QVERIFY(!dmQuarv->dsEmitent->isActive());
        QVERIFY(!QFile::exists(settingsFile()));
        frmLogin->hide();
    }

    // No minus in the port box; an empty port cell is port 0; a port outside
    // 1..65535, typed or from a profile written elsewhere, is refused before
    // anything is assigned.
    void signInPortChecks()
    {
        typeProfile(m_pg->host(), QString(), m_pg->database(), u"DEMO"_s, u"secret"_s);
        frmLogin->btnConnect->click();
        QCOMPARE(dmQuarv->pgConn->port(), 0);

        typeProfile(u"alt-server"_s, u"-7"_s, m_pg->database(), u"DEMO"_s, u"secret"_s);
        QCOMPARE(frmLogin->edtPort->text(), QStringLiteral("7"));
        QTest::keyClicks(frmLogin->edtPort, u"0000"_s);
        const QString hostBefore = dmQuarv->pgConn->host();
        for (int bad : {70000, -1, 0, 65536}) {
            m_msg->clear();
            if (bad != 70000)
                frmLogin->FDMemTableConectare->setFieldValue(u"port"_s, bad);
            QCOMPARE(frmLogin->FDMemTableConectare->fieldValue(u"port"_s).toInt(), bad);
            frmLogin->btnConnect->click();
            QCOMPARE(m_msg->informations, QStringList{TfrmLogin::portRangeText()});
            QCOMPARE(dmQuarv->pgConn->host(), hostBefore);
            QCOMPARE(dmQuarv->pgConn->port(), 0);
            QVERIFY(frmLogin->isVisible());
            QVERIFY(dmQuarv->emitent.isEmpty());
        }
        frmLogin->hide();
    }

    void signInSuccessAndFile()
    {
        m_pg->exec(QStringLiteral("insert into emitent (emitent, operator_parola) values ('GOL', '')"));
        // An empty password matches an empty operator_parola.
        typeGoodProfile(u"GOL"_s, u""_s);
        frmLogin->btnConnect->click();
        QVERIFY2(m_msg->all.isEmpty(), qPrintable(m_msg->all.join(u'|')));
        QCOMPARE(dmQuarv->emitent, QStringLiteral("GOL"));
        QVERIFY(!frmLogin->isVisible());
        QCOMPARE(frmLogin->result(), int(QDialog::Accepted));
        QVERIFY(!frmLogin->FDMemTableConectare->isActive());

        // Several profiles: the current one is used, every row is saved, no password.
        typeProfile(u"alt-server"_s, u"1234"_s, u"alta"_s, u"X"_s, u""_s);
        QTest::mouseClick(frmLogin->DBNavigator1->button(ui::DBNavigator::Insert), Qt::LeftButton);
        QTest::keyClicks(frmLogin->edtIp, m_pg->host());
        QTest::keyClicks(frmLogin->edtPort, QString::number(m_pg->port()));
        QTest::keyClicks(frmLogin->edtDataBase, m_pg->database());
        QTest::keyClicks(frmLogin->edtUser, u"DEMO"_s);
        frmLogin->edtPassword->setText(u"secret"_s);
        frmLogin->btnConnect->click(); // the pending insert is posted first
        QVERIFY2(m_msg->all.isEmpty(), qPrintable(m_msg->all.join(u'|')));
        QCOMPARE(dmQuarv->emitent, QStringLiteral("DEMO"));
        const QByteArray saved = settingsBytes();
        QVERIFY(saved.contains("alt-server"));
        QVERIFY(saved.contains("DEMO"));
        QVERIFY(!saved.contains("secret"));
        QVERIFY(!saved.contains("kadrim"));

        // A refused attempt leaves the saved profiles as they were.
        frmLogin->show();
        frmLogin->DBNavigator1->click(ui::DBNavigator::Next);
        QTest::keyClicks(frmLogin->edtUser, u"x"_s);
        frmLogin->btnConnect->click();
        QCOMPARE(m_msg->all, QStringList{kBadLogin});
        QCOMPARE(settingsBytes(), saved);
        m_msg->clear();

        // The next showing reloads both rows.
        frmLogin->show();
        QCOMPARE(frmLogin->FDMemTableConectare->rowCount(), 2);
        QVERIFY(dmQuarv->emitent.isEmpty());
        frmLogin->hide();
    }

    void unwritableDocumentsFolder()
    {
        const QString saved = dmQuarv->caleDocumente;
        const QString folders[] = {m_docs.path() + u"/lipsa/mai/adanc"_s, settingsFile() + u"/sub"_s};
        QFile::remove(settingsFile());
        for (const QString &folder : folders) {
            m_msg->clear();
            dmQuarv->caleDocumente = saved;
            typeGoodProfile(u"DEMO"_s, u"secret"_s);
            dmQuarv->caleDocumente = folder;
            frmLogin->btnConnect->click();
            QCOMPARE(m_msg->informations, QStringList{u"Nu se poate crea fisierul conectareQUARV.xml\rin directorul "_s + folder});
            // Signed in anyway; the window closed; the typed rows kept.
            QCOMPARE(dmQuarv->emitent, QStringLiteral("DEMO"));
            QVERIFY(!frmLogin->isVisible());
            QVERIFY(frmLogin->FDMemTableConectare->isActive());
            QCOMPARE(frmLogin->FDMemTableConectare->rowCount(), 1);
            // Shown again with no file to reload: the operator's row is still there.
            frmLogin->show();
            QCOMPARE(frmLogin->FDMemTableConectare->rowCount(), 1);
            frmLogin->hide();
        }
        dmQuarv->caleDocumente = saved;
    }

    void menuStates()
    {
        // Closing the login window by its close box.
        bool checkedDuring = false;
        pressLogIn([&] {
            checkedDuring = frmLogin->isVisible() && dmQuarv->emitent.isEmpty()
                            && menu()->lblUser->text().isEmpty() && !menu()->cxGroupBoxMenu->isVisible();
        });
        QVERIFY(checkedDuring);
        QCOMPARE(m_msg->errors, QStringList{kMustLogin});
        QVERIFY(!menu()->cxGroupBoxMenu->isVisible());
        QVERIFY(menu()->lblUser->text().isEmpty());

        // A successful sign-in through the menu.
        m_msg->clear();
        pressLogIn([&] {
            frmLogin->FDMemTableConectare->close();
            QFile::remove(settingsFile());
            frmLogin->FormShow();
            QTest::keyClicks(frmLogin->edtIp, m_pg->host());
            QTest::keyClicks(frmLogin->edtPort, QString::number(m_pg->port()));
            QTest::keyClicks(frmLogin->edtDataBase, m_pg->database());
            QTest::keyClicks(frmLogin->edtUser, u"DEMO"_s);
            frmLogin->edtPassword->setText(u"secret"_s);
            QTest::keyClick(frmLogin->edtPassword, Qt::Key_Enter);
        });
        QVERIFY2(m_msg->all.isEmpty(), qPrintable(m_msg->all.join(u'|')));
        QCOMPARE(menu()->lblUser->text(), QStringLiteral("DEMO"));
        QVERIFY(menu()->cxGroupBoxMenu->isVisible());

        // LogIn again while signed in: dropped at once, connection kept open.
        m_msg->clear();
        checkedDuring = false;
        pressLogIn([&] {
            checkedDuring = dmQuarv->emitent.isEmpty() && menu()->lblUser->text().isEmpty()
                            && !menu()->cxGroupBoxMenu->isVisible() && dmQuarv->pgConn->isOpen();
        });
        QVERIFY(checkedDuring);
        QCOMPARE(m_msg->errors, QStringList{kMustLogin});
        QVERIFY(!menu()->cxGroupBoxMenu->isVisible());
        QVERIFY(dmQuarv->pgConn->isOpen());
    }

    void reportButtons()
    {
        QWidget *firstSheet = qobject_cast<QWidget *>(createdForms().at(7));
        QTest::mouseClick(menu()->reportButton(u"btnFisaCont"_s), Qt::LeftButton);
        QTest::mouseClick(menu()->reportButton(u"btnFisaCont"_s), Qt::LeftButton);
        QVERIFY(frmFisaDeContAnalitica->isVisible());
        QVERIFY(!firstSheet->isVisible());
        int shown = 0;
        for (QWidget *w : QApplication::topLevelWidgets())
            shown += w->isVisible() && w->objectName() == QLatin1String("frmFisaDeContAnalitica");
        QCOMPARE(shown, 1);

        // The form that was never created: the default error report, nothing opens.
        const int before = QApplication::topLevelWidgets().size();
        QTest::mouseClick(menu()->reportButton(u"cxButton3"_s), Qt::LeftButton);
        QCOMPARE(m_msg->errors.size(), 1);
        QVERIFY(m_msg->errors.first().contains(u"frmAnalizaPostcalcul"_s));
        QCOMPARE(QApplication::topLevelWidgets().size(), before);
        // The menu goes on working.
        QTest::mouseClick(menu()->reportButton(u"btnContareDoc"_s), Qt::LeftButton);
        QVERIFY(frmContareDocumente->isVisible());
        QCOMPARE(m_msg->errors.size(), 1);
    }

    void droppedConnectionIsRepeated()
    {
        m_pg->exec(QStringLiteral("delete from data_list"));
        m_pg->exec(QStringLiteral("insert into data_list (data_incep, data_sf) values ('2024-01-01', '2024-01-31')"));
        QVERIFY(dmQuarv->pgConn->isOpen());
        QVERIFY(m_pg->terminateOthers() >= 1);
        dmQuarv->dsDataList->open();
        QCOMPARE(dmQuarv->dsDataList->rowCount(), 1);
        QVERIFY(m_msg->all.isEmpty());
        dmQuarv->dsDataList->close();
    }

    // Runs last: the program's own start, loop and end.
    void mainWindowEndsProgram()
    {
        destroyForms();
        QVERIFY(createdForms().isEmpty());
        QCOMPARE(frmLogin, nullptr);
        bool closedWithReportOpen = false;
        QTimer::singleShot(0, qApp, [&] {
            menu()->showReport(u"frmContareDocumente"_s);
            closedWithReportOpen = frmContareDocumente->isVisible() && menu()->isVisible();
            menu()->close();
        });
        const int rc = runProgram(*qobject_cast<QApplication *>(qApp));
        QCOMPARE(rc, 0);
        QVERIFY(closedWithReportOpen);
        QVERIFY(createdForms().isEmpty());
        QCOMPARE(dmQuarv, nullptr);
        QCOMPARE(frmMenuQUARV, nullptr);
    }
};

int main(int argc, char **argv)
{
    TQuarvApplication app(argc, argv);
    TestAppShell t;
    return QTest::qExec(&t, argc, argv);
}

#include "tst_appshell.moc"
