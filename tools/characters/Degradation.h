#pragma once

#include "reading/Plane.h"
#include "tools/characters/Random.h"

#include <optional>

namespace pelloran::characters {

inline constexpr int emSize = 96;

struct Degradation {
    // How far points are moved, slants go and so on: 1 is what still looks like the same typeface.
    double strength = 1;
    std::optional<int> emHeight; // px to which an em is reduced; absent: 12 to 27
};

// A glyph of `emSize` px as a reader may come to see it: its strokes thicker or thinner, bent, slanted, flattened, then
// blurred and reduced, enlarged again to four times that, and with a contrast that loses what is faint.
Plane degraded(const Plane& glyph, const Degradation& degradation, Random& random);

} // namespace pelloran::characters
