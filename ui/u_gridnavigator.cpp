#include "ui/u_gridnavigator.h"

#include "ui/u_grid.h"
#include "ui/u_messages.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace ui {

GridNavigator::GridNavigator(GridTableView *view, QWidget *parent) : QWidget(parent), m_view(view)
{
    auto *lay = new QHBoxLayout(this);
    lay->setContentsMargins(2, 2, 2, 2);
    lay->setSpacing(1);
    struct Def { const char *name; const char *text; const char *accessible; };
    static const Def defs[ButtonCount] = {
        {"btnFirst", "|\u25C0", "Prima inregistrare"},
        {"btnPrior", "\u25C0", "Inregistrarea anterioara"},
        {"btnNext", "\u25B6", "Inregistrarea urmatoare"},
        {"btnLast", "\u25B6|", "Ultima inregistrare"},
        {"btnInsert", "+", "Adauga"},
        {"btnDelete", "\u2212", "Sterge"},
        {"btnPost", "\u2713", "Salveaza modificarile"},
        {"btnCancel", "\u2715", "Renunta la modificari"},
    };
    for (int b = 0; b < ButtonCount; ++b) {
        auto *tb = new QToolButton(this);
        tb->setObjectName(QLatin1String(defs[b].name));
        tb->setText(QString::fromUtf8(defs[b].text));
        tb->setAccessibleName(QString::fromUtf8(defs[b].accessible));
        tb->setToolTip(tb->accessibleName());
        tb->setAutoRaise(true);
        tb->setFocusPolicy(Qt::TabFocus);
        connect(tb, &QToolButton::clicked, this, [this, b] { press(Button(b)); });
        m_buttons[b] = tb;
        lay->addWidget(tb);
        if (b >= Insert)
            tb->hide();
    }
    m_info = new QLabel(this);
    m_info->setObjectName(QStringLiteral("infoPanel"));
    // Screen readers read the position itself (the accessible name follows the text).
    m_info->setAccessibleDescription(QStringLiteral("Pozitia inregistrarii"));
    setAccessibleName(QStringLiteral("Navigator"));
    m_info->setContentsMargins(8, 0, 8, 0);
    lay->addWidget(m_info);
    lay->addStretch(1);

    grid::GridModel *m = view->model();
    connect(m, &grid::GridModel::rowsChanged, this, &GridNavigator::refresh);
    connect(m, &grid::GridModel::focusChanged, this, &GridNavigator::refresh);
    refresh();
}

QString GridNavigator::infoText() const
{
    const grid::GridModel *m = m_view->model();
    return QStringLiteral("Inregistrarea %1 din %2").arg(m->recordNumber()).arg(m->recordCount());
}

void GridNavigator::refresh()
{
    const QString text = infoText();
    m_info->setText(text);
    m_info->setAccessibleName(text);
    const grid::GridModel *m = m_view->model();
    const qsizetype n = m->recordNumber();
    const qsizetype count = m->recordCount();
    const qsizetype focus = m->focusedRow();
    // On a group row the moves lead into the group's records.
    const bool onRecord = focus >= 0 && m->rowKind(focus) == grid::RowKind::Data;
    auto en = [this](Button b, bool on) { m_buttons[b]->setEnabled(on && !m_disabled.contains(b)); };
    en(First, count > 0 && (n != 1 || !onRecord));
    en(Prior, count > 0 && n != 1);
    en(Next, count > 0 && (n != count || !onRecord));
    en(Last, count > 0 && (n != count || !onRecord));
    const bool hasDs = m_view->dataSet() && m_view->dataSet()->isActive();
    en(Insert, hasDs);
    en(Delete, hasDs && count > 0);
    en(Post, hasDs);
    en(Cancel, hasDs);
}

void GridNavigator::setButtonVisible(Button b, bool v) { m_buttons[b]->setVisible(v); }

void GridNavigator::setButtonEnabled(Button b, bool v)
{
    if (v)
        m_disabled.remove(b);
    else
        m_disabled.insert(b);
    refresh();
}

void GridNavigator::press(Button b)
{
    grid::GridModel *m = m_view->model();
    db::DataSet *ds = m_view->dataSet();
    m_view->commitEdit();
    guarded([&] {
        if (b <= Last && ds && ds->isEditing())
            ds->post(); // leaving the row posts it; a refusal stops the move
        switch (b) {
        case First: m->firstRecord(); break;
        case Prior: m->priorRecord(); break;
        case Next: m->nextRecord(); break;
        case Last: m->lastRecord(); break;
        case Insert:
            if (ds) {
                ds->append();
                // Typing goes straight into the new row.
                m_view->setFocus(Qt::OtherFocusReason);
            }
            break;
        case Delete:
            if (ds && (ds->state() == db::DataSet::State::Insert || !ds->isEmpty()) && confirmDelete(this))
                ds->deleteCurrent();
            break;
        case Post: if (ds && ds->isEditing()) ds->post(); break;
        case Cancel: if (ds && ds->isEditing()) ds->cancel(); break;
        case ButtonCount: break;
        }
    });
    refresh();
    m_view->viewport()->update();
}

} // namespace ui
