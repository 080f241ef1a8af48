#pragma once

#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include <ostream>

namespace pelloran {

// Found by GoogleTest beside the type.
inline void PrintTo(const UpwardRect& rect, std::ostream* out) {
    *out << rect.width << " x " << rect.height << " at " << rect.x << ", " << rect.y;
}

} // namespace pelloran
