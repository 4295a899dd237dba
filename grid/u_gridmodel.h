#pragma once
// The logic of a grid table view, without widgets: its columns, the rows that
// remain after the filter, the sorting and the grouping (with expand/collapse
// state), the summaries, the focused row. The painted view (ui/), the layout
// store, the exporters and batch programs all read it through this class.
//
// It is not a QAbstractItemModel: a million-row grid is read by display index
// (O(1) per row) and painted by the view itself.
//
// Columns are kept in display order: column index == display position (hidden
// columns included). A column is bound to a field by name (case-insensitive);
// a column whose field the dataset lacks shows empty cells, never errors.
//
// Display rows, top to bottom: for every group a group row, then (when the
// group is expanded) its sub-groups or its data rows, then its group footer
// row when the grid has group summaries (shown also for collapsed groups).
// Without grouping the display rows are the data rows.
//
// The model follows its dataset: rowsReset (open, refresh, close) rebuilds the
// rows and keeps the layout (columns, sorting, grouping, filters, summaries and
// the expanded groups); the focused record is kept by dataset row.

#include "db/u_dataset.h"
#include "grid/u_gridformat.h"

#include <QLocale>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <memory>
#include <vector>

namespace grid {

enum class SortOrder : std::uint8_t { None, Ascending, Descending };

// What a column shows, from its field's type (Missing: the dataset has no such field).
enum class ColumnKind : std::uint8_t { Missing, Text, Number, Date, DateTime, Bool, Bytes };

enum class SummaryKind : std::uint8_t { Sum, Count, Min, Max, Average };

struct GridColumn {
    QString fieldName;        // binding; also the column's identity in the layout
    QString caption;          // header text; fieldName when empty
    int width = 64;           // pixels
    bool visible = true;
    SortOrder sortOrder = SortOrder::None;
    int sortIndex = -1;       // position among sorted columns, -1 when not sorted
    int groupIndex = -1;      // grouping level (0 = outermost), -1 when not grouped
    QString displayFormat;    // number pattern or date pattern (u_gridformat.h); empty = default
    QString filterText;       // the filter row's text for this column (see setFilterText)

    QString headerText() const { return caption.isEmpty() ? fieldName : caption; }
};

// A summary: kind of the values of `fieldName`, shown under the column bound to
// `columnField` (fieldName when empty). A field the dataset lacks gives an
// empty summary.
struct GridSummary {
    QString fieldName;
    SummaryKind kind = SummaryKind::Sum;
    QString format;           // number pattern; empty = the column's format
    QString columnField;

    QString shownUnder() const { return columnField.isEmpty() ? fieldName : columnField; }
    bool operator==(const GridSummary &o) const = default;
};

// One condition of the programmatic filter: field = value.
struct FilterCondition {
    QString fieldName;
    QVariant value;           // compared typed: "False"/"True" for booleans, numbers, dates...
};

enum class BoolFilter : std::uint8_t { Any, True, False };

enum class RowKind : std::uint8_t { Data, Group, GroupFooter };

// A group (also behind its group row and group footer row).
struct GroupInfo {
    int level = 0;            // 0 = outermost
    int column = -1;          // index of the grouped column
    QVariant value;           // the group's key (invalid for null)
    QString valueText;        // the key as displayed in cells of that column
    qsizetype rowCount = 0;   // data rows (passing the filter) in the group
    bool expanded = false;
};

class GridModel : public QObject {
    Q_OBJECT
public:
    explicit GridModel(QObject *parent = nullptr);
    ~GridModel() override;

    // While a Hold lives, changes asked meanwhile (a timer served during a
    // long export or print) wait, and the rows stay as they are being read.
    class Hold {
    public:
        explicit Hold(const GridModel &model);
        ~Hold();
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;

    private:
        GridModel &m_model;
    };

    // ----- data source
    void setDataSet(db::DataSet *ds);           // nullptr unbinds; the dataset is not owned
    db::DataSet *dataSet() const;
    // When on (default), the focused data row and the dataset's current row follow each other.
    void setSyncCurrentRow(bool on);
    QLocale locale() const;
    void setLocale(const QLocale &l);           // separators of number formats

