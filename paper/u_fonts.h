#pragma once
// The forms are designed in Tahoma and MS Sans Serif; where those are
// missing, narrow sans fonts stand in so captions fit their designed widths.

namespace paper {

void installFontSubstitutes();

} // namespace paper
