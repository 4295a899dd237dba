#include "session/u_dmQuarv.h"

#include "analyses/u_reportdesc.h"
#include "analyses/u_signin.h"

#include <QFont>

namespace {

using ui::CellStyle;
using ui::GridElement;

// The menu tree as the menu table stores it: issuer and application are fixed
// in the text on purpose.
const char kMenuSql[] =
    "select * \n"
    "from ( \n"
    "      with recursive menuquarvR as (select menuquarv.*, \n"
    "                                         cast(1 as integer) as nivel \n"
    "                                  from menuquarv \n"
    "                                  where menuquarv.menuquarv_sup is null \n"
    "                                  union all \n"
    "                                  select menuquarv.*, \n"
    "                                         nivel + 1 as nivel \n"
    "                                  from menuquarvR \n"
    "                                  inner join menuquarv on menuquarvR.aplicatie = menuquarv.aplicatie_sup \n"
    "                                                 and menuquarvR.menuquarv   = menuquarv.menuquarv_sup \n"
    "                                 ) \n"
    "      select menuquarvR.* \n"
    "      from menuquarvR \n"
    "     ) as a \n"
    "where (aplicatie, menuquarv) in (select aplicatie, menuquarv from emitent_menuquarv where emitent = 'QUARV')\n"
    "  and aplicatie = 'POS'\n"
    "order by aplicatie, \n"
    "         nivel, \n"
    "         scv; ";

;

QColor rgb(const char *hex) { return QColor(QString::fromLatin1(hex)); }

QFont font(const char *family, int points, bool bold = false)
{
    QFont f(QString::fromLatin1(family), points);
    f.setBold(bold);
    return f;
}

CellStyle style(std::optional<QColor> back, std::optional<QFont> f = std::nullopt,
                std::optional<QColor> text = std::nullopt)
{
    return CellStyle{std::move(back), std::move(f), std::move(text)};
}

const QColor kBlack = Qt::black;
const QColor kWhite = Qt::white;
const QColor kNavy = rgb("#000080");

void fillReport(ui::GridStyleSheet &s)
{
    const QFont ms = font("MS Sans Serif", 8);
    const QFont msBold = font("MS Sans Serif", 8, true);
    s.set(GridElement::Background, style(rgb("#A4C4EB")));
    s.set(GridElement::Content, style(rgb("#D9EAF7"), ms, kBlack));
    s.set(GridElement::ContentEven, style(rgb("#D9EAF7"), std::nullopt, kBlack));
    s.set(GridElement::ContentOdd, style(rgb("#D9EAF7"), std::nullopt, kBlack));
    s.set(GridElement::FilterBox, style(rgb("#FFFFE1"), std::nullopt, kBlack));
    s.set(GridElement::IncSearch, style(rgb("#FED547"), std::nullopt, kBlack));
    s.set(GridElement::Footer, style(rgb("#FFFFE1"), msBold, kNavy));
    s.set(GridElement::Group, style(rgb("#F1EFE2")));
    s.set(GridElement::GroupByBox, style(rgb("#FED547"), std::nullopt, kBlack));
    s.set(GridElement::Header, style(kWhite, msBold, kBlack));
    s.set(GridElement::Inactive, style(rgb("#A4C4EB")));
    s.set(GridElement::Indicator, style(rgb("#A4C4EB")));
    s.set(GridElement::Preview, style(rgb("#FFFFE1"), msBold, kNavy));
    s.set(GridElement::Selection, style(rgb("#316AC5"), std::nullopt, kWhite));
}

// The styles StandardQUARV shares with its red twin.
void fillStandardCommon(ui::GridStyleSheet &s)
{
    const QFont t8 = font("Tahoma", 8);
    const QFont t8b = font("Tahoma", 8, true);
    const QFont t10 = font("Tahoma", 10);
    s.set(GridElement::Background, style(rgb("#FFFFEA")));
    s.set(GridElement::Content, style(rgb("#D9EAF7"), t10, QColor(Qt::red)));
    s.set(GridElement::ContentEven, style(rgb("#D7D6B3"), t10, kBlack));
    s.set(GridElement::ContentOdd, style(rgb("#E7E7D1"), t10, kBlack));
    s.set(GridElement::FilterBox, style(rgb("#999A85"), t8, kBlack));
    s.set(GridElement::IncSearch, style(rgb("#E0D9A7"), t8, kBlack));
    s.set(GridElement::Footer, style(rgb("#D7D6B3"), t8, kNavy));
    s.set(GridElement::Group, style(rgb("#D7D6B3"), t8b));
    s.set(GridElement::GroupByBox, style(rgb("#E0D9A7"), t8b, kBlack));
    s.set(GridElement::Header, style(kWhite, t8b, kBlack));
    s.set(GridElement::Inactive, style(rgb("#94B1AB"), t10));
    s.set(GridElement::Indicator, style(std::nullopt, t8));
    s.set(GridElement::Preview, style(rgb("#FFFFE1"), t8, kNavy));
    s.set(GridElement::Selection, style(rgb("#C0C0C0"), font("Arial Unicode MS", 10), kBlack));
}

} // namespace

