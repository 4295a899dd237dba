#pragma once
// The session the report suites run in: the session module on the test
// server, its Documents folder a fresh temporary one, the list separator ';'
// (a desktop with decimal commas), message boxes recorded rather than shown.
// Made in initTestCase, dropped in cleanupTestCase; the windows under test are
// handed `*dm`. Header only: a suite that uses it links the session and the
// report frame anyway.

#include "analyses/u_platform.h"
#include "reports/common/u_reportform.h"
#include "session/u_dmQuarv.h"
#include "tests/support/u_pgtestserver.h"
#include "ui/u_dateedit.h"
#include "ui/u_messages.h"

#include <QTemporaryDir>

class TestSession {
public:
    explicit TestSession(const QString &issuer = {})
    {
        platform::setListSeparatorOverride(QChar(u';'));
        dm = new TdmQuarv;
        dm->caleDocumente = docs.path();
        dm->emitent = issuer;
        PgTestServer::instance().configure(*dm->pgConn);
        dm->pgConn->open();
    }
    ~TestSession()
    {
        delete dm;
        platform::setListSeparatorOverride(std::nullopt);
    }
    TestSession(const TestSession &) = delete;
    TestSession &operator=(const TestSession &) = delete;

    ui::ScopedRecordingMessages messages;
    QTemporaryDir docs;
    TdmQuarv *dm = nullptr;
};

// "2024-03-10" as a date.
inline QDate isoDate(const char *iso)
{
    return QDate::fromString(QString::fromLatin1(iso), Qt::ISODate);
}

// The period editors of a report form, as the operator fills them; an
// invalid date empties its editor.
inline void setPeriod(TReportForm *f, const QDate &from, const QDate &to)
{
    for (const auto &[name, date] : {std::pair{"cxDateEdit1", from}, std::pair{"cxDateEdit2", to}}) {
        ui::DateEdit *e = f->dateEdit(QString::fromLatin1(name));
        if (date.isValid())
            e->setDate(date);
        else
            e->clearDate();
    }
}
