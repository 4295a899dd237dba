#include "reports/common/u_frmGridStyle.h"

#include "analyses/u_platform.h"
#include "analyses/u_stylestore.h"
#include "grid/u_gridlayout.h"
#include "ui/u_grid.h"
#include "ui/u_messages.h"
#include "ui/u_waitcursor.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSaveFile>
#include <QScreen>
#include <QShowEvent>

namespace {

// Only the issuer who created a row may change or delete it (values compared
// as they are: a row without an issuer belongs to nobody who can sign in).
void requireOwner(const db::DataSet &ds, const QString &issuer, const QString &message)
{
    if (ds.fieldValue(QStringLiteral("emitent")) != QVariant(issuer))
        throw QuarvError(message);
}

} // namespace

QString TfrmGridStyle::sql()
{
    return rep::gridStyleSql();
}

QString TfrmGridStyle::layoutFilePath() const
{
    return platform::documentsFile(m_session.documentsFolder(), QStringLiteral("\\grid.ini"));
}

TfrmGridStyle::TfrmGridStyle(FormSession &session, QWidget *parent) : QDialog(parent), m_session(session)
{
    setObjectName(QStringLiteral("frmGridStyle"));
    setWindowTitle(QStringLiteral("frmGridStyle"));
    setModal(false);
    resize(560, 380);

    createQuery();

    auto *outer = new QVBoxLayout(this);

    auto *keyRow = new QHBoxLayout;
    lblGrid = new QLabel(QStringLiteral("Grid"), this);
    lblGrid->setObjectName(QStringLiteral("lblGrid"));
    lblGridName = new QLabel(this);
    lblGridName->setObjectName(QStringLiteral("lblGridName"));
    QFont bf = lblGridName->font();
    bf.setBold(true);
    lblGridName->setFont(bf);
    lblGrid->setBuddy(lblGridName);
    keyRow->addWidget(lblGrid);
    keyRow->addWidget(lblGridName, 1);
    outer->addLayout(keyRow);

    createGrid();
    outer->addWidget(cxGrid1, 1);
    outer->addLayout(createButtonRow());
}

// The saved styles of the grid, each row only its creator's to change.
void TfrmGridStyle::createQuery()
{
    ds_style = new db::Query(this);
    ds_style->setObjectName(QStringLiteral("ds_style"));
    ds_style->setSql(rep::gridStyleSql());
    ds_style->setUpdateTable(QStringLiteral("grid_style"));
    ds_style->setDeferredBlobs(true);
    ds_style->setConnection(m_session.connection());
    ds_style->onNewRecord = [this](db::DataSet &ds) {
        ds.setFieldValue(QStringLiteral("grid_name"), styleKey);
        ds.setFieldValue(QStringLiteral("data_creare"), QDate::currentDate());
        ds.setFieldValue(QStringLiteral("emitent"), m_session.issuer());
    };
    ds_style->beforePost = [this](db::DataSet &ds) {
        // The name is left to the database: a missing one gets the server's own refusal.
        requireOwner(ds, m_session.issuer(), QStringLiteral("Nu puteti modifica o inregistare creata de alt emitent!"));
    };
    ds_style->beforeDelete = [this](db::DataSet &ds) {
        requireOwner(ds, m_session.issuer(), QStringLiteral("Nu puteti sterge o inregistare creata de alt emitent!"));
    };
}

