#pragma once
// The layout stream as read, before any of it is applied to a view: what
// u_gridlayout.cpp writes and u_gridlayoutread.cpp reads.

#include "grid/u_gridmodel.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <map>
#include <vector>

namespace grid::layout {

constexpr int kLayoutVersion = 1;

// What a stream says, read completely before anything is applied.
struct ColumnData {
    QString field;
    int index = -1;
    int width = 64;
    bool visible = true;
    QString caption;
    SortOrder sort = SortOrder::None;
    int sortIndex = -1;
    int groupIndex = -1;
    QString format;
    QString filter;
    int line = 0;
};

struct LayoutData {
    QMap<QString, bool> options;
    bool programFilter = false;
    std::vector<ColumnData> columns;
    std::map<int, GridSummary> footer, group;
    std::map<int, FilterCondition> conditions;
};

// The whole stream, checked; throws QuarvError naming the line at fault.
LayoutData parse(const QByteArray &stream);

} // namespace grid::layout
