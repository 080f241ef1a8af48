#pragma once

#include "reading/Plane.h"

#include <array>
#include <optional>

namespace pelloran {

// A character's strokes without its size, place and spacing: ink (0 none to 1) of `side` rows of `side` pixels.
struct CharacterShape {
    static constexpr int side = 64;

    const float* row(int y) const { return ink.data() + std::size_t(y) * side; }

    float* row(int y) { return ink.data() + std::size_t(y) * side; }

    std::array<float, std::size_t(side) * side> ink{};
};

// The character within `cell` (clipped to the plane) of `ink`, 0 none to 255, fitted into the square so that its
// longer side fills it and its shorter one stays shorter, with the strokes spread more evenly than they were. Absent
// when there is next to no ink. For any thread.
std::optional<CharacterShape> shapeOf(const Plane& ink, const QRect& cell);

} // namespace pelloran
