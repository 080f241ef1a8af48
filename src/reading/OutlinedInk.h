#pragma once

#include "Plane.h"

namespace pelloran {

// Where white letters with dark outlines are looked for, the game's picture is this many pixels high: capitals are 11
// tall then, and the outline begins within three of a stroke's middle.
inline constexpr double searchScale = 900;

// What of a plane of that scale is the white of letters with something much darker beside it: 1, elsewhere 0.
Plane outlinedInk(const Plane& plane);

} // namespace pelloran
