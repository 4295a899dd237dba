#include "db/u_dataset.h"

#include "db/u_error.h"

namespace db {

DataSet::DataSet(QObject *parent) : QObject(parent) {}

DataSet::~DataSet() = default;

int DataSet::fieldIndex(const QString &name) const
{
    for (size_t i = 0; i < m_fields.size(); ++i)
        if (m_fields[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

void DataSet::open()
{
    setActiveState(true);
}

void DataSet::close()
{
    if (isEditing())
        cancel();
    for (Column &c : m_columns)
        c.clear();
    m_rowCount = 0;
    placeCursor(-1);
    setActiveState(false);
    emit rowsReset();
}

void DataSet::refresh()
{
    emit rowsReset();
}

void DataSet::setCurrentRow(qsizetype row)
{
    if (isEditing())
        post();
    if (m_rowCount == 0) {
        m_eof = m_bof = true;
        placeCursor(-1);
        return;
    }
    m_bof = row < 0;
    m_eof = row >= m_rowCount;
    placeCursor(qBound<qsizetype>(0, row, m_rowCount - 1));
}

void DataSet::first() { setCurrentRow(0); }
void DataSet::last() { setCurrentRow(m_rowCount - 1); }
void DataSet::next() { setCurrentRow(m_current + 1); }
void DataSet::prior() { setCurrentRow(m_current - 1); }

QVariant DataSet::fieldValue(int field) const
{
    if (field < 0 || field >= fieldCount())
        return {};
    if (isEditing())
        return m_buffer.value(field);
    if (m_current < 0 || m_current >= m_rowCount)
        return {};
    if (isDeferred(m_current, field))
        return loadDeferred(m_current, field);
    return m_columns[size_t(field)].value(m_current);
}

QVariant DataSet::fieldValue(const QString &name) const
{
    const int i = fieldIndex(name);
    if (i < 0)
        throw QuarvError(QStringLiteral("Campul '%1' nu exista").arg(name));
    return fieldValue(i);
}

QVariantList DataSet::rowValues(qsizetype row) const
{
    QVariantList values;
    values.reserve(fieldCount());
    for (int f = 0; f < fieldCount(); ++f)
        values.append(isDeferred(row, f) ? loadDeferred(row, f) : m_columns[size_t(f)].value(row));
    return values;
}

void DataSet::storeRow(qsizetype row, const QVariantList &values)
{
    // all or nothing: a value no field can hold raises before any is stored
    for (int f = 0; f < fieldCount(); ++f)
        m_columns[size_t(f)].check(values.value(f), m_fields[size_t(f)].name);
    for (int f = 0; f < fieldCount(); ++f)
        m_columns[size_t(f)].set(row, values.value(f));
}

void DataSet::startEdit(State s)
{
    m_state = s;
    m_modified = false;
    emit stateChanged(m_state);
}

void DataSet::clearEdit()
{
    m_buffer.clear();
    m_original.clear();
    m_modified = false;
    m_state = isActive() || m_state != State::Inactive ? State::Browse : State::Inactive;
    emit stateChanged(m_state);
}

void DataSet::edit()
{
    if (!isActive())
        throw QuarvError(QStringLiteral("Setul de date nu este deschis"));
    if (isEditing())
        return;
    if (m_rowCount == 0 || m_current < 0) {
        append();
        return;
    }
    m_original = rowValues(m_current);
    m_buffer = m_original;
    startEdit(State::Edit);
}

void DataSet::append()
{
    if (!isActive())
        throw QuarvError(QStringLiteral("Setul de date nu este deschis"));
    if (isEditing())
        post();
    m_original.clear();
    m_buffer = QVariantList();
    for (int f = 0; f < fieldCount(); ++f)
        m_buffer.append(QVariant());
    startEdit(State::Insert);
    if (onNewRecord)
        onNewRecord(*this);
}

void DataSet::setFieldValue(int field, const QVariant &v)
{
    if (field < 0 || field >= fieldCount())
        throw QuarvError(QStringLiteral("Camp inexistent"));
    m_columns[size_t(field)].check(v, m_fields[size_t(field)].name);
    if (!isEditing())
        edit();
    m_buffer[field] = v;
    m_modified = true;
    emit editValueChanged(field);
}

void DataSet::setFieldValue(const QString &name, const QVariant &v)
{
    const int i = fieldIndex(name);
    if (i < 0)
        throw QuarvError(QStringLiteral("Campul '%1' nu exista").arg(name));
    setFieldValue(i, v);
}

void DataSet::post()
{
    if (!isEditing())
        return;
    if (beforePost)
        beforePost(*this);
    for (int f = 0; f < fieldCount(); ++f)
        if (m_fields[size_t(f)].required && !m_buffer.value(f).isValid())
            throw QuarvError(QStringLiteral("Campul '%1' trebuie completat").arg(m_fields[size_t(f)].name));
    // before anything is written (to the server too): values no field can hold
    for (int f = 0; f < fieldCount(); ++f)
        m_columns[size_t(f)].check(m_buffer.value(f), m_fields[size_t(f)].name);
    if (m_state == State::Insert) {
        applyPost(m_rowCount, {}, m_buffer);
        for (Column &c : m_columns)
            c.appendNull();
        ++m_rowCount;
        storeRow(m_rowCount - 1, m_buffer);
        const qsizetype row = m_rowCount - 1;
        clearEdit();
        emit rowInserted(row);
        m_eof = m_bof = false;
        placeCursor(row);
    } else {
        applyPost(m_current, m_original, m_buffer);
        storeRow(m_current, m_buffer);
        clearEdit();
        emit rowChanged(m_current);
    }
}

void DataSet::cancel()
{
    if (!isEditing())
        return;
    clearEdit();
}

void DataSet::deleteCurrent()
{
    if (isEditing() && m_state == State::Insert) {
        cancel();
        return;
    }
    if (isEditing())
        cancel();
    if (m_current < 0 || m_current >= m_rowCount)
        return;
    if (beforeDelete)
        beforeDelete(*this);
    const qsizetype row = m_current;
    // Deferred values (blobs) are not read just to delete the row.
    QVariantList stored;
    for (int f = 0; f < fieldCount(); ++f)
        stored.append(m_columns[size_t(f)].value(row));
    applyDelete(row, stored);
    for (Column &c : m_columns)
        c.removeAt(row);
    --m_rowCount;
    emit rowRemoved(row);
    if (m_rowCount == 0) {
        m_eof = m_bof = true;
        placeCursor(-1);
    } else {
        placeCursor(qMin(row, m_rowCount - 1));
    }
}

void DataSet::applyPost(qsizetype, const QVariantList &, const QVariantList &) {}
void DataSet::applyDelete(qsizetype, const QVariantList &) {}
QVariant DataSet::loadDeferred(qsizetype row, int field) const { return m_columns[size_t(field)].value(row); }
bool DataSet::isDeferred(qsizetype, int) const { return false; }

void DataSet::setFields(std::vector<FieldDef> fields)
{
    m_fields = std::move(fields);
    m_columns.clear();
    m_columns.reserve(m_fields.size());
    for (const FieldDef &f : m_fields)
        m_columns.emplace_back(f.type);
    m_rowCount = 0;
}

void DataSet::setActiveState(bool active)
{
    const State s = active ? State::Browse : State::Inactive;
    if (s == m_state)
        return;
    m_state = s;
    emit stateChanged(m_state);
    if (active)
        emit opened();
    else
        emit closed();
}

void DataSet::placeCursor(qsizetype row)
{
    if (row == m_current)
        return;
    m_current = row;
    if (row >= 0)
        m_eof = m_bof = false;
    emit currentRowChanged(row);
}

} // namespace db
