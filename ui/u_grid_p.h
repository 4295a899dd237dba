#pragma once
// What the units of the table view share (u_grid.cpp: geometry and the
// model's signals; u_gridpaint.cpp; u_gridinput.cpp; u_grideditor.cpp) and
// of the strips around its rows (u_gridstrips.cpp, u_gridfilterrow.cpp).

#include "grid/u_gridmodel.h"

#include <QColor>

namespace ui {

inline constexpr int kIndicatorWidth = 18;
inline constexpr int kIndentStep = 18;
inline const QColor kGridLine(0xC0, 0xC0, 0xC0);
// The lines of the strips around the rows (group-by box, header, filter row, footer).
inline const QColor kStripLine(0x90, 0x90, 0x90);

inline bool isRightAligned(grid::ColumnKind k) { return k == grid::ColumnKind::Number; }

} // namespace ui