TdmQuarv::TdmQuarv(QObject *parent) : QObject(parent)
{
    setObjectName(QStringLiteral("dmQuarv"));

    pgConn = new db::Connection(this);
    pgConn->setObjectName(QStringLiteral("pgConn"));
    // Design-time values; the login overwrites every one of them. No port:
    // the client library's default.
    pgConn->setHost(QStringLiteral("localhost"));
    pgConn->setDatabase(QStringLiteral("quarv1"));
    pgConn->setUserName(QStringLiteral("quarv"));
    // A dropped link is silently re-established and the statement repeated.
    pgConn->onConnectionLost = [] { return db::Connection::LostMode::ReconnectExecute; };

    buildStyles();

    pgMenuQuarv = new db::Query(this);
    pgMenuQuarv->setObjectName(QStringLiteral("pgMenuQuarv"));
    pgMenuQuarv->setConnection(pgConn);
    pgMenuQuarv->setSql(QString::fromUtf8(kMenuSql));
    dsMenuQuarv = pgMenuQuarv;

    dsEmitent = new db::Query(this);
    dsEmitent->setObjectName(QStringLiteral("dsEmitent"));
    dsEmitent->setConnection(pgConn);
    dsEmitent->setSql(rep::issuerCheckSql());

    dsDataList = new db::Query(this);
    dsDataList->setObjectName(QStringLiteral("dsDataList"));
    dsDataList->setConnection(pgConn);
    dsDataList->setSql(rep::sessionDataListSql());
    dsDataList->setUpdateTable(QStringLiteral("data_list"));
}

TdmQuarv::~TdmQuarv() = default;

void TdmQuarv::showStyleManager(const QString &styleKey, grid::GridModel *target)
{
    if (styleManager)
        styleManager(styleKey, target);
}

const ui::GridStyleSheet &TdmQuarv::GridTableViewStyleSheetReport() const
{
    return *cxStyleRepositoryQUARV.sheet(QStringLiteral("GridTableViewStyleSheetReport"));
}

const ui::GridStyleSheet &TdmQuarv::cxGridTableViewStyleSheetAlbastru() const
{
    return *cxStyleRepositoryQUARV.sheet(QStringLiteral("cxGridTableViewStyleSheetAlbastru"));
}

const ui::GridStyleSheet &TdmQuarv::StandardQUARV() const
{
    return *cxStyles.sheet(QStringLiteral("StandardQUARV"));
}

