#pragma once
// A table held in memory, with its own field definitions, stored to and read
// from a self-describing XML file (definitions and rows).

#include "db/u_dataset.h"

class QIODevice;

namespace db {

class MemTable : public DataSet {
    Q_OBJECT
public:
    explicit MemTable(QObject *parent = nullptr);

    // The designed columns; an empty table can be opened from them alone.
    void setFieldDefs(std::vector<FieldDef> defs);
    const std::vector<FieldDef> &designedFields() const { return m_designed; }

    void open() override;   // active with the current rows (none after close)
    void close() override;  // drops the rows
    void refresh() override {}

    // Both throw QuarvError with a clear text; a failed load leaves the table
    // closed and empty, never half-read.
    void saveToFile(const QString &path) const;
    void loadFromFile(const QString &path);
    // The same from the file's bytes.
    void loadFromXml(const QByteArray &xml);

    // Appends a whole row at once (tests, fixtures).
    void appendRow(const QVariantList &values);

protected:
    void applyPost(qsizetype row, const QVariantList &oldValues, const QVariantList &newValues) override;
    void applyDelete(qsizetype row, const QVariantList &oldValues) override;

private:
    void load(QIODevice &device, const QString &path);
    std::vector<FieldDef> m_designed;
};

} // namespace db
