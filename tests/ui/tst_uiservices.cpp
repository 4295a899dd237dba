// The small services every window relies on: platform answers, the wait
// cursor, the save-dialog and message doubles, the data-aware edit and the
// record navigator.

#include "db/u_memtable.h"
#include "ui/u_dbcontrols.h"
#include "ui/u_filedialog.h"
#include "ui/u_messages.h"
#include "analyses/u_platform.h"
#include "ui/u_waitcursor.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <stdexcept>

using namespace Qt::StringLiterals;

class TestUiServices : public QObject {
    Q_OBJECT

    static std::vector<db::FieldDef> fields()
    {
        db::FieldDef name{QStringLiteral("nume"), db::FieldType::String, 5};
        db::FieldDef number{QStringLiteral("numar"), db::FieldType::Int32};
        return {name, number};
    }

private slots:
    void platform()
    {
        QTemporaryDir home;
        const QString docs = home.path() + QStringLiteral("/Documente");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_DOCUMENTS_DIR", QFile::encodeName(docs));
        const QString found = platform::documentsFolder();
        QVERIFY(!found.isEmpty());
        QVERIFY(!found.endsWith(QLatin1Char('/')));
        // Asked, never created.
        QVERIFY(!QDir(docs).exists());
        QVERIFY(!QDir(home.path() + QStringLiteral("/Documents")).exists());

        platform::setDocumentsFolderOverride(QString());
        QCOMPARE(platform::documentsFolder(), QString());
        platform::setDocumentsFolderOverride(std::nullopt);

        const QChar sep = platform::listSeparator();
        QVERIFY(sep == QLatin1Char(',') || sep == QLatin1Char(';'));
        platform::setListSeparatorOverride(QLatin1Char(';'));
        QCOMPARE(platform::listSeparator(), QLatin1Char(';'));
        platform::setListSeparatorOverride(std::nullopt);
        QCOMPARE(platform::listSeparator(), sep);
    }

    void waitCursorRestoredOnEveryPath()
    {
        try {
            ui::WaitCursor wait;
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
            throw std::runtime_error("x");
        } catch (const std::runtime_error &) {
        }
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }

