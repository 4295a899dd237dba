#pragma once
// An in-memory dataset for the grid tests: fields and rows given directly.

#include "db/u_dataset.h"

class TestDataSet : public db::DataSet {
public:
    explicit TestDataSet(std::vector<db::FieldDef> fields, QObject *parent = nullptr) : db::DataSet(parent)
    {
        setFields(std::move(fields));
    }
    void add(const QVariantList &values)
    {
        for (int f = 0; f < fieldCount(); ++f)
            mutableColumn(f).append(values.value(f));
        setRowCount(rowCount() + 1);
    }
    void openNow()
    {
        setActiveState(true);
        emit rowsReset();
    }
    // replaces every row, as a re-read query does
    void reload(const QList<QVariantList> &rows)
    {
        for (int f = 0; f < fieldCount(); ++f)
            mutableColumn(f).clear();
        setRowCount(0);
        for (const QVariantList &r : rows)
            add(r);
        emit rowsReset();
    }
};