void TfrmGridStyle::createGrid()
{
    cxGrid1 = new ui::Grid(this);
    cxGrid1->setObjectName(QStringLiteral("cxGrid1"));
    cxGrid1DBTableView1 = cxGrid1->view();
    cxGrid1DBTableView1->setObjectName(QStringLiteral("cxGrid1DBTableView1"));
    grid::GridModel *m = cxGrid1DBTableView1->model();
    m->addColumn(QStringLiteral("style_name"), {}, 200);
    m->addColumn(QStringLiteral("data_creare"), {}, 110);
    m->addColumn(QStringLiteral("emitent"), {}, 120);
    m->addColumn(QStringLiteral("discontinued"), QStringLiteral("inactiv"), 50);
    m->setColumnVisible(m->addColumn(QStringLiteral("grid_name"), {}, 100), false);
    m->setColumnVisible(m->addColumn(QStringLiteral("grid_style_string"), {}, 100), false);
    cxGrid1DBTableView1->setColumnEditable(QStringLiteral("style_name"), true);
    cxGrid1DBTableView1->setColumnEditable(QStringLiteral("discontinued"), true);
    cxGrid1DBTableView1->setIndicatorVisible(true);
    cxGrid1DBTableView1->setGroupByBoxVisible(false);
    cxGrid1DBTableView1->setFilterRowVisible(false);
    cxGrid1DBTableView1->setFooterVisible(false);
    cxGrid1DBTableView1->setGroupFootersVisible(false);
    cxGrid1DBTableView1->setGridStyleSheet(m_session.listSheet());
    cxGrid1DBTableView1->setDataSet(ds_style);
    cxGrid1->setNavigatorVisible(true);
    ui::GridNavigator *nav = cxGrid1->navigator();
    for (auto b : {ui::GridNavigator::Insert, ui::GridNavigator::Delete, ui::GridNavigator::Cancel})
        nav->setButtonVisible(b, true);
    // Rows are posted by leaving them or by "Salveaza".
    nav->setButtonVisible(ui::GridNavigator::Post, false);
    nav->setButtonEnabled(ui::GridNavigator::Post, false);
}

// The filter of active / inactive styles, "Salveaza" and "Restaureaza".
QHBoxLayout *TfrmGridStyle::createButtonRow()
{
    auto *bottom = new QHBoxLayout;
    rgFiltru = new QGroupBox(QStringLiteral(" Filtru "), this);
    rgFiltru->setObjectName(QStringLiteral("rgFiltru"));
    auto *rl = new QHBoxLayout(rgFiltru);
    m_filterGroup = new QButtonGroup(this);
    const QStringList items{QStringLiteral("active"), QStringLiteral("inactive"), QStringLiteral("toate")};
    for (int i = 0; i < items.size(); ++i) {
        auto *rb = new QRadioButton(items[i], rgFiltru);
        rb->setObjectName(QStringLiteral("rgFiltru%1").arg(i));
        m_filterGroup->addButton(rb, i);
        rl->addWidget(rb);
    }
    m_filterGroup->button(2)->setChecked(true);
    connect(m_filterGroup, &QButtonGroup::idClicked, this, [this] { ui::guarded([this] { rgFiltruClick(); }); });
    bottom->addWidget(rgFiltru);
    bottom->addStretch(1);

    btnSalveaza = new QPushButton(QStringLiteral("Salveaza"), this);
    btnSalveaza->setObjectName(QStringLiteral("btnSalveaza"));
    btnRestaureaza = new QPushButton(QStringLiteral("Restaureaza"), this);
    btnRestaureaza->setObjectName(QStringLiteral("btnRestaureaza"));
    btnSalveaza->setAutoDefault(false);
    btnRestaureaza->setAutoDefault(false);
    connect(btnSalveaza, &QPushButton::clicked, this, [this] { ui::guarded([this] { btnSalveazaClick(); }); });
    connect(btnRestaureaza, &QPushButton::clicked, this, [this] { ui::guarded([this] { btnRestaureazaClick(); }); });
    bottom->addWidget(btnSalveaza);
    bottom->addWidget(btnRestaureaza);
    return bottom;
}

TfrmGridStyle::~TfrmGridStyle() = default;

grid::GridModel *TfrmGridStyle::stylesModel() const
{
    return cxGrid1DBTableView1->model();
}

ui::GridNavigator *TfrmGridStyle::navigator() const
{
    return cxGrid1->navigator();
}

// ----- show and close

void TfrmGridStyle::FormShow()
{
    if (ds_style->isActive())
        ds_style->close();
    ds_style->setParam(QStringLiteral("pGrid"), styleKey);
    lblGridName->setText(styleKey);
    ds_style->open();
}