    // ----- view options (kept in the layout; the painted view honours them)
    bool groupByBoxVisible() const;
    void setGroupByBoxVisible(bool v);
    bool footerVisible() const;
    void setFooterVisible(bool v);
    bool filterRowVisible() const;
    void setFilterRowVisible(bool v);
    bool groupFootersVisible() const;           // group footer rows (always, also collapsed)
    void setGroupFootersVisible(bool v);
    bool indicatorVisible() const;
    void setIndicatorVisible(bool v);

    // ----- columns (index = display position)
    int columnCount() const;
    const GridColumn &column(int col) const;
    int columnIndex(const QString &fieldName) const;   // case-insensitive, -1 when none
    ColumnKind columnKind(int col) const;              // from the bound field's type
    int columnField(int col) const;                    // dataset field index, -1 when missing
    // Adds a column at the end (or at `position`); returns its index. A column
    // for a field that already has one is refused (returns -1).
    int addColumn(const QString &fieldName, const QString &caption = {}, int width = 64, int position = -1);
    void removeColumn(int col);                        // drops its sort, group and filter too
    void clearColumns();
    // One column per dataset field, in field order (replaces the columns).
    void createDefaultColumns();
    // Dataset fields without a column (the field chooser's list).
    QStringList fieldsWithoutColumn() const;
    void moveColumn(int from, int to);
    void setColumnCaption(int col, const QString &caption);
    void setColumnWidth(int col, int width);
    void setColumnVisible(int col, bool visible);
    void setColumnDisplayFormat(int col, const QString &format);
    QList<int> visibleColumns() const;                 // display order

    // ----- sorting (multi-column; keys nulls first ascending, text by collation)
    // Header click: without `add` the column becomes the only sort key (a sorted
    // one reverses); with `add` (Shift) it is appended, or reversed if already a key.
    void clickSort(int col, bool add);
    // Sets one column's order; `add` keeps the other keys (else they are cleared).
    void setSortOrder(int col, SortOrder order, bool add = false);
    void clearSorting();
    QList<int> sortColumns() const;                    // in key order

    // ----- grouping (several levels)
    // Groups by the column at `level` (appended when -1 or past the end).
    void groupByColumn(int col, int level = -1);
    void ungroupColumn(int col);
    void clearGrouping();
    QList<int> groupColumns() const;                   // level order

    // ----- filter row (per column, combined with AND)
    // Text columns: case-insensitive "contains", ş/ș and ţ/ț (any case) equal.
    // Number and date columns: "100", "=100", ">100", ">=", "<", "<=", "<>0";
    // dates as dd.MM.yyyy or yyyy-MM-dd. Bool columns: see setBoolFilter; a
    // text of "1"/"true"/"da" or "0"/"false"/"nu" is taken the same way.
    // An empty text clears. A text that cannot be read (">abc" on a number)
    // lets no row through and filterError(col) says so.
    void setFilterText(int col, const QString &text);
    void setBoolFilter(int col, BoolFilter f);
    BoolFilter boolFilter(int col) const;
    bool filterError(int col) const;
    void clearFilter(int col);
    void clearAllFilters();                            // the filter row only
    bool hasFilterRowConditions() const;

    // ----- programmatic filter (ANDed with the filter row when active)
    void clearProgramFilter();                         // removes the conditions, switches off
    void addFilterCondition(const QString &fieldName, const QVariant &value);
    void setProgramFilterActive(bool on);
    bool programFilterActive() const;
    const QList<FilterCondition> &filterConditions() const;

