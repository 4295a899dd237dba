#include "reports/common/u_accountpicker.h"

#include "ui/u_grid.h"
#include "ui/u_gridstrips.h"
#include "ui/u_messages.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>

TAccountPicker::TAccountPicker(const QString &formName, const QString &queryName, const char *sql,
                               const QStringList &columns, FormSession &session, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(formName);
    setWindowTitle(formName);
    setModal(true);
    resize(560, 460);

    m_query = new db::Query(this);
    m_query->setObjectName(queryName);
    m_query->setSql(QString::fromUtf8(sql));
    m_query->setConnection(session.connection());

    auto *outer = new QVBoxLayout(this);
    m_grid = new ui::Grid(this);
    m_grid->setObjectName(QStringLiteral("cxGrid1"));
    ui::GridTableView *v = m_grid->view();
    v->setObjectName(QStringLiteral("cxGrid1DBTableView1"));
    m_model = v->model();
    for (const QString &c : columns)
        m_model->addColumn(c, {}, c.startsWith(QLatin1String("den_")) ? 300 : 80);
    v->setFilterRowVisible(true);
    v->setFooterVisible(false);
    v->setGroupFootersVisible(false);
    v->setIndicatorVisible(true);
    v->setGridStyleSheet(session.reportSheet());
    v->setDataSet(m_query);
    m_grid->setNavigatorVisible(true);
    outer->addWidget(m_grid, 1);

    // The filter row applies at every keystroke here: no pause to wait for.
    for (int col = 0; col < m_model->columnCount(); ++col)
        if (auto *le = qobject_cast<QLineEdit *>(v->filterRow()->editor(col)))
            connect(le, &QLineEdit::textEdited, this, [v] {
                QTimer::singleShot(0, v, [v] { v->filterRow()->applyPending(); });
            });

    auto *bottom = new QHBoxLayout;
    bottom->addStretch(1);
    btnOK = new QPushButton(QStringLiteral("OK"), this);
    btnOK->setObjectName(QStringLiteral("btnOK"));
    btnOK->setAutoDefault(false);
    connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
    bottom->addWidget(btnOK);
    outer->addLayout(bottom);
}

int TAccountPicker::pick()
{
    return exec();
}

QString TAccountPicker::chosen(const QString &field) const
{
    // The query's current row: the record the operator last focused, which a
    // focused group row leaves where it was. None when the filter left nothing.
    if (!m_query->isActive() || m_model->recordCount() == 0)
        return {};
    qsizetype row = m_query->currentRow();
    if (m_model->recordIndexOfDataRow(row) < 0) {
        // The filter dropped it while a group row kept the focus: the group's first record.
        const qsizetype n = m_model->recordNumber();
        row = n > 0 ? m_model->recordDataRow(n - 1) : -1;
    }
    const int f = m_query->fieldIndex(field);
    return row < 0 || f < 0 ? QString() : m_query->value(row, f).toString();
}

void TAccountPicker::FormShow()
{
    // Accounts added or retired since the last pick show up; the filter row
    // and the position stay.
    if (m_query->isActive())
        m_query->refresh();
    else
        m_query->open();
}

void TAccountPicker::showEvent(QShowEvent *e)
{
    QDialog::showEvent(e);
    if (!e->spontaneous())
        ui::guarded([this] { FormShow(); });
}
