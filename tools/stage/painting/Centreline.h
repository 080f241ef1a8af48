#pragma once

#include <QPainterPath>

namespace pelloran::stage {

// The lines in the middle of the strokes of a shape, as open lines, to be drawn with a pen: so that all strokes come to
// one width, however thick and thin the brush was that they are from. Accurate to about one unit; strokes should be
// some units wide. Branches shorter than `shortest`, as the corners of thick strokes have them, are left out.
QPainterPath centreline(const QPainterPath& shape, double shortest);

} // namespace pelloran::stage
