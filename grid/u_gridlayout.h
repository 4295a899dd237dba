#pragma once
// The grid layout store: a GridModel's layout as a UTF-8 INI-style text, kept
// in files and in grid_style.grid_style_bytea.
//
//   [View]
//   Version=1
//   GroupByBox=1, Footer=1, FilterRow=1, GroupFooters=1, Indicator=1   (one per line)
//   ProgramFilter=0                      the programmatic filter switched on/off
//   [Column:<field>]                     one per column
//   Index=<display position>  Width=<px>  Visible=0|1  Caption=<text>
//   Sort=None|Ascending|Descending  SortIndex=<n>  GroupIndex=<n>
//   Format=<pattern>  Filter=<filter row text>
//   [FooterSummary:<n>] / [GroupSummary:<n>]   n = 0, 1, ...
//   Field=<field>  Kind=Sum|Count|Min|Max|Average  Format=<pattern>  Column=<field>
//   [FilterCondition:<n>]
//   Field=<field>  Type=String|Int|Double|Bool|Date|DateTime|Null  Value=<text>
//
// Values escape '\' as "\\", line breaks as "\n" / "\r"; section names escape
// ']' as "\]". Blank lines and lines starting with ';' or '#' are ignored.
// Every section takes only the keys above: an unknown section or key is an
// error (a later form of the stream raises Version instead).
//
// Restoring: columns named in the stream that the view lacks are created, the
// view's columns absent from the stream are removed, then order, widths,
// visibility, captions, formats, sorting, grouping, the filter row, the
// programmatic filter and the summaries are set from the stream. An empty
// stream (or only blanks) keeps the current layout. A malformed stream raises
// QuarvError with a Romanian text naming the line, and nothing is changed
// (the whole stream is read before anything is applied).

#include <QByteArray>
#include <QString>

namespace grid {

class GridModel;

QByteArray saveGridLayout(const GridModel &model);
void restoreGridLayout(GridModel &model, const QByteArray &stream);

// File forms of the above (the scratch "grid.ini"); write through QSaveFile.
// Errors raise QuarvError with the file system's message.
void saveGridLayoutToFile(const GridModel &model, const QString &path);
void restoreGridLayoutFromFile(GridModel &model, const QString &path);

} // namespace grid
