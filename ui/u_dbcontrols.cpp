#include "ui/u_dbcontrols.h"

#include "db/u_dataset.h"
#include "ui/u_messages.h"

#include <QHBoxLayout>
#include <QIntValidator>
#include <QToolButton>

namespace ui {

// ---------------------------------------------------------------- DBEdit

DBEdit::DBEdit(QWidget *parent) : QLineEdit(parent)
{
    connect(this, &QLineEdit::textEdited, this, [this](const QString &text) {
        guarded([&] { writeValue(text); });
    });
}

void DBEdit::bind(db::DataSet *dataSet, const QString &fieldName)
{
    if (m_dataSet)
        disconnect(m_dataSet, nullptr, this, nullptr);
    m_dataSet = dataSet;
    m_field = fieldName;
    if (dataSet) {
        auto refresh = [this] { showValue(); };
        connect(dataSet, &db::DataSet::opened, this, refresh);
        connect(dataSet, &db::DataSet::closed, this, refresh);
        connect(dataSet, &db::DataSet::rowsReset, this, refresh);
        connect(dataSet, &db::DataSet::rowChanged, this, refresh);
        connect(dataSet, &db::DataSet::rowInserted, this, refresh);
        connect(dataSet, &db::DataSet::rowRemoved, this, refresh);
        connect(dataSet, &db::DataSet::currentRowChanged, this, refresh);
        connect(dataSet, &db::DataSet::stateChanged, this, refresh);
        connect(dataSet, &db::DataSet::editValueChanged, this, [this](int field) {
            if (m_dataSet && field == m_dataSet->fieldIndex(m_field))
                showValue();
        });
    }
    showValue();
}

void DBEdit::setIntRange(int bottom, int top)
{
    m_intBottom = bottom;
    m_intTop = top;
    // The validator, when there is one, is this edit's own child.
    if (auto *v = findChild<QIntValidator *>(QString(), Qt::FindDirectChildrenOnly))
        v->setRange(bottom, top);
}

void DBEdit::showValue()
{
    if (m_writing)
        return;
    const int field = m_dataSet && m_dataSet->isActive() ? m_dataSet->fieldIndex(m_field) : -1;
    setEnabled(field >= 0);
    if (field < 0) {
        setValidator(nullptr);
        setMaxLength(32767);
        setText(QString());
        return;
    }
    const db::FieldDef &def = m_dataSet->fieldDef(field);
    if (def.type == db::FieldType::Int32 && !validator()) {
        auto *v = findChild<QIntValidator *>(QString(), Qt::FindDirectChildrenOnly);
        if (!v)
            v = new QIntValidator(m_intBottom, m_intTop, this);
        setValidator(v);
    }
    else if (def.type != db::FieldType::Int32 && validator())
        setValidator(nullptr);
    setMaxLength(def.type == db::FieldType::String && def.size > 0 ? def.size : 32767);
    setReadOnly(def.readOnly);
    const QVariant v = m_dataSet->fieldValue(field);
    const QString text = v.isValid() ? v.toString() : QString();
    if (text != this->text())
        setText(text);
}

void DBEdit::writeValue(const QString &text)
{
    if (!m_dataSet || !m_dataSet->isActive())
        return;
    const int field = m_dataSet->fieldIndex(m_field);
    if (field < 0)
        return;
    QVariant v;
    if (!text.isEmpty())
        v = m_dataSet->fieldDef(field).type == db::FieldType::Int32 ? QVariant(text.toInt()) : QVariant(text);
    m_writing = true;
    try {
        m_dataSet->setFieldValue(field, v);
    } catch (...) {
        m_writing = false;
        throw;
    }
    m_writing = false;
}

// ---------------------------------------------------------------- DBNavigator

namespace {
struct ButtonInfo {
    const char *name;
    const char16_t *glyph;
    const char16_t *hint;
};
// Names follow the navigator's buttons; hints are what the operator reads.
constexpr ButtonInfo kButtons[DBNavigator::ButtonCount] = {
    {"nbFirst", u"|\u25C0", u"Primul"},
    {"nbPrior", u"\u25C0", u"Anterior"},
    {"nbNext", u"\u25B6", u"Urmatorul"},
    {"nbLast", u"\u25B6|", u"Ultimul"},
    {"nbInsert", u"+", u"Adauga"},
    {"nbDelete", u"\u2212", u"Sterge"},
    {"nbEdit", u"\u25B2", u"Modifica"},
    {"nbPost", u"\u2714", u"Salveaza"},
    {"nbCancel", u"\u2716", u"Renunta"},
    {"nbRefresh", u"\u21BB", u"Reincarca"},
};
} // namespace

DBNavigator::DBNavigator(QWidget *parent) : QWidget(parent)
{
    m_allowed.fill(true);
    auto *lay = new QHBoxLayout(this);
    lay->setContentsMargins(0, 0, 0, 0);
    lay->setSpacing(0);
    for (int i = 0; i < ButtonCount; ++i) {
        auto *b = new QToolButton(this);
        b->setObjectName(QString::fromLatin1(kButtons[i].name));
        b->setText(QString::fromUtf16(kButtons[i].glyph));
        const QString hint = QString::fromUtf16(kButtons[i].hint);
        b->setToolTip(hint);
        b->setAccessibleName(hint);
        b->setFocusPolicy(Qt::TabFocus);
        b->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        m_buttons[size_t(i)] = b;
        lay->addWidget(b);
        connect(b, &QToolButton::clicked, this, [this, i] { click(Button(i)); });
    }
    updateButtons();
}

void DBNavigator::setDataSet(db::DataSet *dataSet)
{
    if (m_dataSet)
        disconnect(m_dataSet, nullptr, this, nullptr);
    m_dataSet = dataSet;
    if (dataSet) {
        auto upd = [this] { updateButtons(); };
        connect(dataSet, &db::DataSet::opened, this, upd);
        connect(dataSet, &db::DataSet::closed, this, upd);
        connect(dataSet, &db::DataSet::rowsReset, this, upd);
        connect(dataSet, &db::DataSet::rowInserted, this, upd);
        connect(dataSet, &db::DataSet::rowRemoved, this, upd);
        connect(dataSet, &db::DataSet::currentRowChanged, this, upd);
        connect(dataSet, &db::DataSet::stateChanged, this, upd);
        connect(dataSet, &db::DataSet::editValueChanged, this, upd);
    }
    updateButtons();
}

void DBNavigator::setButtonVisible(Button b, bool visible)
{
    m_buttons[size_t(b)]->setVisible(visible);
}

void DBNavigator::setButtonAllowed(Button b, bool allowed)
{
    m_allowed[size_t(b)] = allowed;
    updateButtons();
}

void DBNavigator::click(Button b)
{
    guarded([&] {
        db::DataSet *ds = m_dataSet;
        if (!ds || !m_allowed[size_t(b)] || !ds->isActive())
            return;
        switch (b) {
        case First: ds->first(); break;
        case Prior: ds->prior(); break;
        case Next: ds->next(); break;
        case Last: ds->last(); break;
        case Insert: ds->append(); break;
        case Delete:
            // Asked first, also for a new row not posted yet: it is dropped.
            if ((ds->state() == db::DataSet::State::Insert || !ds->isEmpty()) && !confirmDelete(this))
                break;
            if (ds->state() == db::DataSet::State::Insert)
                ds->cancel();
            else
                ds->deleteCurrent();
            break;
        case Edit: ds->edit(); break;
        case Post: if (ds->isEditing()) ds->post(); break;
        case Cancel: if (ds->isEditing()) ds->cancel(); break;
        case Refresh: ds->refresh(); break;
        case ButtonCount: break;
        }
    });
    updateButtons();
}

void DBNavigator::updateButtons()
{
    db::DataSet *ds = m_dataSet;
    const bool active = ds && ds->isActive();
    const bool editing = active && ds->isEditing();
    const bool hasRows = active && !ds->isEmpty();
    const qsizetype cur = active ? ds->currentRow() : -1;
    const qsizetype last = active ? ds->rowCount() - 1 : -1;
    const bool state[ButtonCount] = {
        hasRows && cur > 0,                        // First (a pending edit is posted)
        hasRows && cur > 0,                        // Prior
        hasRows && cur < last,                     // Next
        hasRows && cur < last,                     // Last
        active,                                    // Insert (a pending edit is posted)
        hasRows || (active && ds->state() == db::DataSet::State::Insert), // Delete
        active && !editing,                        // Edit
        editing,                                   // Post
        editing,                                   // Cancel
        active && !editing,                        // Refresh
    };
    for (int i = 0; i < ButtonCount; ++i)
        m_buttons[size_t(i)]->setEnabled(state[i] && m_allowed[size_t(i)]);
}

} // namespace ui
