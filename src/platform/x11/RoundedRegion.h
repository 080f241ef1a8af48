#pragma once

#include <QRect>
#include <QSize>

#include <vector>

namespace pelloran::x11 {

// The pixels of a window with rounded corners whose centres lie inside of them, as rectangles from top to bottom that
// do not overlap. QRegion's ellipses follow another rule, by some six pixels a corner of 14. A radius that does not fit
// is cut to what does. Empty for an empty size.
std::vector<QRect> roundedRegion(QSize size, double radius);

} // namespace pelloran::x11