    // ----- summaries
    void setFooterSummaries(const QList<GridSummary> &s);
    void addFooterSummary(const GridSummary &s);
    const QList<GridSummary> &footerSummaries() const;
    void setGroupSummaries(const QList<GridSummary> &s);
    void addGroupSummary(const GridSummary &s);
    const QList<GridSummary> &groupSummaries() const;
    // Footer (all rows passing the filter): value (invalid when the field is
    // missing or no value counted) and text as displayed.
    QVariant footerValue(int summary) const;
    QString footerText(int summary) const;
    // Footer text shown under a column (several summaries under one column are
    // joined with a line break); empty when none.
    QString footerTextForColumn(int col) const;
    // The same for the group of a Group or GroupFooter display row.
    QVariant groupSummaryValue(int displayRow, int summary) const;
    QString groupSummaryText(int displayRow, int summary) const;
    QString groupFooterTextForColumn(int displayRow, int col) const;

    // ----- display rows
    qsizetype rowCount() const;
    RowKind rowKind(qsizetype displayRow) const;
    int rowLevel(qsizetype displayRow) const;          // group level; data rows: the number of group levels
    qsizetype dataRow(qsizetype displayRow) const;     // dataset row of a Data row, else -1
    GroupInfo groupInfo(qsizetype displayRow) const;   // of a Group or GroupFooter row
    QString groupRowText(qsizetype displayRow) const;  // "caption: value (N)"
    // Cells of Data rows. cellText is the displayed text ("" for nulls and for
    // bool columns, which show a check; see cellCheck); cellValue is the typed
    // value (QString, double, qlonglong, QDate, QDateTime, bool; invalid for null/missing).
    QString cellText(qsizetype displayRow, int col) const;
    QVariant cellValue(qsizetype displayRow, int col) const;
    int cellCheck(qsizetype displayRow, int col) const; // bool columns: 1, 0, or -1 for null
    // Text of a dataset row's cell as displayed (empty for missing fields).
    QString displayText(qsizetype dataRow, int col) const;
    // Bools as export text ("True"/"False"); the exporters' form of the cell.
    QString exportText(qsizetype dataRow, int col) const;

    // ----- expand / collapse
    bool isExpanded(qsizetype displayRow) const;
    void setExpanded(qsizetype displayRow, bool expanded); // Group or GroupFooter rows
    void toggleExpanded(qsizetype displayRow);
    void expandAll();
    void collapseAll();

    // ----- focus and records
    qsizetype focusedRow() const;                      // display row, -1 when none
    void setFocusedRow(qsizetype displayRow);          // clamps; -1 clears
    qsizetype focusedDataRow() const;                  // dataset row, -1 when the focus is not on data
    // Focuses a dataset row, expanding its groups; false when it does not pass the filter.
    bool focusDataRow(qsizetype dataRow);
    qsizetype displayRowOfDataRow(qsizetype dataRow) const; // -1 when filtered out or collapsed
    // "record N of M": M = data rows passing the filters; N = 1-based position
    // of the focused record in the expanded order; on a group row or a group
    // footer, that of the group's first record; 0 only without a focused row.
    qsizetype recordCount() const;
    qsizetype recordNumber() const;
    // 0-based position of a dataset row among the records, -1 when the filter drops it.
    qsizetype recordIndexOfDataRow(qsizetype dataRow) const;
    // Dataset row of the record at 0-based position in the expanded order.
    qsizetype recordDataRow(qsizetype recordIndex) const;
    // Navigator moves over records (expanding groups as needed).
    void firstRecord();
    void priorRecord();
    void nextRecord();
    void lastRecord();

    // Rebuilds at once (normally automatic after every change).
    void rebuild();
    // True while the rows are being rebuilt; windows served meanwhile (by a
    // watcher of long work) must not read rows, groups or sums.
    bool isRebuilding() const;

signals:
    void columnsChanged();       // added, removed, moved, caption, width, visibility, format
    void rowsChanged();          // display rows rebuilt (filter, sort, group, expand, data)
    void summariesChanged();     // footer/group summary values or definitions
    void focusChanged(qsizetype displayRow);
    void optionsChanged();       // view options

public:
    struct Impl; // internals, for the layout store and the exporters of grid/ only

private:
    std::unique_ptr<Impl> d;
    friend struct GridModelAccess;
};

} // namespace grid