    // A chosen name without an extension gets the filter's; one of the
    // operator's own stays.
    void defaultSuffix_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("written");
        QTest::newRow("bare") << u"*.csv"_s << u"/d/raport"_s << u"/d/raport.csv"_s;
        QTest::newRow("trailing dot") << u"*.csv"_s << u"/d/raport."_s << u"/d/raport.csv"_s;
        QTest::newRow("dotted folder") << u"*.xlsx"_s << u"/d.v2/raport"_s << u"/d.v2/raport.xlsx"_s;
        QTest::newRow("own extension") << u"*.csv"_s << u"/d/raport.txt"_s << u"/d/raport.txt"_s;
        QTest::newRow("any file") << u"*.*"_s << u"/d/raport"_s << u"/d/raport"_s;
    }
    void defaultSuffix()
    {
        QFETCH(QString, filter);
        QFETCH(QString, typed);
        QFETCH(QString, written);
        QCOMPARE(ui::withDefaultSuffix(typed, ui::filterSuffix(filter)), written);
    }

    // An error escaping a handler is shown, not thrown.
    void guardedErrors()
    {
        QVERIFY(dynamic_cast<ui::WidgetFileDialog *>(&ui::fileDialog()));
        ui::ScopedRecordingMessages msg;
        ui::guarded([] { throw QuarvError(QStringLiteral("Alegeti Conts!")); });
        ui::guarded([] {});
        QCOMPARE(msg.errors, QStringList{u"Alegeti Conts!"_s});
    }

    void boundEditAndNavigator()
    {
        ui::ScopedRecordingMessages msg;
        db::MemTable t;
        t.setFieldDefs(fields());
        QWidget w;
        auto *name = new ui::DBEdit(&w);
        auto *number = new ui::DBEdit(&w);
        auto *nav = new ui::DBNavigator(&w);
        name->bind(&t, QStringLiteral("nume"));
        number->bind(&t, QStringLiteral("numar"));
        nav->setDataSet(&t);
        using N = ui::DBNavigator;
        QVERIFY(!name->isEnabled());
        QVERIFY(!nav->button(N::Insert)->isEnabled());

        t.open();
        QVERIFY(name->isEnabled());
        QCOMPARE(name->maxLength(), 5);
        QVERIFY(nav->button(N::Insert)->isEnabled());
        QVERIFY(!nav->button(N::Post)->isEnabled());
        QVERIFY(!nav->button(N::First)->isEnabled());

        // Typing into an empty table starts a row; digits only in the number.
        QTest::keyClicks(name, QStringLiteral("abcdefg"));
        QTest::keyClicks(number, QStringLiteral("4x2"));
        QVERIFY(t.isEditing());
        QVERIFY(nav->button(N::Post)->isEnabled());
        QCOMPARE(t.fieldValue(QStringLiteral("nume")).toString(), QStringLiteral("abcde"));
        QCOMPARE(t.fieldValue(QStringLiteral("numar")).toInt(), 42);
        QTest::mouseClick(nav->button(N::Post), Qt::LeftButton);
        QCOMPARE(t.rowCount(), 1);
        QVERIFY(!t.isEditing());

        // A second row with an emptied number stays null.
        QTest::mouseClick(nav->button(N::Insert), Qt::LeftButton);
        QVERIFY(name->text().isEmpty());
        QTest::keyClicks(name, QStringLiteral("b"));
        QTest::keyClicks(number, QStringLiteral("7"));
        QTest::keyClick(number, Qt::Key_Backspace);
        nav->click(N::Post);
        QCOMPARE(t.rowCount(), 2);
        QVERIFY(!t.fieldValue(QStringLiteral("numar")).isValid());

        // Moving shows the row; the ends disable their buttons.
        nav->click(N::First);
        QCOMPARE(name->text(), QStringLiteral("abcde"));
        QCOMPARE(number->text(), QStringLiteral("42"));
        QVERIFY(!nav->button(N::Prior)->isEnabled());
        QVERIFY(nav->button(N::Last)->isEnabled());
        nav->click(N::Next);
        QCOMPARE(name->text(), QStringLiteral("b"));
        QVERIFY(!nav->button(N::Next)->isEnabled());

        // Edit then cancel restores the shown value.
        QTest::keyClicks(name, QStringLiteral("zz"));
        nav->click(N::Cancel);
        QCOMPARE(name->text(), QStringLiteral("b"));

        // Buttons hidden or disallowed one by one.
        nav->setButtonVisible(N::Post, false);
        QVERIFY(nav->button(N::Post)->isHidden());
        nav->setButtonAllowed(N::Delete, false);
        QVERIFY(!nav->button(N::Delete)->isEnabled());
        nav->click(N::Delete);
        QCOMPARE(t.rowCount(), 2);
        QVERIFY(msg.questions.isEmpty());
        nav->setButtonAllowed(N::Delete, true);
        // Delete asks first: "Nu" keeps the row, "Da" deletes it.
        msg.answers << false;
        nav->click(N::Delete);
        QCOMPARE(msg.questions, QStringList{u"Stergeti inregistrarea selectata?"_s});
        QCOMPARE(t.rowCount(), 2);
        msg.answers << true;
        nav->click(N::Delete);
        QCOMPARE(t.rowCount(), 1);
        // ... also for a new row not posted yet.
        nav->click(N::Insert);
        msg.answers << false;
        nav->click(N::Delete);
        QCOMPARE(t.state(), db::DataSet::State::Insert);
        nav->click(N::Delete);
        QVERIFY(!t.isEditing());
        QCOMPARE(msg.questions.size(), 4);

        // A refused post is reported and the edit stays.
        t.beforePost = [](db::DataSet &) { throw QuarvError(QStringLiteral("refuzat")); };
        QTest::keyClicks(number, QStringLiteral("9"));
        nav->click(N::Post);
        QCOMPARE(msg.errors, QStringList{u"refuzat"_s});
        QVERIFY(t.isEditing());

        t.close();
        QVERIFY(!name->isEnabled());
        QVERIFY(name->text().isEmpty());

        // A range for an integer field: no minus for a positive range, no
        // digit more than its top has, also once the table is opened again.
        number->setIntRange(1, 65535);
        t.beforePost = nullptr;
        t.open();
        nav->click(N::Insert);
        QTest::keyClicks(number, QStringLiteral("-7"));
        QCOMPARE(number->text(), QStringLiteral("7"));
        QTest::keyClicks(number, QStringLiteral("00000"));
        QCOMPARE(number->text(), QStringLiteral("70000"));
        QCOMPARE(t.fieldValue(QStringLiteral("numar")).toInt(), 70000);
    }
};

QTEST_MAIN(TestUiServices)
#include "tst_uiservices.moc"