void TdmQuarv::buildStyles()
{
    const QFont t8 = font("Tahoma", 8);
    const QFont t8b = font("Tahoma", 8, true);

    // --- cxStyleRepositoryQUARV: the report grids' sheets
    fillReport(cxStyleRepositoryQUARV.add(QStringLiteral("GridTableViewStyleSheetReport")));
    {
        ui::GridStyleSheet &s = cxStyleRepositoryQUARV.add(QStringLiteral("cxGridTableViewStyleSheetAlbastru"));
        fillReport(s);
        s.set(GridElement::Header, style(rgb("#0080C0"), font("MS Sans Serif", 8, true), kWhite));
        s.set(GridElement::GroupByBox, style(rgb("#A4C4EB"), std::nullopt, kBlack));
        s.set(GridElement::Selection, style(rgb("#E7E7D1"), std::nullopt, kWhite));
    }

    // --- cxStyles: the style manager's sheet and the looks it may offer
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("StandardQUARV"));
        fillStandardCommon(s);
        s.set(GridElement::FilterRowInfoText, style(std::nullopt, t8));
        s.set(GridElement::GroupFooterSortedSummary, style(std::nullopt, t8b));
        s.set(GridElement::GroupSortedSummary, style(std::nullopt, t8b));
        s.set(GridElement::GroupSummary, style(std::nullopt, t8b));
        s.set(GridElement::NewItemRowInfoText, style(std::nullopt, t8));
    }
    fillStandardCommon(cxStyles.add(QStringLiteral("StandardQUARV_rosu")));
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("GalbenFiltru"));
        s.set(GridElement::Background, style(rgb("#FFFFE1")));
        s.set(GridElement::Content, style(rgb("#FFFFF0"), t8, kBlack));
        s.set(GridElement::ContentEven, style(rgb("#FFFFF0"), t8, kBlack));
        s.set(GridElement::ContentOdd, style(rgb("#FFF8C6"), t8, kBlack));
        s.set(GridElement::FilterBox, style(rgb("#FED547"), t8, kBlack));
        s.set(GridElement::IncSearch, style(rgb("#FED547"), t8, kBlack));
        s.set(GridElement::Footer, style(rgb("#FFF2A8"), t8b, kNavy));
        s.set(GridElement::Group, style(rgb("#FFF2A8"), t8b));
        s.set(GridElement::GroupByBox, style(rgb("#FED547"), t8b, kBlack));
        s.set(GridElement::Header, style(rgb("#FFE680"), t8b, kBlack));
        s.set(GridElement::Inactive, style(rgb("#E0D9A7")));
        s.set(GridElement::Indicator, style(rgb("#FFE680")));
        s.set(GridElement::Preview, style(rgb("#FFFFE1"), t8, kNavy));
        s.set(GridElement::Selection, style(rgb("#C9A400"), std::nullopt, kWhite));
    }
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("BandedQuarv"));
        fillStandardCommon(s);
        s.set(GridElement::BandBackground, style(rgb("#E7E7D1")));
        s.set(GridElement::BandHeader, style(rgb("#D7D6B3"), t8b, kBlack));
    }
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("PivotGridAnaliza"));
        s.set(GridElement::Background, style(rgb("#FFFFEA")));
        s.set(GridElement::ColumnHeader, style(rgb("#D7D6B3"), t8b, kBlack));
        s.set(GridElement::ColumnHeaderArea, style(rgb("#E7E7D1"), t8, kBlack));
        s.set(GridElement::DataHeaderArea, style(rgb("#E7E7D1"), t8, kBlack));
        s.set(GridElement::FieldHeader, style(kWhite, t8b, kBlack));
        s.set(GridElement::FilterHeaderArea, style(rgb("#E0D9A7"), t8, kBlack));
        s.set(GridElement::RowHeader, style(rgb("#D7D6B3"), t8b, kBlack));
        s.set(GridElement::RowHeaderArea, style(rgb("#E7E7D1"), t8, kBlack));
    }
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("GridAnaliza"));
        s.set(GridElement::Background, style(rgb("#F4F4F4")));
        s.set(GridElement::Content, style(kWhite, t8, kBlack));
        s.set(GridElement::ContentEven, style(kWhite, t8, kBlack));
        s.set(GridElement::ContentOdd, style(rgb("#EEF3FA"), t8, kBlack));
        s.set(GridElement::Footer, style(rgb("#E4E4E4"), t8b, kNavy));
        s.set(GridElement::Group, style(rgb("#E4E4E4"), t8b));
        s.set(GridElement::GroupByBox, style(rgb("#C8C8C8"), t8b, kBlack));
        s.set(GridElement::Header, style(rgb("#DCDCDC"), t8b, kBlack));
        s.set(GridElement::Selection, style(rgb("#316AC5"), std::nullopt, kWhite));
    }
    {
        ui::GridStyleSheet &s = cxStyles.add(QStringLiteral("StandardImplicit"));
        s.set(GridElement::GroupByBox, StandardQUARV().style(GridElement::Header));
    }
}
