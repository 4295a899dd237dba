#include "db/u_memtable.h"
namespace db {
MemTable::MemTable(QObject *parent) : DataSet(parent) {}
void MemTable::setFieldDefs(std::vector<FieldDef> defs) { m_designed = std::move(defs); }
void MemTable::open() { if (!isActive()) { setFields(m_designed); setActiveState(true); } }
void MemTable::close() { DataSet::close(); }
void MemTable::saveToFile(const QString &) const {}
void MemTable::loadFromFile(const QString &) {}
void MemTable::appendRow(const QVariantList &) {}
void MemTable::applyPost(qsizetype, const QVariantList &, const QVariantList &) {}
void MemTable::applyDelete(qsizetype, const QVariantList &) {}
}
