#pragma once
// The dataset every grid, report and form works with: field definitions, typed
// columns, a current row, and the browse / edit / insert states with post and
// cancel. Subclasses decide where rows come from (a query, memory) and where
// posted changes go (the server, nowhere).

#include "db/u_error.h"
#include "db/u_field.h"

#include <QList>
#include <QObject>
#include <QVariant>

#include <functional>
#include <vector>

namespace db {

class DataSet : public QObject {
    Q_OBJECT
public:
    enum class State { Inactive, Browse, Edit, Insert };
    using Hook = std::function<void(DataSet &)>;

    explicit DataSet(QObject *parent = nullptr);
    ~DataSet() override;

    // --- structure
    int fieldCount() const { return int(m_fields.size()); }
    const FieldDef &fieldDef(int field) const { return m_fields[size_t(field)]; }
    const std::vector<FieldDef> &fieldDefs() const { return m_fields; }
    int fieldIndex(const QString &name) const; // case-insensitive; -1 when absent
    const Column &column(int field) const { return m_columns[size_t(field)]; }

    // --- state
    bool isActive() const { return m_state != State::Inactive; }
    State state() const { return m_state; }
    bool isEditing() const { return m_state == State::Edit || m_state == State::Insert; }
    virtual void open();
    virtual void close();
    // Re-reads the rows, keeping the current row where it can.
    virtual void refresh();

    // --- rows and the cursor
    qsizetype rowCount() const { return m_rowCount; }
    bool isEmpty() const { return m_rowCount == 0; }
    qsizetype currentRow() const { return m_current; } // -1 when there is no row
    void setCurrentRow(qsizetype row);                 // clamps; posts a pending edit first
    void first();
    void last();
    void next();
    void prior();
    bool eof() const { return m_eof; }
    bool bof() const { return m_bof; }

    // Value of any stored row (not the edit buffer).
    QVariant value(qsizetype row, int field) const { return m_columns[size_t(field)].value(row); }
    // Value of the current row, from the edit buffer while editing; invalid when no row.
    QVariant fieldValue(int field) const;
    QVariant fieldValue(const QString &name) const; // throws QuarvError for an unknown field
    bool isFieldNull(const QString &name) const { return !fieldValue(name).isValid(); }

    // --- editing
    void edit();          // an empty dataset starts an insert instead
    void append();        // new row at the end (insert state)
    void setFieldValue(int field, const QVariant &v);
    void setFieldValue(const QString &name, const QVariant &v); // starts an edit when browsing
    void post();          // runs beforePost, then applyPost; on error stays in edit state
    void cancel();
    void deleteCurrent(); // runs beforeDelete, then applyDelete
    bool isModified() const { return m_modified; }

    Hook onNewRecord;     // fills defaults of a new row
    Hook beforePost;      // may refuse by throwing QuarvError
    Hook beforeDelete;    // may refuse by throwing QuarvError

signals:
    void opened();
    void closed();
    void rowsReset();                  // all rows replaced (open, refresh)
    void rowChanged(qsizetype row);    // a posted edit
    void rowInserted(qsizetype row);
    void rowRemoved(qsizetype row);
    void currentRowChanged(qsizetype row);
    void stateChanged(db::DataSet::State state);
    void editValueChanged(int field);  // the edit buffer changed

protected:
    // Where a posted row goes. oldValues is empty for an insert. Throw to refuse;
    // the dataset then stays in its edit state with the buffer intact.
    virtual void applyPost(qsizetype row, const QVariantList &oldValues, const QVariantList &newValues);
    virtual void applyDelete(qsizetype row, const QVariantList &oldValues);
    // Lets a subclass read a deferred value (a blob) when it is first touched.
    virtual QVariant loadDeferred(qsizetype row, int field) const;
    virtual bool isDeferred(qsizetype row, int field) const;

    // For subclasses that fill the rows.
    void setFields(std::vector<FieldDef> fields);  // recreates empty columns
    Column &mutableColumn(int field) { return m_columns[size_t(field)]; }
    std::vector<Column> &mutableColumns() { return m_columns; }
    void setRowCount(qsizetype n) { m_rowCount = n; }
    void setActiveState(bool active);          // Inactive <-> Browse, emits opened/closed
    void placeCursor(qsizetype row);           // no posting, emits currentRowChanged
    QVariantList rowValues(qsizetype row) const;
    // The row being edited or inserted; applyPost may put into it what the
    // store kept (server defaults), and that is what the row then holds.
    QVariantList &editBuffer() { return m_buffer; }
    void storeRow(qsizetype row, const QVariantList &values);

private:
    void startEdit(State s);
    void clearEdit();

    std::vector<FieldDef> m_fields;
    std::vector<Column> m_columns;
    qsizetype m_rowCount = 0;
    qsizetype m_current = -1;
    bool m_eof = true;
    bool m_bof = true;
    State m_state = State::Inactive;
    QVariantList m_buffer;   // edit buffer of the current (or new) row
    QVariantList m_original; // values as read, for the edit
    bool m_modified = false;
};

} // namespace db