void TfrmGridStyle::showFor(const QString &key, grid::GridModel *target)
{
    styleKey = key;
    targetModel = target;
    if (isVisible())
        FormShow(); // retargeted while open: the list follows the new key
    show();
    raise();
    activateWindow();
}

void TfrmGridStyle::FormClose()
{
    // Closing the list drops an edit not posted yet.
    if (ds_style->isActive())
        ds_style->close();
}

void TfrmGridStyle::showEvent(QShowEvent *e)
{
    if (!m_placed) {
        // Centred on the desktop the first time; where the operator moves it afterwards.
        if (QScreen *s = screen())
            move(s->availableGeometry().center() - QPoint(width() / 2, height() / 2));
        m_placed = true;
    }
    QDialog::showEvent(e);
    if (!e->spontaneous())
        ui::guarded([this] { FormShow(); });
}

void TfrmGridStyle::done(int r)
{
    // The close box (through reject), Esc and any other way the dialog ends.
    ui::guarded([this] { FormClose(); });
    QDialog::done(r);
}

// ----- filter by state

int TfrmGridStyle::filterIndex() const
{
    return m_filterGroup->checkedId();
}

void TfrmGridStyle::setFilterIndex(int index)
{
    if (QAbstractButton *b = m_filterGroup->button(index)) {
        b->setChecked(true);
        rgFiltruClick();
    }
}

void TfrmGridStyle::rgFiltruClick()
{
    grid::GridModel *m = stylesModel();
    m->clearProgramFilter();
    switch (filterIndex()) {
    case 0:
        m->addFilterCondition(QStringLiteral("discontinued"), QStringLiteral("False"));
        m->setProgramFilterActive(true);
        break;
    case 1:
        m->addFilterCondition(QStringLiteral("discontinued"), QStringLiteral("True"));
        m->setProgramFilterActive(true);
        break;
    default:
        m->setProgramFilterActive(false);
        break;
    }
}

// ----- save and restore

namespace {

grid::GridModel &requireTarget(const QPointer<grid::GridModel> &v)
{
    if (!v)
        throw QuarvError(QStringLiteral("Nu este ales niciun grid: deschideti acest formular din butonul raportului."));
    return *v;
}

} // namespace

void TfrmGridStyle::btnSalveazaClick()
{
    const QString path = layoutFilePath();
    grid::GridModel &target = requireTarget(targetModel);
    if (!ds_style->isActive())
        FormShow();
    ui::WaitCursor busy;
    grid::saveGridLayoutToFile(target, path);
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw QuarvError(QStringLiteral("Nu se poate citi fisierul %1: %2").arg(path, f.errorString()));
    const QByteArray layout = f.readAll();
    f.close();

    ds_style->edit(); // an empty list starts a new row (grid_name, data_creare, emitent filled)
    ds_style->setFieldValue(QStringLiteral("grid_style_string"), QStringLiteral(" "));
    ds_style->setFieldValue(QStringLiteral("discontinued"), false); // saving un-retires
    ds_style->setFieldValue(QStringLiteral("grid_style_bytea"), layout);
    ds_style->post();
}

void TfrmGridStyle::btnRestaureazaClick()
{
    const QString path = layoutFilePath();
    grid::GridModel &target = requireTarget(targetModel);
    const QVariant v = ds_style->isActive() ? ds_style->fieldValue(QStringLiteral("grid_style_bytea")) : QVariant();
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        throw QuarvError(QStringLiteral("Nu se poate scrie fisierul %1: %2").arg(path, f.errorString()));
    f.write(v.toByteArray());
    if (!f.commit())
        throw QuarvError(QStringLiteral("Nu se poate scrie fisierul %1: %2").arg(path, f.errorString()));

    ui::WaitCursor busy;
    // An empty layout keeps the view as it is; a damaged one is refused whole
    // with a text naming what is wrong, and the view stays as it was.
    grid::restoreGridLayoutFromFile(target, path);
}
